#pragma once

#include <memory>
#include <string>
#include <vector>

#include "package/privacy_rules.h"
#include "package/registry_privacy.h"
#include "platform/archive_library.h"
#include "platform/machine.h"

namespace carrovan {

// Packages that are made to be given away. A package says that it is one in its description, by a
// section that nothing but an inspection reads.
inline constexpr wchar_t kSharingSection[] = L"Sharing";
inline constexpr wchar_t kSharedKey[] = L"SHARED";

// What of a package would be left out of one that is made to be shared, in the order of its items.
// The users are those whose profile folders the package's registry files name; the computer is not
// known. An item that cannot be looked into is among them. Writes nothing.
std::vector<PrivateItem> FindPrivateItems(ArchiveExaminer& archive);

// Puts nobody in the place of each user whose profile folder the document's text names, and gives
// the number of places. The text is UTF-16 behind FF FE, or has the 8-bit characters of ASCII.
std::size_t MakeDocumentNeutral(std::string& bytes);

// Archives in front of a machine's own: a package that is written comes out as one to be shared.
// What is personal is left out of it, and listed; a file that is left out counts as stored.
class SharingArchives : public ArchiveLibrary {
 public:
  // The machine outlives it. What is changed is written to the staging folder first, whose path
  // ends in a backslash.
  SharingArchives(const Machine& machine, std::wstring stagingFolder)
      : machine_(machine),
        stagingFolder_(std::move(stagingFolder)),
        names_(PrivateNamesOf(machine)) {}

  std::unique_ptr<ArchiveWriter> Create(const std::wstring& archivePath,
                                        ArchivePurpose purpose) override;
  std::unique_ptr<ArchiveReader> Open(const std::wstring& archivePath) override {
    return machine_.archives->Open(archivePath);
  }

  // What was left out so far.
  const std::vector<PrivateItem>& LeftOut() const { return leftOut_; }

 private:
  const Machine machine_;
  const std::wstring stagingFolder_;
  PrivateNames names_;
  std::vector<PrivateItem> leftOut_;
};

}  // namespace carrovan
