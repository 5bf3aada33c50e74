#include "pages/import_dialog.h"

#include "resources/resource.h"

namespace carrovan {

int CDialogImport::TemplateNumber() const { return IDD_IMPORT_CATEGORIES; }

CategoryPageDialog::Texts CDialogImport::PageTexts() const {
  return {StringId::kSelectSettingsToImport, StringId::kWhichToImport, StringId::kImportLeadIn};
}

}  // namespace carrovan
