#pragma once

#include <functional>

#include "environment/wizard_state.h"
#include "pages/wizard_page_dialog.h"
#include "platform/path_page_view.h"

namespace carrovan {

// Which package is imported, and into which version?
class CSelectPath : public WizardPageDialog, public PathPageView {
 public:
  // Lets the user choose a package and tells the page what to show of it.
  using SelectFile = std::function<void(PathPageView&)>;

  CSelectPath(const PageSurroundings& surroundings, WizardState& state, ProductContext& context,
              SelectFile selectFile)
      : WizardPageDialog(surroundings),
        state_(state),
        context_(context),
        selectFile_(std::move(selectFile)) {}

  std::optional<std::wstring> ChooseOpenFile(const OpenFileQuestion& question) override;
  void ShowPackagePath(const std::wstring& path) override;
  void ListVersions(const std::vector<std::wstring>& versions) override;
  std::optional<std::wstring> SelectedVersion() const override;

 protected:
  int TemplateNumber() const override;
  std::span<const ControlLook> Looks() const override;
  void FillControls() override {}
  bool OnCommand(int control, int notification) override;

 private:
  WizardState& state_;
  ProductContext& context_;
  SelectFile selectFile_;
};

}  // namespace carrovan
