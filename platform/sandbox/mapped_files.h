#pragma once

#include <memory>
#include <utility>

#include "platform/native_machine.h"
#include "platform/sandbox/host_file_system.h"
#include "platform/sandbox/path_mapper.h"
#include "platform/sandbox/zip_archive_library.h"

namespace carrovan {

// Files and archives where a mapper says that they lie.
class MappedFiles : public HostFiles {
 public:
  explicit MappedFiles(std::unique_ptr<PathMapper> paths)
      : paths_(std::move(paths)), files_(*paths_), archives_(*paths_) {}

  FileSystem& Files() override { return files_; }
  ArchiveLibrary& Archives() override { return archives_; }
  std::unique_ptr<ArchiveExaminer> Examine(const std::wstring& archivePath) override {
    return archives_.Examine(archivePath);
  }

 private:
  std::unique_ptr<PathMapper> paths_;
  HostFileSystem files_;
  ZipArchiveLibrary archives_;
};

}  // namespace carrovan
