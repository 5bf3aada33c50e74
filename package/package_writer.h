#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "environment/product_context.h"
#include "package/run_report.h"
#include "platform/archive_library.h"
#include "platform/file_system.h"
#include "text/text.h"

namespace carrovan {

// The items of an archive as files, for what reads files and shall read a package without unpacking
// it. A path is an item's stored name, with backslashes and without a root; an empty path is the
// archive's own folder. Of items of one name the first counts. Nothing can be changed.
class ArchiveFiles : public FileSystem {
 public:
  // Longer items are not read: whoever reads a file whole would have to hold it.
  static constexpr std::size_t kLongestFileBytes = std::size_t{64} << 20;

  explicit ArchiveFiles(ArchiveExaminer& archive);

  bool Exists(const std::wstring& path) const override;
  // True also for a folder that is only a part of other names.
  bool IsFolder(const std::wstring& path) const override;
  bool IsLink(const std::wstring&) const override { return false; }
  bool IsReadOnly(const std::wstring& path) const override { return Exists(path); }
  SystemCode ReadFolder(const std::wstring& folder,
                        std::vector<FolderEntry>& entries) const override;
  // kInvalidData for an item that is damaged, encrypted or too long.
  SystemCode ReadBytes(const std::wstring& path, std::string& bytes) const override;
  SystemCode ReadInParts(const std::wstring& path, const TakePart& take) const override;
  std::uint64_t FileBytes(const std::wstring& path) const override;
  std::optional<std::uint64_t> FreeBytes(const std::wstring& folder) const override;

  // kAccessDenied, always.
  SystemCode CreateFolder(const std::wstring& path) override;
  SystemCode CreateEmptyFile(const std::wstring& path) override;
  SystemCode RemoveFile(const std::wstring& path) override;
  SystemCode RemoveFolder(const std::wstring& path) override;
  SystemCode WriteBytes(const std::wstring& path, std::string_view bytes) override;
  SystemCode BeginReplacement(const std::wstring& path, std::uint64_t expectedBytes,
                              std::unique_ptr<FileReplacement>& replacement) override;
  SystemCode OpenToAppend(const std::wstring& path,
                          std::unique_ptr<FileAppender>& appender) override;
  SystemCode HoldFile(const std::wstring& path, FileHold hold) override;
  SystemCode CopyOver(const std::wstring& source, const std::wstring& target) override;
  SystemCode MoveTo(const std::wstring& source, const std::wstring& target) override;
  SystemCode Flush(std::span<const std::wstring> paths) override;

 private:
  ArchiveExaminer& archive_;
  std::map<std::wstring, std::size_t, NameLess> indexes_;  // by stored name
};

struct SkippedItem {
  std::wstring path;
  ArchiveResult reason;
};

// A file of the profile that is stored, but under a name that does not lead back to it.
struct MisplacedItem {
  std::wstring path;
  std::wstring entryName;
};

// What is wrong with it, as it reads behind the path and a colon.
std::wstring DescribeMisplaced(const MisplacedItem& item);

// How the writing of an archive went.
struct PackageReport {
  ArchiveResult outcome = ArchiveResult::kTargetNotWritable;  // kDone: the archive is in place
  std::vector<std::size_t> storedPerSource;  // number of files stored, for each source in order
  std::vector<SkippedItem> skipped;          // files that are there but could not be stored
  std::vector<MisplacedItem> misplaced;      // what an import refuses or puts elsewhere
};

// Entry name of a source that is a file of its own; empty when no rule names it.
std::wstring EntryNameOfFile(const ProductContext& context, const std::wstring& path);

// Entry name of a file found below a source folder; empty when no rule names it.
std::wstring EntryNameInFolder(const ProductContext& context, const std::wstring& path);

// Asked when everything is stored and before the archive takes its place: whether it may.
using MayTakePlace = std::function<bool(const PackageReport& report)>;

// Writes an archive from files and folders in the order given. A source that is missing, or that
// vanishes meanwhile, is passed over; so is everything named ".config", which belongs to the
// machine and not to the user. An archive that is there is replaced only by a finished one: when
// the disk fills up, or when it may not, nothing is put in its place.
PackageReport WritePackage(const ProductContext& context, const Machine& machine,
                           std::span<const std::wstring> sources, const std::wstring& archivePath,
                           ArchivePurpose purpose, RunObserver& observer,
                           const MayTakePlace& mayTakePlace = {});

}  // namespace carrovan
