#include "environment/version_folders.h"

#include <algorithm>
#include <optional>

#include "environment/setting_category.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kOrmaCompany[] = L"ORMA";
constexpr wchar_t kVantricCompany[] = L"Vantric";

// The release that shares the 2D drafting folder of the one before it.
constexpr wchar_t kSharingYear[] = L"2025";
constexpr wchar_t kSharedYear[] = L"2024";
constexpr wchar_t kSharedSubfolder[] = L"\\25.0";

bool SharesFolder(const ProductContext& context, const std::wstring& year) {
  return EqualsIgnoringAsciiCase(context.companyShortName, kVantricCompany) && year == kSharingYear;
}

// The 2D drafting folder of a year below a folder; nothing for an unknown company.
std::optional<std::wstring> DraftingFolder(const ProductContext& context, const std::wstring& base,
                                           const std::wstring& year) {
  if (EqualsIgnoringAsciiCase(context.companyShortName, kOrmaCompany)) {
    return base + L"\\ORMA\\ORMA CAD TVRN-INT " + year + L" (x64)";
  }
  if (!EqualsIgnoringAsciiCase(context.companyShortName, kVantricCompany)) return std::nullopt;
  const std::wstring namedYear = SharesFolder(context, year) ? kSharedYear : year;
  return base + L"\\ORMA\\ORMA CAD TVRN-INT-" + context.productName + L" " + namedYear + L" (x64)";
}

std::wstring LastTwoCharacters(const std::wstring& text) {
  return text.size() > 2 ? text.substr(text.size() - 2) : text;
}

// Name of the only subfolder; nothing when there is none or more than one.
std::optional<std::wstring> OnlySubfolder(const FileReader& files, const std::wstring& folder) {
  std::optional<std::wstring> only;
  for (FolderEntry& entry : ListFolder(files, folder)) {
    if (!entry.isFolder) continue;
    if (only) return std::nullopt;
    only = std::move(entry.name);
  }
  return only;
}

std::wstring ProductFolder(const ProductContext& context, const std::wstring& base) {
  return base + L"\\" + context.companyShortName + L"\\" + context.productName + L"\\" +
         context.productVersion;
}

}  // namespace

std::wstring LiveKey(const ProductContext& context) {
  return L"SOFTWARE\\" + context.companyShortName + L"\\" + context.productName + L" " +
         context.productVersion;
}

std::wstring RegistryRoot(const ProductContext& context) {
  return L"HKEY_CURRENT_USER\\" + LiveKey(context);
}

void BuildLocalFolder(ProductContext& context, const Machine& machine) {
  const auto base = machine.folders->LocalAppData();
  if (!base) return;
  if (const auto folder = DraftingFolder(context, *base, context.selectedVersion)) {
    context.localFolder = *folder;
  }
  if (SharesFolder(context, context.selectedVersion)) {
    context.localFolder += kSharedSubfolder;
    return;
  }
  const auto only = OnlySubfolder(*machine.files, context.localFolder);
  context.localFolder += L"\\" + only.value_or(LastTwoCharacters(context.selectedVersion) + L".0");
}

void BuildStagingLocalFolder(ProductContext& context, const std::wstring& year) {
  const auto folder = DraftingFolder(context, context.stagingFolder + L"Local", year);
  if (!folder) return;
  context.stagingLocalFolder = *folder + (SharesFolder(context, year) ? kSharedSubfolder : L"");
}

void FillRegistryKeyLists(ProductContext& context) {
  context.registerKeys = {context.registryRoot};
  context.optionKeys.clear();
  for (const std::wstring_view subkey : OptionSubkeys()) {
    context.optionKeys.push_back(context.registryRoot + std::wstring(subkey));
  }
}

std::optional<std::wstring> RoamingTwin(const std::wstring& localPath,
                                        const KnownFolders& folders) {
  const auto local = folders.LocalAppData();
  const auto roaming = folders.RoamingAppData();
  if (!local || !roaming || !localPath.starts_with(*local + L"\\")) return std::nullopt;
  return *roaming + localPath.substr(local->size());
}

std::optional<std::wstring> ResetDraftingTwin(const ProductContext& context,
                                              const KnownFolders& folders) {
  const auto roaming = folders.RoamingAppData();
  if (!roaming) return std::nullopt;
  const std::wstring& year = context.humanReadableVersion;
  std::wstring folder = *roaming;
  if (context.companyShortName == kOrmaCompany) {
    folder += L"\\ORMA\\ORMA CAD TVRN-INT " + year + L" (x64)";
  }
  return folder + L"\\" + LastTwoCharacters(year) + L".0";
}

bool PrepareVersionFolders(ProductContext& context, const Machine& machine) {
  if (context.companyShortName.empty() || context.productName.empty() ||
      context.productVersion.empty()) {
    return false;
  }
  context.registryRoot = RegistryRoot(context);
  FillRegistryKeyLists(context);
  const auto roaming = machine.folders->RoamingAppData();
  const auto local = machine.folders->LocalAppData();
  if (!roaming || !local) return false;
  if (const auto folder = DraftingFolder(context, *local, context.humanReadableVersion)) {
    context.localFolder = *folder;
  }
  context.roamingRoot = ProductFolder(context, *roaming);
  context.localRoot = ProductFolder(context, *local);
  return true;
}

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
  return record.storage == CategoryStorage::kDraftFolder ? DraftingPlaces(context, *machine.folders)
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
