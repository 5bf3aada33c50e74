#pragma once

#include <optional>
#include <string>
#include <vector>

#include "environment/product_context.h"
#include "wizard/category_tree.h"
#include "wizard/wizard_view.h"

namespace carrovan {

enum class WizardPage {
  kStart,
  kVersion,
  kExportCategories,
  kPath,
  kImportCategories,
  kResetCategories,
  kFinish,
};

// How the row of buttons looks. A label that is not given stays as it was.
struct WizardButtons {
  bool backEnabled = false;
  bool backVisible = false;
  bool nextEnabled = false;
  bool nextVisible = true;
  bool finishEnabled = false;
  bool cancelEnabled = true;
  std::optional<std::wstring> finishLabel;
  std::optional<std::wstring> cancelLabel;

  bool operator==(const WizardButtons&) const = default;
};

// The wizard's window as its flow sees it: a stack of pages above a row of buttons.
class WizardFrame : public WizardView {
 public:
  // Shows one page, hides the others and gives it the keyboard focus.
  virtual void ShowPage(WizardPage page) = 0;

  virtual void ShowButtons(const WizardButtons& buttons) = 0;

  // A question with Yes and No; true for Yes.
  virtual bool AskYesNo(const std::wstring& question) = 0;

  // The year selected in the list of the version page or of the path page; nothing when none is.
  virtual std::optional<std::wstring> SelectedVersion(WizardPage page) const = 0;

  // The tree of one of the three category pages; it lives as long as the frame.
  virtual EditableCategoryTree& Tree(WizardPage categoryPage) = 0;

  // Closes the window and ends the process with exit status 0. A frame without a window of its own
  // returns, so the caller must do nothing more.
  virtual void EndProgram() = 0;
};

// Which page and which buttons belong to a place in a mode's sequence:
//   export: start, version, categories, finish
//   import: start, path, categories, finish
//   reset:  start, categories, finish

// 3 for export and import, 2 for reset, 0 as long as no mode is chosen.
int LastPageIndex(MigrationMode mode);

// An index outside the sequence shows its nearest page.
WizardPage PageAt(MigrationMode mode, int pageIndex);

WizardButtons ButtonsAt(MigrationMode mode, int pageIndex);

}  // namespace carrovan
