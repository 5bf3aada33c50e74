#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"
#include "platform/system_code.h"
#include "rewrite/rewrite_ports.h"

namespace carrovan {

// The first component of a path, between backslashes, that is a version such as "27.0": digits and
// exactly one dot, which is neither first nor last. Empty when there is none.
std::wstring VersionComponentOf(std::wstring_view path);

// Renames a folder whose last component holds the old text; case counts. A name of the drafting
// product of 2025 becomes that of 2024. On success `path` is the new path; on failure, and when
// there is nothing to rename, it stays. kSystemOk unless a renaming failed.
SystemCode RenameFolderPart(std::wstring& path, std::wstring_view oldText,
                            std::wstring_view newText, FileSystem& files);

struct RewriteInputs {
  std::wstring packageReleaseVersion;   // "2024"
  std::wstring packageInternalVersion;  // "26.0"
  std::wstring targetReleaseYear;
  std::wstring targetInternalVersion;
  std::wstring productName;
  std::wstring firstDraftingFolder;  // the drafting product's folder on this machine
};

// What the rewriting of a package makes of a path in a registry file or in a document. The path has
// one backslash between two names.
std::wstring RewrittenInRegistryFile(const std::wstring& path, const RewriteInputs& inputs,
                                     const UserIdentity& user);
std::wstring RewrittenInDocument(const std::wstring& path, const RewriteInputs& inputs);

// A file that was left as it is because it could not be read or written, or a folder that kept its
// name.
struct RewriteFailure {
  std::wstring path;
  SystemCode code = kSystemOk;
};

// Frees an unpacked package of the old user's and the old version's paths: renames folders that
// bear a version, and rewrites the ".xml" and ".reg" files in the folder and everything below it.
// Links are neither followed nor changed. Goes on after a failure; a folder that cannot be renamed
// keeps its name.
std::vector<RewriteFailure> RewritePackageTree(const std::wstring& folder,
                                               const RewriteInputs& inputs,
                                               const RewritePorts& ports);

}  // namespace carrovan
