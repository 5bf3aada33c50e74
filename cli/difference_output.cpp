#include "cli/difference_output.h"

#include <nlohmann/json.hpp>

#include "cli/json_text.h"
#include "cli/visible_text.h"

namespace carrovan {
namespace {

const wchar_t* MarkOf(Difference kind) {
  switch (kind) {
    case Difference::kOnlyInFirst:
      return L"- ";
    case Difference::kOnlyInSecond:
      return L"+ ";
    default:
      return L"~ ";
  }
}

// What stands behind a name: one text, or both.
std::wstring Texts(const std::optional<std::wstring>& first,
                   const std::optional<std::wstring>& second) {
  if (first && second) return L": " + VisibleValue(*first) + L" -> " + VisibleValue(*second);
  if (first) return L": " + VisibleValue(*first);
  return second ? L": " + VisibleValue(*second) : L"";
}

void PrintSide(const Session& session, const wchar_t* title, const std::wstring& name,
               const PackageSide& side) {
  session.Print(title + VisibleText(name + L": " + side.company + L" " + side.product + L" " +
                                    side.releaseVersion + L" (" + side.internalVersion + L")"));
}

std::wstring SizesOf(const ItemDifference& item) {
  const std::wstring first = std::to_wstring(item.firstBytes);
  const std::wstring second = std::to_wstring(item.secondBytes);
  if (item.kind == Difference::kOnlyInFirst) return L" (" + first + L" bytes)";
  if (item.kind == Difference::kOnlyInSecond) return L" (" + second + L" bytes)";
  if (item.Details() > 0) return L"";
  return L" (" + (first == second ? first : first + L" -> " + second) + L" bytes)";
}

std::wstring NamesOf(const ItemDifference& item) {
  if (item.firstName.empty()) return VisibleText(item.secondName);
  if (item.secondName.empty() || item.firstName == item.secondName) {
    return VisibleText(item.firstName);
  }
  return VisibleText(item.firstName + L" -> " + item.secondName);
}

void PrintDetails(const Session& session, const ItemDifference& item) {
  const std::wstring indent = L"      ";
  for (const KeyDifference& key : item.keys) {
    session.Print(indent + MarkOf(key.kind) + L"[" + VisibleText(key.key) + L"]");
  }
  for (const ValueDifference& value : item.values) {
    const std::wstring name = value.name.empty() ? L"@" : L"\"" + VisibleValue(value.name) + L"\"";
    session.Print(indent + MarkOf(value.kind) + L"[" + VisibleText(value.key) + L"] " + name +
                  Texts(value.first, value.second));
  }
  for (const NodeDifference& node : item.nodes) {
    const std::wstring attribute = node.attribute.empty() ? L"" : L"/@" + node.attribute;
    const std::wstring order = node.kind == Difference::kReordered ? L": another order" : L"";
    session.Print(indent + MarkOf(node.kind) + VisibleText(node.path + attribute) +
                  Texts(node.first, node.second) + order);
  }
  if (item.omitted > 0) {
    session.Print(indent + L"and " + std::to_wstring(item.omitted) + L" more");
  }
}

void PrintItem(const Session& session, const ItemDifference& item) {
  const std::wstring content =
      item.kind == Difference::kChanged && item.Details() == 0 && item.note.empty()
          ? L": the content differs"
          : L"";
  const std::wstring note = item.note.empty() ? L"" : L": " + VisibleText(item.note);
  session.Print(L"  " + (MarkOf(item.kind) + NamesOf(item)) + SizesOf(item) + content + note);
  PrintDetails(session, item);
}

void PrintCategory(const Session& session, const CategoryDifference& category) {
  session.Print(category.label);
  if (category.marked) {
    session.Print(L"  " + (MarkOf(*category.marked) + std::wstring(L"the category is marked")));
  }
  for (const ItemDifference& item : category.items) PrintItem(session, item);
}

const char* NameOf(Difference kind) {
  switch (kind) {
    case Difference::kOnlyInFirst:
      return "only in first";
    case Difference::kOnlyInSecond:
      return "only in second";
    case Difference::kChanged:
      return "changed";
    case Difference::kReordered:
      return "reordered";
  }
  return "";
}

nlohmann::json ToJson(const std::optional<std::wstring>& text) {
  return text ? nlohmann::json(ToUtf8(*text)) : nlohmann::json();
}

// Null for a text that there is not.
nlohmann::json NameToJson(const std::wstring& name) {
  return name.empty() ? nlohmann::json() : nlohmann::json(ToUtf8(name));
}

nlohmann::json ToJson(const std::wstring& name, const PackageSide& side) {
  return {{"name", ToUtf8(name)},
          {"company", ToUtf8(side.company)},
          {"product", ToUtf8(side.product)},
          {"releaseVersion", ToUtf8(side.releaseVersion)},
          {"internalVersion", ToUtf8(side.internalVersion)}};
}

nlohmann::json ToJson(const ValueDifference& value) {
  return {{"change", NameOf(value.kind)},
          {"key", ToUtf8(value.key)},
          {"name", ToUtf8(value.name)},
          {"first", ToJson(value.first)},
          {"second", ToJson(value.second)}};
}

nlohmann::json ToJson(const NodeDifference& node) {
  return {{"change", NameOf(node.kind)},
          {"path", ToUtf8(node.path)},
          {"attribute", NameToJson(node.attribute)},
          {"first", ToJson(node.first)},
          {"second", ToJson(node.second)}};
}

nlohmann::json ToJson(const KeyDifference& key) {
  return {{"change", NameOf(key.kind)}, {"key", ToUtf8(key.key)}};
}

nlohmann::json ToJson(const ItemDifference& item);
nlohmann::json ToJson(const CategoryDifference& category);

template <typename Items>
nlohmann::json ListToJson(const Items& items) {
  nlohmann::json list = nlohmann::json::array();
  for (const auto& item : items) list.push_back(ToJson(item));
  return list;
}

nlohmann::json ToJson(const ItemDifference& item) {
  const auto size = [](const std::wstring& name, std::uint64_t bytes) {
    return name.empty() ? nlohmann::json() : nlohmann::json(bytes);
  };
  return {{"change", NameOf(item.kind)},
          {"first", NameToJson(item.firstName)},
          {"second", NameToJson(item.secondName)},
          {"firstBytes", size(item.firstName, item.firstBytes)},
          {"secondBytes", size(item.secondName, item.secondBytes)},
          {"note", NameToJson(item.note)},
          {"keys", ListToJson(item.keys)},
          {"values", ListToJson(item.values)},
          {"nodes", ListToJson(item.nodes)},
          {"omitted", item.omitted}};
}

nlohmann::json ToJson(const CategoryDifference& category) {
  return {{"label", ToUtf8(category.label)},
          {"marked", category.marked ? nlohmann::json(NameOf(*category.marked)) : nlohmann::json()},
          {"items", ListToJson(category.items)}};
}

}  // namespace

void PrintDifference(const Session& session, const SideNames& names,
                     const PackageDifference& difference) {
  PrintSide(session, L"First       ", names.first, difference.first);
  PrintSide(session, L"Second      ", names.second, difference.second);
  for (const CategoryDifference& category : difference.categories) {
    PrintCategory(session, category);
  }
  if (difference.IsEmpty()) session.Print(L"No difference");
}

void PrintDifferenceJson(const Session& session, const SideNames& names,
                         const PackageDifference& difference) {
  PrintJsonText(session, {{"first", ToJson(names.first, difference.first)},
                          {"second", ToJson(names.second, difference.second)},
                          {"same", difference.IsEmpty()},
                          {"categories", ListToJson(difference.categories)}});
}

}  // namespace carrovan
