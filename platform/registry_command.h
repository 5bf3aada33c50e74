#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace carrovan {

// The command lines with which the system's registry tool is started, as the command interpreter
// gets them.

std::wstring RegExportCommand(const std::wstring& keyPath, const std::wstring& filePath);
std::wstring RegImportCommand(const std::wstring& filePath);

// Whether the name of a file can stand in such a command line: the interpreter puts a variable's
// value in place of its name between percent signs, also within quotes, and a quote ends the name.
bool IsPlainToInterpreter(std::wstring_view name);

// The file that a command line imports; nothing for any other command line.
std::optional<std::wstring> ImportedFile(const std::wstring& parameters);

}  // namespace carrovan
