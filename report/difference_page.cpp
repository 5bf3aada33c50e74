#include "report/difference_page.h"

#include <utility>

#include "text/path_text.h"

namespace carrovan {
namespace {

ItemKind KindOf(Difference difference) {
  switch (difference) {
    case Difference::kOnlyInFirst:
      return ItemKind::kOnlyInFirst;
    case Difference::kOnlyInSecond:
      return ItemKind::kOnlyInSecond;
    default:
      return ItemKind::kChanged;
  }
}

const std::wstring& NameOf(const ItemDifference& item) {
  return item.firstName.empty() ? item.secondName : item.firstName;
}

std::wstring Bytes(std::uint64_t count) { return std::to_wstring(count) + L" bytes"; }

// An item that is on one side only, or of which nothing more is known than that it differs.
ReportItem WholeItem(const ItemDifference& from) {
  ReportItem item;
  item.kind = KindOf(from.kind);
  item.what = L"entry";
  if (NameOf(from).find(L'\\') != std::wstring::npos) item.place = RemoveFileSpec(NameOf(from));
  item.name = FileNameOf(NameOf(from));
  if (!from.firstName.empty()) item.before = Bytes(from.firstBytes);
  if (!from.secondName.empty()) item.after = Bytes(from.secondBytes);
  item.note = from.note;
  if (from.omitted > 0) item.note = std::to_wstring(from.omitted) + L" more differences in it";
  return item;
}

ReportItem Detail(const ItemDifference& from, Difference kind, const wchar_t* what) {
  ReportItem item;
  item.kind = KindOf(kind);
  item.what = what;
  item.place = NameOf(from);
  return item;
}

void AddValues(const ItemDifference& from, std::vector<ReportItem>& items) {
  for (const KeyDifference& key : from.keys) {
    ReportItem item = Detail(from, key.kind, L"key");
    item.name = key.key;
    items.push_back(std::move(item));
  }
  for (const ValueDifference& value : from.values) {
    ReportItem item = Detail(from, value.kind, L"value");
    item.place = value.key;
    item.name = value.name.empty() ? L"(default)" : value.name;
    item.before = value.first;
    item.after = value.second;
    items.push_back(std::move(item));
  }
}

void AddNodes(const ItemDifference& from, std::vector<ReportItem>& items) {
  for (const NodeDifference& node : from.nodes) {
    ReportItem item = Detail(from, node.kind, L"node");
    item.name = node.path;
    if (!node.attribute.empty()) item.name += L"/@" + node.attribute;
    item.before = node.first;
    item.after = node.second;
    if (node.kind == Difference::kReordered) item.note = L"its children have another order";
    items.push_back(std::move(item));
  }
}

ReportCategory CategoryOf(const CategoryDifference& from) {
  ReportCategory category{from.label, {}};
  if (from.marked) {
    ReportItem item;
    item.kind = KindOf(*from.marked);
    item.what = L"mark";
    item.name = L"the category is marked";
    category.items.push_back(std::move(item));
  }
  for (const ItemDifference& item : from.items) {
    if (item.Details() == 0 || item.omitted > 0 || !item.note.empty()) {
      category.items.push_back(WholeItem(item));
    }
    AddValues(item, category.items);
    AddNodes(item, category.items);
  }
  return category;
}

std::wstring TextOf(const std::wstring& name, const PackageSide& side) {
  return name + L": " + side.company + L" " + side.product + L" " + side.releaseVersion + L" (" +
         side.internalVersion + L")";
}

}  // namespace

ReportPage PageOfDifference(const std::wstring& first, const std::wstring& second,
                            const PackageDifference& difference, const std::wstring& program) {
  ReportPage page;
  page.title = L"Comparison";
  page.subject = FileNameOf(first) + L", " + FileNameOf(second);
  page.resultText = difference.IsEmpty() ? L"No difference" : L"They differ";
  page.result = difference.IsEmpty() ? ReportResult::kDone : ReportResult::kNeutral;
  page.facts = {{L"First", TextOf(first, difference.first)},
                {L"Second", TextOf(second, difference.second)}};
  page.itemsHeading = L"What differs";
  page.nothing = L"Both hold the same.";
  for (const CategoryDifference& category : difference.categories) {
    page.categories.push_back(CategoryOf(category));
  }
  page.program = program;
  return page;
}

}  // namespace carrovan
