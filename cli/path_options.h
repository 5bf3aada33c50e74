#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/run_output.h"
#include "cli/session.h"
#include "package/package_paths.h"

namespace carrovan {

// What an import is asked to do with the paths of its package.
struct PathOptions {
  std::vector<std::wstring> maps;  // "OLD=NEW"
  std::wstring mapFile;            // the same as lines; empty for none
  bool keepDeadPaths = false;

  bool AreGiven() const { return !maps.empty() || !mapFile.empty() || keepDeadPaths; }
};

// The rules that the options mean, or why they mean none.
struct PathRulesOrRefusal {
  PathRules rules;
  std::optional<std::wstring> misuse;   // an option that is wrong in itself
  std::optional<std::wstring> refusal;  // the file cannot be read
};
PathRulesOrRefusal RulesOf(const PathOptions& options, const FileReader& files);

}  // namespace carrovan
