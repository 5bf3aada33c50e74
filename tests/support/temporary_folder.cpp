#include "tests/support/temporary_folder.h"

#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "text/text.h"

namespace carrovan {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
  std::random_device number;
  path_ = fs::temp_directory_path() / ("carrovan-test-" + std::to_string(number()));
  if (!fs::create_directory(path_)) throw std::runtime_error("not a new folder: " + path_.string());
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code error;
  for (const fs::path& path : restricted_) {
    fs::permissions(path, fs::perms::owner_all, fs::perm_options::add, error);
  }
  fs::remove_all(path_, error);
}

std::wstring TemporaryFolder::Text() const { return FromUtf8((path_ / "").string()); }

void TemporaryFolder::TakePermission(const fs::path& path, fs::perms permission) {
  fs::permissions(path, permission, fs::perm_options::remove);
  restricted_.push_back(path);
}

void PutHostFile(const fs::path& path, const std::string& bytes) {
  fs::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file.good()) throw std::runtime_error("cannot write " + path.string());
}

std::optional<std::string> HostFileBytes(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

}  // namespace carrovan
