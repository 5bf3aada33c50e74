#pragma once

#include <filesystem>
#include <string>

namespace carrovan {

// Between the program's text and the names that the host gives to files. On a host whose names are
// bytes, a name that is not UTF-8 is still a text of its own (see FromLosslessUtf8), and a
// backslash within a name, which is no separator there, appears as U+F05C. On Windows both are the
// same text.

// A host path; backslashes and slashes separate folders.
std::filesystem::path HostPathFromText(const std::wstring& text);

// One name, without folders.
std::wstring TextFromHostName(const std::filesystem::path& name);

}  // namespace carrovan
