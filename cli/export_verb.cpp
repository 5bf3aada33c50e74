#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli/category_choice.h"
#include "cli/json_text.h"
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

// One line for each file and key that is there and was not stored.
std::vector<std::wstring> NotStored(const ExportReport& report) {
  std::vector<std::wstring> lines;
  const auto add = [&lines](const std::wstring& what, const std::wstring& why) {
    lines.push_back(L"Not stored: " + what + L": " + why);
  };
  for (const SkippedItem& item : report.package.skipped) {
    add(item.path, DescribeArchiveResult(item.reason));
  }
  for (const MisplacedItem& item : report.package.misplaced) {
    add(item.path, DescribeMisplaced(item));
  }
  for (const auto& [key, problem] : report.registryFileProblems) {
    add(key, L"its registry file " + problem);
  }
  for (const std::wstring& key : report.missingKeys) {
    if (report.registryFileProblems.contains(key)) continue;
    add(key, L"the registry tool could not export the key");
  }
  return lines;
}

std::wstring LabelOf(SettingCategory category) {
  return std::wstring(Text(FindCategory(static_cast<int>(category))->label));
}

std::wstring FindingOfEmpty(SettingCategory category) {
  return L"\"" + LabelOf(category) + L"\": this version has nothing of it";
}

}  // namespace

void NameWhatFailed(const Session& session, const ExportReport& report) {
  for (const std::wstring& line : NotStored(report)) session.Complain(line);
}

namespace {

// What is missing from the package. Of the categories of which the version has nothing only one
// that was asked for by its name is; of every category that is there, it is none.
std::vector<std::wstring> ProblemsOf(const ExportReport& report, const CategoryChoice& choice) {
  std::vector<std::wstring> problems = NotStored(report);
  if (choice.all) return problems;
  for (const SettingCategory category : report.emptyCategories) {
    problems.push_back(L"Not stored: " + FindingOfEmpty(category));
  }
  return problems;
}

const char* OutcomeOf(SettingCategory category, const ExportReport& report) {
  const auto isIn = [category](const std::vector<SettingCategory>& categories) {
    return std::ranges::find(categories, category) != categories.end();
  };
  if (isIn(report.emptyCategories)) return "empty";
  return isIn(report.failedCategories) ? "not stored" : "stored";
}

// An export that wrote its package.
struct WrittenExport {
  const ExportOptions& options;
  const CategorySet& chosen;
  const ExportReport& report;
  std::vector<PrivateItem> leftOut;
  std::vector<std::wstring> problems;
  ExitStatus status;
};

nlohmann::json ToJson(const WrittenExport& written) {
  nlohmann::json categories = nlohmann::json::array();
  for (const SettingCategory category : written.chosen) {
    categories.push_back(
        {{"label", ToUtf8(LabelOf(category))}, {"outcome", OutcomeOf(category, written.report)}});
  }
  return {{"verb", "export"},
          {"version", ToUtf8(written.options.year)},
          {"package", ToUtf8(written.report.archivePath)},
          {"exitStatus", static_cast<int>(written.status)},
          {"categories", categories},
          {"shared", written.options.share},
          {"leftOut", PrivateItemsJson(written.leftOut)},
          {"problems", TextsToJson(written.problems)}};
}

void PrintLines(const Session& session, const WrittenExport& written) {
  for (const SettingCategory category : written.report.emptyCategories) {
    if (written.options.categories.all) session.Print(L"Empty: " + FindingOfEmpty(category));
  }
  session.Print(ExportFinishText(written.report.archivePath));
  if (written.options.share) PrintLeftOut(session, written.leftOut);
}

ExitStatus Print(const Session& session, const WrittenExport& written) {
  for (const std::wstring& problem : written.problems) session.Complain(problem);
  if (written.options.json) {
    PrintJsonText(session, ToJson(written));
  } else {
    PrintLines(session, written);
  }
  return written.status;
}

ExitStatus FailUnwritten(const Session& session, const ExportReport& report) {
  if (!report.refusal.empty()) NameWhatFailed(session, report);
  return session.Fail(
      L"The package " + report.archivePath + L" was not written: " +
      (report.refusal.empty() ? DescribeArchiveResult(report.package.outcome) : report.refusal));
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
  if (report.package.outcome != ArchiveResult::kDone) return FailUnwritten(session, report);
  std::vector<std::wstring> problems = ProblemsOf(report, options.categories);
  const ExitStatus status = problems.empty() ? ExitStatus::kDone : ExitStatus::kPartly;
  return Print(session, {options, categories.chosen, report, sharing.LeftOut(), std::move(problems),
                         status});
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
