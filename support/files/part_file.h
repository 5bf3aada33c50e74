#pragma once

#include <filesystem>

#include "support/files/os_file.h"

namespace carrovan {

// A file that is written under another name and takes its own, in place of a file that is there,
// once it is complete. Destroyed before that, it leaves nothing behind.
class PartFile {
 public:
  PartFile() = default;
  ~PartFile();
  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;

  // Beside the target, under its name with ".part"; what a killed process left there is replaced.
  [[nodiscard]] FileStatus CreateForArchive(const std::filesystem::path& target);

  // Beside the target, under a short name that nothing there has.
  [[nodiscard]] FileStatus CreateForItem(const std::filesystem::path& target);

  OsFile& File() { return file_; }

  // The target stays as it is when it may not be replaced.
  [[nodiscard]] FileStatus Complete();

 private:
  std::filesystem::path target_;
  std::filesystem::path part_;
  OsFile file_;
};

// Makes a folder and its missing parents; done when it is there already.
[[nodiscard]] FileStatus MakeFolders(const std::filesystem::path& folder);

}  // namespace carrovan
