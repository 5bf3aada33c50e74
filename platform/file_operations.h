#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace carrovan {

// What lies at a path, in short: enough to see later whether it is still the same.
enum class FileKind { kAbsent, kFile, kFolder, kLink };

struct FileImage {
  FileKind kind = FileKind::kAbsent;
  std::uint64_t sizeBytes = 0;  // of a file
  std::uint32_t crc32 = 0;      // of a file's content; guards against chance, not against intent

  bool operator==(const FileImage&) const = default;
};

// Finds the image of a file whose content comes part by part.
class ContentSum {
 public:
  void Add(std::string_view part);
  const FileImage& Image() const { return image_; }

 private:
  FileImage image_{FileKind::kFile};
};

// The image of a file with this content.
FileImage ImageOfBytes(std::string_view bytes);

// A link is not followed.
FileKind KindAt(const FileReader& files, const std::wstring& path);

// Reads a file whole, part by part. A link is not followed. On failure `image` stays as it is.
[[nodiscard]] SystemCode ReadFileImage(const FileReader& files, const std::wstring& path,
                                       FileImage& image);

// The same for a caller that knows what lies there.
[[nodiscard]] SystemCode ReadFileImage(const FileReader& files, const std::wstring& path,
                                       FileKind kind, FileImage& image);

// Deletes everything below a folder and then the folder. A link, the folder itself included, is
// removed without touching what it leads to; one that leads nowhere is removed, too. Read-only
// files stay, and with them the folders above. Goes on after a failure; true only when everything
// is gone, also when the folder was not there at all.
bool WipeFolder(FileSystem& files, const std::wstring& folder);

// What the files at and below a path hold together. Links are not followed.
std::uint64_t TreeBytes(const FileReader& files, const std::wstring& path);

// Makes a folder and those above it that are missing, the drive of a sandbox included. The path has
// no trailing backslash.
[[nodiscard]] SystemCode MakeFolderPath(FileSystem& files, const std::wstring& folder);

}  // namespace carrovan
