#pragma once

#include <string>

#include "platform/windows/resource_module.h"

namespace carrovan {

// The resources in the language that the CAD product runs in: the library of this name in the
// language's folder beside the program. Without such a library they are the program's own.
ResourceModule LoadLanguageResources(const std::wstring& baseName);

}  // namespace carrovan
