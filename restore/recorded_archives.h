#pragma once

#include "platform/archive_library.h"
#include "restore/change_recorder.h"

namespace carrovan {

// Archives whose writing and unpacking are noted as changes of files.
class RecordedArchives : public ArchiveLibrary {
 public:
  RecordedArchives(ArchiveLibrary& archives, ChangeRecorder& recorder)
      : archives_(archives), recorder_(recorder) {}

  std::unique_ptr<ArchiveWriter> Create(const std::wstring& archivePath,
                                        ArchivePurpose purpose) override;
  std::unique_ptr<ArchiveReader> Open(const std::wstring& archivePath) override;

 private:
  ArchiveLibrary& archives_;
  ChangeRecorder& recorder_;
};

}  // namespace carrovan
