#pragma once

#include <optional>
#include <string>

#include "platform/archive_library.h"
#include "platform/system_facts.h"
#include "platform/windows/tarvik_library.h"

namespace carrovan {

// The language that the CAD product runs in ("en-us"), as its maker's library states it. Nothing
// when the library is missing, has no language support or does not give a name.
std::optional<std::wstring> CurrentTarvikLanguage();

// The CAD product as its maker's library reports it. The functions must stay loaded.
class TarvikProduct : public ProductIdentity {
 public:
  explicit TarvikProduct(const TarvikFunctions& functions) : functions_(functions) {}

  std::wstring StartupFolder() const override;
  std::wstring CompanyShortName() const override;
  std::wstring ProductName() const override;
  std::wstring HumanReadableVersion() const override;
  std::wstring ProductVersion() const override;

 private:
  TarvikFunctions functions_;
};

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
