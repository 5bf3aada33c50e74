#pragma once

#include <vector>

#include "merge/ribbon_codec.h"
#include "platform/xml_dom.h"

namespace carrovan {

// The records of a custom ribbon panel, each stored as the text of one "RibbonElement" child.

// Merges an old custom panel into the new one matched to it. True when the new panel was rewritten.
// The product compares the old panel with itself, and so the new panel always stays as it is.
bool MergeRibbonPanel(const XmlNode& oldPanel, const XmlNode& newPanel, XmlDocument& newDocument);

bool HasRibbonElements(const XmlNode& panel);

// Appends a record for each ribbon element of the panel; one whose text does not read gives a fresh
// record. False, and nothing appended, when the panel has none.
bool ReadRibbonElements(const XmlNode& panel, std::vector<sRibbonElement>& records);

// Walks the panel by position while it shrinks: the sibling that moves into the place of a removed
// element is passed over and stays.
void RemoveRibbonElements(const XmlNode& panel);

// Adds to the second list copies of the records of the first, or of their children, whose
// identifiers the second list lacks. A copy is placed behind the record of the second list that
// shares the most identifiers with the record it comes from, the first of equals. False when the
// second list lacks nothing. Identifiers are looked at on two levels: records and their children.
bool MergeRibbonElementArrays(const std::vector<sRibbonElement>& first,
                              std::vector<sRibbonElement>& second);

}  // namespace carrovan
