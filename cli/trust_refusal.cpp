#include "cli/trust_refusal.h"

#include "package/package_inspection.h"
#include "package/package_trust.h"

namespace carrovan {
namespace {

std::wstring MoreReasons(std::size_t count) {
  if (count == 0) return {};
  return L" (and " + std::to_wstring(count) + (count == 1 ? L" more reason)" : L" more reasons)");
}

}  // namespace

bool RefuseUntrusted(const Session& session, const std::wstring& package, const Machine& machine) {
  const auto files = session.OpenFiles();
  if (!files) return true;
  const auto archive = files->Examine(package);
  if (!archive) {
    if (!machine.archives.Open(package)) return false;
    session.Fail(package + L" is not a package that can be looked into");
    return true;
  }
  const PackageKind kind = IsLegacyPackageName(package) ? PackageKind::kLegacy : PackageKind::kFull;
  const auto reasons = ReasonsForDistrust(*archive, kind, machine.product.CompanyShortName());
  if (reasons.empty()) return false;
  const RefusedItem& first = reasons.front();
  session.Fail(package + L" is not to be trusted: " + first.name + L": " + first.reason +
               MoreReasons(reasons.size() - 1) +
               L"; inspect lists the reasons, --trust imports the package all the same");
  return true;
}

}  // namespace carrovan
