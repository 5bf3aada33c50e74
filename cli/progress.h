#pragma once

#include "platform/archive_library.h"
#include "platform/console.h"
#include "platform/machine.h"

namespace carrovan {

// An archive library that counts the stored files on a terminal, on one line of standard error that
// is gone when the archive is done. Anywhere else it is silent.
class ProgressArchives : public ArchiveLibrary {
 public:
  ProgressArchives(ArchiveLibrary& library, Console& console);

  std::unique_ptr<ArchiveWriter> Create(const std::wstring& archivePath,
                                        ArchivePurpose purpose) override;
  std::unique_ptr<ArchiveReader> Open(const std::wstring& archivePath) override;

 private:
  ArchiveLibrary& library_;
  Console& console_;
};

}  // namespace carrovan
