#pragma once

#include <nlohmann/json.hpp>

#include "cli/session.h"
#include "cli/verbs.h"
#include "package/package_inspection.h"
#include "package/package_paths.h"

namespace carrovan {

// How the paths of a package are shown.

// Lists the paths of a package, as they are on the machine where there is one.
ExitStatus InspectPaths(const Session& session, const InspectOptions& options,
                        ArchiveExaminer& archive, const PackageInspection& inspection);

// What inspect lists.
void PrintPathListing(const Session& session, const PathListing& listing);
nlohmann::json PathListingJson(const PathListing& listing);

// What becomes of the paths in an import: their number by fate, then each with the value or the
// document's line that goes with it.
void PrintImportedPathCounts(const Session& session, const std::vector<ImportedPath>& paths);
void PrintImportedPaths(const Session& session, const std::vector<ImportedPath>& paths);
nlohmann::json ImportedPathsJson(const std::vector<ImportedPath>& paths);

}  // namespace carrovan
