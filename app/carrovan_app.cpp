#include "app/carrovan_app.h"

#include "app/carrovan_dlg.h"
#include "app/language_resources.h"
#include "platform/native_machine.h"
#include "platform/windows/message_boxes.h"

namespace carrovan {

bool CCarrovanApp::InitInstance() {
  constexpr DWORD kAllClasses = 255;
  const INITCOMMONCONTROLSEX classes{sizeof(INITCOMMONCONTROLSEX), kAllClasses};
  InitCommonControlsEx(&classes);

  const ResourceModule resources = LoadLanguageResources(L"MevrinLg");
  const MachineOrReason opened = OpenNativeMachine();
  if (!opened.machine) {
    ShowApplicationMessageBox(nullptr, opened.reason);
    return false;
  }
  CCarrovanDlg(resources, opened.machine->Ports()).Run();
  return false;
}

}  // namespace carrovan
