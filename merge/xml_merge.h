#pragma once

#include <string>

#include "platform/console.h"
#include "platform/xml_dom.h"

namespace carrovan {

// Merges the customization document of an older installation into the same document of a newer one.
// The new document is the base; the old one gives its other texts and the elements that the new one
// lacks. Takes time and memory in proportion to the documents.

// Writes the merged document to the output path, which may be one of the inputs. False when
// anything fails; then the log has a line that says what, and the output path is untouched.
bool MergeXmlFiles(const std::wstring& oldPath, const std::wstring& newPath,
                   const std::wstring& outputPath, XmlDom& dom, LineLog& log);

// Merges an old element into the new element matched to it, and all that is below. Does nothing
// when one of them is absent. A child that the DOM fails on is left out.
void MergeXmlNodes(const XmlNode& oldElement, const XmlNode& newElement, XmlDocument& newDocument);

}  // namespace carrovan
