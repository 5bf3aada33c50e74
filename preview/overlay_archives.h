#pragma once

#include "platform/archive_library.h"
#include "preview/overlay_files.h"

namespace carrovan {

// Archives among the files of an overlay: a library of the machine reads and writes them in the
// spool.
class OverlayArchives : public ArchiveLibrary {
 public:
  // Both outlive it.
  OverlayArchives(ArchiveLibrary& machine, OverlayFiles& files)
      : machine_(machine), files_(files) {}

  std::unique_ptr<ArchiveWriter> Create(const std::wstring& archivePath,
                                        ArchivePurpose purpose) override;
  std::unique_ptr<ArchiveReader> Open(const std::wstring& archivePath) override;

 private:
  ArchiveLibrary& machine_;
  OverlayFiles& files_;
};

}  // namespace carrovan
