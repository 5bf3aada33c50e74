#include "package/package_opening.h"

#include <algorithm>

#include "package/staging_folder.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

// The folders between the destination and an item. Those that are made for an item that then fails
// are removed again.
class ItemFolders {
 public:
  ItemFolders(FileSystem& files, const std::wstring& target, std::size_t destinationLength)
      : files_(files), target_(target) {
    for (std::size_t at = target.find_first_of(kSeparators, destinationLength);
         at != std::wstring::npos; at = target.find_first_of(kSeparators, at + 1)) {
      ends_.push_back(at);
    }
  }

  // Makes the last one. Usually it is there already; if it cannot be made, what unpacks the item
  // may make it, or fail.
  void CreateLast() {
    const std::size_t separator = target_.rfind(L'\\');
    if (separator == std::wstring::npos) return;
    const SystemCode code = files_.CreateFolder(target_.substr(0, separator));
    kept_ = ends_.size();
    if (code == kSystemOk && kept_ > 0) --kept_;
    if (code != kSystemOk && code != kAlreadyExists) kept_ = ThereFrom(0);
  }

  // One that holds something stays.
  void RemoveMade() const {
    for (std::size_t made = ThereFrom(kept_); made > kept_; --made) {
      static_cast<void>(files_.RemoveFolder(Folder(made - 1)));
    }
  }

 private:
  static constexpr wchar_t kSeparators[] = L"\\/";

  std::wstring Folder(std::size_t i) const { return target_.substr(0, ends_[i]); }

  // The first folder from this one on that is not there.
  std::size_t ThereFrom(std::size_t i) const {
    while (i < ends_.size() && files_.Exists(Folder(i))) ++i;
    return i;
  }

  FileSystem& files_;
  const std::wstring& target_;
  std::vector<std::size_t> ends_;  // in the target, of each folder from the outermost
  std::size_t kept_ = 0;           // so many were there before
};

// Longest part between two separators that Windows can give a file or folder, in units of UTF-16.
constexpr std::size_t kLongestPart = 255;

// A path has 32,767 units at most; the rest is for the folder in front.
constexpr std::size_t kLongestName = 32'000;

// No program keeps its settings as deep, and every folder takes far more room than its name.
constexpr std::size_t kMostFolders = 512;

// Why no file at all can have the name.
std::optional<std::wstring> RefusalOfLength(std::wstring_view name) {
  const std::u16string units = ToUtf16(name);
  if (units.size() > kLongestName) {
    return L"has more than " + std::to_wstring(kLongestName) + L" characters";
  }
  std::size_t parts = 0;
  for (std::size_t at = 0; at < units.size(); ++parts) {
    const std::size_t end = std::min(units.find_first_of(u"\\/", at), units.size());
    if (end - at > kLongestPart) {
      return L"has a part of more than " + std::to_wstring(kLongestPart) + L" characters";
    }
    at = end + 1;
  }
  if (parts <= kMostFolders + 1) return std::nullopt;
  return L"lies in more than " + std::to_wstring(kMostFolders) + L" folders";
}

std::optional<std::wstring> RefusalOfItemName(std::wstring_view name) {
  const auto refusal = RefusalOfStoredName(name);
  return refusal ? refusal : RefusalOfLength(name);
}

using Refusal = std::optional<std::wstring> (*)(std::wstring_view name);

bool ExtractItem(ArchiveReader& archive, FileSystem& files, std::size_t index,
                 const std::wstring& target, std::size_t destinationLength) {
  ItemFolders folders(files, target, destinationLength);
  folders.CreateLast();
  if (archive.Extract(index, target) == ArchiveResult::kDone) return true;
  folders.RemoveMade();
  return false;
}

std::vector<std::wstring> TargetsOf(const ArchiveReader& archive,
                                    const std::wstring& destinationFolder, Refusal refusalOf) {
  std::vector<std::wstring> targets;
  for (std::size_t index = 0;; ++index) {
    const auto item = archive.Item(index);
    if (!item) return targets;
    if (!refusalOf(item->name)) targets.push_back(destinationFolder + item->name);
  }
}

// So many items may be unpacked before it is their turn.
constexpr std::size_t kItemsAhead = 256;

// States which items will be extracted, some ahead of the one that is.
class ItemsToCome {
 public:
  ItemsToCome(ArchiveReader& archive, Refusal refusalOf)
      : archive_(archive), refusalOf_(refusalOf) {}

  void LookAhead(std::size_t index) {
    for (; next_ <= index + kItemsAhead; ++next_) {
      const auto item = archive_.Item(next_);
      if (!item) return;
      if (!refusalOf_(item->name) && !EndsInSeparator(item->name)) archive_.Expect(next_);
    }
  }

 private:
  ArchiveReader& archive_;
  Refusal refusalOf_;
  std::size_t next_ = 0;
};

ExtractReport ExtractItems(ArchiveLibrary& archives, FileSystem& files, RunObserver& observer,
                           const std::wstring& archivePath, const std::wstring& destinationFolder,
                           Refusal refusalOf) {
  ExtractReport report;
  const auto archive = archives.Open(archivePath);
  if (!archive) return report;
  report.opened = true;
  files.Announce(TargetsOf(*archive, destinationFolder, refusalOf), ComingChange::kReplacement);
  ItemsToCome coming(*archive, refusalOf);
  for (std::size_t index = 0;; ++index) {
    const auto item = archive->Item(index);
    if (!item) return report;
    coming.LookAhead(index);
    const std::wstring target = destinationFolder + item->name;
    observer.OnItem(target);
    if (!refusalOf(item->name) &&
        ExtractItem(*archive, files, index, target, destinationFolder.size())) {
      report.extracted.push_back(target);
    } else {
      report.failed.push_back(target);
    }
  }
}

bool IsKeptByRuns(std::wstring_view name) {
  const std::wstring archive = kChangedFilesArchive;
  for (const std::wstring& own : {archive, archive + L".part", std::wstring(kRunFolderMark)}) {
    if (CompareNames(name, own) == 0) return true;
  }
  return false;
}

}  // namespace

std::optional<std::wstring> RefusalOfPackageItem(std::wstring_view name) {
  if (auto refusal = RefusalOfItemName(name)) return refusal;
  if (!IsKeptByRuns(name.substr(0, name.find_first_of(L"\\/")))) return std::nullopt;
  return L"is one that an import keeps for itself";
}

std::optional<std::wstring> RefusalOfPackageItem(ArchiveExaminer& archive, std::size_t index,
                                                 const std::wstring& name) {
  if (auto refusal = RefusalOfPackageItem(name)) return refusal;
  // Shorter names can be made everywhere, and checking reads the item.
  constexpr std::size_t kShortBytes = 255;
  const bool isRefused =
      ToUtf8(name).size() > kShortBytes && archive.Check(index) == ArchiveResult::kNameRefused;
  return isRefused ? std::optional(L"is longer than this system allows") : std::nullopt;
}

ExtractReport ExtractArchive(ArchiveLibrary& archives, FileSystem& files, RunObserver& observer,
                             const std::wstring& archivePath,
                             const std::wstring& destinationFolder) {
  return ExtractItems(archives, files, observer, archivePath, destinationFolder, RefusalOfItemName);
}

ExtractReport UnpackPackage(const Machine& machine, RunObserver& observer,
                            const std::wstring& packagePath, const std::wstring& stagingFolder) {
  return ExtractItems(*machine.archives, *machine.files, observer, packagePath, stagingFolder,
                      RefusalOfPackageItem);
}

}  // namespace carrovan
