#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/system_code.h"

namespace carrovan {

// The new content of a file, written beside the file that it is to replace. That one stays as it is
// until the content is complete; content that is given up before is gone.
class FileReplacement {
 public:
  virtual ~FileReplacement() = default;

  // Adds a part behind the others. After a failure there is nothing left to do but to give up.
  [[nodiscard]] virtual SystemCode Append(std::string_view part) = 0;

  // Puts the file in its place, in one step. The last call, and not while the old file is read.
  [[nodiscard]] virtual SystemCode Complete() = 0;
};

// A file that is open to be written on at its end, until this object goes away. Others may read it
// meanwhile; the system may keep them from writing it, and it and the folders above it from being
// moved or removed.
class FileAppender {
 public:
  virtual ~FileAppender() = default;

  // Puts bytes behind what the file holds. What was appended before a program is killed stays.
  // After a failure a front part of the bytes may be there.
  [[nodiscard]] virtual SystemCode Append(std::string_view bytes) = 0;

  // Waits until the file's content is where a loss of power cannot take it. Its name is the
  // folder's.
  [[nodiscard]] virtual SystemCode FlushToDisk() = 0;
};

struct FolderEntry {
  std::wstring name;       // as spelled on disk
  bool isFolder = false;   // also for a link that leads to a folder
  bool isLink = false;     // leads to a file or folder elsewhere; removing it leaves that one alone
  bool isSpecial = false;  // a pipe, a socket or a device: there, but without content to read
};

// True for a file with content. Only such a one is a document, whatever its name ends in.
inline bool IsContentFile(const FolderEntry& entry) { return !entry.isFolder && !entry.isSpecial; }

// Looks at files and folders and cannot change them. Paths are Windows paths of any length; names
// are found without regard to case.
class FileReader {
 public:
  virtual ~FileReader() = default;

  // True for a file or a folder that is there.
  virtual bool Exists(const std::wstring& path) const = 0;
  virtual bool IsFolder(const std::wstring& path) const = 0;

  // True for a link itself, wherever it leads.
  virtual bool IsLink(const std::wstring& path) const = 0;

  // True for a file that cannot be replaced or removed because it is marked so.
  virtual bool IsReadOnly(const std::wstring& path) const = 0;

  // The entries of a folder in the file system's own order, without "." and "..".
  [[nodiscard]] virtual SystemCode ReadFolder(const std::wstring& folder,
                                              std::vector<FolderEntry>& entries) const = 0;

  // A file's whole content; `bytes` stays as it is when reading fails.
  [[nodiscard]] virtual SystemCode ReadBytes(const std::wstring& path,
                                             std::string& bytes) const = 0;

  // Calls `take` with a file's content part by part, each time with the whole size of the file. For
  // large files, of which no second copy is to be held. Reading ends, and counts as done, when
  // `take` wants no more parts and gives false. When reading fails, parts in front of the failure
  // have been taken.
  using TakePart = std::function<bool(std::string_view part, std::uint64_t fileBytes)>;
  [[nodiscard]] virtual SystemCode ReadInParts(const std::wstring& path,
                                               const TakePart& take) const = 0;

  // The size of a file's content; 0 for what is none.
  virtual std::uint64_t FileBytes(const std::wstring& path) const = 0;

  // How much more the user may store in a folder; nothing where that cannot be told.
  virtual std::optional<std::uint64_t> FreeBytes(const std::wstring& folder) const = 0;
};

// The same for a caller that does not care why there are none: empty when the folder is missing or
// cannot be read.
inline std::vector<FolderEntry> ListFolder(const FileReader& files, const std::wstring& folder) {
  std::vector<FolderEntry> entries;
  static_cast<void>(files.ReadFolder(folder, entries));
  return entries;
}

// How a file is held.
enum class FileHold {
  kMake,  // it is made when it is missing
  kTake,  // it must be there
};

// What is about to happen to files.
enum class ComingChange {
  kRemoval,
  kReplacement,  // by other content, or by the first where nothing is
};

// Changes files and folders. Each operation returns kSystemOk or the system's error number, and
// leaves the disk as it was when it fails.
class FileSystem : public FileReader {
 public:
  // One level; kAlreadyExists when a file or folder of that name is there.
  [[nodiscard]] virtual SystemCode CreateFolder(const std::wstring& path) = 0;

  // Creates the file, or empties the one that is there.
  [[nodiscard]] virtual SystemCode CreateEmptyFile(const std::wstring& path) = 0;

  // A read-only file is not removed.
  [[nodiscard]] virtual SystemCode RemoveFile(const std::wstring& path) = 0;

  // kFolderNotEmpty when the folder still holds something.
  [[nodiscard]] virtual SystemCode RemoveFolder(const std::wstring& path) = 0;

  // Creates the file or replaces its whole content. A read-only file is not replaced.
  [[nodiscard]] virtual SystemCode WriteBytes(const std::wstring& path, std::string_view bytes) = 0;

  // Begins what WriteBytes does for a content that comes in parts; `replacement` stays as it is
  // when that fails. Room for the expected size is set aside at once where the system can do that,
  // but the content may turn out smaller or larger.
  [[nodiscard]] virtual SystemCode BeginReplacement(
      const std::wstring& path, std::uint64_t expectedBytes,
      std::unique_ptr<FileReplacement>& replacement) = 0;

  // Opens a file to put bytes behind what it holds; it is made when it is missing, and `appender`
  // stays as it is when that fails. For a record that is kept while something goes on.
  [[nodiscard]] virtual SystemCode OpenToAppend(const std::wstring& path,
                                                std::unique_ptr<FileAppender>& appender) = 0;

  // The same for a single time.
  [[nodiscard]] SystemCode AppendBytes(const std::wstring& path, std::string_view bytes) {
    std::unique_ptr<FileAppender> file;
    const SystemCode code = OpenToAppend(path, file);
    return code == kSystemOk ? file->Append(bytes) : code;
  }

  // Holds a file until this file system removes it or goes away, at the latest with the process,
  // however that ends. For a mark by which other processes know that this one lives.
  // kSharingViolation while another one holds the file, kFileNotFound when there is none to take.
  [[nodiscard]] virtual SystemCode HoldFile(const std::wstring& path, FileHold hold) = 0;

  // Copies a file, over an existing one that is not read-only. kCopySkipped when the system left
  // the copy undone without calling it an error.
  [[nodiscard]] virtual SystemCode CopyOver(const std::wstring& source,
                                            const std::wstring& target) = 0;

  // Gives a file, or a folder with what it holds, another path; kAlreadyExists when something is
  // there. The same path in another case gives it that spelling.
  [[nodiscard]] virtual SystemCode MoveTo(const std::wstring& source,
                                          const std::wstring& target) = 0;

  // Waits until the content of these files, and which names these folders hold, is where a loss of
  // power cannot take it. Until then any part of what was written, and any of the names that were
  // made, changed or removed, may be lost, in any order. Paths that are not there are passed over;
  // the content of a file is no matter of its folder's, nor a name of its file's. Many paths at
  // once cost far less than one after another.
  [[nodiscard]] virtual SystemCode Flush(std::span<const std::wstring> paths) = 0;

  // Says what is about to change; what lies below a path goes with it. Whoever keeps what was there
  // can do so for all of them at once. Nothing depends on it.
  virtual void Announce(std::span<const std::wstring> /*paths*/, ComingChange /*change*/) {}
};

}  // namespace carrovan
