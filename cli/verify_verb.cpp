#include <nlohmann/json.hpp>

#include "cli/json_text.h"
#include "cli/verbs.h"
#include "package/archive_files.h"
#include "package/package_inspection.h"
#include "package/package_refusal.h"
#include "package/package_verification.h"

namespace carrovan {
namespace {

nlohmann::json ItemsToJson(const std::vector<RefusedItem>& items) {
  nlohmann::json list = nlohmann::json::array();
  for (const RefusedItem& item : items) {
    list.push_back({{"name", ToUtf8(item.name)}, {"problem", ToUtf8(item.reason)}});
  }
  return list;
}

nlohmann::json ToJson(const std::wstring& package, const PackageVerification& verification) {
  return {{"package", ToUtf8(package)},
          {"sound", verification.IsSound()},
          {"entries", verification.entries},
          {"registryFiles", verification.registryFiles},
          {"documents", verification.documents},
          {"findings", ItemsToJson(verification.findings)},
          {"notes", ItemsToJson(verification.notes)}};
}

std::wstring Counted(std::size_t count, const std::wstring& one, const std::wstring& several) {
  return std::to_wstring(count) + L" " + (count == 1 ? one : several);
}

void PrintSummary(const Session& session, const std::wstring& package,
                  const PackageVerification& verification) {
  for (const RefusedItem& note : verification.notes) {
    session.Print(L"Note: " + note.name + L": " + note.reason);
  }
  session.Print(package + L": " + Counted(verification.entries, L"entry", L"entries") + L", " +
                Counted(verification.registryFiles, L"registry file", L"registry files") + L", " +
                Counted(verification.documents, L"document", L"documents") + L": " +
                (verification.IsSound()
                     ? L"sound"
                     : Counted(verification.findings.size(), L"finding", L"findings")));
}

}  // namespace

ExitStatus RunVerifyVerb(const Session& session, const VerifyOptions& options) {
  const auto files = session.OpenFiles();
  if (!files) return ExitStatus::kFailed;
  const auto archive = files->Examine(options.package);
  if (!archive) return session.Fail(DescribeNoPackage(files->Files(), options.package));

  ArchiveFiles items(*archive);
  const auto dom = OpenXmlDom(items);
  const auto verification = VerifyPackage(*archive, *dom, IsLegacyPackageName(options.package));
  for (const RefusedItem& found : verification.findings) {
    session.Complain(found.name + L": " + found.reason);
  }
  if (options.json) {
    PrintJsonText(session, ToJson(options.package, verification));
  } else {
    PrintSummary(session, options.package, verification);
  }
  return verification.IsSound() ? ExitStatus::kDone : ExitStatus::kFailed;
}

}  // namespace carrovan
