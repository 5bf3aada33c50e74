#pragma once

#include <string>
#include <string_view>

#include "merge/ribbon_codec.h"
#include "platform/system_facts.h"

namespace carrovan {

// A ribbon record as JSON, indented for people: its fields by name, `children` an array. A text is
// a string, in which half of a surrogate pair is an escape; a text of 8 bits is an object whose
// "narrow" is the string, as the code page reads it. Reading what was printed gives the same
// record.
std::wstring RibbonToJson(const sRibbonElement& record, const CodePage& codePage);

// False for what is no JSON, a value of the wrong type or range, a name that is no field, or a
// record that nests too deep to be read back. A missing field keeps its fresh value.
[[nodiscard]] bool RibbonFromJson(std::string_view json, const CodePage& codePage,
                                  sRibbonElement& record);

}  // namespace carrovan
