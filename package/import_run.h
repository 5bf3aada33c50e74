#pragma once

#include "environment/wizard_state.h"
#include "package/paced_registry_tool.h"
#include "package/package_paths.h"
#include "package/run_report.h"
#include "platform/console.h"
#include "platform/xml_dom.h"
#include "rewrite/rewrite_ports.h"

namespace carrovan {

// The import of a package in its steps, between which a user may be asked: OpenPackage,
// CheckTarget, RunImportPreparation, ApplyPackage.

// What an import works with. The package was chosen, the target version is the context's
// `selectedVersion`.
struct ImportRun {
  ProductContext& context;
  PackageState& package;
  const Machine& machine;
  PacedRegistryTool& registryTool;
  XmlDom& dom;
  LineLog& log;
  RunObserver& observer;
  RunReport& report;              // of all steps from the opening of the package on
  PackagePaths* paths = nullptr;  // what the user wants of the package's paths; null for nothing
};

RewritePorts RewritePortsOf(const ImportRun& run);

// A value of the package's description. A missing or empty one reads "Please check the file.".
std::wstring ReadConfigValue(const std::wstring& key, const std::wstring& section,
                             const std::wstring& path, const ProfileReader& profiles);

// Unpacks the package into the staging folder, over what is there, and reads its description into
// the package state. The report starts afresh.
void OpenPackage(const ImportRun& run);

// Why the opened package is not for the target: it is newer, or the target was never started by
// this user, which no product is whose company or name is not one plain name.
std::optional<RunRefusal> CheckTarget(const ImportRun& run);

// True when the package is of another release than the target, so that the preparation mends paths
// and versions in it.
bool NeedsMending(const ImportRun& run);

// What is known when a package is ready to be applied.
struct ImportPreparation {
  CategorySet offered;                // the categories that the package marks
  std::optional<RunRefusal> refusal;  // kFoldersMissing: nothing can be imported
};

// Finds the target's folders and mends a package of another release. Refused when the target's
// folders are then missing, or when the system does not know the user's folders.
ImportPreparation RunImportPreparation(const ImportRun& run);

// Applies the unpacked package: each offered category is either merged and put in place or, when it
// was not chosen, taken out of the package; the registry files are imported, and what is then in
// the package is laid over the user's profile.
void ApplyPackage(const ImportRun& run, const CategorySet& offered, const CategorySet& chosen);

// What is reported when an import has run.
std::wstring ImportFinishText(const ProductContext& context,
                              const TextSource& texts = EnglishTexts());

}  // namespace carrovan
