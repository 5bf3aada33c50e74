#pragma once

#include <optional>
#include <string>
#include <vector>

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

// What an open-file question shows.
struct OpenFileQuestion {
  std::wstring defaultExtension;  // with its dot
  std::wstring filter;            // description, bar, patterns, closing bars
  bool hideReadOnlyBox = true;
  bool askBeforeOverwriting = true;  // without a meaning for opening; the system accepts it
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

}  // namespace carrovan
