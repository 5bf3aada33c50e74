#include "platform/sandbox/host_file.h"

#include "platform/sandbox/host_access.h"
#include "support/zip/part_file.h"

namespace carrovan {

FileStatus ReadHostFile(const std::filesystem::path& path, std::vector<std::uint8_t>& content) {
  OsFile file;
  if (!OwnerMayRead(path)) return FileStatus::kFailed;
  if (const FileStatus status = file.OpenToRead(path); status != FileStatus::kDone) return status;
  const auto facts = file.Facts();
  if (!facts || facts->sizeBytes > kLargestHostFile) return FileStatus::kFailed;
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(facts->sizeBytes));
  const auto count = file.ReadAt(0, bytes);
  if (!count) return FileStatus::kFailed;
  bytes.resize(*count);
  content = std::move(bytes);
  return FileStatus::kDone;
}

FileStatus ReplaceHostFile(const std::filesystem::path& path,
                           std::span<const std::uint8_t> content) {
  if (!MayPutFile(path)) return FileStatus::kFailed;
  PartFile part;
  FileStatus status = part.CreateForItem(path);
  if (status == FileStatus::kDone) status = part.File().WriteAt(0, content);
  if (status == FileStatus::kDone) status = part.File().FlushToDisk();
  if (status == FileStatus::kDone) status = part.Complete();
  return status;
}

}  // namespace carrovan
