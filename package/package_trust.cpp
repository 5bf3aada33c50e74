#include "package/package_trust.h"

#include <algorithm>
#include <limits>
#include <map>
#include <span>
#include <string>
#include <tuple>
#include <utility>

#include "package/package_opening.h"
#include "package/registry_file_scan.h"
#include "platform/registry_tool.h"
#include "registry_text/registry_file_form.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

// The system's own keys below HKEY_CURRENT_USER\SOFTWARE. What lies there decides which programs
// are started, and when.
constexpr std::wstring_view kSystemsOwnKeys[] = {
    L"Classes",    L"Clients", L"Microsoft", L"ODBC", L"Policies", L"RegisteredApplications",
    L"Wow6432Node"};

// Folders of the profile over which a package is laid.
constexpr std::wstring_view kProfileHalves[] = {L"Local", L"LocalLow", L"Roaming"};

// The 2D drafting settings lie below their own maker's name.
constexpr std::wstring_view kDraftingCompany = L"ORMA";

// The names of a package's items, as the file system will distinguish them. They are sorted and
// looked at side by side, so that what is below a name costs nothing but itself.
class StoredNames {
 public:
  // A name in which nothing else is wrong.
  void Add(std::size_t item, std::wstring_view name) {
    std::u16string folded = FoldedName(name);
    // Then a name is followed by those below it.
    std::ranges::replace(folded, u'\\', kSeparator);
    names_.push_back({std::move(folded), item});
  }

  // Why an item cannot stand beside those in front of it, by item.
  std::map<std::size_t, std::wstring> FindClashes() {
    std::ranges::sort(names_, {},
                      [](const Name& name) { return std::tie(name.folded, name.item); });
    for (std::size_t i = 0; i < names_.size(); ++i) {
      if (i > 0 && names_[i].folded == names_[i - 1].folded) {
        clashes_[names_[i].item] = L"the name is there already, but for the case of its letters";
      } else {
        Open(names_[i]);
      }
    }
    while (!open_.empty()) CloseLast();
    return std::move(clashes_);
  }

 private:
  static constexpr char16_t kSeparator = u'\0';  // less than any other unit

  struct Name {
    std::u16string folded;
    std::size_t item;
  };

  // A name below which the ones of the moment lie, with the first item of all on the way to it and
  // the first of all below it.
  struct Folder {
    const Name* name;
    std::size_t firstAbove;
    std::size_t firstBelow;
  };

  static bool IsBelow(const std::u16string& name, const std::u16string& folder) {
    return name.starts_with(folder) && name.size() > folder.size() &&
           name[folder.size()] == kSeparator;
  }

  void Open(const Name& name) {
    while (!open_.empty() && !IsBelow(name.folded, open_.back().name->folded)) CloseLast();
    const std::size_t firstAbove = open_.empty() ? kNone : open_.back().firstAbove;
    if (firstAbove < name.item) NoteMixed(name);
    open_.push_back({&name, std::min(firstAbove, name.item), kNone});
  }

  void CloseLast() {
    const Folder closed = open_.back();
    open_.pop_back();
    if (closed.firstBelow < closed.name->item) NoteMixed(*closed.name);
    if (open_.empty()) return;
    std::size_t& first = open_.back().firstBelow;
    first = std::min({first, closed.firstBelow, closed.name->item});
  }

  void NoteMixed(const Name& name) { clashes_[name.item] = L"the name is a file's and a folder's"; }

  static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

  std::vector<Name> names_;
  std::vector<Folder> open_;
  std::map<std::size_t, std::wstring> clashes_;
};

std::uint64_t SaturatedSum(std::uint64_t a, std::uint64_t b) {
  constexpr auto kMost = std::numeric_limits<std::uint64_t>::max();
  return a > kMost - b ? kMost : a + b;
}

bool IsAmong(std::wstring_view name, std::span<const std::wstring_view> names) {
  return std::ranges::any_of(
      names, [name](std::wstring_view each) { return CompareNames(each, name) == 0; });
}

// Why a file does not belong where the name would put it. A folder of another program may be one
// from which the system starts programs at a logon.
std::optional<std::wstring> RefusalOfPlace(std::wstring_view name, std::wstring_view company) {
  const std::size_t half = name.find(L'\\');
  if (half == std::wstring_view::npos) return std::nullopt;
  if (!IsAmong(name.substr(0, half), kProfileHalves)) return std::nullopt;
  const std::wstring_view below = name.substr(half + 1);
  if (below.empty()) return std::nullopt;
  const std::size_t folder = below.find(L'\\');
  if (folder == std::wstring_view::npos) return L"the file would lie in no program's folder";
  const std::wstring_view own[] = {company, kDraftingCompany};
  if (IsAmong(below.substr(0, folder), own)) return std::nullopt;
  return L"the file would lie in a folder of another program";
}

// As far as a header may lie behind marks and blanks that some tool passes over.
constexpr std::size_t kHeaderBytes = 1024;

// Whether any registry tool could take a file that begins so for one of its own.
bool HasHeader(std::string_view start) {
  std::string letters;
  for (const char c : start) {
    if (c >= 'a' && c <= 'z') letters.push_back(c);
    if (c >= 'A' && c <= 'Z') letters.push_back(static_cast<char>(c - 'A' + 'a'));
  }
  return letters.find("regedit") != std::string::npos ||
         letters.find("registryeditor") != std::string::npos;
}

std::optional<std::wstring> RefusalOfRegistryFile(ArchiveExaminer& archive, std::size_t index,
                                                  const std::wstring& name,
                                                  const std::wstring& company) {
  if (!IsPlainToInterpreter(name)) return L"the name holds a percent sign or a quote";
  RegistryFileScan keys(company);
  RegistryFormScan form;
  std::string start;
  const ArchiveResult result = archive.ReadInParts(index, [&](std::string_view part) {
    keys.Take(part);
    form.Take(part);
    start += part.substr(0, kHeaderBytes - std::min(kHeaderBytes, start.size()));
  });
  if (result == ArchiveResult::kDone) {
    const auto refusal = keys.Finish();
    return refusal || !HasHeader(start) ? refusal : form.Finish();
  }
  return L"its keys cannot be told: " + DescribeArchiveResult(result);
}

// What is wrong with names, by item.
struct NameProblems {
  std::map<std::size_t, std::wstring> unfit;    // on their own
  std::map<std::size_t, std::wstring> clashes;  // beside others
};

NameProblems FindProblemsOfNames(ArchiveExaminer& archive) {
  NameProblems problems;
  StoredNames names;
  for (std::size_t index = 0; const auto item = archive.Item(index); ++index) {
    if (const auto refusal = RefusalOfPackageItem(archive, index, item->name)) {
      problems.unfit[index] = L"the name " + *refusal;
    } else {
      names.Add(index, item->name);
    }
  }
  problems.clashes = names.FindClashes();
  return problems;
}

// Of a file that cannot be read, nothing is unpacked in any case. A folder is made unread.
std::optional<std::wstring> ProblemOfHeaders(ArchiveExaminer& archive, std::size_t index,
                                             const std::wstring& name) {
  auto problem = archive.HeaderProblem(index);
  const bool counts =
      problem && (EndsInSeparator(name) || archive.Check(index) == ArchiveResult::kDone);
  return counts ? problem : std::nullopt;
}

}  // namespace

bool IsRegistryFileName(std::wstring_view itemName) {
  const std::size_t separator = itemName.find(L'\\');
  if (separator == std::wstring_view::npos || separator + 1 == itemName.size()) return false;
  if (itemName.find(L'\\', separator + 1) != std::wstring_view::npos) return false;
  const std::wstring_view folder = itemName.substr(0, separator);
  return CompareNames(folder, L"Options") == 0 || CompareNames(folder, L"Register") == 0;
}

std::optional<RefusedItem> RefusalOfSize(const ArchiveExaminer& archive) {
  std::uint64_t unpacked = 0;
  for (std::size_t index = 0; const auto item = archive.Item(index); ++index) {
    unpacked = SaturatedSum(unpacked, item->sizeBytes);
  }
  const bool plausible = unpacked / kLargestPlausibleRatio <= archive.SizeBytes();
  if (unpacked <= kHarmlessBytes || plausible) return std::nullopt;
  return RefusedItem{L"*", L"a package of " + std::to_wstring(archive.SizeBytes()) +
                               L" bytes would unpack to " + std::to_wstring(unpacked)};
}

bool IsPlainName(std::wstring_view name) {
  constexpr std::wstring_view kForbidden = L"\\/<>:\"|?*[]";
  return name.find_first_of(kForbidden) == std::wstring_view::npos && !RefusalOfStoredName(name);
}

std::optional<std::wstring> RefusalOfIdentity(const std::wstring& company,
                                              const std::wstring& product) {
  if (company.empty()) return L"the company is empty";
  if (!IsPlainName(company)) return L"the company is not one plain name";
  if (!product.empty() && !IsPlainName(product)) return L"the product is not one plain name";
  if (IsAmong(company, kSystemsOwnKeys)) return L"the company's key belongs to the system";
  // What is noted there says from where this program loads its library.
  if (CompareNames(company, L"Carrovan") == 0) return L"the company's key is Carrovan's own";
  return std::nullopt;
}

std::vector<RefusedItem> ReasonsForDistrust(ArchiveExaminer& archive, PackageKind kind,
                                            const std::wstring& company) {
  if (const auto absurd = RefusalOfSize(archive)) return {*absurd};
  const NameProblems problems = FindProblemsOfNames(archive);
  std::vector<RefusedItem> reasons;
  for (std::size_t index = 0; const auto item = archive.Item(index); ++index) {
    const std::wstring& name = item->name;
    if (const auto unfit = problems.unfit.find(index); unfit != problems.unfit.end()) {
      reasons.push_back({name, unfit->second});
      continue;
    }
    if (const auto clash = problems.clashes.find(index); clash != problems.clashes.end()) {
      reasons.push_back({name, clash->second});
    }
    if (const auto problem = ProblemOfHeaders(archive, index, name))
      reasons.push_back({name, *problem});
    if (kind == PackageKind::kLegacy) continue;
    if (const auto refusal = RefusalOfPlace(name, company)) reasons.push_back({name, *refusal});
    if (!IsRegistryFileName(name)) continue;
    if (const auto refusal = RefusalOfRegistryFile(archive, index, name, company)) {
      reasons.push_back({name, *refusal});
    }
  }
  return reasons;
}

}  // namespace carrovan
