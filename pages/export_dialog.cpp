#include "pages/export_dialog.h"

#include "resources/resource.h"

namespace carrovan {

int CDialogExport1::TemplateNumber() const { return IDD_EXPORT_CATEGORIES; }

CategoryPageDialog::Texts CDialogExport1::PageTexts() const {
  return {StringId::kSelectExportedSettings, StringId::kWhichToExport, StringId::kExportLeadIn};
}

}  // namespace carrovan
