#pragma once

#include "environment/product_context.h"
#include "package/paced_registry_tool.h"
#include "package/run_report.h"

namespace carrovan {

// What the last steps of an import or a reset work with.
struct Placement {
  ProductContext& context;
  const std::wstring& applicationDataRoot;  // with trailing backslash
  const Machine& machine;
  PacedRegistryTool& registryTool;
  RunObserver& observer;
};

// Feeds every file directly in a folder to the registry tool. A missing folder gives no work. A
// file whose name the command interpreter would change is left out, as a problem.
void ImportRegistryFolder(const std::wstring& folder, const FileReader& files,
                          PacedRegistryTool& tool, RunReport& report);

// Lays the staging folder's "Local" and "Roaming" over the user's application data, by way of an
// archive in the staging folder. Files of the same name are replaced, others stay. False when
// something is not in place.
bool LayOverProfile(const Placement& placement, RunReport& report);

// Imports the registry files in the staging folder's "Options" and "Register", lays its "Local" and
// "Roaming" over the user's application data and removes the staging folder. Files of the same name
// are replaced, others stay. When something could not be put in place, the staging folder stays as
// its only copy, and the context gets a fresh one. Without a staging folder nothing is done.
void PutInPlace(const Placement& placement, RunReport& report);

}  // namespace carrovan
