#pragma once

#include <string>

#include "cli/session.h"
#include "platform/machine.h"

namespace carrovan {

// True, after saying why in one line, for a package that is not to be trusted with a machine. One
// that the user trusts is refused only when its description would lead an import elsewhere. Nothing
// is unpacked. What is no package at all is left to the import to refuse.
bool RefusePackage(const Session& session, const std::wstring& package, bool trusted,
                   const Machine& machine);

}  // namespace carrovan
