#include <algorithm>

#include "cli/command_line_view.h"
#include "cli/progress.h"
#include "cli/verbs.h"
#include "environment/category_checklist.h"
#include "environment/installed_versions.h"
#include "environment/version_folders.h"
#include "environment/version_forms.h"
#include "package/export_run.h"
#include "package/staging_folder.h"
#include "platform/path_text.h"
#include "platform/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kPackageExtension[] = L".ucex";

// The staging folder goes away however the export ends.
class StagingFolder {
 public:
  StagingFolder(ProductContext& context, const Machine& machine)
      : context_(context), machine_(machine), made_(RenewStagingFolder(context, machine)) {}
  ~StagingFolder() {
    if (made_) DeleteStagingFolder(context_, machine_);
  }
  StagingFolder(const StagingFolder&) = delete;
  StagingFolder& operator=(const StagingFolder&) = delete;

  bool IsMade() const { return made_; }

 private:
  ProductContext& context_;
  const Machine& machine_;
  bool made_;
};

std::wstring KnownLabels() {
  std::wstring labels;
  for (const CategoryRecord& record : CategoryTable()) {
    labels += (labels.empty() ? L"\"" : L", \"") + std::wstring(Text(record.label)) + L"\"";
  }
  return labels;
}

// As the save dialog does: a name without an extension gets the package's own.
std::wstring WithPackageExtension(const std::wstring& output) {
  return FileNameOf(output).find(L'.') == std::wstring::npos ? output + kPackageExtension : output;
}

bool IsPackageName(const std::wstring& path) {
  const std::wstring name = FileNameOf(path);
  const std::size_t length = std::size(kPackageExtension) - 1;
  return name.size() > length &&
         EqualsIgnoringAsciiCase(name.substr(name.size() - length), kPackageExtension);
}

bool IsInstalled(const ProductContext& context, const std::wstring& year) {
  return std::ranges::any_of(context.installedVersions, [&](const InstalledVersion& version) {
    return YearForm(version.internalVersion) == year;
  });
}

std::wstring InstalledYears(const ProductContext& context) {
  std::wstring years;
  for (const InstalledVersion& version : context.installedVersions) {
    years += (years.empty() ? L"" : L", ") + YearForm(version.internalVersion);
  }
  return years;
}

// Labels that the version does not offer are named; true when there are none.
bool CheckCategories(const Session& session, const ExportOptions& options,
                     CategoryChecklist& checklist) {
  if (options.all) return true;
  checklist.SetAllChecked(false);
  bool offered = true;
  for (const std::wstring& label : options.labels) {
    if (checklist.SetChecked(FindCategoryByLabel(label)->category, true)) continue;
    session.Complain(L"\"" + label + L"\" is not offered for version " + options.year);
    offered = false;
  }
  return offered;
}

ExitStatus Conclude(const Session& session, const ExportReport& report,
                    const CommandLineView& view) {
  const PackageReport& package = report.package;
  if (package.outcome != ArchiveResult::kDone) {
    return session.Fail(L"The package " + report.archivePath + L" was not written: " +
                        DescribeArchiveResult(package.outcome));
  }
  for (const SkippedItem& item : package.skipped) {
    session.Complain(L"Not stored: " + item.path + L": " + DescribeArchiveResult(item.reason));
  }
  for (const std::wstring& key : report.missingKeys) {
    session.Complain(L"Not stored: " + key + L": the registry tool could not export the key");
  }
  for (const SettingCategory category : report.emptyCategories) {
    const auto* record = FindCategory(static_cast<int>(category));
    session.Complain(L"Not stored: \"" + std::wstring(Text(record->label)) +
                     L"\": this version has nothing of it");
  }
  session.Print(view.FinishText());
  const bool complete =
      package.skipped.empty() && report.missingKeys.empty() && report.emptyCategories.empty();
  return complete ? ExitStatus::kDone : ExitStatus::kPartly;
}

ExitStatus ExportVersion(const Session& session, const ExportOptions& options,
                         const Machine& machine, CommandLineView& view, ProductContext& context) {
  SelectVersion(context, options.year);
  const StagingFolder staging(context, machine);
  if (!staging.IsMade())
    return session.Fail(L"No staging folder can be made in the temporary path");
  if (!PrepareVersionFolders(context, machine)) {
    return session.Fail(L"The folders of version " + options.year + L" cannot be told");
  }
  CategoryChecklist checklist = CategoryChecklist::ForExport(context);
  if (!CheckCategories(session, options, checklist)) return ExitStatus::kFailed;

  RegistryTool tool(machine.interpreter, machine.clock, RegistryToolPace::kWaitForEnd);
  const auto report = RunExport({context, machine, tool, view, checklist});
  return report ? Conclude(session, *report, view) : ExitStatus::kFailed;
}

}  // namespace

ExitStatus RunExportVerb(const Session& session, const ExportOptions& options) {
  for (const std::wstring& label : options.labels) {
    if (FindCategoryByLabel(label) == nullptr) {
      return session.Misused(L"There is no category \"" + label + L"\"; there are " +
                             KnownLabels());
    }
  }
  const std::wstring output = WithPackageExtension(options.output);
  if (!IsPackageName(output)) return session.Misused(L"The package's name must end in .ucex");

  const auto owned = session.OpenMachine();
  if (!owned) return ExitStatus::kFailed;
  ProgressArchives archives(owned->Ports().archives, session.console());
  const Machine machine = WithArchives(owned->Ports(), archives);
  CommandLineView view(session, output);
  ProductContext context;
  if (!LoadProductContext(context, machine, view)) return ExitStatus::kFailed;
  EnumerateInstalledVersions(context, machine.registry);
  if (!IsInstalled(context, options.year)) {
    return session.Fail(L"Version " + options.year + L" is not installed; installed: " +
                        InstalledYears(context));
  }
  return ExportVersion(session, options, machine, view, context);
}

}  // namespace carrovan
