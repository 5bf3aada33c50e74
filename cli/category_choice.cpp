#include "cli/category_choice.h"

#include <algorithm>
#include <utility>

#include "environment/installed_versions.h"
#include "environment/string_table.h"

namespace carrovan {
namespace {

std::wstring KnownLabels() {
  std::wstring labels;
  for (const CategoryRecord& record : CategoryTable()) {
    labels += (labels.empty() ? L"\"" : L", \"") + std::wstring(Text(record.label)) + L"\"";
  }
  return labels;
}

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

std::optional<std::wstring> RefusalOfLabels(const CategoryChoice& choice) {
  for (const std::wstring& label : choice.labels) {
    if (FindCategoryByLabel(label) != nullptr) continue;
    return L"There is no category \"" + label + L"\"; there are " + KnownLabels();
  }
  return std::nullopt;
}

ChosenCategories ChooseCategories(const CategoryChoice& choice, const CategorySet& offered,
                                  const std::wstring& place) {
  if (choice.all) return {offered, {}};
  ChosenCategories categories;
  for (const std::wstring& label : choice.labels) {
    const SettingCategory category = FindCategoryByLabel(label)->category;
    if (offered.contains(category)) {
      categories.chosen.insert(category);
    } else {
      std::wstring refusal = L"\"" + label;
      refusal.append(L"\" is not offered ").append(place);
      categories.refusals.push_back(std::move(refusal));
    }
  }
  return categories;
}

std::optional<std::wstring> RefusalOfYear(const ProductContext& context, const std::wstring& year) {
  if (IsInstalled(context, year)) return std::nullopt;
  return L"Version " + year + L" is not installed; installed: " + InstalledYears(context);
}

}  // namespace carrovan
