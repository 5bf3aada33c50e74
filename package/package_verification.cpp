#include "package/package_verification.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "environment/setting_category.h"
#include "package/package_description.h"
#include "package/package_inspection.h"
#include "package/package_trust.h"
#include "package/package_writer.h"
#include "package/registry_file_scan.h"
#include "registry_text/registry_file_form.h"
#include "text/text.h"

namespace carrovan {
namespace {

class Verification {
 public:
  Verification(ArchiveExaminer& archive, XmlDom& dom, bool legacy)
      : archive_(archive), dom_(dom), inspection_(InspectPackage(archive, legacy)) {}

  PackageVerification Run();

 private:
  void TakeInspection();
  void CheckItem(std::size_t index, const ArchiveItem& item);
  void CheckRegistryFile(std::size_t index, const ArchiveItem& item);
  void CheckDocument(const ArchiveItem& item);
  void NoteCategoriesWithoutData();
  bool HasData(const CategoryRecord& record) const;
  bool HasItemBelow(std::wstring_view folder, bool perLanguage, std::wstring_view below) const;

  void Find(const std::wstring& name, const std::wstring& reason) {
    // An unfit name is no good for two reasons.
    if (found_.emplace(name, reason).second) result_.findings.push_back({name, reason});
  }

  ArchiveExaminer& archive_;
  XmlDom& dom_;
  const PackageInspection inspection_;
  std::set<std::wstring> unreadable_;  // names, already among the findings
  std::set<std::wstring> distrusted_;  // the same
  std::set<std::pair<std::wstring, std::wstring>> found_;
  PackageVerification result_;
};

bool IsFolderName(std::wstring_view name) { return name.ends_with(L'\\'); }

PackageVerification Verification::Run() {
  TakeInspection();
  result_.entries = inspection_.entries.size();
  for (std::size_t index = 0; index < inspection_.entries.size(); ++index) {
    CheckItem(index, inspection_.entries[index]);
  }
  if (inspection_.contentWasRead && !inspection_.legacy) NoteCategoriesWithoutData();
  return std::move(result_);
}

void Verification::TakeInspection() {
  for (const RefusedItem& item : inspection_.refused) {
    unreadable_.insert(item.name);
    Find(item.name, item.reason);
  }
  for (const RefusedItem& item : inspection_.untrusted) {
    distrusted_.insert(item.name);
    Find(item.name, item.reason);
  }
  for (const std::wstring& key : inspection_.unknownCategories) {
    Find(kPackageDescriptionName, L"\"" + key + L"\" is not a category");
  }
}

void Verification::CheckItem(std::size_t index, const ArchiveItem& item) {
  if (IsFolderName(item.name)) return;
  const bool isRegistryFile = !inspection_.legacy && IsRegistryFileName(item.name);
  const bool isDocument = EndsWithIgnoringAsciiCase(item.name, L".xml");
  if (isRegistryFile) ++result_.registryFiles;
  if (isDocument) ++result_.documents;
  if (!isRegistryFile && !isDocument) return;
  if (!inspection_.contentWasRead || unreadable_.contains(item.name)) return;
  // What is not to be trusted was looked through for that, and says no more here.
  if (isRegistryFile && !distrusted_.contains(item.name)) CheckRegistryFile(index, item);
  if (!isDocument) return;
  if (item.sizeBytes > ArchiveFiles::kLongestFileBytes) {
    result_.notes.push_back({item.name, L"too large to be parsed here"});
  } else {
    CheckDocument(item);
  }
}

// Also for what was not looked through for trust, since no registry tool takes it for a registry
// file, and for one that lacks its end.
void Verification::CheckRegistryFile(std::size_t index, const ArchiveItem& item) {
  RegistryFileCheck check;
  RegistryFormScan form;
  const ArchiveResult result = archive_.ReadInParts(index, [&](std::string_view part) {
    check.Take(part);
    form.Take(part);
  });
  if (result != ArchiveResult::kDone) return Find(item.name, DescribeArchiveResult(result));
  const auto lack = check.Finish();
  if (!check.HasHeader()) return Find(item.name, L"this is not a registry file");
  if (const auto problem = lack ? lack : form.Finish()) Find(item.name, *problem);
}

// A session for each document, so that what one held is gone before the next.
void Verification::CheckDocument(const ArchiveItem& item) {
  const auto session = dom_.Begin();
  const auto document = session->NewDocument();
  if (!document) return Find(item.name, L"the XML parser cannot be started");
  if (!document->Load(item.name)) Find(item.name, document->LoadProblem());
}

// An export marks a category that was ticked even if there was nothing to store, so this is no
// fault of the package.
void Verification::NoteCategoriesWithoutData() {
  for (const std::wstring& label : inspection_.categories) {
    const CategoryRecord* const record = FindCategoryByLabel(label);
    if (record != nullptr && !HasData(*record)) {
      result_.notes.push_back({label, L"the package marks this category, but holds nothing of it"});
    }
  }
}

bool Verification::HasData(const CategoryRecord& record) const {
  const std::wstring below =
      inspection_.company + L"\\" + inspection_.product + L"\\" + inspection_.internalVersion;
  switch (record.storage) {
    case CategoryStorage::kOptionKeys:
      return HasItemBelow(L"Options", false, L"");
    case CategoryStorage::kWholeKey:
      return HasItemBelow(L"Register", false, L"");
    case CategoryStorage::kRoamingLanguage:
      return HasItemBelow(L"Roaming\\" + below, true, record.subfolder);
    case CategoryStorage::kLocalLanguage:
      return HasItemBelow(L"Local\\" + below, true, record.subfolder);
    case CategoryStorage::kLocalSingle:
      return HasItemBelow(L"Local\\" + below, false, record.subfolder);
    case CategoryStorage::kDraftFolder:
      return true;  // in a folder of another product, which only a machine knows
  }
  return true;
}

// Whether a file lies in a folder: directly below the one that is given, or below each of its
// language folders.
bool Verification::HasItemBelow(std::wstring_view folder, bool perLanguage,
                                std::wstring_view below) const {
  const std::wstring start = std::wstring(folder) + (perLanguage ? L"\\" : L"");
  const std::wstring middle = std::wstring(below) + L"\\";
  return std::ranges::any_of(inspection_.entries, [&](const ArchiveItem& item) {
    std::wstring_view name = item.name;
    if (IsFolderName(name) || CompareNames(name.substr(0, start.size()), start) != 0) return false;
    name.remove_prefix(start.size());
    if (perLanguage) name.remove_prefix(std::min(name.find(L'\\'), name.size()));
    return CompareNames(name.substr(0, middle.size()), middle) == 0;
  });
}

}  // namespace

PackageVerification VerifyPackage(ArchiveExaminer& archive, XmlDom& dom, bool legacy) {
  return Verification(archive, dom, legacy).Run();
}

}  // namespace carrovan
