#include "report/document_tree.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>

#include "report/page_markup.h"
#include "text/text.h"

namespace carrovan {
namespace {

// So deep a document is read; what lies below counts as the text of the element there.
constexpr std::size_t kDeepest = 200;

struct Element {
  std::string name;
  std::wstring text;
  std::vector<Element> below;
};

Element Read(const XmlNode& node, std::size_t depth) {
  Element element{std::string(node.Name()), {}, {}};
  for (XmlNode child = node.FirstChild(); child && depth < kDeepest; child = child.NextSibling()) {
    if (child.IsElement()) element.below.push_back(Read(child, depth + 1));
  }
  if (element.below.empty()) element.text = node.Text();
  return element;
}

// The elements of one name, in their order.
class Namesakes {
 public:
  explicit Namesakes(const std::vector<Element>& elements) {
    for (const Element& element : elements) byName_[element.name].elements.push_back(&element);
  }

  // The next one that was not taken; null without one.
  const Element* Take(const std::string& name) {
    const auto found = byName_.find(name);
    if (found == byName_.end()) return nullptr;
    List& list = found->second;
    return list.next < list.elements.size() ? list.elements[list.next++] : nullptr;
  }

  std::vector<const Element*> Left() const {
    std::vector<const Element*> left;
    for (const auto& [name, list] : byName_) {
      left.insert(left.end(), list.elements.begin() + static_cast<std::ptrdiff_t>(list.next),
                  list.elements.end());
    }
    return left;
  }

 private:
  struct List {
    std::vector<const Element*> elements;
    std::size_t next = 0;
  };
  std::map<std::string, List> byName_;
};

class Comparison {
 public:
  Comparison(DocumentTree& tree, const TreeLimits& limits) : tree_(tree), limits_(limits) {}

  DocumentNode Compare(const Element& before, const Element& after) {
    DocumentNode node = Bare(after);
    Namesakes earlier(before.below);
    for (const Element& child : after.below) {
      const Element* const same = earlier.Take(child.name);
      node.below.push_back(same != nullptr ? Compare(*same, child) : Only(child, NodeMark::kNew));
    }
    for (const Element* gone : earlier.Left()) {
      node.below.push_back(Only(*gone, NodeMark::kRemoved));
    }
    if (before.text != after.text) {
      node.mark = NodeMark::kChanged;
      node.before = CutText(before.text, limits_.text);
      ++tree_.changed;
    } else if (std::ranges::any_of(node.below, [](const DocumentNode& child) {
                 return child.mark != NodeMark::kSame;
               })) {
      node.mark = NodeMark::kTouched;
    }
    return node;
  }

 private:
  DocumentNode Bare(const Element& element) const {
    DocumentNode node;
    node.name = FromUtf8(element.name);
    node.text = CutText(element.text, limits_.text);
    return node;
  }

  // An element that only one of the documents has.
  DocumentNode Only(const Element& element, NodeMark mark) {
    DocumentNode node = Bare(element);
    node.mark = mark;
    ++(mark == NodeMark::kNew ? tree_.added : tree_.removed);
    for (const Element& child : element.below) node.below.push_back(Only(child, mark));
    return node;
  }

  DocumentTree& tree_;
  const TreeLimits& limits_;
};

// Leaves out what is too much.
class Cutting {
 public:
  explicit Cutting(const TreeLimits& limits) : limits_(limits), left_(limits.nodes) {}

  void Cut(DocumentNode& node, std::size_t depth) {
    std::vector<DocumentNode> kept;
    std::size_t unchanged = 0;
    for (DocumentNode& child : node.below) {
      const bool isSame = child.mark == NodeMark::kSame;
      const bool fits = depth < limits_.depth && left_ > 0;
      if (!fits || (isSame && unchanged == limits_.unchanged)) {
        Hide(child, node);
        continue;
      }
      if (isSame) ++unchanged;
      --left_;
      kept.push_back(std::move(child));
    }
    node.below = std::move(kept);
    for (DocumentNode& child : node.below) {
      // Of what is unchanged one level is enough to recognise it by.
      Cut(child, child.mark == NodeMark::kSame && depth > 0 ? limits_.depth : depth + 1);
    }
  }

 private:
  static void Hide(const DocumentNode& node, DocumentNode& above) {
    ++above.hidden;
    if (node.mark != NodeMark::kSame && node.mark != NodeMark::kTouched) ++above.hiddenMarks;
    for (const DocumentNode& child : node.below) Hide(child, above);
  }

  const TreeLimits& limits_;
  std::size_t left_;
};

DocumentTree Compared(const Element& before, const Element& after, const TreeLimits& limits) {
  DocumentTree tree;
  if (before.name == after.name) {
    tree.root = Comparison(tree, limits).Compare(before, after);
  } else {
    tree.root = Comparison(tree, limits).Compare({after.name, {}, {}}, after);
  }
  Cutting(limits).Cut(tree.root, 0);
  return tree;
}

// Nothing, with the reason in `failure`, for a file that is no document.
std::unique_ptr<Element> ReadDocument(const std::wstring& path, FileSystem& files,
                                      const TreeLimits& limits, std::wstring& failure) {
  if (files.FileBytes(path) > limits.bytes) {
    failure = L"The document is too large to be shown as a tree.";
    return nullptr;
  }
  const auto dom = OpenXmlDom(files);
  const auto session = dom->Begin();
  const auto document = session->Started() ? session->NewDocument() : nullptr;
  const XmlNode root = document && document->Load(path) ? document->Root() : XmlNode();
  if (!root) {
    failure = L"The document cannot be read as a tree.";
    return nullptr;
  }
  return std::make_unique<Element>(Read(root, 0));
}

}  // namespace

DocumentTree CompareElements(const XmlNode& before, const XmlNode& after,
                             const TreeLimits& limits) {
  return Compared(Read(before, 0), Read(after, 0), limits);
}

DocumentTree CompareDocuments(const std::wstring& path, FileSystem& before, FileSystem& after,
                              const TreeLimits& limits) {
  DocumentTree none;
  const auto earlier = ReadDocument(path, before, limits, none.failure);
  const auto later = earlier ? ReadDocument(path, after, limits, none.failure) : nullptr;
  return later ? Compared(*earlier, *later, limits) : none;
}

}  // namespace carrovan
