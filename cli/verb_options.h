#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "cli/category_choice.h"
#include "cli/exit_status.h"
#include "cli/session.h"

namespace carrovan {

// What the verbs' options have in common.

// The verb that the command line names.
using Verb = std::function<ExitStatus(const Session&)>;

// CLI11 keeps text as UTF-8; it is turned into the program's own text as it is stored.
CLI::Option* AddText(CLI::App& app, const std::string& name, std::wstring& target,
                     const std::string& description);

// "--category LABEL..."
CLI::Option* AddLabels(CLI::App& app, CategoryChoice& choice, const std::string& description);

// Either "--all" or "--category LABEL...".
void AddCategories(CLI::App& verb, CategoryChoice& choice, const std::string& allDescription);

void AddJson(CLI::App& verb, bool& json);

}  // namespace carrovan
