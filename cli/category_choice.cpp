#include "cli/category_choice.h"

#include <algorithm>

#include "environment/installed_versions.h"
#include "wizard/category_tree.h"

namespace carrovan {

namespace {

std::wstring KnownLabels() {
  std::wstring labels;
  for (const CategoryRecord& record : CategoryTable()) {
    labels += (labels.empty() ? L"\"" : L", \"") + std::wstring(Text(record.label)) + L"\"";
  }
  return labels;
}

}  // namespace

std::optional<ExitStatus> RefuseUnknownLabels(const Session& session,
                                              const CategoryChoice& choice) {
  for (const std::wstring& label : choice.labels) {
    if (FindCategoryByLabel(label) != nullptr) continue;
    return session.Misused(L"There is no category \"" + label + L"\"; there are " + KnownLabels());
  }
  return std::nullopt;
}

bool CheckChosen(const Session& session, const CategoryChoice& choice, const std::wstring& place,
                 CategoryChecklist& checklist) {
  if (choice.all) return true;
  checklist.SetAllChecked(false);
  bool offered = true;
  for (const std::wstring& label : choice.labels) {
    if (checklist.SetChecked(FindCategoryByLabel(label)->category, true)) continue;
    session.Complain(L"\"" + label + L"\" is not offered " + place);
    offered = false;
  }
  return offered;
}

std::vector<CategoryOutcome> OutcomesOf(const CategoryTree& tree, const std::wstring& whenChecked,
                                        const std::wstring& whenNot) {
  std::vector<CategoryOutcome> outcomes;
  VisitLeaves(tree, tree.Root(), [&](CategoryTree::Item leaf) {
    const CategoryRecord* record = FindCategory(tree.ItemData(leaf));
    if (record == nullptr) return;
    outcomes.push_back(
        {std::wstring(Text(record->label)), tree.IsChecked(leaf) ? whenChecked : whenNot});
  });
  return outcomes;
}

namespace {

bool IsInstalled(const ProductContext& context, const std::wstring& year) {
  return std::ranges::any_of(context.installedVersions, [&](const InstalledVersion& version) {
    return YearForm(version.internalVersion) == year;
  });
}

std::wstring InstalledYears(const ProductContext& context) {
  std::wstring years;
  for (const InstalledVersion& version : context.installedVersions) {
    years += (years.empty() ? L"" : L", ") + YearForm(version.internalVersion);
  }
  return years;
}

}  // namespace

bool RequireInstalled(const Session& session, const ProductContext& context,
                      const std::wstring& year) {
  if (IsInstalled(context, year)) return true;
  session.Fail(L"Version " + year + L" is not installed; installed: " + InstalledYears(context));
  return false;
}

}  // namespace carrovan
