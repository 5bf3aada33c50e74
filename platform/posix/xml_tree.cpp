#include "platform/posix/xml_tree.h"

#include <algorithm>
#include <new>

#include "text/scattered_hash.h"

namespace carrovan {
namespace {

constexpr std::size_t kBlockBytes = std::size_t{64} << 10;

// Known everywhere without being declared.
constexpr XmlNamespace kXmlNamespace = {"xml", "http://www.w3.org/XML/1998/namespace", nullptr};

bool IsSame(const XmlNamespace* a, const XmlNamespace& b) {
  return a != nullptr && a->uri == b.uri && a->prefix == b.prefix;
}

void SetScope(XmlTreeElement& element) {
  if (element.declared != nullptr) {
    element.scope = &element;
  } else {
    element.scope = element.parent == nullptr ? nullptr : element.parent->scope;
  }
}

void SetScopesBelow(XmlTreeElement& top) {
  SetScope(top);
  for (const XmlTreeNode* node = NextBelow(top, &top); node != nullptr;
       node = NextBelow(top, node)) {
    XmlTreeNode* const inTree = const_cast<XmlTreeNode*>(node);
    if (XmlTreeElement* const element = AsElement(inTree)) SetScope(*element);
  }
}

void Link(XmlTreeElement& parent, XmlTreeNode& child) {
  child.parent = &parent;
  child.previous = parent.last;
  (parent.last == nullptr ? parent.first : parent.last->next) = &child;
  parent.last = &child;
}

}  // namespace

char* XmlStore::Take(std::size_t bytes) {
  if (bytes > freeBytes_) {
    // What is large gets a block of its own, and the rest of the current one stays in use.
    const bool isLarge = bytes > kBlockBytes / 4;
    const std::size_t size = isLarge ? bytes : kBlockBytes;
    blocks_.push_back(std::make_unique_for_overwrite<char[]>(size));
    if (isLarge) return blocks_.back().get();
    free_ = blocks_.back().get();
    freeBytes_ = size;
  }
  char* const taken = free_;
  free_ += bytes;
  freeBytes_ -= bytes;
  return taken;
}

void* XmlStore::Room(std::size_t bytes) {
  // The blocks begin aligned, and texts in between end anywhere.
  const std::size_t behind = freeBytes_ % alignof(XmlTreeElement);
  free_ += behind;
  freeBytes_ -= behind;
  return Take(bytes);
}

std::string_view XmlStore::Keep(std::string_view text) {
  char* const kept = Take(text.size());
  std::copy(text.begin(), text.end(), kept);
  return {kept, text.size()};
}

std::string_view XmlNames::Keep(std::string_view name) {
  if (name.empty()) return {};
  if ((used_ + 1) * 2 > slots_.size()) Grow();
  const auto hash = static_cast<std::uint32_t>(ScatteredHash(name));
  std::size_t at = hash & (slots_.size() - 1);
  for (; slots_[at].name != nullptr; at = (at + 1) & (slots_.size() - 1)) {
    const Slot& slot = slots_[at];
    if (slot.hash == hash && std::string_view(slot.name, slot.size) == name) {
      return {slot.name, slot.size};
    }
  }
  const std::string_view kept = store_.Keep(name);
  slots_[at] = {kept.data(), static_cast<std::uint32_t>(kept.size()), hash};
  ++used_;
  return kept;
}

void XmlNames::Grow() {
  std::vector<Slot> smaller(slots_.empty() ? 256 : slots_.size() * 2);
  smaller.swap(slots_);
  for (const Slot& slot : smaller) {
    if (slot.name == nullptr) continue;
    std::size_t at = slot.hash & (slots_.size() - 1);
    while (slots_[at].name != nullptr) at = (at + 1) & (slots_.size() - 1);
    slots_[at] = slot;
  }
}

const XmlTreeNode* NextBelow(const XmlTreeNode& top, const XmlTreeNode* node) {
  const XmlTreeElement* const element = AsElement(node);
  if (element != nullptr && element->first != nullptr) return element->first;
  while (node != &top && node->next == nullptr) node = node->parent;
  return node == &top ? nullptr : node->next;
}

XmlTreeElement* XmlTree::Root() {
  for (XmlTreeNode* node = top_.first; node != nullptr; node = node->next) {
    if (XmlTreeElement* const element = AsElement(node)) return element;
  }
  return nullptr;
}

XmlTreeElement& XmlTree::NewElement(std::string_view name) {
  auto& element = *new (store_.Room(sizeof(XmlTreeElement))) XmlTreeElement();
  element.kind = XmlTreeKind::kElement;
  element.text = names_.Keep(name);
  return element;
}

XmlTreeNode& XmlTree::NewNode(XmlTreeKind kind, std::string_view text) {
  auto& node = *new (store_.Room(sizeof(XmlTreeNode))) XmlTreeNode();
  node.kind = kind;
  node.text = store_.Keep(text);
  return node;
}

XmlTreeInstruction& XmlTree::NewInstruction(std::string_view target, std::string_view text,
                                            bool hasContent) {
  auto& node = *new (store_.Room(sizeof(XmlTreeInstruction))) XmlTreeInstruction();
  node.kind = XmlTreeKind::kInstruction;
  node.text = store_.Keep(text);
  node.target = names_.Keep(target);
  node.hasContent = hasContent;
  return node;
}

void XmlTree::SetText(XmlTreeNode& node, std::string_view text) { node.text = store_.Keep(text); }

void XmlTree::AddAttribute(XmlTreeElement& element, XmlTreeAttribute*& last, std::string_view name,
                           std::string_view value, const XmlNamespace* space) {
  auto* const added = new (store_.Room(sizeof(XmlTreeAttribute))) XmlTreeAttribute();
  added->name = names_.Keep(name);
  added->value = store_.Keep(value);
  added->space = space;
  (last == nullptr ? element.attributes : last->next) = added;
  last = added;
}

XmlNamespace* XmlTree::AddNamespace(XmlTreeElement& element, XmlNamespace*& last,
                                    std::string_view prefix, std::string_view uri) {
  auto* const added = new (store_.Room(sizeof(XmlNamespace))) XmlNamespace();
  added->prefix = names_.Keep(prefix);
  added->uri = names_.Keep(uri);
  if (last == nullptr) {
    element.declared = added;
  } else {
    last->next = added;
  }
  last = added;
  element.scope = &element;
  return added;
}

const XmlNamespace* XmlTree::FindNamespace(const XmlTreeElement& element, std::string_view prefix) {
  if (prefix == kXmlNamespace.prefix) return &kXmlNamespace;
  const XmlTreeElement* scope = element.scope;
  while (scope != nullptr) {
    for (const XmlNamespace* space = scope->declared; space != nullptr; space = space->next) {
      if (space->prefix == prefix) return space;
    }
    scope = scope->parent == nullptr ? nullptr : scope->parent->scope;
  }
  return nullptr;
}

void XmlTree::Append(XmlTreeElement& parent, XmlTreeNode& child) {
  TakeOut(child);
  Link(parent, child);
  if (XmlTreeElement* const element = AsElement(&child)) SetScopesBelow(*element);
}

void XmlTree::TakeOut(XmlTreeNode& node) {
  if (node.parent == nullptr) return;
  (node.previous == nullptr ? node.parent->first : node.previous->next) = node.next;
  (node.next == nullptr ? node.parent->last : node.next->previous) = node.previous;
  node.parent = nullptr;
  node.next = nullptr;
  node.previous = nullptr;
}

void XmlTree::AppendCopy(XmlTreeElement& parent, const XmlTreeNode& source) {
  XmlTreeElement* place = &parent;  // where the copy of `node` is
  const XmlTreeNode* node = &source;
  while (true) {
    XmlTreeElement* const copy = AsElement(&AppendCopyOfOne(*place, *node));
    if (copy != nullptr && AsElement(node)->first != nullptr) {
      place = copy;
      node = AsElement(node)->first;
      continue;
    }
    for (; node != &source && node->next == nullptr; node = node->parent) place = place->parent;
    if (node == &source) return;
    node = node->next;
  }
}

XmlTreeNode& XmlTree::AppendCopyOfOne(XmlTreeElement& parent, const XmlTreeNode& source) {
  if (const XmlTreeElement* const element = AsElement(&source)) {
    XmlTreeElement& copy = NewElement(element->text);
    // Linked first, because namespaces are looked up from where it stands.
    Link(parent, copy);
    copy.scope = parent.scope;
    CopyTag(copy, *element);
    return copy;
  }
  XmlTreeNode* copy = nullptr;
  if (source.kind == XmlTreeKind::kInstruction) {
    const auto& instruction = static_cast<const XmlTreeInstruction&>(source);
    copy = &NewInstruction(instruction.target, instruction.text, instruction.hasContent);
  } else {
    copy = &NewNode(source.kind, source.text);
  }
  Link(parent, *copy);
  return *copy;
}

void XmlTree::CopyTag(XmlTreeElement& copy, const XmlTreeElement& source) {
  XmlNamespace* lastDeclared = nullptr;
  for (const XmlNamespace* from = source.declared; from != nullptr; from = from->next) {
    AddNamespace(copy, lastDeclared, from->prefix, from->uri);
  }
  if (source.space != nullptr) {
    copy.space = NamespaceLike(copy, source, *source.space, lastDeclared);
  }
  XmlTreeAttribute* lastAttribute = nullptr;
  for (const XmlTreeAttribute* from = source.attributes; from != nullptr; from = from->next) {
    const XmlNamespace* const space =
        from->space == nullptr ? nullptr : NamespaceLike(copy, source, *from->space, lastDeclared);
    AddAttribute(copy, lastAttribute, from->name, from->value, space);
  }
}

// Almost every element is in its parent's namespace.
const XmlNamespace* XmlTree::NamespaceLike(XmlTreeElement& copy, const XmlTreeElement& source,
                                           const XmlNamespace& wanted,
                                           XmlNamespace*& lastDeclared) {
  const XmlNamespace* const inherited = copy.parent->space;
  if (source.parent != nullptr && source.parent->space == &wanted && IsSame(inherited, wanted)) {
    return inherited;
  }
  const XmlNamespace* const known = FindNamespace(copy, wanted.prefix);
  if (IsSame(known, wanted)) return known;
  return AddNamespace(copy, lastDeclared, wanted.prefix, wanted.uri);
}

}  // namespace carrovan
