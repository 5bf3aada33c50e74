#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace carrovan {

// A new folder of the host, deleted in the end with everything in it.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }

  // The path as the program spells it, with a trailing separator.
  std::wstring Text() const;

  // Takes a permission away from a file or folder until the end.
  void TakePermission(const std::filesystem::path& path, std::filesystem::perms permission);

 private:
  std::filesystem::path path_;
  std::vector<std::filesystem::path> restricted_;
};

// A file with this content, and its parents.
void PutHostFile(const std::filesystem::path& path, const std::string& bytes);

std::optional<std::string> HostFileBytes(const std::filesystem::path& path);

}  // namespace carrovan
