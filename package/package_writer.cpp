#include "package/package_writer.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <set>
#include <utility>

#include "package/package_description.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {

ArchiveFiles::ArchiveFiles(ArchiveExaminer& archive) : archive_(archive) {
  for (std::size_t index = 0; const auto item = archive.Item(index); ++index) {
    indexes_.emplace(item->name, index);
  }
}

bool ArchiveFiles::Exists(const std::wstring& path) const {
  return indexes_.contains(path) || IsFolder(path);
}

bool ArchiveFiles::IsFolder(const std::wstring& path) const {
  std::vector<FolderEntry> entries;
  return ReadFolder(path, entries) == kSystemOk;
}

SystemCode ArchiveFiles::ReadFolder(const std::wstring& folder,
                                    std::vector<FolderEntry>& entries) const {
  const std::wstring start = folder.empty() ? L"" : WithTrailingBackslash(folder);
  std::set<std::wstring, NameLess> folders;
  bool isThere = start.empty() || indexes_.contains(start);
  for (const auto& [name, index] : indexes_) {
    if (name.size() <= start.size()) continue;
    if (CompareNames(name.substr(0, start.size()), start) != 0) continue;
    isThere = true;
    const std::size_t end = name.find(L'\\', start.size());
    std::wstring entry = name.substr(start.size(), end - start.size());
    const bool isFolder = end != std::wstring::npos;
    if (isFolder && !folders.insert(entry).second) continue;
    entries.push_back({std::move(entry), isFolder, false});
  }
  return isThere ? kSystemOk : kPathNotFound;
}

SystemCode ArchiveFiles::ReadBytes(const std::wstring& path, std::string& bytes) const {
  const auto at = indexes_.find(path);
  if (at == indexes_.end()) return kFileNotFound;
  const auto content = archive_.Read(at->second, kLongestFileBytes);
  if (!content) return kInvalidData;
  bytes.assign(content->begin(), content->end());
  return kSystemOk;
}

SystemCode ArchiveFiles::ReadInParts(const std::wstring& path, const TakePart& take) const {
  const auto at = indexes_.find(path);
  if (at == indexes_.end()) return kFileNotFound;
  const auto item = archive_.Item(at->second);
  const std::uint64_t fileBytes = item ? item->sizeBytes : 0;
  bool isWanted = true;
  const ArchiveResult result = archive_.ReadInParts(
      at->second, [&](std::string_view part) { isWanted = isWanted && take(part, fileBytes); });
  return result == ArchiveResult::kDone ? kSystemOk : kInvalidData;
}

SystemCode ArchiveFiles::CreateFolder(const std::wstring&) { return kAccessDenied; }

SystemCode ArchiveFiles::CreateEmptyFile(const std::wstring&) { return kAccessDenied; }

SystemCode ArchiveFiles::RemoveFile(const std::wstring&) { return kAccessDenied; }

SystemCode ArchiveFiles::RemoveFolder(const std::wstring&) { return kAccessDenied; }

SystemCode ArchiveFiles::WriteBytes(const std::wstring&, std::string_view) { return kAccessDenied; }

SystemCode ArchiveFiles::BeginReplacement(const std::wstring&, std::uint64_t,
                                          std::unique_ptr<FileReplacement>&) {
  return kAccessDenied;
}

SystemCode ArchiveFiles::OpenToAppend(const std::wstring&, std::unique_ptr<FileAppender>&) {
  return kAccessDenied;
}

SystemCode ArchiveFiles::HoldFile(const std::wstring&, FileHold) { return kAccessDenied; }

SystemCode ArchiveFiles::CopyOver(const std::wstring&, const std::wstring&) {
  return kAccessDenied;
}

std::uint64_t ArchiveFiles::FileBytes(const std::wstring& path) const {
  const auto found = indexes_.find(path);
  const auto item = found == indexes_.end() ? std::nullopt : archive_.Item(found->second);
  return item ? item->sizeBytes : 0;
}

std::optional<std::uint64_t> ArchiveFiles::FreeBytes(const std::wstring&) const {
  return std::nullopt;
}

SystemCode ArchiveFiles::MoveTo(const std::wstring&, const std::wstring&) { return kAccessDenied; }
SystemCode ArchiveFiles::Flush(std::span<const std::wstring>) { return kAccessDenied; }

namespace {

constexpr wchar_t kNeverStored[] = L".config";

bool IsFatal(ArchiveResult result) {
  return result == ArchiveResult::kDiskFull || result == ArchiveResult::kOutOfMemory;
}

// The names under which an import puts files back into the profile.
class ProfileNames {
 public:
  explicit ProfileNames(const KnownFolders& folders) {
    if (const auto local = folders.LocalAppData()) Add(*local, L"Local");
    if (const auto roaming = folders.RoamingAppData()) Add(*roaming, L"Roaming");
  }

  // True for a file outside the profile, too.
  bool LeadsBack(const std::wstring& entryName, const std::wstring& path) const {
    return std::ranges::all_of(halves_, [&](const auto& half) {
      const auto& [folder, name] = half;
      return CompareNames(path.substr(0, folder.size()), folder) != 0 ||
             CompareNames(entryName, name + path.substr(folder.size())) == 0;
    });
  }

 private:
  void Add(const std::wstring& folder, const wchar_t* name) {
    halves_.emplace_back(WithTrailingBackslash(folder), std::wstring(name) + L"\\");
  }

  std::vector<std::pair<std::wstring, std::wstring>> halves_;  // folder, and what stands for it
};

// So many steps may be known before the first of them is done.
constexpr std::size_t kStepsAhead = 256;

// One archive on its way: adds sources and keeps the report. The folders are read some files ahead,
// so that the archive can be told which are to come.
class PackageInProgress {
 public:
  PackageInProgress(const ProductContext& context, const Machine& machine, ArchiveWriter& archive,
                    RunObserver& observer, PackageReport& report)
      : context_(context),
        files_(*machine.files),
        profile_(*machine.folders),
        archive_(archive),
        observer_(observer),
        report_(report) {}

  void AddSource(const std::wstring& path) {
    Plan([this] { report_.storedPerSource.push_back(0); });
    if (!files_.Exists(path)) return;
    if (files_.IsFolder(path)) {
      AddFolderToPackage(path, false);
    } else if (!Contains(path, kNeverStored)) {
      PlanFile(EntryNameOfFile(context_, path), path, false);
    }
  }

  // Does what the sources have left to do.
  void Finish() {
    while (!steps_.empty() && !Failed()) DoFirst();
  }

  // True when nothing more can be stored, so that going on would only lose files.
  bool Failed() const { return IsFatal(failure_); }
  ArchiveResult Failure() const { return failure_; }

 private:
  using Step = std::function<void()>;

  void Plan(Step step) {
    steps_.push_back(std::move(step));
    if (steps_.size() > kStepsAhead && !Failed()) DoFirst();
  }

  void PlanFile(const std::wstring& entryName, const std::wstring& path, bool isInFolder) {
    archive_.Expect(path);
    Plan([this, entryName, path, isInFolder] {
      AddFile(entryName, path);
      if (isInFolder) NoteMisplaced(entryName, path);
    });
  }

  void PlanSkip(const std::wstring& path) {
    Plan([this, path] { report_.skipped.push_back({path, ArchiveResult::kSourceUnreadable}); });
  }

  void DoFirst() {
    const Step step = std::move(steps_.front());
    steps_.pop_front();
    step();
  }

  void AddFolderToPackage(const std::wstring& folder, bool isBelowLink) {
    if (!files_.IsFolder(folder)) return;
    std::vector<FolderEntry> entries;
    if (files_.ReadFolder(folder, entries) != kSystemOk) PlanSkip(folder);
    for (const FolderEntry& entry : entries) {
      if (Failed()) return;
      AddEntry(entry, folder + L"\\" + entry.name, isBelowLink);
    }
  }

  void AddEntry(const FolderEntry& entry, const std::wstring& path, bool isBelowLink) {
    if (entry.isFolder && entry.isLink && isBelowLink) {
      PlanSkip(path);
    } else if (entry.isFolder) {
      AddFolderToPackage(path, isBelowLink || entry.isLink);
    } else if (const auto entryName = EntryNameInFolder(context_, path);
               !Contains(entryName, kNeverStored)) {
      PlanFile(entryName, path, true);
    }
  }

  // The first "Local" or "Roaming" of a path need not be the profile's own: the user's name may
  // hold the word, or a folder of the product.
  void NoteMisplaced(const std::wstring& entryName, const std::wstring& path) {
    const bool isStored = failure_ == ArchiveResult::kDone;
    if (!isStored || Contains(path, context_.stagingFolder)) return;
    if (!profile_.LeadsBack(entryName, path)) report_.misplaced.push_back({path, entryName});
  }

  void AddFile(const std::wstring& entryName, const std::wstring& path) {
    observer_.OnItem(path);
    const ArchiveResult result =
        files_.Exists(path) ? archive_.Add(entryName, path) : ArchiveResult::kSourceMissing;
    if (result == ArchiveResult::kDone) {
      ++report_.storedPerSource.back();
    } else {
      report_.skipped.push_back({path, result});
    }
    failure_ = result;
  }

  const ProductContext& context_;
  const FileReader& files_;
  const ProfileNames profile_;
  ArchiveWriter& archive_;
  RunObserver& observer_;
  PackageReport& report_;
  std::deque<Step> steps_;  // in their order, not yet done
  ArchiveResult failure_ = ArchiveResult::kDone;
};

}  // namespace

std::wstring DescribeMisplaced(const MisplacedItem& item) {
  return L"it lies in the package as " + item.entryName +
         L", from where an import does not put it back";
}

std::wstring EntryNameOfFile(const ProductContext& context, const std::wstring& path) {
  const std::wstring registerName = context.productName + context.humanReadableVersion + L".reg";
  if (const std::size_t at = path.find(registerName); at != std::wstring::npos) {
    return L"Register\\" + path.substr(at);
  }
  if (const std::size_t at = path.find(kPackageDescriptionName); at != std::wstring::npos) {
    return path.substr(at);
  }
  if (Contains(path, context.stagingFolder)) {
    return L"Options\\" + path.substr(context.stagingFolder.size());
  }
  return {};
}

std::wstring EntryNameInFolder(const ProductContext& context, const std::wstring& path) {
  if (Contains(path, context.stagingFolder)) return path.substr(context.stagingFolder.size());
  for (const wchar_t* root : {L"Local\\", L"Roaming\\"}) {
    if (const std::size_t at = path.find(root); at != std::wstring::npos) return path.substr(at);
  }
  return {};
}

namespace {

// The archive took its name with all that is in it on the disk; only then the name itself is safe.
// Where it cannot be made so, the archive is whole all the same, and is named.
void FlushName(const std::wstring& archivePath, FileSystem& files, PackageReport& report) {
  std::wstring folder = archivePath.substr(0, archivePath.size() - FileNameOf(archivePath).size());
  if (folder.empty()) folder = L".";
  if (files.Flush({&folder, 1}) == kSystemOk) return;
  report.skipped.push_back({archivePath, ArchiveResult::kTargetNotWritable});
}

}  // namespace

PackageReport WritePackage(const ProductContext& context, const Machine& machine,
                           std::span<const std::wstring> sources, const std::wstring& archivePath,
                           ArchivePurpose purpose, RunObserver& observer,
                           const MayTakePlace& mayTakePlace) {
  PackageReport report;
  const auto archive = machine.archives->Create(archivePath, purpose);
  if (!archive) return report;
  PackageInProgress package(context, machine, *archive, observer, report);
  for (const std::wstring& source : sources) {
    if (!package.Failed()) package.AddSource(source);
  }
  package.Finish();
  if (package.Failed()) {
    report.outcome = package.Failure();
    return report;
  }
  if (mayTakePlace && !mayTakePlace(report)) return report;
  report.outcome = archive->Close();
  if (report.outcome == ArchiveResult::kDone && purpose == ArchivePurpose::kKeep) {
    FlushName(archivePath, *machine.files, report);
  }
  return report;
}

}  // namespace carrovan
