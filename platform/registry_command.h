#pragma once

#include <optional>
#include <string>

namespace carrovan {

// The command lines with which the system's registry tool is started, as the command interpreter
// gets them.

std::wstring RegExportCommand(const std::wstring& keyPath, const std::wstring& filePath);
std::wstring RegImportCommand(const std::wstring& filePath);

// The file that a command line imports; nothing for any other command line.
std::optional<std::wstring> ImportedFile(const std::wstring& parameters);

}  // namespace carrovan
