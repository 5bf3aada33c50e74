#include "app/carrovan_app.h"

#include "app/carrovan_dlg.h"
#include "pages/questions.h"
#include "platform/machine.h"
#include "platform/windows/module_loading.h"
#include "platform/windows/tarvik_ports.h"
#include "text/path_text.h"

namespace carrovan {

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
  CCarrovanDlg(resources, opened.object->Ports()).Run();
  return false;
}

}  // namespace carrovan
