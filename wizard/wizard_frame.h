#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "environment/product_context.h"
#include "environment/string_table.h"
#include "wizard/category_tree.h"

namespace carrovan {

// What a save-file question shows.
struct SaveFileQuestion {
  std::wstring defaultExtension;  // with its dot
  std::wstring filter;            // description, bar, pattern, closing bar
  bool hideReadOnlyBox = true;
  bool askBeforeOverwriting = true;
};

// What an open-file question shows.
struct OpenFileQuestion {
  std::wstring defaultExtension;  // with its dot
  std::wstring filter;            // description, bar, patterns, closing bars
  bool hideReadOnlyBox = true;
  bool askBeforeOverwriting = true;  // without a meaning for opening; the system accepts it
};

// A line of a list that is shown as a tree.
struct ListedLine {
  int level = 0;  // 0 for what stands at the top, one more for what lies below
  std::wstring text;

  bool operator==(const ListedLine&) const = default;
};

// A window with lines to read and at most one thing to agree to.
struct ListQuestion {
  std::wstring text;  // above the lines
  std::vector<ListedLine> lines;
  std::optional<StringId> yes;     // label of the button that agrees; nothing to agree to without
  StringId no = StringId::kClose;  // label of the button that does not; the Enter key presses it
  std::function<void()> save;      // behind the button that saves the lines; no button without
};

// What the finish page shows below its text.
struct FinishDetails {
  std::vector<std::wstring> lines;  // no list when there are none
  bool canUndo = false;
  std::wstring packagePath;  // of an export, whose folder can be opened; else empty

  bool operator==(const FinishDetails&) const = default;
};

// The page that asks for a package and for the version to import it into.
class PathPageView {
 public:
  virtual ~PathPageView() = default;

  // The chosen path, or nothing when the user cancelled.
  virtual std::optional<std::wstring> ChooseOpenFile(const OpenFileQuestion& question) = 0;

  // Puts the path into the read-only field.
  virtual void ShowPackagePath(const std::wstring& path) = 0;

  // Replaces the entries of the version list and selects the last one.
  virtual void ListVersions(const std::vector<std::wstring>& versions) = 0;

  // The text of the selected entry; nothing when none is selected.
  virtual std::optional<std::wstring> SelectedVersion() const = 0;
};

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
  std::optional<StringId> finishLabel;
  std::optional<StringId> cancelLabel;

  bool operator==(const WizardButtons&) const = default;
};

// The wizard's window as its flow sees it: a stack of pages above a row of buttons.
class WizardFrame {
 public:
  virtual ~WizardFrame() = default;

  // A plain message with an OK button; returns when it was answered.
  virtual void ShowMessage(const std::wstring& text) = 0;

  // The same in the application's own style: with its name as caption and a warning icon.
  virtual void ShowApplicationMessage(const std::wstring& text) = 0;

  // The chosen path, or nothing when the user cancelled.
  virtual std::optional<std::wstring> ChooseSaveFile(const SaveFileQuestion& question) = 0;

  // True when the user agrees to what the question offers.
  virtual bool AskWithList(const ListQuestion& question) = 0;

  // Text of the finish page, and what stands below it.
  virtual void SetFinishText(const std::wstring& text) = 0;
  virtual void SetFinishDetails(const FinishDetails& details) = 0;

  // The line beside the backup button of the reset page.
  virtual void SetBackupText(const std::wstring& text) = 0;

  // How far the current step is, in thousandths, and what it works on. Hidden until the first call
  // and after HideProgress.
  virtual void ShowProgress(int thousandths, const std::wstring& name) = 0;
  virtual void HideProgress() = 0;

  // Asks the wizard to close once the current step has returned.
  virtual void CloseWizard() = 0;

  // Shows one page, hides the others and gives it the keyboard focus.
  virtual void ShowPage(WizardPage page) = 0;

  virtual void ShowButtons(const WizardButtons& buttons) = 0;

  // A question with Yes and No; true for Yes.
  virtual bool AskYesNo(const std::wstring& question) = 0;

  // The year selected in the list of the version page or of the path page; nothing when none is.
  virtual std::optional<std::wstring> SelectedVersion(WizardPage page) const = 0;

  // Gives the start page's choice a mode that was not chosen by a click.
  virtual void ShowMode(MigrationMode mode) = 0;

  // It lives as long as the frame.
  virtual PathPageView& PathPage() = 0;

  // The tree of one of the three category pages; it lives as long as the frame.
  virtual CategoryTree& Tree(WizardPage categoryPage) = 0;

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
