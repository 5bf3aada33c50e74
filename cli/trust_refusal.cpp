#include "cli/trust_refusal.h"

#include "package/package_judgement.h"

namespace carrovan {
namespace {

std::wstring MoreReasons(std::size_t count) {
  if (count == 0) return {};
  return L" (and " + std::to_wstring(count) + (count == 1 ? L" more reason)" : L" more reasons)");
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
  const PackageJudgement judgement = JudgePackage(files, package, machine);
  if (!judgement.unfit.empty()) return LineOf(package, judgement.unfit, L"");
  if (trusted) return std::nullopt;
  if (judgement.isUnreadable) return package + L" is not a package that can be looked into";
  const auto& reasons = judgement.reasonsForDistrust;
  if (reasons.empty()) return std::nullopt;
  return LineOf(package, reasons,
                L"; inspect lists the reasons, --trust imports the package all the same");
}

}  // namespace carrovan
