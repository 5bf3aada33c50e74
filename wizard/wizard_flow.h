#pragma once

#include <functional>

#include "wizard/wizard_import.h"
#include "wizard/wizard_parts.h"

namespace carrovan {

// A flag that is up while this exists.
class RaisedFlag {
 public:
  explicit RaisedFlag(bool& flag) : flag_(flag) { flag_ = true; }
  ~RaisedFlag() { flag_ = false; }
  RaisedFlag(const RaisedFlag&) = delete;
  RaisedFlag& operator=(const RaisedFlag&) = delete;

 private:
  bool& flag_;
};

// What each button of the wizard does. Every message, check and page change happens before a
// function returns. A button that is pressed while a step is in progress, which a message box makes
// possible, does nothing.
class WizardFlow {
 public:
  explicit WizardFlow(const WizardParts& parts) : parts_(parts) {}

  // Fills the context when the window opens: staging folder, product, installed versions. False
  // when the product is not one that this program knows; the frame has then been asked to close.
  bool Open();

  // Shows the start page once the frame has its pages.
  void Start();

  void Next();
  void Back();
  void Finish();

  // Exports every category that the version offers and stays on the reset page.
  void OneClickBackup();

  // The button of the path page: asks for a package and takes it as the one to import. Whoever
  // cancels, or chooses a package that is refused, goes on with what was chosen before: its path,
  // what was unpacked of it, and the versions on the page.
  void SelectFile(PathPageView& page);

  // A package that the program was started with, or that was dropped on the window: the path page
  // of an import opens with it. What is no package is answered as if no file were chosen.
  void OpenPackageFile(const std::wstring& path);

  // The button of the import's and the reset's category pages: shows what would change. Nothing
  // changes.
  void ShowChanges();

  // Undoes the last import or reset. The finish page then says so of the run that it shows.
  void UndoLast();

 private:
  void RunAlone(const std::function<void()>& step);

  WizardParts parts_;
  WizardImport import_;
  bool inStep_ = false;
};

}  // namespace carrovan
