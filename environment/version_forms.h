#pragma once

#include <string>
#include <string_view>

namespace carrovan {

// A version appears in two forms: the year form that the user sees ("2025") and the internal form
// of registry key names ("27.0").

// The product numbers its releases from 1998: internal version = year - 1998.
inline constexpr int kFirstReleaseYear = 1998;

// The number at the front of a text as the C library reads it: blanks, a sign, decimal digits. Text
// without a number gives 0; a number that an int cannot hold gives the nearest one.
int LeadingInteger(std::wstring_view text);

// Likewise with a fraction and an exponent. Text without a number, and one that is too large or too
// small to hold, gives 0.
double LeadingNumber(std::wstring_view text);

// "27.0" gives "2025"; the fraction of the internal form is cut.
std::wstring YearForm(std::wstring_view internalForm);

// "2025" gives "27.0".
std::wstring InternalForm(std::wstring_view yearForm);

}  // namespace carrovan
