#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "package/package_inspection.h"
#include "platform/archive_library.h"

namespace carrovan {

// Reasons not to trust a package with a machine. Everything in a package may come from a stranger:
// a registry key could start a program at the next logon, a name could lead somewhere else, a small
// archive could fill the disk.

// A package is absurd when it unpacks to more than a gigabyte and to more than a thousand times its
// own size. Settings compress ten times at best, and the format itself ends at 1,032 times for
// anything but overlapping items; below the gigabyte even that does no harm.
inline constexpr std::uint64_t kLargestPlausibleRatio = 1000;
inline constexpr std::uint64_t kHarmlessBytes = std::uint64_t{1} << 30;

enum class PackageKind {
  kFull,    // ".ucex": a description, folders and registry files
  kLegacy,  // ".ucx": one document; its folders mean nothing
};

// True for the items that an import gives to the registry tool, whatever their extension: those
// directly in the folders "Options" and "Register".
bool IsRegistryFileName(std::wstring_view itemName);

// Why a package is absurd, judged by its directory alone; nothing for any other.
std::optional<RefusedItem> RefusalOfSize(const ArchiveExaminer& archive);

// True for a text that can be the name of one folder and of one key, and of nothing else: an import
// looks for the package's folders below its company and product and removes what is not chosen.
bool IsPlainName(std::wstring_view name);

// Why a package's company and product name no place of their own in the profile or the registry. A
// product that is missing leads nowhere.
std::optional<std::wstring> RefusalOfIdentity(const std::wstring& company,
                                              const std::wstring& product);

// Every reason, in the order of the items; none for a package to trust. What an item's two headers
// say differently counts, since what unpacks it may go by the one that was not judged. The registry
// files may name keys of this company. Of an absurd package only the size is reported and no
// content is read; of others the registry files are, which must be understood whole; what no
// registry tool could take for a registry file is no reason.
std::vector<RefusedItem> ReasonsForDistrust(ArchiveExaminer& archive, PackageKind kind,
                                            const std::wstring& company);

}  // namespace carrovan
