#pragma once

#include "platform/archive_library.h"
#include "platform/windows/tarvik_functions.h"

namespace carrovan {

// Archives through the zip functions of tarvik.dll, always without a password. The functions must
// stay loaded as long as this library, its writers and its readers live.
class TarvikArchiveLibrary : public ArchiveLibrary {
 public:
  explicit TarvikArchiveLibrary(const TarvikFunctions& functions) : functions_(functions) {}

  std::unique_ptr<ArchiveWriter> Create(const std::wstring& archivePath,
                                        ArchivePurpose purpose) override;
  std::unique_ptr<ArchiveReader> Open(const std::wstring& archivePath) override;

 private:
  TarvikFunctions functions_;
};

}  // namespace carrovan
