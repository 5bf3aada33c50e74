#include "report/document_tree.h"

#include <algorithm>
#include <cstdint>
#include <deque>
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
  std::uint64_t sum = 0;  // of its content; the same for equal ones
};

// FNV-1a. What is found by it is compared.
void AddToSum(std::uint64_t value, std::uint64_t& sum) {
  constexpr std::uint64_t kPrime = 0x100000001B3;
  sum = (sum ^ value) * kPrime;
}

std::uint64_t SumOf(const Element& element) {
  std::uint64_t sum = 0xCBF29CE484222325;
  for (const wchar_t c : element.text) AddToSum(static_cast<std::uint64_t>(c), sum);
  for (const Element& child : element.below) {
    for (const char c : child.name) AddToSum(static_cast<unsigned char>(c), sum);
    AddToSum(child.sum, sum);
  }
  return sum;
}

bool HaveSameContent(const Element& a, const Element& b) {
  return a.sum == b.sum && a.text == b.text &&
         std::ranges::equal(a.below, b.below, [](const Element& c, const Element& d) {
           return c.name == d.name && HaveSameContent(c, d);
         });
}

Element Read(const XmlNode& node, std::size_t depth) {
  Element element{std::string(node.Name()), {}, {}, 0};
  for (XmlNode child = node.FirstChild(); child && depth < kDeepest; child = child.NextSibling()) {
    if (child.IsElement()) element.below.push_back(Read(child, depth + 1));
  }
  if (element.below.empty()) element.text = node.Text();
  element.sum = SumOf(element);
  return element;
}

// The name without the number that a merge gives anew.
std::string_view BaseName(const Element& element) {
  const std::string_view name = element.name;
  const std::size_t end = name.find_last_not_of("0123456789");
  const bool isNumbered = end != std::string_view::npos && end + 1 < name.size() && end > 0;
  return isNumbered && name[end] == '-' ? name.substr(0, end) : name;
}

std::wstring TextBelow(const Element& element, std::string_view name) {
  const auto found = std::ranges::find(element.below, name, &Element::name);
  return found == element.below.end() ? std::wstring() : found->text;
}

// What an element is known by among those of its name, whatever else is in it; empty for none.
std::wstring IdentityOf(const Element& element) {
  const std::wstring id = TextBelow(element, "ID");
  return id.empty() ? TextBelow(element, "Command") : id;
}

// Which of the earlier elements is the one before each of the later ones; null for a new one.
class Matching {
 public:
  Matching(const std::vector<Element>& before, const std::vector<Element>& after)
      : before_(before), after_(after), taken_(before.size()), matches_(after.size()) {
    // The same, wherever it stands now; then another content of the same thing.
    Pair(
        [](const Element& element) {
          return FromUtf8(BaseName(element)) + L'\x1' + std::to_wstring(element.sum);
        },
        HaveSameContent);
    const auto always = [](const Element&, const Element&) { return true; };
    Pair(
        [](const Element& element) {
          const std::wstring id = IdentityOf(element);
          return id.empty() ? id : FromUtf8(BaseName(element)) + L'\x1' + id;
        },
        always);
    Pair(
        [](const Element& element) {
          return IdentityOf(element).empty() ? FromUtf8(element.name) : std::wstring();
        },
        always);
  }

  const Element* Of(std::size_t later) const { return matches_[later]; }

  // The earlier ones that are gone.
  std::vector<const Element*> Left() const {
    std::vector<const Element*> left;
    for (std::size_t i = 0; i < before_.size(); ++i) {
      if (!taken_[i]) left.push_back(&before_[i]);
    }
    return left;
  }

 private:
  // Those of the same key, in their order; an empty one is none.
  void Pair(std::wstring (*keyOf)(const Element&),
            bool (*isFit)(const Element& before, const Element& after)) {
    std::map<std::wstring, std::deque<std::size_t>> waiting;
    for (std::size_t i = 0; i < before_.size(); ++i) {
      if (!taken_[i]) waiting[keyOf(before_[i])].push_back(i);
    }
    waiting.erase(std::wstring());
    for (std::size_t i = 0; i < after_.size() && !waiting.empty(); ++i) {
      if (matches_[i] != nullptr) continue;
      const auto found = waiting.find(keyOf(after_[i]));
      if (found == waiting.end() || found->second.empty()) continue;
      if (!isFit(before_[found->second.front()], after_[i])) continue;
      matches_[i] = &before_[found->second.front()];
      taken_[found->second.front()] = true;
      found->second.pop_front();
    }
  }

  const std::vector<Element>& before_;
  const std::vector<Element>& after_;
  std::vector<bool> taken_;
  std::vector<const Element*> matches_;
};

class Comparison {
 public:
  Comparison(DocumentTree& tree, const TreeLimits& limits) : tree_(tree), limits_(limits) {}

  DocumentNode Compare(const Element& before, const Element& after) {
    DocumentNode node = Bare(after);
    const Matching matching(before.below, after.below);
    for (std::size_t i = 0; i < after.below.size(); ++i) {
      const Element& child = after.below[i];
      const Element* const same = matching.Of(i);
      node.below.push_back(same != nullptr ? Compare(*same, child) : Only(child, NodeMark::kNew));
    }
    for (const Element* gone : matching.Left()) {
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
    // Of one with elements below, its name for people.
    const std::wstring& text = element.below.empty() ? element.text : TextBelow(element, "Name");
    node.text = CutText(text, limits_.text);
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
    tree.root = Comparison(tree, limits).Compare({after.name, {}, {}, 0}, after);
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
