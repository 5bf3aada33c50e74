#pragma once

#include <string>
#include <vector>

#include "compare/package_difference.h"
#include "environment/setting_category.h"

namespace carrovan {

// What a package's names and texts mean whatever its version: its own version, as an import into
// another release replaces it, reads as a mark that stands for "the version". Each package's
// version becomes the mark, so that it does not matter which package comes first.
class VersionMeaning {
 public:
  // With `versionsCount` everything means what it says: versions are not marked.
  VersionMeaning(PackageSide side, bool versionsCount);

  // The version in the names of the product's folder, the drafting product's folder and the file of
  // the whole key.
  std::wstring OfEntry(const std::wstring& entry) const;

  // A key, a name or a text of a registry file or a document.
  std::wstring OfText(const std::wstring& text) const;

  // Null for what is no category's.
  const CategoryRecord* CategoryOf(const std::wstring& entry) const;

 private:
  bool IsInProductFolder(const std::vector<std::wstring>& names) const;
  void MarkDraftingVersion(std::vector<std::wstring>& names) const;

  PackageSide side_;
  bool versionsCount_;
  std::wstring gluedProduct_;  // without blanks, as a document's elements spell it
};

}  // namespace carrovan
