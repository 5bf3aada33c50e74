#pragma once

#include <string>
#include <vector>

#include "cli/verbs.h"

namespace carrovan {

// The verb that compares two packages, a package and an installed version, or two versions.
struct DiffOptions {
  std::vector<std::wstring> packages;
  std::vector<std::wstring> years;  // versions of this machine
  bool json = false;
  std::wstring report;  // a page to write besides; empty for none
};
ExitStatus RunDiffVerb(const Session& session, const DiffOptions& options);

// The options outlive the application object.
void AddDiff(CLI::App& app, DiffOptions& options, Verb& chosen);

}  // namespace carrovan
