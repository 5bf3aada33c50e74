#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace carrovan {

// How an archive operation ended. The numbers are also the results of the support library's zip
// functions, so they are never renumbered.
enum class ArchiveResult : std::uint32_t {
  kDone = 0,
  kNoSuchItem = 1,
  kSourceMissing = 2,
  kSourceUnreadable = 3,  // locked, denied, or a read that failed half way
  kNameRefused = 4,       // empty, stored already, or a name that would leave the destination
  kDamaged = 5,           // broken structure, broken data or a checksum that does not match
  kEncrypted = 6,
  kMethodUnsupported = 7,  // compressed in a way that is not deflate or stored
  kTargetNotWritable = 8,  // denied, read-only, in use, or its folder cannot be made
  kDiskFull = 9,
  kOutOfMemory = 10,
};

// One readable phrase, for example "the data is damaged".
std::wstring DescribeArchiveResult(ArchiveResult result);

struct ArchiveItem {
  std::wstring
      name;  // as stored, forward slashes turned into backslashes; empty if it does not decode
  std::uint64_t sizeBytes = 0;
  std::uint64_t packedSizeBytes = 0;
  std::optional<std::uint32_t> crc32;  // of the content; not every library names it
};

// Writes one zip archive. The archive at the path stays as it was until Close succeeds; a writer
// that is destroyed without Close leaves nothing behind.
class ArchiveWriter {
 public:
  virtual ~ArchiveWriter() = default;

  // States that a file will be added after those that were expected before it, so that it may be
  // read and packed already. The archive and what Add gives are the same without; a file that is
  // never added does no harm.
  virtual void Expect(const std::wstring& /*sourcePath*/) {}

  // Stores a file under a name with backslashes. A file that cannot be read is not stored, and the
  // writer goes on. The file is read whole before this returns, but for an archive that is unpacked
  // at once not before Close, which fails when the file is gone then.
  [[nodiscard]] virtual ArchiveResult Add(const std::wstring& entryName,
                                          const std::wstring& sourcePath) = 0;

  // Finishes the archive and puts it in place of the one at the path. Called once, last.
  [[nodiscard]] virtual ArchiveResult Close() = 0;
};

// Reads one zip archive.
class ArchiveReader {
 public:
  virtual ~ArchiveReader() = default;

  // The item at a position, in stored order from 0; nothing past the last one.
  virtual std::optional<ArchiveItem> Item(std::size_t index) const = 0;

  // States that an item will be extracted after those that were expected before it, so that it may
  // be unpacked into memory already. What Extract does is the same without; an item that is never
  // extracted does no harm.
  virtual void Expect(std::size_t /*index*/) {}

  // Writes an item to a file, creating missing parent folders; an existing file is replaced only by
  // complete data. Refuses an item whose stored name would leave a destination folder. An item that
  // is a folder (its name ends in a separator) becomes one.
  [[nodiscard]] virtual ArchiveResult Extract(std::size_t index,
                                              const std::wstring& targetPath) = 0;
};

// An archive that can be looked into without writing to disk.
class ArchiveExaminer : public ArchiveReader {
 public:
  // The item's content; nothing when it is longer than the limit or cannot be read.
  virtual std::optional<std::vector<std::uint8_t>> Read(std::size_t index,
                                                        std::size_t limitBytes) = 0;

  // Calls `take` with the item's content part by part, for items of any size. Only the result says
  // whether what was taken is the item's content; never more is taken than the item declares.
  using TakePart = std::function<void(std::string_view part)>;
  [[nodiscard]] virtual ArchiveResult ReadInParts(std::size_t index, const TakePart& take) = 0;

  // Reads the item whole and compares its checksum, as an extraction would.
  [[nodiscard]] virtual ArchiveResult Check(std::size_t index) = 0;

  // What is wrong with how the item lies in the archive, beside its content ("its local header
  // bears another name"): the header in front of its content and the directory must say the same,
  // and no two items may share bytes. An extraction goes by the directory alone; other programs do
  // not. Nothing when all is well.
  virtual std::optional<std::wstring> HeaderProblem(std::size_t index) = 0;

  // Size of the archive itself. Items may declare more packed bytes than that.
  virtual std::uint64_t SizeBytes() const = 0;
};

// What an archive is made for.
enum class ArchivePurpose {
  kKeep,          // a package: it shall be small, and be on the disk before it takes its name
  kUnpackAtOnce,  // unpacked and deleted by the same run: it shall be quick
};

// The zip functions of the maker's support library, or what stands in for them.
class ArchiveLibrary {
 public:
  virtual ~ArchiveLibrary() = default;

  // How many threads may work on what is expected, in archives that are opened or created from now
  // on; 1 at first. A wish: a library may work in one thread always.
  virtual void UseThreads(unsigned /*threads*/) {}

  // Null when an archive cannot be created at the path; a file that is there is not touched yet.
  virtual std::unique_ptr<ArchiveWriter> Create(const std::wstring& archivePath,
                                                ArchivePurpose purpose) = 0;

  // Null when the file is missing or is not a zip archive.
  virtual std::unique_ptr<ArchiveReader> Open(const std::wstring& archivePath) = 0;
};

}  // namespace carrovan
