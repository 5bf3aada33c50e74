#include "restore/spelled_names.h"

namespace carrovan {

std::wstring SpelledNames::Spell(const std::wstring& parent, const std::wstring& name) {
  if (parent != parent_ || !names_.contains(name)) {
    parent_ = parent;
    names_.clear();
    for (std::wstring& each : list_(parent)) names_.insert(std::move(each));
  }
  const auto spelled = names_.find(name);
  return spelled == names_.end() ? name : *spelled;
}

SpelledNames::List NamesInFolders(const FileReader& files) {
  return [&files](const std::wstring& folder) {
    std::vector<std::wstring> names;
    for (FolderEntry& entry : files.ListFolder(folder)) names.push_back(std::move(entry.name));
    return names;
  };
}

SpelledNames::List NamesInKeys(const RegistryReader& registry, RegistryHive hive) {
  return [&registry, hive](const std::wstring& keyPath) {
    return registry.SubkeyNames(hive, keyPath).value_or(std::vector<std::wstring>());
  };
}

}  // namespace carrovan
