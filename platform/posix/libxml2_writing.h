#pragma once

#include <libxml/tree.h>

namespace carrovan {

// Appends a deep copy of a node, which may belong to another document, as the last child of a
// parent. Works node by node, so that depth costs no stack. Namespaces that the new place does not
// know are declared where they are first needed. Null when memory ran out; then nothing is added.
xmlNode* AppendDeepCopy(xmlNode& parent, const xmlNode& source);

// Makes a detached node the last child. Text is not joined with a neighbour.
void LinkAsLastChild(xmlNode& parent, xmlNode& child);

// An element of a document that is in no tree yet; null when memory ran out.
xmlNode* NewElement(xmlDoc& document, const xmlChar* name);

}  // namespace carrovan
