#include "app/carrovan_app.h"

#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>

#include "app/carrovan_dlg.h"
#include "pages/questions.h"
#include "platform/machine.h"
#include "platform/windows/module_loading.h"
#include "platform/windows/tarvik_ports.h"
#include "text/path_text.h"

namespace carrovan {
namespace {

// The package that the program is to open with: its first argument, made a full path, so that it
// stays the same wherever a dialog may change the folder to. Empty without one.
std::wstring PackageArgument() {
  int count = 0;
  wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  const std::wstring argument = arguments != nullptr && count > 1 ? arguments[1] : L"";
  LocalFree(arguments);
  if (argument.empty()) return L"";
  std::wstring path(GetFullPathNameW(argument.c_str(), 0, nullptr, nullptr), L'\0');
  path.resize(
      GetFullPathNameW(argument.c_str(), static_cast<DWORD>(path.size()), path.data(), nullptr));
  return path;
}

}  // namespace

ResourceModule LoadLanguageResources(const std::wstring& baseName) {
  const std::wstring language = CurrentTarvikLanguage().value_or(L"zh-cn");
  const std::wstring programFolder = WithTrailingBackslash(RemoveFileSpec(ProgramPath()));
  ModuleHandle library;
  const SystemCode code =
      LoadModule(programFolder + language + L"\\" + baseName + L".DLL", library);
  return code == kSystemOk ? ResourceModule(std::move(library)) : ResourceModule();
}

bool CCarrovanApp::InitInstance() {
  constexpr DWORD kAllClasses = 255;
  const INITCOMMONCONTROLSEX classes{sizeof(INITCOMMONCONTROLSEX), kAllClasses};
  InitCommonControlsEx(&classes);

  const ResourceModule resources = LoadLanguageResources(L"MevrinLg");
  const MachineOrReason opened = OpenNativeMachine();
  if (!opened.object) {
    ShowApplicationMessageBox(nullptr, opened.reason);
    return false;
  }
  const std::unique_ptr<HostFiles> packages = OpenHostFiles();
  CCarrovanDlg(resources, opened.object->Ports(), *packages, PackageArgument()).Run();
  return false;
}

}  // namespace carrovan
