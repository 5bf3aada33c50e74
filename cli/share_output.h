#pragma once

#include <nlohmann/json.hpp>
#include <vector>

#include "cli/session.h"
#include "package/registry_privacy.h"
#include "platform/machine.h"

namespace carrovan {

// What is personal in a package, for people and programs. Nothing in a line is obeyed by a
// terminal.

// What an export left out, one line each, and how much that is.
void PrintLeftOut(const Session& session, const std::vector<PrivateItem>& leftOut);

// The same for programs.
nlohmann::json PrivateItemsJson(const std::vector<PrivateItem>& items);

struct InspectOptions;

// "inspect PACKAGE --private": what of this package would be left out of one to be shared.
ExitStatus RunPrivateInspection(const Session& session, const InspectOptions& options,
                                ArchiveExaminer& archive);

}  // namespace carrovan
