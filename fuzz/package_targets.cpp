#include <cstdio>
#include <cstdlib>

#include "environment/setting_category.h"
#include "fuzz/fuzz_targets.h"
#include "package/import_run.h"
#include "package/package_description.h"
#include "package/package_opening.h"
#include "package/package_verification.h"
#include "package/package_writer.h"
#include "package/registry_file_scan.h"
#include "package/registry_privacy.h"
#include "platform/machine.h"
#include "registry_text/registry_file_form.h"
#include "registry_text/registry_file_parser.h"
#include "registry_text/registry_key.h"
#include "tests/support/temporary_folder.h"
#include "text/profile_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

namespace fs = std::filesystem;

// A few bytes may declare thousands of items of millions of bytes each.
constexpr std::size_t kMostItems = 32;
constexpr std::size_t kMostBytes = 1 << 20;

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "fuzz: %s\n", what);
  std::abort();
}

std::size_t CountFiles(const fs::path& folder) {
  std::size_t count = 0;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) ++count;
  }
  return count;
}

// Whether the archive is small enough to be unpacked whole thousands of times.
bool IsSmall(const ArchiveReader& archive) {
  for (std::size_t index = 0; index < kMostItems; ++index) {
    const auto item = archive.Item(index);
    if (!item) return true;
    if (item->sizeBytes > kMostBytes) return false;
  }
  return false;
}

void CheckItems(ArchiveExaminer& archive) {
  for (std::size_t index = 0; index < kMostItems; ++index) {
    const auto item = archive.Item(index);
    if (!item) return;
    const ArchiveResult checked = archive.Check(index);
    const auto content = archive.Read(index, kMostBytes);
    if (content) {
      Require(checked == ArchiveResult::kDone, "an item reads that does not check");
      Require(content->size() == item->sizeBytes, "an item has another size than it declares");
    } else {
      Require(checked != ArchiveResult::kDone || item->sizeBytes > kMostBytes,
              "an item checks that does not read");
    }
  }
}

// In a sound package, whichever kind it is taken for, every item can be read.
void CheckVerification(ArchiveExaminer& archive) {
  ArchiveFiles files(archive);
  const auto dom = OpenXmlDom(files);
  for (const bool legacy : {false, true}) {
    if (!VerifyPackage(archive, *dom, legacy).IsSound()) continue;
    for (std::size_t index = 0; const auto item = archive.Item(index); ++index) {
      Require(item->name.ends_with(L'\\') || archive.Check(index) == ArchiveResult::kDone,
              "a sound package holds an item that cannot be read");
    }
  }
}

bool IsOfCompany(const RegistryKeyChange& key, std::wstring_view company) {
  std::wstring_view path = key.keyPath;
  return key.hive == RegistryHive::kCurrentUser &&
         CompareNames(TakeKeyName(path), L"SOFTWARE") == 0 &&
         CompareNames(TakeKeyName(path), company) == 0;
}

template <typename Scan>
std::optional<std::wstring> RefusalInParts(Scan scan, const std::string& input,
                                           std::size_t partBytes) {
  for (std::size_t at = 0; at < input.size(); at += partBytes) {
    scan.Take(std::string_view(input).substr(at, partBytes));
  }
  return scan.Finish();
}

template <typename Scan>
std::optional<std::wstring> RefusalBy(const Scan& scan, const std::string& input) {
  auto refusal = RefusalInParts(scan, input, input.size() + 1);
  Require(RefusalInParts(scan, input, 1) == refusal, "the cuts of a file decide");
  return refusal;
}

class OneDescription : public ProfileReader {
 public:
  explicit OneDescription(std::wstring text) : text_(std::move(text)) {}
  std::wstring ReadValue(const std::wstring& section, const std::wstring& key,
                         const std::wstring&) const override {
    return ProfileValue(text_, section, key);
  }

 private:
  std::wstring text_;
};

std::vector<std::wstring> AllValues(const std::wstring& text) {
  const OneDescription profiles(text);
  std::vector<std::wstring> values;
  for (const wchar_t* key : {kInternalVersionKey, kReleaseVersionKey, kProductKey}) {
    values.push_back(ReadConfigValue(key, L"BASE", L"", profiles));
  }
  for (const CategoryRecord& record : CategoryTable()) {
    values.push_back(IsOfferedOnImport(record, profiles, L"") ? L"1" : L"");
  }
  return values;
}

}  // namespace

void FuzzArchive(const std::string& input) {
  const TemporaryFolder folder;
  const fs::path archive = folder.Path() / "a.ucex";
  const fs::path out = folder.Path() / "b" / "out";
  PutHostFile(archive, input);
  fs::create_directories(out);
  const auto host = OpenHostFiles();
  const std::wstring path = folder.Text() + L"a.ucex";
  const auto examiner = host->Examine(path);
  if (!examiner) return;
  CheckItems(*examiner);
  if (!IsSmall(*examiner)) return;
  RunObserver observer;
  const ExtractReport report =
      ExtractArchive(host->Archives(), host->Files(), observer, path, folder.Text() + L"b/out/");
  Require(report.opened, "an archive opens only once");
  Require(CountFiles(out) <= report.extracted.size(), "a refused item leaves a file");
  Require(CountFiles(folder.Path()) == CountFiles(out) + 1, "a file lies outside the destination");
  CheckVerification(*examiner);
}

namespace {

std::string WithoutPrivateItems(const std::string& input, std::vector<PrivateItem>& found) {
  const PrivateNames names{{L"ada"}, L"workshop"};
  const PrivacyJudge judge(names);
  std::string kept;
  RegistryPrivacyFilter filter(judge, L"Options\\a.reg", found,
                               [&kept](std::string_view bytes) { kept.append(bytes); });
  filter.Take(input);
  filter.Finish();
  return kept;
}

// Of a file as the registry tool writes it, what is left is one, too.
void CheckPrivacy(const std::string& input, bool isUnderstood) {
  std::vector<PrivateItem> found;
  const std::string kept = WithoutPrivateItems(input, found);
  if (!isUnderstood) return;
  Require(!found.empty() || kept == input, "a file is changed for no reason");
  Require(!RefusalBy(RegistryFormScan(), kept), "what is left is no registry file");
  std::vector<PrivateItem> left;
  Require(WithoutPrivateItems(kept, left) == kept, "what is left changes again");
  Require(left.empty(), "something personal is left");
}

}  // namespace

void FuzzRegistryScan(const std::string& input) {
  const auto refusal = RefusalBy(RegistryFileScan(L"Vantric"), input);
  const bool isUnderstood = !RefusalBy(RegistryFormScan(), input);
  const auto file =
      ParseRegistryFile(DecodeText(std::vector<std::uint8_t>(input.begin(), input.end())).text);
  if (isUnderstood) Require(file && file->problems.empty(), "the parser reads it otherwise");
  CheckPrivacy(input, isUnderstood);
  if (refusal || !file) return;
  for (const RegistryKeyChange& key : file->keys) {
    Require(IsOfCompany(key, L"Vantric"), "a key outside is let through");
  }
}

void FuzzDescription(const std::string& input) {
  const std::wstring text = DecodeText(std::vector<std::uint8_t>(input.begin(), input.end())).text;
  const std::vector<std::wstring> before = AllValues(text);
  for (const std::wstring& value : before) {
    Require(value.find_first_of(L"\r\n") == std::wstring::npos, "a value goes over its line");
  }
  const std::wstring changed = WithProfileValue(text, kBaseSection, kCompanyKey, L"Vantric");
  Require(ProfileValue(changed, L"BASE", L"company") == L"Vantric", "a value does not read back");
  Require(AllValues(changed) == before, "another value has changed");
}

}  // namespace carrovan
