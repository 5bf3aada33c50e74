#pragma once

#include "package/export_run.h"

namespace carrovan {

// The registry file of the staging folder that a key is exported to. The Register key has no option
// subkey in its path and is named after the product and its release.
std::wstring RegistryFileOf(const ProductContext& context, const std::wstring& key);

// True for a key of the current user that exists, even when it may not be read. `fullPath` begins
// with the hive's full name.
bool IsKeyThere(const RegistryReader& registry, const std::wstring& fullPath);

// Keys that are there, though the package holds no file of them.
std::vector<std::wstring> KeysWithoutFile(const ExportRun& run, const PackageReport& package);

// Compares what was asked for with what was stored and fills the report's missing keys and empty
// categories. An archive that was not written has no findings.
void FindWhatIsMissing(const ExportRun& run, const ExportSelection& selection,
                       ExportReport& report);

}  // namespace carrovan
