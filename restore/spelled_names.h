#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "platform/file_system.h"
#include "platform/registry.h"
#include "platform/text.h"

namespace carrovan {

// Tells how a folder or a key spells the names in it, so that what is taken away can come back in
// its own spelling. Keeps the names of the parent that was asked for last.
class SpelledNames {
 public:
  using List = std::function<std::vector<std::wstring>(const std::wstring& parent)>;

  explicit SpelledNames(List list) : list_(std::move(list)) {}

  // The name itself when the parent has none like it.
  std::wstring Spell(const std::wstring& parent, const std::wstring& name);

 private:
  List list_;
  std::wstring parent_;
  std::set<std::wstring, NameLess> names_;
};

// The two of which `parent` is a path. What is looked at outlives the list.
SpelledNames::List NamesInFolders(const FileReader& files);
SpelledNames::List NamesInKeys(const RegistryReader& registry, RegistryHive hive);

}  // namespace carrovan
