#include "platform/command_interpreter.h"

namespace carrovan {

namespace {

constexpr std::wstring_view kImport = L"/C reg import \"";

}  // namespace

std::wstring RegExportCommand(const std::wstring& keyPath, const std::wstring& filePath) {
  return L"/C reg export \"" + keyPath + L"\" \"" + filePath + L"\" /y";
}

std::wstring RegImportCommand(const std::wstring& filePath) {
  return std::wstring(kImport) + filePath + L"\"";
}

bool IsPlainToInterpreter(std::wstring_view name) {
  return name.find_first_of(L"%\"") == std::wstring_view::npos;
}

std::optional<std::wstring> ImportedFile(const std::wstring& parameters) {
  if (!parameters.starts_with(kImport) || !parameters.ends_with(L'"')) return std::nullopt;
  if (parameters.size() <= kImport.size()) return std::nullopt;
  const std::wstring file =
      parameters.substr(kImport.size(), parameters.size() - kImport.size() - 1);
  return file.find(L'"') == std::wstring::npos ? std::optional(file) : std::nullopt;
}

}  // namespace carrovan
