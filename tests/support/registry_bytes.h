#pragma once

#include <string>
#include <string_view>

#include "text/text.h"

namespace carrovan {

// A registry file with this text, as the registry tool writes it: UTF-16 behind its mark.
inline std::string RegistryBytes(std::string_view utf8) {
  const auto bytes = EncodeText({FromUtf8(utf8), true});
  return {bytes.begin(), bytes.end()};
}

// The same with the tool's header in front.
inline std::string RegistryFileBytes(std::string_view lines) {
  return RegistryBytes("Windows Registry Editor Version 5.00\r\n\r\n" + std::string(lines));
}

}  // namespace carrovan
