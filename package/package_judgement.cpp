#include "package/package_judgement.h"

#include "package/package_description.h"
#include "package/package_trust.h"

namespace carrovan {
namespace {

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

}  // namespace

PackageJudgement JudgePackage(HostFiles& files, const std::wstring& package,
                              const Machine& machine) {
  PackageJudgement judgement;
  const auto archive = files.Examine(package);
  if (!archive) {
    judgement.isUnreadable = machine.archives->Open(package) != nullptr;
    return judgement;
  }
  const std::wstring company = machine.product->CompanyShortName();
  if (IsLegacyPackageName(package)) {
    judgement.reasonsForDistrust = ReasonsForDistrust(*archive, PackageKind::kLegacy, company);
    return judgement;
  }
  // Nothing is read of an absurd package.
  const PackageIdentity identity =
      RefusalOfSize(*archive) ? PackageIdentity() : ReadPackageIdentity(*archive);
  judgement.unfit = ReasonsAgainstAnyImport(identity);
  judgement.reasonsForDistrust = ReasonsAgainstImport(*archive, identity, company);
  return judgement;
}

}  // namespace carrovan
