#pragma once

#include <optional>
#include <string>

#include "platform/machine.h"

namespace carrovan {

// Why a package is not to be trusted with a machine, in one line. One that the user trusts is
// refused only when its description would lead an import elsewhere. Nothing is unpacked. What is no
// package at all is left to the import to refuse.
std::optional<std::wstring> RefusalOfPackage(HostFiles& files, const std::wstring& package,
                                             bool trusted, const Machine& machine);

}  // namespace carrovan
