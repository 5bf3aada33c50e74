#include "environment/wizard_state.h"

#include "environment/installed_versions.h"
#include "text/path_text.h"

namespace carrovan {

void ChooseMode(WizardState& state, ProductContext& context, MigrationMode mode) {
  state.mode = mode;
  context.mode = mode;
}

void InitializePackageState(PackageState& package, const ProductContext& context,
                            const Machine& machine) {
  package = {};
  package.company = context.companyShortName;
  package.product = context.productName;
  package.targetInternalVersion = context.productVersion;
  package.defaultTargetText = context.humanReadableVersion;
  if (const auto local = machine.folders->LocalAppData()) {
    package.applicationDataRoot = WithTrailingBackslash(RemoveFileSpec(*local));
  }
}

std::vector<std::wstring> ListInstalledYears(ProductContext& context) {
  std::vector<std::wstring> years;
  for (const InstalledVersion& version : context.installedVersions) {
    years.push_back(YearForm(version.internalVersion));
  }
  context.humanReadableVersion.clear();
  context.selectedVersion.clear();
  SelectRunningVersion(context);
  return years;
}

void SelectRunningVersion(ProductContext& context) {
  if (context.installedVersions.empty()) return;
  context.productVersion = context.installedVersions.back().internalVersion;
  context.humanReadableVersion = YearForm(context.productVersion);
  context.selectedVersion = context.humanReadableVersion;
}

void SelectShownVersion(ProductContext& context, const std::wstring& yearForm) {
  const auto& installed = context.installedVersions;
  if (!installed.empty() && yearForm == YearForm(installed.back().internalVersion)) {
    SelectRunningVersion(context);
  } else {
    SelectVersion(context, yearForm);
  }
}

void SelectTargetVersion(WizardState& state, ProductContext& context,
                         const std::wstring& yearForm) {
  SelectVersion(context, yearForm);
  state.package.targetInternalVersion = context.productVersion;
}

}  // namespace carrovan
