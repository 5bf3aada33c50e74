#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace carrovan {

// A fresh folder, removed with its content when it is destroyed.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }

  // A path in the folder, from a name with either slash.
  std::filesystem::path operator/(const std::wstring& name) const;

  // Creates a file and its folders, and returns its path.
  std::filesystem::path Put(const std::wstring& name, const std::string& bytes) const;

  // Relative paths of all files and folders, with forward slashes, in order; folders end in one.
  std::vector<std::wstring> Listing() const;

 private:
  std::filesystem::path path_;
};

// Nothing when there is no such file.
std::optional<std::string> FileBytes(const std::filesystem::path& path);

void SetReadOnly(const std::filesystem::path& path);

// Seconds since 1970, UTC.
std::int64_t ModifiedSeconds(const std::filesystem::path& path);
void SetModifiedSeconds(const std::filesystem::path& path, std::int64_t seconds);

// Bytes that do not compress; the same for the same seed.
std::string RandomBytes(std::size_t count, std::uint32_t seed = 1);

// Text that compresses as settings do.
std::string SettingsText(std::size_t count);

// Writes an archive of one item per file, named as given.
struct NamedFile {
  std::wstring name;
  std::string bytes;
};
void WriteArchive(const std::filesystem::path& archive, const std::vector<NamedFile>& files);

}  // namespace carrovan
