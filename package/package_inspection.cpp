#include "package/package_inspection.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "environment/setting_category.h"
#include "package/package_description.h"
#include "package/package_opening.h"
#include "package/package_trust.h"
#include "package/shared_package.h"
#include "text/path_text.h"
#include "text/profile_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

// Far more than thirteen categories and four values need.
constexpr std::size_t kLongestDescriptionBytes = std::size_t{64} << 10;

bool IsFolderName(const std::wstring& name) { return EndsInSeparator(name); }

bool IsRootXml(const ArchiveItem& item) {
  return EndsWithIgnoringAsciiCase(item.name, L".xml") &&
         item.name.find(L'\\') == std::wstring::npos;
}

std::optional<std::wstring> RefusalOfItem(ArchiveExaminer& archive, std::size_t index,
                                          const ArchiveItem& item) {
  if (auto refusal = RefusalOfPackageItem(archive, index, item.name))
    return L"the name " + *refusal;
  if (IsFolderName(item.name)) return std::nullopt;
  const ArchiveResult result = archive.Check(index);
  if (result == ArchiveResult::kDone) return std::nullopt;
  return DescribeArchiveResult(result);
}

std::vector<ArchiveItem> AllItems(const ArchiveExaminer& archive) {
  std::vector<ArchiveItem> items;
  while (auto item = archive.Item(items.size())) items.push_back(std::move(*item));
  return items;
}

void ReadEntries(ArchiveExaminer& archive, PackageInspection& inspection) {
  for (std::size_t index = 0; index < inspection.entries.size(); ++index) {
    const ArchiveItem& item = inspection.entries[index];
    if (auto refusal = RefusalOfItem(archive, index, item)) {
      inspection.refused.push_back({item.name, *refusal});
    }
  }
}

std::optional<std::wstring> DescriptionText(ArchiveExaminer& archive,
                                            const std::vector<ArchiveItem>& entries) {
  const auto at = std::ranges::find_if(entries, [](const ArchiveItem& item) {
    return CompareNames(item.name, kPackageDescriptionName) == 0;
  });
  if (at == entries.end()) return std::nullopt;
  const auto index = static_cast<std::size_t>(at - entries.begin());
  const auto bytes = archive.Read(index, kLongestDescriptionBytes);
  if (!bytes) return std::nullopt;
  return DecodeText(*bytes).text;
}

void ReadDescription(const std::wstring& text, PackageInspection& inspection) {
  const auto read = [&](const wchar_t* key, std::wstring& value) {
    value = ProfileValue(text, kBaseSection, key);
    if (value.empty()) {
      inspection.refused.push_back(
          {kPackageDescriptionName, L"the key " + std::wstring(key) + L" is missing"});
    }
  };
  read(kCompanyKey, inspection.company);
  read(kProductKey, inspection.product);
  read(kReleaseVersionKey, inspection.releaseVersion);
  read(kInternalVersionKey, inspection.internalVersion);
  inspection.shared = ProfileValue(text, kSharingSection, kSharedKey) == L"1";
  for (const CategoryRecord& record : CategoryTable()) {
    if (ProfileValue(text, kSelectedSection, Text(record.label)) == L"1") {
      inspection.categories.emplace_back(Text(record.label));
    }
  }
  for (std::wstring& key : ProfileKeys(text, kSelectedSection)) {
    if (!FindCategoryByLabel(key)) inspection.unknownCategories.push_back(std::move(key));
  }
}

void InspectDescription(ArchiveExaminer& archive, PackageInspection& inspection) {
  if (const auto text = DescriptionText(archive, inspection.entries)) {
    ReadDescription(*text, inspection);
  } else {
    inspection.refused.push_back({kPackageDescriptionName, L"the description is missing"});
  }
}

void InspectLegacyContent(PackageInspection& inspection) {
  if (std::ranges::count_if(inspection.entries, IsRootXml) != 1) {
    inspection.refused.push_back({L"*.xml", L"a legacy package holds exactly one XML document"});
  }
}

void JudgeTrust(ArchiveExaminer& archive, PackageInspection& inspection) {
  const PackageKind kind = inspection.legacy ? PackageKind::kLegacy : PackageKind::kFull;
  inspection.untrusted = ReasonsForDistrust(archive, kind, inspection.company);
  if (inspection.legacy) return;
  if (const auto refusal = RefusalOfIdentity(inspection.company, inspection.product)) {
    inspection.untrusted.push_back({kPackageDescriptionName, *refusal});
  }
}

}  // namespace

bool IsLegacyPackageName(const std::wstring& path) {
  return EndsWithIgnoringAsciiCase(FileNameOf(path), L".ucx");
}

PackageIdentity ReadPackageIdentity(ArchiveExaminer& archive) {
  const std::wstring text = DescriptionText(archive, AllItems(archive)).value_or(L"");
  return {ProfileValue(text, kBaseSection, kCompanyKey),
          ProfileValue(text, kBaseSection, kProductKey)};
}

PackageInspection InspectPackage(ArchiveExaminer& archive, bool legacy) {
  PackageInspection inspection;
  inspection.legacy = legacy;
  inspection.entries = AllItems(archive);
  if (const auto absurd = RefusalOfSize(archive)) {
    inspection.untrusted = {*absurd};
    return inspection;
  }
  inspection.contentWasRead = true;
  ReadEntries(archive, inspection);
  if (legacy) {
    InspectLegacyContent(inspection);
  } else {
    InspectDescription(archive, inspection);
  }
  JudgeTrust(archive, inspection);
  return inspection;
}

namespace {

// How zip archives and their end begin. The end lies in front of a comment of limited length.
constexpr std::string_view kItemMark = "PK\3\4";
constexpr std::string_view kEndMark = "PK\5\6";
constexpr std::size_t kMostTailBytes = 22 + 0xFFFF;

struct Glimpse {
  std::string front;  // as many bytes as a mark has
  std::string tail;
  std::uint64_t bytes = 0;
};

SystemCode Look(const FileReader& files, const std::wstring& path, Glimpse& glimpse) {
  return files.ReadInParts(path, [&glimpse](std::string_view part, std::uint64_t) {
    const std::size_t missing = kItemMark.size() - glimpse.front.size();
    glimpse.front += part.substr(0, missing);
    glimpse.tail += part;
    if (glimpse.tail.size() > kMostTailBytes) {
      glimpse.tail.erase(0, glimpse.tail.size() - kMostTailBytes);
    }
    glimpse.bytes += part.size();
    return true;
  });
}

std::wstring ReasonOf(const Glimpse& glimpse) {
  if (glimpse.bytes == 0) return L"it is empty";
  if (glimpse.tail.find(kEndMark) != std::string::npos) {
    return L"the directory of the zip archive is damaged";
  }
  if (glimpse.front == kItemMark) return L"the end of the zip archive is missing";
  return L"it holds no zip archive";
}

}  // namespace

std::wstring DescribeNoPackage(const FileReader& files, const std::wstring& path) {
  if (files.IsFolder(path)) return path + L" is not a package: it is a folder";
  if (!files.Exists(path)) return path + L" is missing";
  Glimpse glimpse;
  const SystemCode code = Look(files, path, glimpse);
  if (code != kSystemOk) return path + L" cannot be read: " + DescribeSystemCode(code);
  return path + L" is not a package: " + ReasonOf(glimpse);
}

}  // namespace carrovan
