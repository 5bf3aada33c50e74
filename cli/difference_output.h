#pragma once

#include <string>

#include "cli/session.h"
#include "compare/package_difference.h"

namespace carrovan {

// What the two sides of a comparison are called: a package's path, or "version 2026".
struct SideNames {
  std::wstring first;
  std::wstring second;
};

// One line for each item and each detail, behind "-" for what only the first has, "+" for what only
// the second has and "~" for what both have. Nothing in a line is obeyed by a terminal.
void PrintDifference(const Session& session, const SideNames& names,
                     const PackageDifference& difference);

// The same as a document; docs/command-line.md describes it.
void PrintDifferenceJson(const Session& session, const SideNames& names,
                         const PackageDifference& difference);

}  // namespace carrovan
