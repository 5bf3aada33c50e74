#include "platform/file_image.h"

#include <zlib.h>

namespace carrovan {
namespace {

std::uint32_t Continue(std::uint32_t crc, std::string_view bytes) {
  const auto* data = static_cast<const Bytef*>(static_cast<const void*>(bytes.data()));
  return static_cast<std::uint32_t>(crc32_z(crc, data, bytes.size()));
}

}  // namespace

FileImage ImageOfBytes(std::string_view bytes) {
  return {FileKind::kFile, bytes.size(), Continue(0, bytes)};
}

FileKind KindAt(const FileReader& files, const std::wstring& path) {
  if (files.IsLink(path)) return FileKind::kLink;
  if (files.IsFolder(path)) return FileKind::kFolder;
  return files.Exists(path) ? FileKind::kFile : FileKind::kAbsent;
}

SystemCode ReadFileImage(const FileReader& files, const std::wstring& path, FileImage& image) {
  FileImage read;
  read.kind = KindAt(files, path);
  if (read.kind == FileKind::kFile) {
    const SystemCode code = files.ReadInParts(path, [&read](std::string_view part, std::uint64_t) {
      read.sizeBytes += part.size();
      read.crc32 = Continue(read.crc32, part);
      return true;
    });
    if (code != kSystemOk) return code;
  }
  image = read;
  return kSystemOk;
}

}  // namespace carrovan
