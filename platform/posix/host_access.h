#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/system_code.h"

namespace carrovan {

// Between the program's text and the names that the host gives to files. On a host whose names are
// bytes, a name that is not UTF-8 is still a text of its own (see FromLosslessUtf8), and a
// backslash within a name, which is no separator there, appears as U+F05C. On Windows both are the
// same text.

// The form in which the host takes paths and names.
using HostString = std::filesystem::path::string_type;
using HostStringView = std::basic_string_view<HostString::value_type>;

// A host path; backslashes and slashes separate folders.
HostString HostStringFromText(std::wstring_view text);
inline std::filesystem::path HostPathFromText(std::wstring_view text) {
  return {HostStringFromText(text)};
}

// One name, without folders.
std::wstring TextFromHostName(HostStringView name);

// True for what has this path itself, a link that leads nowhere included.
bool IsThere(const HostString& path);

// Hands on the names in a folder, in the host's own order; none of a folder that cannot be read.
void ForEachName(const HostString& folder, const std::function<void(HostStringView name)>& take);

// UTF-8 as it is found in a host's file names and in 8-bit files, well-formed or not. A byte that
// is not UTF-8 becomes the unpaired surrogate U+DC80 to U+DCFF and turns into that byte again, so
// text that was decoded here encodes to the same bytes.
std::wstring FromLosslessUtf8(std::string_view bytes);

// Any other unpaired surrogate becomes U+FFFD.
std::string ToLosslessUtf8(std::wstring_view text);

// Permissions do not bind the host's administrator. On a machine in a folder they bind everybody:
// what the owner of a file may not do, nobody may, so a read-only file is one for every user. Where
// nothing can be learned about the file, the answer is true and the operation itself will fail.
bool OwnerMayRead(const std::filesystem::path& path);
bool OwnerMayWrite(const std::filesystem::path& path);
bool OwnerMayWrite(const std::filesystem::file_status& status);

// True when a file may be created at the path, or the one that is there replaced.
bool MayPutFile(const std::filesystem::path& path);

// A folder itself, or a link to one.
bool LeadsToFolder(const std::filesystem::path& path);

// What a missing file's path is called: "path not found" is said of a folder on the way, "file not
// found" of the last name.
SystemCode MissingCode(const std::filesystem::path& path);

// Whether names can be made, or taken away, in the folder that the path names one in.
SystemCode CodeOfParent(const std::filesystem::path& path);

// The number that Windows has for a host's error.
SystemCode SystemCodeOf(const std::error_code& error);

}  // namespace carrovan
