#pragma once

#include <string>
#include <string_view>

namespace carrovan {

// UTF-8 as it is found in a host's file names and in 8-bit files, well-formed or not. A byte that
// is not UTF-8 becomes the unpaired surrogate U+DC80 to U+DCFF and turns into that byte again, so
// text that was decoded here encodes to the same bytes.
std::wstring FromLosslessUtf8(std::string_view bytes);

// Any other unpaired surrogate becomes U+FFFD.
std::string ToLosslessUtf8(std::wstring_view text);

}  // namespace carrovan
