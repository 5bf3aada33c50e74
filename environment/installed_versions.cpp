#include "environment/installed_versions.h"

#include "environment/version_folders.h"
#include "environment/version_forms.h"

namespace carrovan {
namespace {

// Versions up to this one keep their settings in a form of their own.
constexpr double kLastUnsupportedVersion = 20.0;

std::wstring MachineKey(const ProductContext& context) {
  return L"SOFTWARE\\" + context.companyShortName + L"\\" + context.productName;
}

}  // namespace

void EnumerateInstalledVersions(ProductContext& context, const RegistryReader& registry) {
  context.installedVersions.clear();
  const auto names = registry.SubkeyNames(RegistryHive::kLocalMachine, MachineKey(context));
  for (const std::wstring& name : names.value_or(std::vector<std::wstring>())) {
    if (name.empty()) continue;
    if (name == context.productVersion) break;
    if (LeadingNumber(name) > kLastUnsupportedVersion) context.installedVersions.push_back({name});
  }
  context.installedVersions.push_back({context.productVersion});
}

bool HasBeenRun(const ProductContext& context, const RegistryReader& registry) {
  return registry.CanOpenKey(RegistryHive::kCurrentUser, LiveKey(context));
}

}  // namespace carrovan
