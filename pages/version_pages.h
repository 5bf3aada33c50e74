#pragma once

#include <windows.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "environment/product_context.h"
#include "environment/wizard_state.h"
#include "pages/wizard_page_dialog.h"
#include "resources/resource.h"
#include "wizard/wizard_frame.h"

namespace carrovan {

// A drop-down list of versions as the user sees them.

// Replaces the entries and selects the last one.
void FillVersionList(HWND list, const std::vector<std::wstring>& years);

// The text of the selected entry; nothing when none is selected.
std::optional<std::wstring> SelectedYear(HWND list);

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

// Which package is imported, and into which version?
class CSelectPath : public WizardPageDialog, public PathPageView {
 public:
  // Lets the user choose a package and says what the page shows of it.
  using SelectFile = std::function<void(PathPageView&)>;

  CSelectPath(const PageSurroundings& surroundings, WizardState& state, ProductContext& context,
              SelectFile selectFile)
      : WizardPageDialog(surroundings),
        state_(state),
        context_(context),
        selectFile_(std::move(selectFile)) {}

  // True as long as no package was chosen.
  bool IsEmpty() const { return TextOf(IDC_PATH_FILE).empty(); }

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
