#pragma once

#include <optional>
#include <string>
#include <vector>

namespace carrovan {

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
