#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/archive_library.h"
#include "platform/machine.h"
#include "platform/posix/host_file_system.h"
#include "platform/posix/path_mapper.h"

namespace carrovan {

// The built-in zip library behind the paths of a mapper.
class ZipArchiveLibrary : public ArchiveLibrary {
 public:
  explicit ZipArchiveLibrary(const PathMapper& paths) : paths_(paths) {}

  void UseThreads(unsigned threads) override { threads_ = threads; }
  std::unique_ptr<ArchiveWriter> Create(const std::wstring& archivePath,
                                        ArchivePurpose purpose) override;
  std::unique_ptr<ArchiveReader> Open(const std::wstring& archivePath) override;

  // As Open, for a look inside without writing.
  std::unique_ptr<ArchiveExaminer> Examine(const std::wstring& archivePath);

 private:
  const PathMapper& paths_;
  unsigned threads_ = 1;
};

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
