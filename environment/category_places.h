#pragma once

#include <map>
#include <string>
#include <vector>

#include "environment/setting_category.h"
#include "platform/machine.h"

namespace carrovan {

// Tells whose a file or a registry key is: the reverse of where the categories of a version lie. A
// folder and a key belong to a category together with all that is below; of two places of which one
// lies in the other, the inner one counts. Names compare without regard to case.
class CategoryPlaces {
 public:
  // The context holds the version's folders (PrepareVersionFolders).
  CategoryPlaces(const ProductContext& context, const Machine& machine);

  // Null when the path is no category's. Either separator; the path is taken as it is written, "."
  // and ".." in it are names.
  const CategoryRecord* OfFile(const std::wstring& path) const;

  // The key path is relative to the hive.
  const CategoryRecord* OfKey(RegistryHive hive, const std::wstring& keyPath) const;

 private:
  using Components = std::vector<std::u16string>;  // folded names
  using Places = std::map<Components, const CategoryRecord*>;

  static Components Split(const std::wstring& path);
  static const CategoryRecord* Innermost(const Places& places, Components path);

  Places folders_;
  Places userKeys_;
};

}  // namespace carrovan
