#include "tests/zip/zip_test_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <random>

#include "support/files/os_file.h"
#include "support/zip/zip_reader.h"
#include "support/zip/zip_writer.h"
#include "text/text.h"

namespace carrovan {
namespace {

namespace fs = std::filesystem;

// Removal fails on a read-only file where that attribute counts.
void MakeAllWritable(const fs::path& folder) {
  std::error_code ignored;
  for (const auto& entry : fs::recursive_directory_iterator(folder, ignored)) {
    if (entry.is_symlink()) continue;
    fs::permissions(entry.path(), fs::perms::owner_write, fs::perm_options::add, ignored);
  }
}

std::wstring WideName(const fs::path& path) {
  const std::u8string name = path.generic_u8string();
  return FromUtf8(std::string(name.begin(), name.end()));
}

}  // namespace

TempFolder::TempFolder() {
  std::random_device random;
  path_ = fs::temp_directory_path() / ("carrovan-zip-" + std::to_string(random()));
  fs::create_directory(path_);
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  MakeAllWritable(path_);
  fs::remove_all(path_, ignored);
}

fs::path TempFolder::operator/(const std::wstring& name) const {
  std::wstring slashed = name;
  std::replace(slashed.begin(), slashed.end(), L'\\', L'/');
  return path_ / PathFromText(slashed);
}

fs::path TempFolder::Put(const std::wstring& name, const std::string& bytes) const {
  fs::path path = *this / name;
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

std::vector<std::wstring> TempFolder::Listing() const {
  std::vector<std::wstring> names;
  for (const auto& entry : fs::recursive_directory_iterator(path_)) {
    names.push_back(WideName(entry.path().lexically_relative(path_)) +
                    (entry.is_directory() ? L"/" : L""));
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::optional<std::string> FileBytes(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

void SetReadOnly(const fs::path& path) {
  fs::permissions(path, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                  fs::perm_options::remove);
}

std::int64_t ModifiedSeconds(const fs::path& path) {
  const auto time = std::chrono::file_clock::to_sys(fs::last_write_time(path));
  return std::chrono::floor<std::chrono::seconds>(time).time_since_epoch().count();
}

void SetModifiedSeconds(const fs::path& path, std::int64_t seconds) {
  const std::chrono::sys_seconds time{std::chrono::seconds(seconds)};
  fs::last_write_time(path, std::chrono::file_clock::from_sys(time));
}

std::string RandomBytes(std::size_t count, std::uint32_t seed) {
  std::mt19937 random(seed);
  std::string bytes(count, '\0');
  std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random() & 0xFF); });
  return bytes;
}

std::string SettingsText(std::size_t count) {
  std::string text;
  for (int i = 0; text.size() < count; ++i) {
    text += "<Command id=\"" + std::to_string(i % 997 * 7) + "\" key=\"Ctrl\"/>\r\n";
  }
  text.resize(count);
  return text;
}

void WriteArchive(const fs::path& archive, const std::vector<NamedFile>& files) {
  const TempFolder sources;
  const auto writer = ZipWriter::Create(archive);
  ASSERT_NE(writer, nullptr);
  for (const NamedFile& file : files) {
    ASSERT_EQ(writer->Add(file.name, sources.Put(L"source", file.bytes)), ArchiveResult::kDone);
  }
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
}

}  // namespace carrovan
