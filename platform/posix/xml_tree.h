#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace carrovan {

// Documents in memory, as the DOM of this system keeps them. Nodes and texts lie side by side in
// large blocks and go with the whole document: a document has as many nodes as its file has tags.

// Room that is given out piece by piece and freed at once.
class XmlStore {
 public:
  void* Room(std::size_t bytes);  // for any kind of node
  std::string_view Keep(std::string_view text);

 private:
  char* Take(std::size_t bytes);

  std::vector<std::unique_ptr<char[]>> blocks_;
  char* free_ = nullptr;
  std::size_t freeBytes_ = 0;
};

// The names of all documents of a session, each of them once: equal names are at one address.
class XmlNames {
 public:
  std::string_view Keep(std::string_view name);

 private:
  struct Slot {
    const char* name = nullptr;
    std::uint32_t size = 0;
    std::uint32_t hash = 0;
  };

  void Grow();

  XmlStore store_;
  std::vector<Slot> slots_;  // a power of two of them
  std::size_t used_ = 0;
};

struct XmlNamespace {
  std::string_view prefix;  // empty for the namespace of names without one
  std::string_view uri;
  const XmlNamespace* next = nullptr;
};

struct XmlTreeAttribute {
  std::string_view name;  // with its prefix
  std::string_view value;
  const XmlNamespace* space = nullptr;
  XmlTreeAttribute* next = nullptr;
};

enum class XmlTreeKind : std::uint8_t { kElement, kText, kCdata, kComment, kInstruction };

struct XmlTreeElement;

struct XmlTreeNode {
  XmlTreeElement* parent = nullptr;
  XmlTreeNode* next = nullptr;
  XmlTreeNode* previous = nullptr;
  std::string_view text;  // the name of an element, the content of another node
  XmlTreeKind kind = XmlTreeKind::kText;
};

struct XmlTreeInstruction : XmlTreeNode {
  std::string_view target;
  bool hasContent = false;
};

struct XmlTreeElement : XmlTreeNode {
  XmlTreeNode* first = nullptr;
  XmlTreeNode* last = nullptr;
  XmlTreeAttribute* attributes = nullptr;
  const XmlNamespace* declared = nullptr;
  const XmlNamespace* space = nullptr;  // of its name
  // The nearest element that declares namespaces, itself or around it: no prefix is looked for in
  // between.
  const XmlTreeElement* scope = nullptr;
};

inline XmlTreeElement* AsElement(XmlTreeNode* node) {
  return node->kind == XmlTreeKind::kElement ? static_cast<XmlTreeElement*>(node) : nullptr;
}
inline const XmlTreeElement* AsElement(const XmlTreeNode* node) {
  return node->kind == XmlTreeKind::kElement ? static_cast<const XmlTreeElement*>(node) : nullptr;
}

// The next node below `top` in document order; null after the last.
const XmlTreeNode* NextBelow(const XmlTreeNode& top, const XmlTreeNode* node);

class XmlTree {
 public:
  explicit XmlTree(XmlNames& names) : names_(names) {}
  XmlTree(const XmlTree&) = delete;
  XmlTree& operator=(const XmlTree&) = delete;

  // Stands around the root and what is beside it.
  XmlTreeElement& Top() { return top_; }
  const XmlTreeElement& Top() const { return top_; }
  XmlTreeElement* Root();

  // New nodes are in no place yet. Texts are copied.
  XmlTreeElement& NewElement(std::string_view name);
  XmlTreeNode& NewNode(XmlTreeKind kind, std::string_view text);
  XmlTreeInstruction& NewInstruction(std::string_view target, std::string_view text,
                                     bool hasContent);
  void SetText(XmlTreeNode& node, std::string_view text);

  // Attributes and namespaces are added behind those that the element has, whose last is given and
  // becomes the added one; null for none.
  void AddAttribute(XmlTreeElement& element, XmlTreeAttribute*& last, std::string_view name,
                    std::string_view value, const XmlNamespace* space);
  XmlNamespace* AddNamespace(XmlTreeElement& element, XmlNamespace*& last, std::string_view prefix,
                             std::string_view uri);
  // What a prefix stands for where an element is; null when it stands for nothing.
  static const XmlNamespace* FindNamespace(const XmlTreeElement& element, std::string_view prefix);

  // Makes a node of this tree the last child, taking it from where it is. Text is not joined with a
  // neighbour.
  static void Append(XmlTreeElement& parent, XmlTreeNode& child);
  static void TakeOut(XmlTreeNode& node);

  // Appends a deep copy of a node, which may belong to another tree. Works node by node, so that
  // depth costs no stack. Namespaces that the new place does not know are declared where they are
  // first needed.
  void AppendCopy(XmlTreeElement& parent, const XmlTreeNode& source);

 private:
  XmlTreeNode& AppendCopyOfOne(XmlTreeElement& parent, const XmlTreeNode& source);
  void CopyTag(XmlTreeElement& copy, const XmlTreeElement& source);
  const XmlNamespace* NamespaceLike(XmlTreeElement& copy, const XmlTreeElement& source,
                                    const XmlNamespace& wanted, XmlNamespace*& lastDeclared);

  XmlNames& names_;
  XmlStore store_;
  XmlTreeElement top_;
};

// Appends what stands beside and below a tree's root, as UTF-8 and without a declaration.
// Characters of attributes outside ASCII are written as references when that is asked for.
void AppendXml(const XmlTree& tree, bool refersInAttributes, std::string& text);

}  // namespace carrovan
