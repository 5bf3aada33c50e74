#pragma once

#include <string>
#include <vector>

#include "platform/archive_library.h"

namespace carrovan {

struct RefusedItem {
  std::wstring name;  // entry name, or the description's file name
  std::wstring reason;
};

// What a package says of itself and what is wrong with it.
struct PackageInspection {
  bool legacy = false;  // a ".ucx" package: one XML document, no description
  std::wstring company;
  std::wstring product;
  std::wstring releaseVersion;
  std::wstring internalVersion;
  std::vector<std::wstring> categories;  // labels that the package marks
  std::vector<ArchiveItem> entries;      // in stored order
  std::vector<RefusedItem> refused;      // what an import would not take; empty for a sound package
};

// True for a file name with the extension ".ucx", in any case.
bool IsLegacyPackageName(const std::wstring& path);

// Reads every entry, as an import would, and writes nothing.
PackageInspection InspectPackage(ArchiveExaminer& archive, bool legacy);

}  // namespace carrovan
