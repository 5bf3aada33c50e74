#pragma once

#include <string>

namespace carrovan {

// What every page has in common: its policy, its look and its script. The policy names the style
// and the script by their sums, so that no other can take effect.

std::string PageBeginning(const std::string& title);

// Goes behind the content.
std::string PageEnd();

}  // namespace carrovan
