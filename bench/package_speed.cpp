#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "support/zip/zip_reader.h"
#include "support/zip/zip_writer.h"
#include "text/text.h"

// Writes a folder into an archive, or an archive into a folder, with nothing else around it: what
// bench/package_benchmark holds against other programs.

namespace carrovan {
namespace {

namespace fs = std::filesystem;

bool Write(const fs::path& archive, const fs::path& folder, unsigned threads) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  const auto writer = ZipWriter::Create(archive);
  if (!writer) return false;
  writer->UseThreads(threads);
  for (const fs::path& file : files) writer->Expect(file);
  for (const fs::path& file : files) {
    const std::string name = file.lexically_relative(folder).string();
    if (writer->Add(FromUtf8(name), file) != ArchiveResult::kDone) return false;
  }
  return writer->Close() == ArchiveResult::kDone;
}

bool Extract(const fs::path& archive, const fs::path& folder, unsigned threads) {
  const auto reader = ZipReader::Open(archive);
  if (!reader) return false;
  reader->UseThreads(threads);
  for (std::size_t i = 0; reader->Item(i); ++i) reader->Expect(i);
  for (std::size_t i = 0; const auto item = reader->Item(i); ++i) {
    std::wstring name = item->name;
    std::replace(name.begin(), name.end(), L'\\', L'/');
    if (reader->Extract(i, folder / ToUtf8(name)) != ArchiveResult::kDone) return false;
  }
  return true;
}

}  // namespace
}  // namespace carrovan

int main(int argc, char** argv) {
  const std::vector<std::string_view> arguments(argv + 1, argv + argc);
  const unsigned threads =
      arguments.size() == 4 ? static_cast<unsigned>(std::stoul(std::string(arguments[3]))) : 1;
  if (arguments.size() >= 3 && arguments[0] == "write") {
    return carrovan::Write(arguments[1], arguments[2], threads) ? 0 : 1;
  }
  if (arguments.size() >= 3 && arguments[0] == "extract") {
    return carrovan::Extract(arguments[1], arguments[2], threads) ? 0 : 1;
  }
  std::cerr << "usage: package_speed write|extract ARCHIVE FOLDER [THREADS]\n";
  return 2;
}
