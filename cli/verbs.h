#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "cli/category_choice.h"
#include "cli/path_options.h"
#include "cli/run_output.h"
#include "cli/session.h"
#include "cli/threads.h"
#include "package/export_run.h"

namespace carrovan {

// What the command line can do. Each verb prints its result on standard output, says what went
// wrong on standard error and gives the exit status.

struct VersionsOptions {
  bool json = false;
};
ExitStatus RunVersionsVerb(const Session& session, const VersionsOptions& options);

struct ExportOptions {
  std::wstring year;
  CategoryChoice categories;
  std::wstring output;
  unsigned threads = DefaultThreads();
  bool share = false;  // leave out what is personal
  bool json = false;
};
ExitStatus RunExportVerb(const Session& session, const ExportOptions& options);

// One line on standard error for each file and key that is there and was not stored.
void NameWhatFailed(const Session& session, const ExportReport& report);

struct ImportOptions {
  std::wstring package;
  std::wstring year;  // may be empty for a legacy package, which names its version itself
  CategoryChoice categories;
  bool trust = false;  // take even a package that there are reasons not to trust
  PathOptions paths;
  unsigned threads = DefaultThreads();
  RunChoice run;
};
ExitStatus RunImportVerb(const Session& session, const ImportOptions& options);

struct ResetOptions {
  CategoryChoice categories;
  bool yes = false;
  RunChoice run;
};
ExitStatus RunResetVerb(const Session& session, const ResetOptions& options);

struct InspectOptions {
  std::wstring package;
  bool paths = false;        // list them
  std::wstring year;         // of the version that they are looked up for; empty for the newest
  bool findPrivate = false;  // say what is personal instead of what it holds
  bool json = false;
  std::wstring report;  // a page to write about the package; empty for none
};
ExitStatus RunInspectVerb(const Session& session, const InspectOptions& options);

struct VerifyOptions {
  std::wstring package;
  bool json = false;
};
ExitStatus RunVerifyVerb(const Session& session, const VerifyOptions& options);

struct ExtractOptions {
  std::wstring package;
  std::wstring folder;
  unsigned threads = DefaultThreads();
};
ExitStatus RunExtractVerb(const Session& session, const ExtractOptions& options);

// What the verbs' options have in common.

// The verb that the command line names.
using Verb = std::function<ExitStatus(const Session&)>;

// CLI11 keeps text as UTF-8; it is turned into the program's own text as it is stored.
CLI::Option* AddText(CLI::App& app, const std::string& name, std::wstring& target,
                     const std::string& description);

// The same for an option that may be given several times.
CLI::Option* AddTexts(CLI::App& app, const std::string& name, std::vector<std::wstring>& targets,
                      const std::string& description);

// "--category LABEL..."
CLI::Option* AddLabels(CLI::App& app, CategoryChoice& choice, const std::string& description);

// Either "--all" or "--category LABEL...".
void AddCategories(CLI::App& verb, CategoryChoice& choice, const std::string& allDescription);

void AddJson(CLI::App& verb, bool& json);

}  // namespace carrovan
