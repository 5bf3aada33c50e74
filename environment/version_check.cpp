#include "environment/version_check.h"

#include "environment/installed_versions.h"
#include "environment/string_table.h"

namespace carrovan {
namespace {

bool TellUnlessRun(WizardView& view, bool hasBeenRun) {
  if (!hasBeenRun) view.ShowApplicationMessage(std::wstring(Text(StringId::kRunProductOnce)));
  return hasBeenRun;
}

}  // namespace

bool TellToRunProductOnce(WizardView& view) { return TellUnlessRun(view, false); }

bool PassesLiveKeyCheck(WizardView& view, const RegistryReader& registry,
                        const ProductContext& context) {
  return TellUnlessRun(view, HasBeenRun(context, registry));
}

bool PassesVersionCheck(WizardView& view, const RegistryReader& registry,
                        const std::wstring& company, const std::wstring& product,
                        const std::wstring& version) {
  const std::wstring key = L"SOFTWARE\\" + company + L"\\" + product;
  const auto opens = [&](const std::wstring& path) {
    return registry.CanOpenKey(RegistryHive::kCurrentUser, path);
  };
  return TellUnlessRun(view, opens(key + L" " + version) || opens(key + L"\\" + version));
}

}  // namespace carrovan
