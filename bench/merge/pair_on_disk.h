#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "bench/merge/merge_documents.h"

namespace carrovan {

// A pair of documents on disk, gone at the end.
class PairOnDisk {
 public:
  explicit PairOnDisk(const DocumentPair& pair)
      : folder_(std::filesystem::temp_directory_path() /
                ("carrovan-bench-" + std::to_string(getpid()))) {
    std::filesystem::create_directories(folder_);
    std::ofstream(folder_ / "old.xml", std::ios::binary) << pair.oldXml;
    std::ofstream(folder_ / "new.xml", std::ios::binary) << pair.newXml;
  }
  ~PairOnDisk() {
    std::error_code error;
    std::filesystem::remove_all(folder_, error);
  }
  PairOnDisk(const PairOnDisk&) = delete;
  PairOnDisk& operator=(const PairOnDisk&) = delete;

  std::string Old() const { return (folder_ / "old.xml").string(); }
  std::string New() const { return (folder_ / "new.xml").string(); }
  std::string Out() const { return (folder_ / "out.xml").string(); }

 private:
  std::filesystem::path folder_;
};

}  // namespace carrovan
