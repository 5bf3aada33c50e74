#pragma once

#include <string>

#include "tests/support/test_machine.h"

namespace carrovan {

// Makes a link to a folder, or to nothing, on a machine of NewTestMachine, with the folders around
// it. False when this system or this user makes none.
[[nodiscard]] bool MakeLink(TestMachine& machine, const std::wstring& path,
                            const std::wstring& target);

}  // namespace carrovan
