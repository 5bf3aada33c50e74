#pragma once

#include "pages/category_page_dialog.h"

namespace carrovan {

class CDialogImport : public CategoryPageDialog {
 public:
  using CategoryPageDialog::CategoryPageDialog;

 protected:
  int TemplateNumber() const override;
  Texts PageTexts() const override;
};

}  // namespace carrovan
