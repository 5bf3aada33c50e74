#include "compare/document_comparison.h"

#include <algorithm>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "text/text.h"

namespace carrovan {
namespace {

std::wstring Quoted(const std::wstring& text) {
  const wchar_t quote = text.find(L'\'') == std::wstring::npos ? L'\'' : L'"';
  return quote + text + quote;
}

// The text of a child element that says which one this is.
std::wstring TextOfChild(const XmlNode& element, std::string_view name) {
  for (XmlNode child = element.FirstChild(); child; child = child.NextSibling()) {
    if (!child.IsElement() || child.Name() != name) continue;
    const XmlNode text = child.FirstChild();
    return text && text.IsText() ? text.Text() : L"";
  }
  return {};
}

// A longer text would be no name, and is not carried along in every path.
constexpr std::size_t kLongestIdentity = 200;

// "[@ID='7']" or "[ID='7']"; empty for an element that has no name of its own.
std::wstring IdentityOf(const XmlNode& element) {
  const auto identity = [](const std::wstring& what, const std::wstring& text) {
    return L"[" + what + L"=" + Quoted(text.substr(0, kLongestIdentity)) + L"]";
  };
  for (const char* name : {"ID", "Id", "id"}) {
    const auto value = element.Attribute(name);
    if (value) return identity(L"@" + FromUtf8(name), *value);
  }
  if (const std::wstring text = TextOfChild(element, "ID"); !text.empty()) {
    return identity(L"ID", text);
  }
  for (const char* name : {"Name", "name"}) {
    const auto value = element.Attribute(name);
    if (value) return identity(L"@" + FromUtf8(name), *value);
  }
  const std::wstring text = TextOfChild(element, "Name");
  return text.empty() ? L"" : identity(L"Name", text);
}

// The elements in one element. Those that are alike make a group, since a document may have very
// many of them.
class Children {
 public:
  struct Group {
    std::wstring step;  // of the path
    std::vector<std::size_t> members;
  };

  Children(const XmlNode& parent, const VersionMeaning& meaning) {
    for (XmlNode node = parent.FirstChild(); node; node = node.NextSibling()) {
      if (node.IsElement()) Add(node, meaning);
    }
  }

  std::size_t Count() const { return list_.size(); }
  const XmlNode& Node(std::size_t index) const { return list_[index].node; }

  std::wstring Step(std::size_t index) const {
    const Child& child = list_[index];
    if (child.group->members.size() == 1) return child.group->step;
    return child.group->step + L"[" + std::to_wstring(child.place + 1) + L"]";
  }

  // The child of the same meaning among others; nothing when they lack it.
  std::vector<std::optional<std::size_t>> PartnersIn(const Children& others) const {
    std::vector<std::optional<std::size_t>> partners(list_.size());
    for (const auto& [meaning, group] : groups_) {
      const auto other = others.groups_.find(meaning);
      if (other == others.groups_.end()) continue;
      const std::size_t shared = std::min(group.members.size(), other->second.members.size());
      for (std::size_t i = 0; i < shared; ++i) {
        partners[group.members[i]] = other->second.members[i];
      }
    }
    return partners;
  }

 private:
  struct Child {
    XmlNode node;
    const Group* group;
    std::size_t place;
  };

  void Add(const XmlNode& node, const VersionMeaning& meaning) {
    std::wstring step = FromUtf8(node.Name()) + IdentityOf(node);
    Group& group = groups_[meaning.OfText(step)];
    if (group.members.empty()) group.step = std::move(step);
    group.members.push_back(list_.size());
    list_.push_back({node, &group, group.members.size() - 1});
  }

  // By meaning. A map keeps its speed whatever names a document has.
  std::map<std::wstring, Group> groups_;
  std::vector<Child> list_;
};

using Pairs = std::vector<std::pair<std::size_t, std::size_t>>;

std::wstring OwnText(const XmlNode& element) {
  std::wstring text;
  for (XmlNode node = element.FirstChild(); node; node = node.NextSibling()) {
    if (node.IsText() || node.Name() == "#cdata-section") text += node.Text();
  }
  return text;
}

using Attributes = std::map<std::wstring, std::wstring>;

Attributes AttributesOf(const XmlNode& element) {
  Attributes attributes;
  for (XmlAttribute& attribute : element.Attributes()) {
    attributes.emplace(std::move(attribute.name), std::move(attribute.value));
  }
  return attributes;
}

class DocumentComparison {
 public:
  DocumentComparison(const VersionMeaning& first, const VersionMeaning& second,
                     ItemDifference& item)
      : first_(first), second_(second), item_(item) {}

  void Run(const XmlNode& first, const XmlNode& second) {
    const std::wstring name = FromUtf8(first.Name());
    const std::wstring other = FromUtf8(second.Name());
    if (first_.OfText(name) != second_.OfText(other)) {
      Add({Difference::kOnlyInFirst, PathTo(name), L"", {}, {}});
      Add({Difference::kOnlyInSecond, PathTo(other), L"", {}, {}});
      return;
    }
    Enter(name, first, second);
    while (!levels_.empty()) {
      Level& level = levels_.back();
      if (level.next == level.pairs.size()) {
        levels_.pop_back();
        continue;
      }
      const auto [child, partner] = level.pairs[level.next++];
      // The level moves when there are more.
      const XmlNode node = level.children->Node(child);
      const XmlNode otherNode = level.others->Node(partner);
      Enter(level.children->Step(child), node, otherNode);
    }
  }

 private:
  // Elements that are open. A document may nest as deep as it likes.
  struct Level {
    std::wstring step;
    std::unique_ptr<Children> children;
    std::unique_ptr<Children> others;
    Pairs pairs;
    std::size_t next = 0;
  };

  void Enter(std::wstring step, const XmlNode& first, const XmlNode& second) {
    Level& level = levels_.emplace_back();
    level.step = std::move(step);
    level.children = std::make_unique<Children>(first, first_);
    level.others = std::make_unique<Children>(second, second_);
    CompareAttributes(first, second);
    AddIfChanged(L"", OwnText(first), OwnText(second));
    MatchChildren(level);
  }

  void MatchChildren(Level& level) {
    const auto partners = level.children->PartnersIn(*level.others);
    std::vector<bool> taken(level.others->Count());
    for (std::size_t i = 0; i < partners.size(); ++i) {
      if (partners[i]) {
        level.pairs.emplace_back(i, *partners[i]);
        taken[*partners[i]] = true;
      } else {
        AddChild(Difference::kOnlyInFirst, *level.children, i);
      }
    }
    for (std::size_t i = 0; i < taken.size(); ++i) {
      if (taken[i]) continue;
      AddChild(Difference::kOnlyInSecond, *level.others, i);
    }
    const auto place = [](const auto& pair) { return pair.second; };
    if (!std::ranges::is_sorted(level.pairs, {}, place)) {
      Add({Difference::kReordered, Path(), L"", {}, {}});
    }
  }

  void CompareAttributes(const XmlNode& first, const XmlNode& second) {
    const Attributes attributes = AttributesOf(first);
    const Attributes others = AttributesOf(second);
    for (const auto& [name, value] : attributes) {
      const auto other = others.find(name);
      if (other == others.end()) {
        Add({Difference::kOnlyInFirst, Path(), name, value, {}});
      } else {
        AddIfChanged(name, value, other->second);
      }
    }
    for (const auto& [name, value] : others) {
      if (!attributes.contains(name)) Add({Difference::kOnlyInSecond, Path(), name, {}, value});
    }
  }

  void AddIfChanged(const std::wstring& attribute, const std::wstring& first,
                    const std::wstring& second) {
    if (first_.OfText(first) == second_.OfText(second)) return;
    Add({Difference::kChanged, Path(), attribute, first, second});
  }

  bool HasRoom() {
    if (item_.nodes.size() < ItemDifference::kMostDetails) return true;
    ++item_.omitted;
    return false;
  }

  void Add(NodeDifference difference) {
    if (HasRoom()) item_.nodes.push_back(std::move(difference));
  }

  // There may be millions of them.
  void AddChild(Difference kind, const Children& children, std::size_t index) {
    if (HasRoom()) item_.nodes.push_back({kind, PathTo(children.Step(index)), L"", {}, {}});
  }

  // Of a very deep element only the end of the way, so that all paths together stay short.
  std::wstring Path() const {
    constexpr std::size_t kMostSteps = 64;
    const std::size_t from = levels_.size() > kMostSteps ? levels_.size() - kMostSteps : 0;
    std::wstring path = from > 0 ? L"/..." : L"";
    for (std::size_t i = from; i < levels_.size(); ++i) path.append(L"/").append(levels_[i].step);
    return path;
  }

  std::wstring PathTo(const std::wstring& step) const { return Path() + L"/" + step; }

  const VersionMeaning& first_;
  const VersionMeaning& second_;
  ItemDifference& item_;
  std::vector<Level> levels_;
};

}  // namespace

void CompareDocuments(const ComparedDocument& first, const ComparedDocument& second,
                      ItemDifference& item) {
  DocumentComparison(first.meaning, second.meaning, item).Run(first.root, second.root);
}

}  // namespace carrovan
