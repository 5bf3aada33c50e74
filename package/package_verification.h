#pragma once

#include <cstddef>
#include <vector>

#include "package/package_inspection.h"
#include "platform/archive_library.h"
#include "platform/xml_dom.h"

namespace carrovan {

// A check of a package alone, without a machine to import it into: whether every part of it is
// what it should be. A package that an import may still refuse, for being too new for example, is
// sound all the same.
struct PackageVerification {
  std::size_t entries = 0;
  std::size_t registryFiles = 0;
  std::size_t documents = 0;          // ".xml" files, anywhere
  std::vector<RefusedItem> findings;  // empty for a sound package
  std::vector<RefusedItem> notes;     // worth knowing, and nothing wrong

  bool IsSound() const { return findings.empty(); }
};

// Reads every entry once or twice and writes nothing. The DOM reads its documents through
// ArchiveFiles of the same archive. Of a package that would unpack to an absurd size only the
// directory is read.
PackageVerification VerifyPackage(ArchiveExaminer& archive, XmlDom& dom, bool legacy);

}  // namespace carrovan
