#include "app/language_resources.h"

#include "platform/path_text.h"
#include "platform/windows/module_loading.h"
#include "platform/windows/tarvik_language.h"

namespace carrovan {

ResourceModule LoadLanguageResources(const std::wstring& baseName) {
  const std::wstring language = CurrentTarvikLanguage().value_or(L"zh-cn");
  const std::wstring programFolder = WithTrailingBackslash(RemoveFileSpec(ProgramPath()));
  ModuleHandle library;
  const SystemCode code =
      LoadModule(programFolder + language + L"\\" + baseName + L".DLL", library);
  return code == kSystemOk ? ResourceModule(std::move(library)) : ResourceModule();
}

}  // namespace carrovan
