#include "cli/trust_refusal.h"

#include "package/package_description.h"
#include "package/package_inspection.h"
#include "package/package_trust.h"

namespace carrovan {
namespace {

std::wstring MoreReasons(std::size_t count) {
  if (count == 0) return {};
  return L" (and " + std::to_wstring(count) + (count == 1 ? L" more reason)" : L" more reasons)");
}

// Why a package may not be imported, whoever trusts it.
std::vector<RefusedItem> ReasonsAgainstAnyImport(const PackageIdentity& identity) {
  for (const std::wstring& name : {identity.company, identity.product}) {
    if (name.empty() || IsPlainName(name)) continue;
    return {{kPackageDescriptionName, L"\"" + name + L"\" is not one plain name"}};
  }
  return {};
}

std::vector<RefusedItem> ReasonsAgainstImport(ArchiveExaminer& archive,
                                              const PackageIdentity& identity,
                                              const std::wstring& company) {
  auto reasons = ReasonsForDistrust(archive, PackageKind::kFull, company);
  // What is missing belongs to no product that was ever started.
  const bool isKnown = !identity.company.empty() && !identity.product.empty();
  const auto refusal = RefusalOfIdentity(identity.company, identity.product);
  if (reasons.empty() && isKnown && refusal) {
    reasons.push_back({kPackageDescriptionName, *refusal});
  }
  return reasons;
}

std::wstring LineOf(const std::wstring& package, const std::vector<RefusedItem>& reasons,
                    const std::wstring& advice) {
  const RefusedItem& first = reasons.front();
  return package + L" is not to be trusted: " + first.name + L": " + first.reason +
         MoreReasons(reasons.size() - 1) + advice;
}

}  // namespace

std::optional<std::wstring> RefusalOfPackage(HostFiles& files, const std::wstring& package,
                                             bool trusted, const Machine& machine) {
  const auto archive = files.Examine(package);
  if (!archive && (trusted || !machine.archives->Open(package))) return std::nullopt;
  if (!archive) return package + L" is not a package that can be looked into";
  const std::wstring company = machine.product->CompanyShortName();
  const bool legacy = IsLegacyPackageName(package);
  if (legacy && trusted) return std::nullopt;
  // Nothing is read of an absurd package.
  const PackageIdentity identity =
      legacy || RefusalOfSize(*archive) ? PackageIdentity() : ReadPackageIdentity(*archive);
  const auto unfit = ReasonsAgainstAnyImport(identity);
  if (!unfit.empty()) return LineOf(package, unfit, L"");
  if (trusted) return std::nullopt;
  const auto reasons = legacy ? ReasonsForDistrust(*archive, PackageKind::kLegacy, company)
                              : ReasonsAgainstImport(*archive, identity, company);
  if (reasons.empty()) return std::nullopt;
  return LineOf(package, reasons,
                L"; inspect lists the reasons, --trust imports the package all the same");
}

}  // namespace carrovan
