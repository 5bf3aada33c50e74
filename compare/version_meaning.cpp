#include "compare/version_meaning.h"

#include <algorithm>
#include <utility>

#include "rewrite/package_tree.h"
#include "text/text.h"

namespace carrovan {
namespace {

// Characters that no one uses stand for the version.
constexpr wchar_t kVersionMark[] = L"\xF8A0";
constexpr wchar_t kReleaseMark[] = L"\xF8A1";
constexpr wchar_t kProductMark[] = L"\xF8A2";

// The drafting settings of 2025 lie in the folder of 2024.
constexpr wchar_t kSharingRelease[] = L"2025";
constexpr wchar_t kSharedRelease[] = L"2024";

bool Is(std::wstring_view name, std::wstring_view other) { return CompareNames(name, other) == 0; }

std::vector<std::wstring> NamesOf(const std::wstring& entry) {
  std::vector<std::wstring> names;
  for (std::size_t from = 0; from <= entry.size();) {
    const std::size_t end = std::min(entry.find(L'\\', from), entry.size());
    names.push_back(entry.substr(from, end - from));
    from = end + 1;
  }
  return names;
}

std::wstring Joined(const std::vector<std::wstring>& names) {
  std::wstring entry;
  for (const std::wstring& name : names)
    entry.append(&name == names.data() ? L"" : L"\\").append(name);
  return entry;
}

bool IsInProfile(const std::vector<std::wstring>& names) {
  return names.size() > 3 && (Is(names[0], L"Local") || Is(names[0], L"Roaming"));
}

bool IsInDraftingFolder(const std::vector<std::wstring>& names) {
  return IsInProfile(names) && Contains(names[2], L"ORMA CAD TVRN-INT");
}

bool IsVersion(const std::wstring& name) {
  return VersionComponentOf(L"\\" + name + L"\\") == name;
}

// Where below the product's folder the category lies: "Local", names in front of the subfolder.
struct Place {
  const wchar_t* half;
  std::size_t subfolderAt;
};

std::optional<Place> PlaceOf(const CategoryRecord& record) {
  switch (record.storage) {
    case CategoryStorage::kRoamingLanguage:
      return Place{L"Roaming", 5};
    case CategoryStorage::kLocalLanguage:
      return Place{L"Local", 5};
    case CategoryStorage::kLocalSingle:
      return Place{L"Local", 4};
    default:
      return std::nullopt;
  }
}

// What lies behind the subfolder's names is below it.
bool LiesIn(const CategoryRecord& record, const std::vector<std::wstring>& names) {
  const auto place = PlaceOf(record);
  if (!place || !Is(names[0], place->half)) return false;
  const auto subfolder = NamesOf(std::wstring(record.subfolder.substr(1)));
  if (names.size() <= place->subfolderAt + subfolder.size()) return false;
  return std::equal(subfolder.begin(), subfolder.end(),
                    names.begin() + static_cast<std::ptrdiff_t>(place->subfolderAt), Is);
}

const CategoryRecord* RecordOf(SettingCategory category) {
  return FindCategory(static_cast<int>(category));
}

}  // namespace

VersionMeaning::VersionMeaning(PackageSide side, bool versionsCount)
    : side_(std::move(side)),
      versionsCount_(versionsCount),
      gluedProduct_(ReplaceAll(side_.product, L" ", L"")) {}

bool VersionMeaning::IsInProductFolder(const std::vector<std::wstring>& names) const {
  return IsInProfile(names) && names.size() > 4 && Is(names[1], side_.company) &&
         Is(names[2], side_.product) && Is(names[3], side_.internalVersion);
}

void VersionMeaning::MarkDraftingVersion(std::vector<std::wstring>& names) const {
  const bool shares = side_.releaseVersion == kSharingRelease;
  names[2] = ReplaceAll(names[2], shares ? kSharedRelease : side_.releaseVersion, kReleaseMark);
  if (IsVersion(names[3])) names[3] = kVersionMark;
}

std::wstring VersionMeaning::OfEntry(const std::wstring& entry) const {
  if (versionsCount_) return entry;
  std::vector<std::wstring> names = NamesOf(entry);
  if (IsInProductFolder(names)) {
    names[3] = kVersionMark;
  } else if (IsInDraftingFolder(names)) {
    MarkDraftingVersion(names);
  } else if (names.size() == 2 && Is(names[0], L"Register") &&
             Is(names[1], side_.product + side_.releaseVersion + L".reg")) {
    names[1] = std::wstring(kProductMark) + L".reg";
  }
  return Joined(names);
}

std::wstring VersionMeaning::OfText(const std::wstring& text) const {
  if (versionsCount_) return text;
  std::wstring meaning = text;
  const auto mark = [&](const std::wstring& search, const std::wstring& replacement) {
    meaning = ReplaceAll(meaning, search, replacement);
  };
  if (!side_.internalVersion.empty()) {
    mark(side_.product + L" " + side_.internalVersion, kProductMark);
    mark(gluedProduct_ + side_.internalVersion, kProductMark);
    mark(side_.internalVersion + L"\\", std::wstring(kVersionMark) + L"\\");
  }
  mark(side_.releaseVersion, kReleaseMark);
  return meaning;
}

const CategoryRecord* VersionMeaning::CategoryOf(const std::wstring& entry) const {
  const std::vector<std::wstring> names = NamesOf(entry);
  if (names.size() > 1 && Is(names[0], L"Options")) return RecordOf(SettingCategory::Options);
  if (names.size() > 1 && Is(names[0], L"Register")) return RecordOf(SettingCategory::Register);
  if (IsInDraftingFolder(names)) return RecordOf(SettingCategory::Draft2dSettings);
  if (!IsInProductFolder(names)) return nullptr;
  const auto records = CategoryTable();
  const auto at = std::ranges::find_if(
      records, [&](const CategoryRecord& record) { return LiesIn(record, names); });
  return at == records.end() ? nullptr : &*at;
}

}  // namespace carrovan
