#include "pages/reset_dialog.h"

#include "resources/resource.h"

namespace carrovan {

int CDialogReset::TemplateNumber() const { return IDD_RESET_CATEGORIES; }

CategoryPageDialog::Texts CDialogReset::PageTexts() const {
  // The import's lead-in is this page's too.
  return {StringId::kSelectSettingsToReset, StringId::kWhichToReset, StringId::kImportLeadIn};
}

void CDialogReset::FillControls() {
  CategoryPageDialog::FillControls();
  SetText(IDC_RESET_BACKUP, StringId::kOneClickBackup);
}

bool CDialogReset::OnCommand(int control, int notification) {
  if (control != IDC_RESET_BACKUP || notification != BN_CLICKED) return false;
  SendMessageW(GetParent(Window()), kBackupRequest, 0, 0);
  return true;
}

}  // namespace carrovan
