#pragma once

#include <CLI/CLI.hpp>

namespace carrovan {

// As many threads as there are processor cores, within reason.
unsigned DefaultThreads();

// "--threads N", from 1 to 64, for a verb that writes or unpacks a package.
void AddThreads(CLI::App& verb, unsigned& threads);

}  // namespace carrovan
