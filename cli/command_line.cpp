#include "cli/command_line.h"

#include <algorithm>
#include <sstream>

#include "cli/diff_verb.h"
#include "cli/fleet_verb.h"
#include "cli/merge_verbs.h"
#include "cli/report_output.h"
#include "cli/restore_verbs.h"
#include "cli/rewrite_verbs.h"
#include "cli/verbs.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  carrovan-cli versions\n"
    "  carrovan-cli export --version 2026 --all --output settings.ucex\n"
    "  carrovan-cli export --version 2026 --category Options \"Shortcut key\" --output keys.ucex\n"
    "  carrovan-cli import settings.ucex --to 2026 --all\n"
    "  carrovan-cli reset --category \"Interface layout\" --yes\n"
    "  carrovan-cli undo\n"
    "  carrovan-cli inspect settings.ucex\n"
    "  carrovan-cli verify settings.ucex\n"
    "  carrovan-cli extract settings.ucex folder\n"
    "  carrovan-cli diff old.ucex settings.ucex\n"
    "\n"
    "Exit status: 0 done; 1 failed or refused; 2 wrong usage; 3 done in part, with each item that\n"
    "was skipped named on standard error. 'carrovan-cli VERB --help' explains one verb.";

void AddVersions(CLI::App& app, VersionsOptions& options, Verb& chosen) {
  CLI::App* verb = app.add_subcommand(
      "versions",
      "List the installed versions of the CAD product and where each keeps its settings");
  AddJson(*verb, options.json);
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunVersionsVerb(session, options); };
  });
}

void AddExport(CLI::App& app, ExportOptions& options, Verb& chosen) {
  CLI::App* verb =
      app.add_subcommand("export", "Write the settings of one installed version into a package");
  AddText(*verb, "--version", options.year, "Release year of the version to export, such as 2026")
      ->required()
      ->type_name("YEAR");
  AddCategories(*verb, options.categories, "Every category that the version has");
  AddText(*verb, "--output", options.output,
          "Package to write (.ucex); one that is there is replaced")
      ->required()
      ->type_name("FILE");
  AddThreads(*verb, options.threads);
  verb->add_flag(
      "--share", options.share,
      "Leave out what is personal, such as recent files and the user's name, and say so");
  AddJson(*verb, options.json);
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunExportVerb(session, options); };
  });
}

void AddRunChoice(CLI::App& verb, RunChoice& choice) {
  CLI::Option* dryRun =
      verb.add_flag("--dry-run", choice.dryRun, "Change nothing; print what would change");
  verb.add_flag("--details", choice.details, "With --dry-run, also each file, key and value")
      ->needs(dryRun);
  verb.add_flag("--verify", choice.verify, "Read back every file and value that was to change");
  verb.add_flag("--no-restore-point", choice.noRestorePoint,
                "Keep nothing with which the run could be undone");
  verb.add_flag("--verbose", choice.verbose, "Also print what the run reports while it works");
  AddJson(verb, choice.json);
  AddReport(verb, choice.report);
}

void AddPathOptions(CLI::App& verb, PathOptions& options) {
  AddTexts(verb, "--map", options.maps,
           "Put NEW in the place of OLD at the front of the package's paths; may be repeated")
      ->type_name("OLD=NEW");
  AddText(verb, "--map-file", options.mapFile, "A file with a line OLD=NEW for each")
      ->type_name("FILE");
  verb.add_flag("--keep-dead-paths", options.keepDeadPaths,
                "Import values also if they name a path that does not exist here");
}

void AddImport(CLI::App& app, ImportOptions& options, Verb& chosen) {
  CLI::App* verb = app.add_subcommand(
      "import", "Bring a package's settings into an installed version, merged with what is there");
  AddText(*verb, "PACKAGE", options.package, "The package (.ucex or .ucx)")->required();
  AddText(*verb, "--to", options.year,
          "Release year of the version to import into; a .ucx package names it itself")
      ->type_name("YEAR");
  AddCategories(*verb, options.categories,
                "Every category that the package holds; the only choice for a .ucx package");
  verb->add_flag("--trust", options.trust,
                 "Take the package even if there are reasons not to trust it; inspect lists them");
  AddPathOptions(*verb, options.paths);
  AddThreads(*verb, options.threads);
  AddRunChoice(*verb, options.run);
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunImportVerb(session, options); };
  });
}

void AddReset(CLI::App& app, ResetOptions& options, Verb& chosen) {
  CLI::App* verb = app.add_subcommand(
      "reset", "Put categories of the running version back to the factory defaults");
  AddCategories(*verb, options.categories, "Every category");
  verb->add_flag("--yes", options.yes, "Really reset; not needed with --dry-run");
  AddRunChoice(*verb, options.run);
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunResetVerb(session, options); };
  });
}

void AddInspect(CLI::App& app, InspectOptions& options, Verb& chosen) {
  CLI::App* verb = app.add_subcommand(
      "inspect", "Show what a package holds, what an import would refuse and why not to trust it");
  AddText(*verb, "PACKAGE", options.package, "The package (.ucex or .ucx)")->required();
  CLI::Option* paths =
      verb->add_flag("--paths", options.paths, "List the absolute paths that the package names");
  AddText(*verb, "--to", options.year,
          "Release year of the version for which paths are looked up; the newest without it")
      ->type_name("YEAR")
      ->needs(paths);
  AddJson(*verb, options.json);
  CLI::Option* personal =
      verb->add_flag("--private", options.findPrivate,
                     "Show what is personal in it: what 'export --share' would leave out")
          ->excludes(paths);
  // The page shows what inspect shows without either.
  AddReport(*verb, options.report)->excludes(paths)->excludes(personal);
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunInspectVerb(session, options); };
  });
}

void AddVerify(CLI::App& app, VerifyOptions& options, Verb& chosen) {
  CLI::App* verb = app.add_subcommand(
      "verify", "Check a package alone: its archive, description, registry files and documents");
  AddText(*verb, "PACKAGE", options.package, "The package (.ucex or .ucx)")->required();
  AddJson(*verb, options.json);
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunVerifyVerb(session, options); };
  });
}

void AddExtract(CLI::App& app, ExtractOptions& options, Verb& chosen) {
  CLI::App* verb = app.add_subcommand("extract", "Unpack a package into a folder");
  AddText(*verb, "PACKAGE", options.package, "The package (.ucex or .ucx)")->required();
  AddText(*verb, "FOLDER", options.folder, "Folder to unpack into; created when it is missing")
      ->required();
  AddThreads(*verb, options.threads);
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunExtractVerb(session, options); };
  });
}

struct MergeOptions {
  MergeXmlOptions xml;
  MergeFoldersOptions folders;
  MergeShortcutsOptions shortcuts;
};

void AddMergeXml(CLI::App& app, MergeXmlOptions& options, Verb& chosen) {
  CLI::App* verb = app.add_subcommand(
      "merge-xml", "Merge a customization document of an older version into that of a newer one");
  AddText(*verb, "OLD", options.oldPath, "The older version's document")->required();
  AddText(*verb, "NEW", options.newPath, "The newer version's document, the base")->required();
  AddText(*verb, "OUTPUT", options.output, "The document to write")->required();
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunMergeXmlVerb(session, options); };
  });
}

void AddMergeFolders(CLI::App& app, MergeFoldersOptions& options, Verb& chosen) {
  CLI::App* verb = app.add_subcommand(
      "merge-folders", "Bring the XML files of an older version's folder up to date, with a log");
  AddText(*verb, "OLD", options.oldFolder, "The folder to update; its files are backed up")
      ->required();
  AddText(*verb, "NEW", options.newFolder, "The newer version's folder; gains files it lacks")
      ->required();
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunMergeFoldersVerb(session, options); };
  });
}

void AddMergeShortcuts(CLI::App& app, MergeShortcutsOptions& options, Verb& chosen) {
  CLI::App* verb = app.add_subcommand(
      "merge-shortcuts", "Carry keyboard shortcuts of an older version into a newer one's files");
  AddText(*verb, "OLD", options.oldFolder, "The older version's folder")->required();
  AddText(*verb, "NEW", options.newFolder, "The folder to update")->required();
  AddText(*verb, "TABLE", options.table, "Name of the element that holds the shortcuts")
      ->required();
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunMergeShortcutsVerb(session, options); };
  });
}

void AddMerges(CLI::App& app, MergeOptions& options, Verb& chosen) {
  AddMergeXml(app, options.xml, chosen);
  AddMergeFolders(app, options.folders, chosen);
  AddMergeShortcuts(app, options.shortcuts, chosen);
}

void AddRibbon(CLI::App& app, Verb& chosen) {
  app.add_subcommand("ribbon-decode",
                     "Turn a ribbon record's hexadecimal text on standard input into JSON")
      ->callback([&] { chosen = RunRibbonDecodeVerb; });
  app.add_subcommand("ribbon-encode",
                     "Turn the JSON of a ribbon record on standard input into hexadecimal text")
      ->callback([&] { chosen = RunRibbonEncodeVerb; });
}

struct RewritingOptions {
  RewriteOptions rewrite;
  RetargetOptions retarget;
  MigrateOptions migrate;
};

void AddRewrite(CLI::App& app, RewriteOptions& options, Verb& chosen) {
  CLI::App* verb = app.add_subcommand(
      "rewrite", "Free an unpacked package of the old user's and the old version's paths");
  AddText(*verb, "FOLDER", options.folder, "The unpacked package")->required();
  RewriteInputs& inputs = options.inputs;
  AddText(*verb, "--product", inputs.productName, "Product name of the package")->required();
  AddText(*verb, "--package-release", inputs.packageReleaseVersion,
          "Release year of the package, such as 2025")
      ->required()
      ->type_name("YEAR");
  AddText(*verb, "--package-internal", inputs.packageInternalVersion,
          "Internal version of the package, such as 27.0")
      ->required()
      ->type_name("VERSION");
  AddText(*verb, "--target-release", inputs.targetReleaseYear, "Release year to rewrite to")
      ->required()
      ->type_name("YEAR");
  AddText(*verb, "--target-internal", inputs.targetInternalVersion,
          "Internal version to rewrite to")
      ->required()
      ->type_name("VERSION");
  AddText(*verb, "--drafting-folder", inputs.firstDraftingFolder,
          "Folder of the 2D drafting product of the target version")
      ->required()
      ->type_name("PATH");
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunRewriteVerb(session, options); };
  });
}

void AddRetarget(CLI::App& app, RetargetOptions& options, Verb& chosen) {
  CLI::App* verb = app.add_subcommand(
      "retarget", "Replace the highest version that follows a product key in a legacy document");
  AddText(*verb, "FILE", options.file, "The document")->required();
  AddText(*verb, "KEY", options.key, "Product key, such as VANTRIC")->required();
  AddText(*verb, "VERSION", options.version, "Version to put in its place, such as 27.0")
      ->required();
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunRetargetVerb(session, options); };
  });
}

void AddMigrateOptions(CLI::App& app, MigrateOptions& options, Verb& chosen) {
  CLI::App* verb = app.add_subcommand(
      "migrate-options", "Carry the values of an option document into existing registry values");
  AddText(*verb, "XML", options.xmlPath, "The option document")->required();
  AddText(*verb, "COMPANY", options.company, "Company part of the registry key")->required();
  AddText(*verb, "PRODUCTKEY", options.productKey,
          "Product part of the registry key, such as \"VANTRIC 27.0\"")
      ->required();
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunMigrateOptionsVerb(session, options); };
  });
}

void AddRewriting(CLI::App& app, RewritingOptions& options, Verb& chosen) {
  AddRewrite(app, options.rewrite, chosen);
  AddRetarget(app, options.retarget, chosen);
  AddMigrateOptions(app, options.migrate, chosen);
}

std::vector<std::string> ReversedUtf8(const std::vector<std::wstring>& arguments) {
  std::vector<std::string> reversed;
  for (auto at = arguments.rbegin(); at != arguments.rend(); ++at) reversed.push_back(ToUtf8(*at));
  return reversed;
}

// Help and version texts go to standard output, everything else that stops parsing is wrong usage.
ExitStatus Explain(const CLI::App& app, const CLI::ParseError& error, Console& console) {
  std::ostringstream out;
  std::ostringstream err;
  const int code = app.exit(error, out, err);
  console.Out(FromUtf8(out.str()));
  console.Err(FromUtf8(err.str()));
  return code == 0 ? ExitStatus::kDone : ExitStatus::kUsage;
}

bool IsVerb(const CLI::App& app, const std::wstring& word) {
  const auto verbs = app.get_subcommands([](const CLI::App*) { return true; });
  return std::ranges::any_of(
      verbs, [&](const CLI::App* verb) { return verb->get_name() == ToUtf8(word); });
}

ExitStatus ParseAndRun(const std::vector<std::wstring>& arguments, Console& console) {
  CLI::App app("Carrovan moves a CAD user's settings between versions and machines.",
               "carrovan-cli");
  app.set_version_flag("--version", "carrovan-cli " CARROVAN_VERSION);
  app.footer(kExamples);
  app.require_subcommand(1);
  app.fallthrough();
  // A path may begin with a slash on every system. The verbs take this over from here.
  app.allow_windows_style_options(false);

  Session session(console);
  AddText(app, "--root", session.root,
          "Work on the machine kept in this folder instead of this one")
      ->type_name("DIR");
  VersionsOptions versions;
  ExportOptions exportOptions;
  ImportOptions importOptions;
  ResetOptions reset;
  InspectOptions inspect;
  VerifyOptions verify;
  ExtractOptions extract;
  DiffOptions diff;
  FleetOptions fleet;
  MergeOptions merge;
  RewritingOptions rewriting;
  RestoreOptions restore;
  Verb chosen;
  AddVersions(app, versions, chosen);
  AddExport(app, exportOptions, chosen);
  AddImport(app, importOptions, chosen);
  AddReset(app, reset, chosen);
  AddRestoreVerbs(app, restore, chosen);
  AddInspect(app, inspect, chosen);
  AddVerify(app, verify, chosen);
  AddExtract(app, extract, chosen);
  AddDiff(app, diff, chosen);
  AddFleet(app, fleet, chosen);
  AddMerges(app, merge, chosen);
  AddRewriting(app, rewriting, chosen);
  AddRibbon(app, chosen);

  if (!arguments.empty() && !arguments.front().starts_with(L'-') &&
      !IsVerb(app, arguments.front())) {
    return session.Misused(L"There is no verb \"" + arguments.front() +
                           L"\"; 'carrovan-cli --help' lists them");
  }
  try {
    app.parse(ReversedUtf8(arguments));
  } catch (const CLI::ParseError& error) {
    return Explain(app, error, console);
  }
  return chosen(session);
}

}  // namespace

ExitStatus RunCommandLine(const std::vector<std::wstring>& arguments, Console& console) {
  const ExitStatus status = ParseAndRun(arguments, console);
  // A result that nobody received is no result.
  return console.IsOutWhole() ? status : Session(console).Fail(L"Standard output was not written");
}

}  // namespace carrovan
