#pragma once

#include <string>
#include <string_view>

namespace carrovan {

// Text that comes from a package, as one line of a terminal shows it: control characters, line
// ends and marks that turn the writing direction become escapes such as "\u202e". Everything else
// stays, backslashes too.
std::wstring VisibleText(std::wstring_view text);

// The same of a value that may be very long: what is behind 200 characters is left out, which
// three dots say.
std::wstring VisibleValue(std::wstring_view text);

}  // namespace carrovan
