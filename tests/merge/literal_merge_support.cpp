#include <algorithm>
#include <optional>
#include <set>
#include <string>

#include "tests/merge/literal_merge.h"

namespace carrovan {
namespace {

std::vector<XmlNode> Children(const XmlNode& node) {
  std::vector<XmlNode> children;
  for (XmlNode child = node.FirstChild(); child; child = child.NextSibling()) {
    children.push_back(child);
  }
  return children;
}

std::optional<int> Whole(const std::string& text) {
  try {
    std::size_t end = 0;
    const int value = std::stoi(text, &end);
    return end == text.size() ? std::optional<int>(value) : std::nullopt;
  } catch (const std::logic_error&) {
    return std::nullopt;
  }
}

std::string Narrow(const std::wstring& text) { return {text.begin(), text.end()}; }

std::string Base(const XmlNode& node) {
  const std::string name(node.Name());
  return name.substr(0, name.rfind('-'));
}

bool IsState(const XmlNode& node) { return Base(node) == "EyeRibbonState"; }
bool IsPanel(const XmlNode& node) { return Base(node) == "EyeCustomRibbonPanel"; }
bool IsContainer(const XmlNode& node) {
  return IsState(node) || IsPanel(node) || Base(node) == "EyeCustomRibbonCategory";
}

bool BeginsWithText(const XmlNode& element) {
  const XmlNode first = element.FirstChild();
  return first && first.IsText();
}

std::optional<std::string> NumberText(const XmlNode& element) {
  if (!BeginsWithText(element)) return std::nullopt;
  return Narrow(element.Text());
}

std::optional<std::string> IdText(const XmlNode& element) {
  for (const XmlNode& child : Children(element)) {
    if (child.IsElement() && child.Name() == "ID") return NumberText(child);
  }
  return std::nullopt;
}

std::optional<int> ElementId(const XmlNode& element) {
  if (!IsContainer(element)) return std::nullopt;
  const std::optional<std::string> text = IdText(element);
  return text ? Whole(*text) : std::nullopt;
}

std::optional<int> Suffix(const XmlNode& node) {
  const std::string name(node.Name());
  return Whole(name.find('-') == std::string::npos ? name : name.substr(name.rfind('-') + 1));
}

struct Summary {
  std::optional<int> size;
  std::vector<int> ids;
  int highest = -10000;
  bool hasSuffix = false;
};

std::optional<Summary> Summarize(const XmlNode& element) {
  if (!IsContainer(element) || IsPanel(element)) return std::nullopt;
  Summary summary;
  for (const XmlNode& child : Children(element)) {
    if (!child.IsElement()) continue;
    const bool isSize = child.Name() == "Size";
    if (!isSize && !IsContainer(child)) continue;
    if (const auto text = isSize ? NumberText(child) : IdText(child)) {
      const std::optional<int> number = Whole(*text);
      if (!number) return std::nullopt;
      if (isSize) {
        summary.size = number;
      } else {
        summary.ids.push_back(*number);
      }
    }
    if (isSize || !Suffix(child)) continue;
    summary.highest = std::max(summary.highest, *Suffix(child));
    summary.hasSuffix = true;
  }
  if (!summary.size || summary.ids.empty() || !summary.hasSuffix) return std::nullopt;
  return summary;
}

bool SetSize(const XmlNode& element, int size) {
  if (!IsContainer(element) || IsPanel(element)) return false;
  for (const XmlNode& child : Children(element)) {
    if (!child.IsElement() || child.Name() != "Size" || !child.FirstChild()) continue;
    return child.FirstChild().IsText() && child.FirstChild().SetText(std::to_wstring(size));
  }
  return false;
}

bool IsValueElement(const XmlNode& element) {
  const std::set<std::string_view> names = {"Size",          "Major",
                                            "Minor",         "ID",
                                            "Name",          "Style",
                                            "UserDefine",    "UserDefinePanelID",
                                            "CollapseOrder", "IsAutoFindPanelIcon"};
  return names.contains(element.Name());
}

XmlNode Match(const XmlNode& oldChild, const XmlNode& newElement) {
  const bool container = IsContainer(oldChild);
  const std::optional<int> id = ElementId(oldChild);
  for (const XmlNode& newChild : Children(newElement)) {
    if (!newChild.IsElement()) continue;
    if (container && id && ElementId(newChild) == id) return newChild;
    if ((!container || IsState(oldChild)) && newChild.Name() == oldChild.Name()) return newChild;
  }
  return {};
}

void AppendNumbered(const XmlNode& oldChild, const XmlNode& newElement, Summary& summary,
                    XmlDocument& newDocument) {
  const XmlNode created =
      newDocument.CreateElement(Base(oldChild) + "-" + std::to_string(summary.highest + 1));
  for (const XmlNode& child : Children(oldChild)) static_cast<void>(created.AppendCopy(child));
  static_cast<void>(newElement.AppendChild(created));
  if (!SetSize(newElement, *summary.size + 1)) return;
  ++summary.highest;
  ++*summary.size;
  static_cast<void>(newElement.AppendChild(created));
}

}  // namespace

void LiterallyMergeXmlNodes(const XmlNode& oldElement, const XmlNode& newElement,
                            XmlDocument& newDocument) {
  if (!oldElement || !newElement || IsValueElement(newElement)) return;
  if (BeginsWithText(oldElement) && BeginsWithText(newElement)) {
    static_cast<void>(newElement.FirstChild().SetText(oldElement.FirstChild().Text()));
  }
  std::optional<Summary> summary = Summarize(newElement);
  for (const XmlNode& oldChild : Children(oldElement)) {
    if (!oldChild.IsElement()) continue;
    if (const XmlNode match = Match(oldChild, newElement)) {
      if (!IsPanel(oldChild)) LiterallyMergeXmlNodes(oldChild, match, newDocument);
    } else if (IsContainer(oldChild) && summary) {
      AppendNumbered(oldChild, newElement, *summary, newDocument);
    } else {
      static_cast<void>(newElement.AppendCopy(oldChild));
    }
  }
}

std::vector<AcceleratorRecord> LiteralRecordsToAdd(const AcceleratorTable& oldTable,
                                                   const AcceleratorTable& newTable) {
  const auto isFree = [&](const AcceleratorRecord& record) {
    return std::none_of(newTable.begin(), newTable.end(), [&](const auto& other) {
      return other.second.ctrl == record.ctrl && other.second.key == record.key;
    });
  };
  std::vector<AcceleratorRecord> added;
  std::set<int> handled;
  for (const auto& [command, first] : oldTable) {
    if (!handled.insert(command).second) continue;
    std::set<int> oldKeys;
    std::set<int> newKeys;
    for (const auto& [other, record] : oldTable) {
      if (other == command) oldKeys.insert(record.key);
    }
    for (const auto& [other, record] : newTable) {
      if (other == command) newKeys.insert(record.key);
    }
    if (oldKeys == newKeys) continue;
    for (const auto& [other, record] : oldTable) {
      if (other != command) continue;
      if (!newKeys.empty() && newKeys.contains(record.key)) continue;
      if (isFree(record)) added.push_back(record);
    }
  }
  return added;
}

}  // namespace carrovan
