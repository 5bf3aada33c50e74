#pragma once

#include <optional>
#include <string>

namespace carrovan {

// What a save-file question shows.
struct SaveFileQuestion {
  std::wstring defaultExtension;  // with its dot
  std::wstring filter;            // description, bar, pattern, closing bar
  bool hideReadOnlyBox = true;
  bool askBeforeOverwriting = true;
};

// The face that a run talks to: the wizard's window, the command line or a test.
class WizardView {
 public:
  virtual ~WizardView() = default;

  // A plain message with an OK button; returns when it was answered.
  virtual void ShowMessage(const std::wstring& text) = 0;

  // The same in the application's own style: with its name as caption and a warning icon.
  virtual void ShowApplicationMessage(const std::wstring& text) = 0;

  // The chosen path, or nothing when the user cancelled.
  virtual std::optional<std::wstring> ChooseSaveFile(const SaveFileQuestion& question) = 0;

  // Text of the finish page.
  virtual void SetFinishText(const std::wstring& text) = 0;

  // Asks the wizard to close once the current step has returned.
  virtual void CloseWizard() = 0;
};

}  // namespace carrovan
