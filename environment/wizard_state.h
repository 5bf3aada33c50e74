#pragma once

#include <string>

#include "environment/product_context.h"

namespace carrovan {

// The package of an import. It is unpacked into the context's staging folder, the year of the
// version to import into is the context's `selectedVersion`.
struct PackageState {
  std::wstring path;             // as the file dialog gave it; empty until one was chosen
  std::wstring legacyXmlPath;    // the unpacked document of a legacy package
  std::wstring internalVersion;  // what the description says; for a legacy package `company` and
  std::wstring releaseVersion;   // `product` are the running product's
  std::wstring company;
  std::wstring product;
  std::wstring localFolder;    // the unpacked product folders, under the target's version number
  std::wstring roamingFolder;  //
  std::wstring targetInternalVersion;
  std::wstring defaultTargetText;    // offered for a legacy document that names no version
  std::wstring applicationDataRoot;  // parent of the user's Local folder, with trailing backslash
  std::wstring draftingFolder;  // the target's 2D drafting folder, found on entering the categories
};

// Where in the wizard the user is and what was chosen so far.
struct WizardState {
  MigrationMode mode = MigrationMode::kNone;
  int pageIndex = 0;  // in the mode's sequence of pages; 0 is the start page
  PackageState package;
};

// The state and the context hold the same mode at any time.
void ChooseMode(WizardState& state, ProductContext& context, MigrationMode mode);

// What the opening of the wizard puts into the package state: the running product's company and
// product, its version as the target, and the application-data root.
void InitializePackageState(PackageState& package, const ProductContext& context,
                            const Machine& machine);

// The years of the installed versions in list order. The last one becomes the version to work on;
// without any, `humanReadableVersion` becomes empty.
std::vector<std::wstring> ListInstalledYears(ProductContext& context);

// The version whose program runs, the last of the installed ones, becomes the one to work on.
void SelectRunningVersion(ProductContext& context);

// The version of a year becomes the one to export: on the version page, which may be shown again
// when another run has worked on another version since, and on the command line. The running
// version keeps the part of its number that a year does not name.
void SelectShownVersion(ProductContext& context, const std::wstring& yearForm);

// The user chose the version to import into.
void SelectTargetVersion(WizardState& state, ProductContext& context, const std::wstring& yearForm);

}  // namespace carrovan
