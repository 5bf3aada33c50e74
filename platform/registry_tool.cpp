#include "platform/registry_tool.h"

namespace carrovan {

std::unique_ptr<RunningTool> InterpretedRegistryTool::ExportKey(const std::wstring& keyPath,
                                                                const std::wstring& filePath) {
  return interpreter_.Start(L"/C reg export \"" + keyPath + L"\" \"" + filePath + L"\" /y");
}

std::unique_ptr<RunningTool> InterpretedRegistryTool::ImportFile(const std::wstring& filePath) {
  return interpreter_.Start(L"/C reg import \"" + filePath + L"\"");
}

bool IsPlainToInterpreter(std::wstring_view name) {
  return name.find_first_of(L"%\"") == std::wstring_view::npos;
}

}  // namespace carrovan
