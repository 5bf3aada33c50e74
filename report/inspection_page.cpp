#include "report/inspection_page.h"

#include <map>

#include "text/path_text.h"

namespace carrovan {
namespace {

// The first folder of an entry's name that says what is in it; "Package" for what lies in none.
std::wstring FolderOf(const std::wstring& name) {
  const std::size_t end = name.find(L'\\');
  return end == std::wstring::npos ? L"Package" : name.substr(0, end);
}

ReportItem Named(ItemKind kind, const std::wstring& name) {
  ReportItem item;
  item.kind = kind;
  item.what = L"entry";
  if (name.find(L'\\') != std::wstring::npos) item.place = RemoveFileSpec(name);
  item.name = FileNameOf(name);
  if (item.name.empty()) item.name = name;
  return item;
}

// The categories of a page, in the order in which their first item came.
class Sorter {
 public:
  void Take(const std::wstring& wanted, ReportItem item) {
    const bool fits = places_.contains(wanted) || places_.size() < kMostFolders;
    const std::wstring& label = fits ? wanted : kOther;
    const auto [found, isNew] = places_.try_emplace(label, categories.size());
    if (isNew) categories.push_back({label, {}});
    categories[found->second].items.push_back(std::move(item));
  }

  std::vector<ReportCategory> categories;

 private:
  // More than any export makes.
  static constexpr std::size_t kMostFolders = 40;
  const std::wstring kOther = L"Other folders";

  std::map<std::wstring, std::size_t> places_;
};

std::vector<ReportCategory> CategoriesOf(const PackageInspection& inspection) {
  Sorter sorter;
  const auto takeAll = [&sorter](const std::vector<RefusedItem>& items, const std::wstring& label,
                                 ItemKind kind) {
    for (const RefusedItem& refused : items) {
      ReportItem item = Named(kind, refused.name == L"*" ? L"The whole package" : refused.name);
      item.note = refused.reason;
      sorter.Take(label, std::move(item));
    }
  };
  takeAll(inspection.refused, L"Refused", ItemKind::kRefused);
  takeAll(inspection.untrusted, L"Reasons not to trust it", ItemKind::kNotTrusted);
  for (const ArchiveItem& entry : inspection.entries) {
    ReportItem item = Named(ItemKind::kHeld, entry.name);
    item.note = std::to_wstring(entry.sizeBytes) + L" bytes, " +
                std::to_wstring(entry.packedSizeBytes) + L" packed";
    sorter.Take(FolderOf(entry.name), std::move(item));
  }
  return std::move(sorter.categories);
}

std::wstring Joined(const std::vector<std::wstring>& texts) {
  std::wstring joined;
  for (const std::wstring& text : texts) joined += (joined.empty() ? L"" : L", ") + text;
  return joined;
}

std::uint64_t BytesOf(const PackageInspection& inspection) {
  std::uint64_t bytes = 0;
  for (const ArchiveItem& entry : inspection.entries) bytes += entry.sizeBytes;
  return bytes;
}

}  // namespace

ReportPage PageOfInspection(const std::wstring& package, const PackageInspection& inspection,
                            const std::wstring& program) {
  ReportPage page;
  page.title = L"Package";
  page.subject = FileNameOf(package);
  const bool isSound = inspection.refused.empty() && inspection.untrusted.empty();
  page.result = isSound ? ReportResult::kDone : ReportResult::kRefused;
  page.resultText = isSound ? L"Nothing in it is refused" : L"An import would refuse it";
  std::wstring version = inspection.releaseVersion;
  if (!inspection.internalVersion.empty()) version += L" (" + inspection.internalVersion + L")";
  page.facts = {
      {L"Package", package},
      {L"Product", inspection.legacy ? L"" : inspection.company + L" " + inspection.product},
      {L"Version", inspection.legacy ? L"legacy package" : version},
      {L"Categories", Joined(inspection.categories)},
      {L"Categories that are none", Joined(inspection.unknownCategories)},
      {L"Entries", std::to_wstring(inspection.entries.size()) + L" with " +
                       std::to_wstring(BytesOf(inspection)) + L" bytes"}};
  page.itemsHeading = L"What is in it";
  page.nothing = L"The package is empty.";
  page.categories = CategoriesOf(inspection);
  page.program = program;
  return page;
}

}  // namespace carrovan
