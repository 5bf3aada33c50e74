#pragma once

#include <optional>
#include <string>

#include "environment/product_context.h"
#include "pages/wizard_page_dialog.h"

namespace carrovan {

// Which installed version is exported?
class CSelectVersion : public WizardPageDialog {
 public:
  CSelectVersion(const PageSurroundings& surroundings, ProductContext& context)
      : WizardPageDialog(surroundings), context_(context) {}

  // The year of the selected entry; nothing when none is selected.
  std::optional<std::wstring> SelectedVersion() const;

 protected:
  int TemplateNumber() const override;
  std::span<const ControlLook> Looks() const override;
  UnnamedStatics UnnamedStaticsLook() const override { return UnnamedStatics::kTransparent; }
  void FillControls() override;
  bool OnCommand(int control, int notification) override;

 private:
  ProductContext& context_;
};

}  // namespace carrovan
