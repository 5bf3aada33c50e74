#pragma once

#include <memory>
#include <string>

#include "platform/archive_library.h"
#include "platform/sandbox/path_mapper.h"

namespace carrovan {

// The built-in zip library behind the paths of a mapper.
class ZipArchiveLibrary : public ArchiveLibrary {
 public:
  explicit ZipArchiveLibrary(const PathMapper& paths) : paths_(paths) {}

  std::unique_ptr<ArchiveWriter> Create(const std::wstring& archivePath,
                                        ArchivePurpose purpose) override;
  std::unique_ptr<ArchiveReader> Open(const std::wstring& archivePath) override;

  // As Open, for a look inside without writing.
  std::unique_ptr<ArchiveExaminer> Examine(const std::wstring& archivePath);

 private:
  const PathMapper& paths_;
};

}  // namespace carrovan
