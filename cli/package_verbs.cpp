#include <nlohmann/json.hpp>
#include <numeric>

#include "cli/json_text.h"
#include "cli/paths_output.h"
#include "cli/report_output.h"
#include "cli/share_output.h"
#include "cli/verbs.h"
#include "package/package_inspection.h"
#include "package/package_opening.h"
#include "package/package_verification.h"
#include "package/package_writer.h"
#include "report/inspection_page.h"
#include "text/path_text.h"

namespace carrovan {
namespace {

nlohmann::json EntriesToJson(const PackageInspection& inspection) {
  nlohmann::json entries = nlohmann::json::array();
  for (const ArchiveItem& item : inspection.entries) {
    entries.push_back({{"name", ToUtf8(item.name)},
                       {"sizeBytes", item.sizeBytes},
                       {"packedSizeBytes", item.packedSizeBytes}});
  }
  return entries;
}

nlohmann::json ItemsToJson(const std::vector<RefusedItem>& items, const char* what) {
  nlohmann::json list = nlohmann::json::array();
  for (const RefusedItem& item : items) {
    list.push_back({{"name", ToUtf8(item.name)}, {what, ToUtf8(item.reason)}});
  }
  return list;
}

nlohmann::json ToJson(const PackageInspection& inspection) {
  return {{"legacy", inspection.legacy},
          {"product", ToUtf8(inspection.product)},
          {"company", ToUtf8(inspection.company)},
          {"releaseVersion", ToUtf8(inspection.releaseVersion)},
          {"internalVersion", ToUtf8(inspection.internalVersion)},
          {"shared", inspection.shared},
          {"categories", TextsToJson(inspection.categories)},
          {"entries", EntriesToJson(inspection)},
          {"refused", ItemsToJson(inspection.refused, "reason")},
          {"untrusted", ItemsToJson(inspection.untrusted, "reason")}};
}

std::wstring RightAligned(std::uint64_t number, std::size_t width) {
  std::wstring text = std::to_wstring(number);
  if (text.size() < width) text.insert(0, width - text.size(), L' ');
  return text;
}

void PrintDescription(const Session& session, const PackageInspection& inspection) {
  if (inspection.legacy) {
    session.Print(L"Legacy package");
    return;
  }
  session.Print(L"Product     " + inspection.company + L" " + inspection.product);
  session.Print(L"Version     " + inspection.releaseVersion + L" (" + inspection.internalVersion +
                L")");
  if (inspection.shared) session.Print(L"Shared      yes, what is personal was left out");
  session.Print(L"Categories");
  for (const std::wstring& label : inspection.categories) session.Print(L"  " + label);
}

void PrintEntries(const Session& session, const std::vector<ArchiveItem>& entries) {
  constexpr std::size_t kSizeWidth = 12;
  const std::uint64_t total = std::accumulate(
      entries.begin(), entries.end(), std::uint64_t{0},
      [](std::uint64_t sum, const ArchiveItem& item) { return sum + item.sizeBytes; });
  session.Print(L"Entries     " + std::to_wstring(entries.size()) + L" with " +
                std::to_wstring(total) + L" bytes");
  session.Print(L"        size      packed  name");
  for (const ArchiveItem& item : entries) {
    session.Print(RightAligned(item.sizeBytes, kSizeWidth) +
                  RightAligned(item.packedSizeBytes, kSizeWidth) + L"  " + item.name);
  }
}

void PrintItems(const Session& session, const std::wstring& title,
                const std::vector<RefusedItem>& items) {
  session.Print(title + (items.empty() ? L"nothing" : std::to_wstring(items.size())));
  for (const RefusedItem& item : items) session.Print(L"  " + item.name + L": " + item.reason);
}

ExitStatus Conclude(const Session& session, const PackageInspection& inspection) {
  if (!inspection.untrusted.empty()) {
    return session.Fail(L"An import would refuse this package; reasons not to trust it: " +
                        std::to_wstring(inspection.untrusted.size()));
  }
  if (inspection.refused.empty()) return ExitStatus::kDone;
  return session.Fail(L"An import would refuse " + std::to_wstring(inspection.refused.size()) +
                      L" of this package's items");
}

}  // namespace

ExitStatus RunInspectVerb(const Session& session, const InspectOptions& options) {
  const ReportFile page(session, options.report);
  if (const auto refusal = page.Refusal()) return session.Fail(*refusal);
  const auto files = session.OpenFiles();
  if (!files) return ExitStatus::kFailed;
  const auto archive = files->Examine(options.package);
  if (!archive) return session.Fail(DescribeNoPackage(files->Files(), options.package));

  if (options.findPrivate) return RunPrivateInspection(session, options, *archive);
  const auto inspection = InspectPackage(*archive, IsLegacyPackageName(options.package));
  if (options.paths) return InspectPaths(session, options, *archive, inspection);
  if (options.json) {
    PrintJsonText(session, ToJson(inspection));
  } else {
    PrintDescription(session, inspection);
    PrintEntries(session, inspection.entries);
    PrintItems(session, L"Refused     ", inspection.refused);
    PrintItems(session, L"Not trusted ", inspection.untrusted);
  }
  return page.Write(PageOfInspection(options.package, inspection, NameOfProgram()),
                    Conclude(session, inspection));
}

ExitStatus RunExtractVerb(const Session& session, const ExtractOptions& options) {
  const auto files = session.OpenFiles();
  if (!files) return ExitStatus::kFailed;
  files->Archives().UseThreads(options.threads);
  RunObserver observer;
  const ExtractReport report =
      ExtractArchive(files->Archives(), files->Files(), observer, options.package,
                     WithTrailingBackslash(options.folder));
  if (!report.opened) return session.Fail(DescribeNoPackage(files->Files(), options.package));
  for (const std::wstring& path : report.failed) session.Complain(TextOfUnextracted(path));
  if (report.extracted.empty() && report.failed.empty()) {
    return session.Fail(options.package + L" is empty");
  }
  session.Print(std::to_wstring(report.extracted.size()) + L" files extracted to " +
                options.folder);
  if (report.failed.empty()) return ExitStatus::kDone;
  return report.extracted.empty() ? ExitStatus::kFailed : ExitStatus::kPartly;
}

namespace {

nlohmann::json ToJson(const std::wstring& package, const PackageVerification& verification) {
  return {{"package", ToUtf8(package)},
          {"sound", verification.IsSound()},
          {"entries", verification.entries},
          {"registryFiles", verification.registryFiles},
          {"documents", verification.documents},
          {"findings", ItemsToJson(verification.findings, "problem")},
          {"notes", ItemsToJson(verification.notes, "problem")}};
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
