#pragma once

#include <string>

#include "compare/package_difference.h"
#include "compare/version_meaning.h"

namespace carrovan {

// A registry file of each package, with what the package's texts mean.
struct ComparedText {
  const std::string& bytes;
  const VersionMeaning& meaning;
};

// Adds the keys and values in which two registry files differ. Where keys and values stand in a
// file does not matter; of two that set the same value the last one counts. False, with nothing
// added, when one is not a registry file that is understood whole; the item's note says which.
bool CompareRegistryFiles(const ComparedText& first, const ComparedText& second,
                          ItemDifference& item);

}  // namespace carrovan
