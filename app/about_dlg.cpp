#include "app/about_dlg.h"

#include "resources/resource.h"

namespace carrovan {

void CAboutDlg::Show(HWND owner) { RunModal(resources_, IDD_ABOUT, owner); }

bool CAboutDlg::OnInitDialog() {
  icon_ = resources_.Icon(IDI_CARROVAN, ScaledPixels(Window(), 48));
  SendMessageW(Control(IDC_ABOUT_ICON), STM_SETICON, reinterpret_cast<WPARAM>(icon_.Get()), 0);
  SetText(IDC_ABOUT_VERSION, L"Carrovan " + ProgramVersion());
  return true;
}

bool CAboutDlg::OnCommand(int control, int) {
  if (control != IDOK && control != IDCANCEL) return false;
  EndDialog(Window(), IDOK);
  return true;
}

}  // namespace carrovan
