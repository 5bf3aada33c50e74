#pragma once

#include <string>
#include <vector>

#include "cli/session.h"

namespace carrovan {

// What the command line can do. Each verb prints its result on standard output, says what went
// wrong on standard error and gives the exit status.

struct VersionsOptions {
  bool json = false;
};
ExitStatus RunVersionsVerb(const Session& session, const VersionsOptions& options);

struct ExportOptions {
  std::wstring year;
  bool all = false;
  std::vector<std::wstring> labels;
  std::wstring output;
};
ExitStatus RunExportVerb(const Session& session, const ExportOptions& options);

struct InspectOptions {
  std::wstring package;
  bool json = false;
};
ExitStatus RunInspectVerb(const Session& session, const InspectOptions& options);

struct ExtractOptions {
  std::wstring package;
  std::wstring folder;
};
ExitStatus RunExtractVerb(const Session& session, const ExtractOptions& options);

}  // namespace carrovan
