#include "support/files/part_file.h"

#include <algorithm>
#include <string>

#include "text/path_text.h"

namespace carrovan {

PartFile::~PartFile() {
  if (!file_.IsOpen()) return;
  file_.Close();
  RemoveFile(part_);
}

FileStatus PartFile::CreateForArchive(const std::filesystem::path& target) {
  target_ = target;
  part_ = target;
  part_ += ".part";
  return file_.CreateOrTakeOver(part_);
}

FileStatus PartFile::CreateForItem(const std::filesystem::path& target) {
  constexpr int kMostAttempts = 1000;
  target_ = target;
  FileStatus status = FileStatus::kExists;
  for (int i = 0; i < kMostAttempts && status == FileStatus::kExists; ++i) {
    part_ = target.parent_path() / PartName(i);
    status = file_.CreateNew(part_);
  }
  return status;
}

FileStatus PartFile::Complete() {
  if (!MayReplace(target_)) return FileStatus::kFailed;
  const FileStatus status = file_.CloseAs(part_, target_);
  if (status != FileStatus::kDone) RemoveFile(part_);
  return status;
}

FileStatus MakeFolders(const std::filesystem::path& folder) {
  std::filesystem::path preferred = folder;
  const std::filesystem::path::string_type text = preferred.make_preferred().native();
  constexpr auto kSeparator = std::filesystem::path::preferred_separator;

  // Back to the deepest folder that is there, then forward again.
  std::size_t length = text.size();
  while (length != 0 && !IsFolder(text.substr(0, length))) {
    const std::size_t separator = text.rfind(kSeparator, length - 1);
    length = separator == std::string::npos ? 0 : separator;
  }
  while (length < text.size()) {
    length = std::min(text.find(kSeparator, length + 1), text.size());
    const std::filesystem::path next = text.substr(0, length);
    const FileStatus status = MakeFolder(next);
    if (status != FileStatus::kDone && !IsFolder(next)) return status;
  }
  return FileStatus::kDone;
}

}  // namespace carrovan
