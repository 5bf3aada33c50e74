#pragma once

#include <string>

#include "platform/system_code.h"
#include "platform/windows/handles.h"

namespace carrovan {

// Full path of the running program.
std::wstring ProgramPath();

// Loads the library at a full path. What it needs itself is looked for in its own folder and the
// system's, never in the current folder. Returns kSystemOk or the system's error number; then
// `module` is empty and the user was shown nothing.
[[nodiscard]] SystemCode LoadModule(const std::wstring& path, ModuleHandle& module);

// A text of this program's own string table, as the resource compiler put it there; empty when
// there is none of that number.
std::wstring LoadModuleString(unsigned number);

}  // namespace carrovan
