#pragma once

#include <string>

#include "platform/windows/resource_module.h"

namespace carrovan {

// The resources in the language that the CAD product runs in: the library of this name in the
// language's folder beside the program. Without such a library they are the program's own.
ResourceModule LoadLanguageResources(const std::wstring& baseName);

// The process: loads what it needs and runs the wizard's window.
class CCarrovanApp {
 public:
  // Runs the wizard from its opening to its end, or shows the user why it cannot open. Always
  // false: when it returns nothing is left to run.
  bool InitInstance();
};

}  // namespace carrovan
