#pragma once

#include <string>
#include <vector>

#include "platform/archive_library.h"
#include "platform/file_system.h"

namespace carrovan {

// Something in a package that is not right.
struct RefusedItem {
  std::wstring name;    // entry name, the description's file name, or "*" for the whole package
  std::wstring reason;  // what is wrong with it, as it reads behind the name and a colon

  bool operator==(const RefusedItem&) const = default;
};

// What a package says of itself and what is wrong with it.
struct PackageInspection {
  bool legacy = false;  // a ".ucx" package: one XML document, no description
  std::wstring company;
  std::wstring product;
  std::wstring releaseVersion;
  std::wstring internalVersion;
  bool shared = false;                          // it says that it was made to be shared
  std::vector<std::wstring> categories;         // labels that the package marks
  std::vector<std::wstring> unknownCategories;  // keys in their section that are no labels
  std::vector<ArchiveItem> entries;             // in stored order
  std::vector<RefusedItem> refused;    // what could not be taken even from a trusted package
  std::vector<RefusedItem> untrusted;  // why the package is not to be trusted
  bool contentWasRead = false;  // false for an absurd package, of which nothing else is known
};

// True for a file name with the extension ".ucx", in any case.
bool IsLegacyPackageName(const std::wstring& path);

// What a description says of its product; empty where it does not.
struct PackageIdentity {
  std::wstring company;
  std::wstring product;
};
PackageIdentity ReadPackageIdentity(ArchiveExaminer& archive);

// Reads every entry, as an import would, and writes nothing. Registry files may name keys of the
// company that the package itself names. Of a package that would unpack to an absurd size only the
// directory is read.
PackageInspection InspectPackage(ArchiveExaminer& archive, bool legacy);

// Why a file cannot be opened as an archive, for a file of which that is known: one line that names
// the file ("C:\a.ucex is not a package: it is empty").
std::wstring DescribeNoPackage(const FileReader& files, const std::wstring& path);

}  // namespace carrovan
