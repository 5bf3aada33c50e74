#pragma once

#include <cstdlib>

namespace carrovan {

// A number that an environment variable gives a test.
inline unsigned FromEnvironment(const char* name, unsigned otherwise) {
  const char* const text = std::getenv(name);
  return text == nullptr ? otherwise : static_cast<unsigned>(std::strtoul(text, nullptr, 10));
}

}  // namespace carrovan
