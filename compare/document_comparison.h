#pragma once

#include "compare/package_difference.h"
#include "compare/version_meaning.h"
#include "platform/xml_dom.h"

namespace carrovan {

// A document of each package, with what the package's names and texts mean.
struct ComparedDocument {
  XmlNode root;
  const VersionMeaning& meaning;
};

// Adds the elements, attributes and texts in which two documents differ. Children of one element
// are the same when their names are, and their number ("ID") or, without one, their "Name"; of
// several that are alike so, the first is the same as the first. An element that only one document
// has is reported once, with all that is in it. White space that is layout, comments and
// instructions do not count. Takes time in proportion to the documents.
void CompareDocuments(const ComparedDocument& first, const ComparedDocument& second,
                      ItemDifference& item);

}  // namespace carrovan
