#pragma once

#include <windows.h>

#include <msxml2.h>

namespace carrovan {

// Takes text of nothing but white space out of a document that was loaded with all of its white
// space, and makes one node of texts that are neighbours.
void FilterBlankText(IXMLDOMNode* document);

}  // namespace carrovan
