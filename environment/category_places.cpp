#include "environment/category_places.h"

#include <algorithm>

#include "environment/version_folders.h"
#include "platform/text.h"

namespace carrovan {
namespace {

// The twins are those of the runs: the import's and the reset's lie in different places, and
// neither is the export's.
std::vector<std::wstring> DraftingPlaces(const ProductContext& context,
                                         const KnownFolders& folders) {
  std::vector<std::wstring> places = {context.localFolder};
  if (auto twin = RoamingTwin(context.localFolder, folders)) places.push_back(std::move(*twin));
  if (auto twin = ResetDraftingTwin(context, folders)) places.push_back(std::move(*twin));
  return places;
}

std::vector<std::wstring> FolderPlaces(const CategoryRecord& record, const ProductContext& context,
                                       const Machine& machine) {
  return record.storage == CategoryStorage::kDraftFolder ? DraftingPlaces(context, machine.folders)
                                                         : CategoryFolders(record, context);
}

std::vector<std::wstring> KeyPlaces(const CategoryRecord& record, const ProductContext& context) {
  if (record.storage == CategoryStorage::kWholeKey) return {LiveKey(context)};
  std::vector<std::wstring> places;
  if (record.storage != CategoryStorage::kOptionKeys) return places;
  for (const std::wstring_view subkey : OptionSubkeys()) {
    places.push_back(LiveKey(context) + std::wstring(subkey));
  }
  return places;
}

}  // namespace

CategoryPlaces::CategoryPlaces(const ProductContext& context, const Machine& machine) {
  for (const CategoryRecord& record : CategoryTable()) {
    for (const std::wstring& folder : FolderPlaces(record, context, machine)) {
      folders_.emplace(Split(folder), &record);
    }
    for (const std::wstring& key : KeyPlaces(record, context)) {
      userKeys_.emplace(Split(key), &record);
    }
  }
  // A folder that is not known is nobody's, and not everybody's.
  folders_.erase(Components());
}

const CategoryRecord* CategoryPlaces::OfFile(const std::wstring& path) const {
  return Innermost(folders_, Split(path));
}

const CategoryRecord* CategoryPlaces::OfKey(RegistryHive hive, const std::wstring& keyPath) const {
  return hive == RegistryHive::kCurrentUser ? Innermost(userKeys_, Split(keyPath)) : nullptr;
}

CategoryPlaces::Components CategoryPlaces::Split(const std::wstring& path) {
  Components components;
  for (std::size_t from = 0; from < path.size();) {
    const std::size_t end = std::min(path.find_first_of(L"\\/", from), path.size());
    if (end > from) components.push_back(FoldedName(path.substr(from, end - from)));
    from = end + 1;
  }
  return components;
}

const CategoryRecord* CategoryPlaces::Innermost(const Places& places, Components path) {
  for (; !path.empty(); path.pop_back()) {
    if (const auto found = places.find(path); found != places.end()) return found->second;
  }
  return nullptr;
}

}  // namespace carrovan
