#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace carrovan {

// States where on the host a path of the program lies.
class PathMapper {
 public:
  virtual ~PathMapper() = default;

  // The host path of a file or folder that may be missing; nothing when no file can have this path.
  virtual std::optional<std::filesystem::path> ToHost(const std::wstring& path) const = 0;

  // False when the path holds a character that Windows gives to no new file or folder.
  virtual bool MayBeMade(const std::wstring& path) const = 0;
};

// Every path is the host's own.
class HostPathMapper : public PathMapper {
 public:
  std::optional<std::filesystem::path> ToHost(const std::wstring& path) const override;
  bool MayBeMade(const std::wstring& path) const override;
};

// A path that begins with a drive letter lies below a root folder, in a folder named after the
// letter, and never above it: ".." ends at the drive. Each component is found without regard to
// case, the exact spelling first; what is missing is taken as it is written. Any other path is the
// host's own.
class DrivePathMapper : public PathMapper {
 public:
  explicit DrivePathMapper(std::filesystem::path root) : root_(std::move(root)) {}

  std::optional<std::filesystem::path> ToHost(const std::wstring& path) const override;
  bool MayBeMade(const std::wstring& path) const override;

 private:
  std::filesystem::path root_;
};

}  // namespace carrovan
