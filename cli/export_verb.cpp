#include "cli/category_choice.h"
#include "cli/progress.h"
#include "cli/share_output.h"
#include "cli/verbs.h"
#include "environment/installed_versions.h"
#include "environment/version_folders.h"
#include "environment/wizard_state.h"
#include "package/export_run.h"
#include "package/shared_package.h"
#include "package/staging_folder.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kPackageExtension[] = L".ucex";

// As the save dialog does: a name without an extension gets the package's own.
std::wstring WithPackageExtension(const std::wstring& output) {
  return FileNameOf(output).find(L'.') == std::wstring::npos ? output + kPackageExtension : output;
}

bool IsPackageName(const std::wstring& path) {
  const std::wstring name = FileNameOf(path);
  return name != kPackageExtension && EndsWithIgnoringAsciiCase(name, kPackageExtension);
}

}  // namespace

void NameWhatFailed(const Session& session, const ExportReport& report) {
  for (const SkippedItem& item : report.package.skipped) {
    session.Complain(L"Not stored: " + item.path + L": " + DescribeArchiveResult(item.reason));
  }
  for (const MisplacedItem& item : report.package.misplaced) {
    session.Complain(L"Not stored: " + item.path + L": " + DescribeMisplaced(item));
  }
  for (const auto& [key, problem] : report.registryFileProblems) {
    std::wstring line = L"Not stored: " + key;
    session.Complain(line.append(L": its registry file ").append(problem));
  }
  for (const std::wstring& key : report.missingKeys) {
    if (report.registryFileProblems.contains(key)) continue;
    session.Complain(L"Not stored: " + key + L": the registry tool could not export the key");
  }
}

namespace {

bool IsComplete(const ExportReport& report) {
  return report.package.skipped.empty() && report.package.misplaced.empty() &&
         report.registryFileProblems.empty() && report.missingKeys.empty();
}

// Categories of which the version has nothing. Only one that was asked for by its name is missing
// from the package; of every category that is there, it is none. False when one is missing.
bool NameEmptyCategories(const Session& session, const ExportReport& report,
                         const CategoryChoice& choice) {
  for (const SettingCategory category : report.emptyCategories) {
    const auto* record = FindCategory(static_cast<int>(category));
    const std::wstring finding =
        L"\"" + std::wstring(Text(record->label)) + L"\": this version has nothing of it";
    if (choice.all) {
      session.Print(L"Empty: " + finding);
    } else {
      session.Complain(L"Not stored: " + finding);
    }
  }
  return choice.all || report.emptyCategories.empty();
}

ExitStatus Conclude(const Session& session, const ExportReport& report,
                    const CategoryChoice& choice) {
  const ArchiveResult outcome = report.package.outcome;
  if (outcome == ArchiveResult::kDone || !report.refusal.empty()) NameWhatFailed(session, report);
  if (outcome != ArchiveResult::kDone) {
    return session.Fail(L"The package " + report.archivePath + L" was not written: " +
                        (report.refusal.empty() ? DescribeArchiveResult(outcome) : report.refusal));
  }
  const bool nothingMissing = NameEmptyCategories(session, report, choice);
  session.Print(ExportFinishText(report.archivePath));
  return nothingMissing && IsComplete(report) ? ExitStatus::kDone : ExitStatus::kPartly;
}

ExitStatus ExportVersion(const Session& session, const ExportOptions& options,
                         const std::wstring& output, const Machine& machine,
                         ProductContext& context) {
  SelectShownVersion(context, options.year);
  const StagingFolder staging(context, machine);
  if (!staging.IsMade()) {
    return session.Fail(L"No staging folder can be made in the temporary path");
  }
  if (!PrepareVersionFolders(context, machine)) {
    return session.Fail(L"The folders of version " + options.year + L" cannot be told");
  }
  const ChosenCategories categories = ChooseCategories(options.categories, OfferedOnExport(context),
                                                       L"for version " + options.year);
  for (const std::wstring& refusal : categories.refusals) session.Complain(refusal);
  if (!categories.refusals.empty()) return ExitStatus::kFailed;

  PacedRegistryTool tool(*machine.registryTool, *machine.clock, RegistryToolPace::kWaitForEnd,
                         options.threads);
  RunObserver observer;
  SharingArchives sharing(machine, context.stagingFolder);
  Machine target = machine;
  if (options.share) target.archives = &sharing;
  const ExportReport report =
      RunExport({context, target, tool, observer}, categories.chosen, output);
  const ExitStatus status = Conclude(session, report, options.categories);
  const bool isWritten = report.package.outcome == ArchiveResult::kDone;
  if (options.share && isWritten) PrintLeftOut(session, sharing.LeftOut());
  return status;
}

}  // namespace

ExitStatus RunExportVerb(const Session& session, const ExportOptions& options) {
  if (const auto refusal = RefusalOfLabels(options.categories)) return session.Misused(*refusal);
  const std::wstring output = WithPackageExtension(options.output);
  if (!IsPackageName(output)) return session.Misused(L"The package's name must end in .ucex");

  const auto owned = session.OpenMachine();
  if (!owned) return ExitStatus::kFailed;
  Machine machine = owned->Ports();
  machine.archives->UseThreads(options.threads);
  ProgressArchives archives(*machine.archives, session.console());
  machine.archives = &archives;
  SweepRunFolders(machine);
  ProductContext context;
  if (!LoadProductContext(context, machine)) {
    return session.Fail(TextOf(RunRefusal::kUnknownProduct));
  }
  EnumerateInstalledVersions(context, *machine.registry);
  if (const auto refusal = RefusalOfYear(context, options.year)) return session.Fail(*refusal);
  return ExportVersion(session, options, output, machine, context);
}

}  // namespace carrovan
