#include "platform/sandbox/registry_text_file.h"

#include <span>
#include <string>

#include "platform/posix/host_access.h"

namespace carrovan {

RegistryTextFile::RegistryTextFile(const std::filesystem::path& target)
    : status_(MayPutFile(target) ? part_.CreateForItem(target) : FileStatus::kFailed) {
  Write("\xFF\xFE");
}

void RegistryTextFile::Add(std::u16string_view part) {
  std::string bytes;
  bytes.reserve(2 * part.size());
  for (const char16_t unit : part) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  }
  Write(bytes);
}

void RegistryTextFile::Write(std::string_view bytes) {
  if (status_ != FileStatus::kDone) return;
  const auto* const data = static_cast<const std::uint8_t*>(static_cast<const void*>(bytes.data()));
  status_ = part_.File().WriteAt(sum_.Image().sizeBytes, {data, bytes.size()});
  sum_.Add(bytes);
}

FileStatus RegistryTextFile::Finish() {
  if (status_ == FileStatus::kDone) status_ = part_.File().FlushToDisk();
  return status_;
}

}  // namespace carrovan
