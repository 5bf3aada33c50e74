#pragma once

#include <vector>

#include "merge/shortcut_merge.h"
#include "platform/xml_dom.h"

namespace carrovan {

// The merges written word for word as their rules read, without any index: every look-up walks the
// children again. Slow, recursive and easy to check by eye; the engine must give the same results.

void LiterallyMergeXmlNodes(const XmlNode& oldElement, const XmlNode& newElement,
                            XmlDocument& newDocument);

std::vector<AcceleratorRecord> LiteralRecordsToAdd(const AcceleratorTable& oldTable,
                                                   const AcceleratorTable& newTable);

}  // namespace carrovan
