#include "cli/installed_years.h"

#include <algorithm>

#include "environment/version_forms.h"

namespace carrovan {
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
