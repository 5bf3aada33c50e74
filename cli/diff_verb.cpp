#include "cli/diff_verb.h"

#include <memory>
#include <optional>
#include <utility>

#include "cli/difference_output.h"
#include "cli/report_output.h"
#include "compare/package_difference.h"
#include "environment/installed_versions.h"
#include "environment/version_folders.h"
#include "environment/wizard_state.h"
#include "package/export_run.h"
#include "package/staging_folder.h"
#include "report/difference_page.h"
#include "text/text.h"

namespace carrovan {
namespace {

// A package that is read, or why there is none.
struct OpenedSide {
  std::wstring name;
  std::unique_ptr<ArchiveExaminer> archive;
  PackageInspection inspection;
};

// Names on standard error why there is none.
std::optional<OpenedSide> OpenSide(const Session& session, HostFiles& files,
                                   const std::wstring& path, std::wstring name) {
  OpenedSide side{std::move(name), files.Examine(path), {}};
  if (!side.archive) {
    session.Complain(DescribeNoPackage(files.Files(), path));
    return std::nullopt;
  }
  side.inspection = InspectPackage(*side.archive, IsLegacyPackageName(path));
  if (side.inspection.contentWasRead) return side;
  session.Complain(side.name + L" is not compared: " + side.inspection.untrusted.front().reason);
  return std::nullopt;
}

// A folder in the temporary path that goes away with this.
class RunFolder {
 public:
  explicit RunFolder(const Machine& machine) : files_(*machine.files) {
    const auto path = NewRunFolderPath(machine);
    if (!path || files_.CreateFolder(*path) != kSystemOk) return;
    path_ = *path;
    MarkRunFolder(files_, path_);
  }
  ~RunFolder() {
    if (IsMade()) static_cast<void>(WipeRunFolder(files_, path_));
  }
  RunFolder(const RunFolder&) = delete;
  RunFolder& operator=(const RunFolder&) = delete;

  bool IsMade() const { return !path_.empty(); }
  const std::wstring& Path() const { return path_; }

 private:
  FileSystem& files_;
  std::wstring path_;
};

// Versions of this machine as packages, which are gone with this.
class VersionPackages {
 public:
  explicit VersionPackages(const Session& session) : session_(session) {}

  // Empty after saying why there is none. Only the given categories, where there are any.
  std::wstring Export(const std::wstring& year, const std::vector<std::wstring>& labels) {
    if (!IsOpen() && !Open()) return {};
    ProductContext context = product_;
    if (const auto refusal = RefusalOfYear(context, year)) return Refused(*refusal);
    SelectShownVersion(context, year);
    const Machine machine = machine_->Ports();  // outlives the staging folder
    const StagingFolder staging(context, machine);
    if (!staging.IsMade() || !PrepareVersionFolders(context, machine)) {
      return Refused(L"The settings of version " + year + L" cannot be read");
    }
    return Exported(context, year, labels);
  }

 private:
  bool IsOpen() const { return folder_ != nullptr; }

  bool Open() {
    machine_ = session_.OpenMachine();
    if (!machine_) return false;
    const Machine machine = machine_->Ports();
    SweepRunFolders(machine);
    if (!LoadProductContext(product_, machine)) {
      session_.Complain(TextOf(RunRefusal::kUnknownProduct));
      return false;
    }
    EnumerateInstalledVersions(product_, *machine.registry);
    folder_ = std::make_unique<RunFolder>(machine);
    if (folder_->IsMade()) return true;
    session_.Complain(L"No folder can be made in the temporary path");
    return false;
  }

  std::wstring Refused(const std::wstring& reason) const {
    session_.Complain(reason);
    return {};
  }

  std::wstring Exported(ProductContext& context, const std::wstring& year,
                        const std::vector<std::wstring>& labels) const {
    const Machine machine = machine_->Ports();
    PacedRegistryTool tool(*machine.registryTool, *machine.clock, RegistryToolPace::kWaitForEnd);
    RunObserver observer;
    const ExportReport report =
        RunExport({context, machine, tool, observer}, Chosen(context, labels),
                  folder_->Path() + L"\\" + year + L".ucex");
    NameWhatFailed(session_, report);
    const bool isWhole = report.package.outcome == ArchiveResult::kDone &&
                         report.package.skipped.empty() && report.missingKeys.empty() &&
                         report.registryFileProblems.empty();
    if (isWhole) return report.archivePath;
    return Refused(L"Version " + year + L" is not compared: not all of it can be read");
  }

  static CategorySet Chosen(const ProductContext& context,
                            const std::vector<std::wstring>& labels) {
    CategorySet offered = OfferedOnExport(context);
    if (labels.empty()) return offered;
    CategorySet chosen;
    for (const std::wstring& label : labels) {
      const CategoryRecord* const record = FindCategoryByLabel(label);
      if (record != nullptr && offered.contains(record->category)) chosen.insert(record->category);
    }
    return chosen;
  }

  const Session& session_;
  std::unique_ptr<OwnedMachine> machine_;
  ProductContext product_;
  std::unique_ptr<RunFolder> folder_;
};

// Packages first, then versions, in the order in which they were named.
std::optional<std::vector<OpenedSide>> OpenSides(const Session& session, HostFiles& files,
                                                 const DiffOptions& options,
                                                 VersionPackages& versions) {
  std::vector<OpenedSide> sides;
  for (const std::wstring& path : options.packages) {
    auto side = OpenSide(session, files, path, path);
    if (!side) return std::nullopt;
    sides.push_back(std::move(*side));
  }
  const auto labels = sides.empty() ? std::vector<std::wstring>() : sides[0].inspection.categories;
  for (const std::wstring& year : options.years) {
    const std::wstring path = versions.Export(year, labels);
    if (path.empty()) return std::nullopt;
    auto side = OpenSide(session, files, path, L"version " + year);
    if (!side) return std::nullopt;
    sides.push_back(std::move(*side));
  }
  return sides;
}

}  // namespace

ExitStatus RunDiffVerb(const Session& session, const DiffOptions& options) {
  if (options.packages.size() + options.years.size() != 2) {
    return session.Misused(L"diff compares two: packages, or versions that --version names");
  }
  const ReportFile page(session, options.report);
  if (const auto refusal = page.Refusal()) return session.Fail(*refusal);
  const auto files = session.OpenFiles();
  if (!files) return ExitStatus::kFailed;
  VersionPackages versions(session);
  const auto sides = OpenSides(session, *files, options, versions);
  if (!sides) return ExitStatus::kFailed;
  const OpenedSide& first = sides->front();
  const OpenedSide& second = sides->back();
  if (first.inspection.legacy != second.inspection.legacy) {
    return session.Fail(L"A .ucx package can only be compared with another one");
  }
  const PackageDifference difference =
      ComparePackages({*first.archive, first.inspection}, {*second.archive, second.inspection});
  const SideNames names{first.name, second.name};
  if (options.json) {
    PrintDifferenceJson(session, names, difference);
  } else {
    PrintDifference(session, names, difference);
  }
  return page.Write(PageOfDifference(first.name, second.name, difference, NameOfProgram()),
                    difference.IsEmpty() ? ExitStatus::kDone : ExitStatus::kPartly);
}

void AddDiff(CLI::App& app, DiffOptions& options, Verb& chosen) {
  CLI::App* verb = app.add_subcommand(
      "diff", "Compare two packages, or a package with what a version of this machine has now");
  AddTexts(*verb, "PACKAGE", options.packages, "The packages (.ucex, or .ucx both)")
      ->expected(0, 2);
  AddTexts(*verb, "--version", options.years,
           "An installed version in place of a package; twice to compare two versions")
      ->type_name("YEAR");
  AddJson(*verb, options.json);
  AddReport(*verb, options.report);
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunDiffVerb(session, options); };
  });
}

}  // namespace carrovan
