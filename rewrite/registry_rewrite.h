#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/system_code.h"
#include "rewrite/rewrite_ports.h"

namespace carrovan {

// Rewriting of registry files. A file is read whole and, when something in it changed, replaced in
// one step in its own encoding. Each operation gives the code of the reading or writing that
// failed; the file is then as it was and nothing is reported.

struct Replacement {
  std::wstring search;  // empty: replaces nothing
  std::wstring replacement;
};

// Replaces every occurrence; case counts.
SystemCode ReplaceInRegFile(const std::wstring& file, const Replacement& replacement,
                            const RewritePorts& ports);

// Puts the current user's name in the place of another user's in paths of four spellings, and the
// user's profile in the place of %USERPROFILE%; reports the number. Does nothing when the system
// cannot tell the user's name.
SystemCode ReplaceUserPaths(const std::wstring& file, const RewritePorts& ports);

// Drops the string values that are absolute paths to nothing; reports their number. With none of
// them the file stays as it is and nothing is reported.
SystemCode RemoveInvalidAbsolutePaths(const std::wstring& file, const RewritePorts& ports);

// All of this one after the other, the replacements first, but reading and writing the file once.
SystemCode RewriteRegFile(const std::wstring& file, const std::vector<Replacement>& replacements,
                          const RewritePorts& ports);

}  // namespace carrovan
