#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

#include "platform/file_operations.h"
#include "support/files/part_file.h"

namespace carrovan {

// A registry file, UTF-16 behind its mark, that is written in parts beside its place and takes it
// in one step. What is there stays as it is until then.
class RegistryTextFile {
 public:
  explicit RegistryTextFile(const std::filesystem::path& target);

  // A failure shows in Finish.
  void Add(std::u16string_view part);

  // Waits until all parts are on the disk.
  [[nodiscard]] FileStatus Finish();

  // The last call, after Finish.
  [[nodiscard]] FileStatus Complete() { return part_.Complete(); }

  // Of all parts.
  const FileImage& Image() const { return sum_.Image(); }

 private:
  void Write(std::string_view bytes);

  PartFile part_;
  FileStatus status_;
  ContentSum sum_;
};

}  // namespace carrovan
