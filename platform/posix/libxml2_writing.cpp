#include "platform/posix/libxml2_writing.h"

#include <iconv.h>
#include <libxml/dict.h>
#include <libxml/encoding.h>
#include <array>
#include <cerrno>
#include <cstdint>

namespace carrovan {
namespace {

constexpr xmlChar kNoText[] = "";

bool SameNamespace(const xmlNs* a, const xmlNs* b) {
  return a != nullptr && b != nullptr && xmlStrEqual(a->href, b->href) &&
         xmlStrEqual(a->prefix, b->prefix);
}

// Almost every element is in its parent's namespace; asking the parent first keeps the copy of a
// deep tree from climbing to the root at every level.
xmlNs* NamespaceLike(xmlNode& copy, const xmlNode& source, const xmlNs* wanted) {
  xmlNs* const inherited = copy.parent->ns;
  if (source.parent != nullptr && source.parent->ns == wanted && SameNamespace(inherited, wanted)) {
    return inherited;
  }
  xmlNs* const known = xmlSearchNs(copy.doc, &copy, wanted->prefix);
  if (SameNamespace(known, wanted)) return known;
  return xmlNewNs(&copy, wanted->href, wanted->prefix);
}

bool CopyAttributes(xmlNode& copy, const xmlNode& source) {
  for (const xmlAttr* from = source.properties; from != nullptr; from = from->next) {
    xmlNs* space = nullptr;
    if (from->ns != nullptr) {
      space = NamespaceLike(copy, source, from->ns);
      if (space == nullptr) return false;
    }
    const xmlChar* value = from->children == nullptr ? kNoText : from->children->content;
    if (xmlNewNsProp(&copy, space, from->name, value) == nullptr) return false;
  }
  return true;
}

bool CopyElementContent(xmlNode& copy, const xmlNode& source) {
  if (source.nsDef != nullptr) {
    copy.nsDef = xmlCopyNamespaceList(source.nsDef);
    if (copy.nsDef == nullptr) return false;
  }
  if (source.ns != nullptr) {
    copy.ns = NamespaceLike(copy, source, source.ns);
    if (copy.ns == nullptr) return false;
  }
  return CopyAttributes(copy, source);
}

// Null for a kind of node that a document without a type definition does not have.
xmlNode* NewNodeLike(xmlDoc& document, const xmlNode& source) {
  switch (source.type) {
    case XML_ELEMENT_NODE:
      return NewElement(document, source.name);
    case XML_TEXT_NODE:
      return xmlNewDocText(&document, source.content);
    case XML_CDATA_SECTION_NODE:
      return xmlNewCDataBlock(&document, source.content, xmlStrlen(source.content));
    case XML_COMMENT_NODE:
      return xmlNewDocComment(&document, source.content);
    case XML_PI_NODE:
      return xmlNewDocPI(&document, source.name, source.content);
    default:
      return nullptr;
  }
}

// The copy is linked first, because namespaces are looked up from where it stands.
xmlNode* AppendCopyOfOne(xmlNode& parent, const xmlNode& source) {
  xmlNode* const copy = NewNodeLike(*parent.doc, source);
  if (copy == nullptr) return nullptr;
  LinkAsLastChild(parent, *copy);
  if (source.type != XML_ELEMENT_NODE || CopyElementContent(*copy, source)) return copy;
  xmlUnlinkNode(copy);
  xmlFreeNode(copy);
  return nullptr;
}

bool CopyDescendants(xmlNode& topCopy, const xmlNode& top) {
  xmlNode* parent = &topCopy;
  const xmlNode* source = top.children;
  while (source != nullptr) {
    xmlNode* const copy = AppendCopyOfOne(*parent, *source);
    if (copy == nullptr) return false;
    if (source->type == XML_ELEMENT_NODE && source->children != nullptr) {
      parent = copy;
      source = source->children;
      continue;
    }
    while (source != &top && source->next == nullptr) {
      source = source->parent;
      if (source != &top) parent = parent->parent;
    }
    source = source == &top ? nullptr : source->next;
  }
  return true;
}

}  // namespace

void LinkAsLastChild(xmlNode& parent, xmlNode& child) {
  child.parent = &parent;
  child.prev = parent.last;
  (parent.last == nullptr ? parent.children : parent.last->next) = &child;
  parent.last = &child;
}

xmlNode* NewElement(xmlDoc& document, const xmlChar* name) {
  const xmlChar* const kept = xmlDictLookup(document.dict, name, -1);
  if (kept == nullptr) return nullptr;
  // The dictionary owns the name, which the library recognises when it frees the node.
  return xmlNewDocNodeEatName(&document, nullptr, const_cast<xmlChar*>(kept), nullptr);
}

xmlNode* AppendDeepCopy(xmlNode& parent, const xmlNode& source) {
  xmlNode* const copy = AppendCopyOfOne(parent, source);
  if (copy == nullptr) return nullptr;
  if (source.type != XML_ELEMENT_NODE || CopyDescendants(*copy, source)) return copy;
  xmlUnlinkNode(copy);
  xmlFreeNode(copy);
  return nullptr;
}

}  // namespace carrovan
