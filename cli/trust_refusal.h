#pragma once

#include <string>

#include "cli/session.h"

namespace carrovan {

// True, after saying why in one line, for a package that is not to be trusted with a machine on
// which this company's product is installed. Nothing is unpacked.
bool RefuseUntrusted(const Session& session, const std::wstring& package,
                     const std::wstring& company);

}  // namespace carrovan
