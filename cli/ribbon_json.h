#pragma once

#include <nlohmann/json_fwd.hpp>

#include "merge/ribbon_element.h"

namespace carrovan {

// A ribbon record as JSON: its fields by name, `children` an array. JSON is UTF-8; an unpaired
// surrogate of a text becomes U+FFFD.
nlohmann::json RibbonToJson(const sRibbonElement& record);

// False for a value of the wrong type or range, a name that is no field, or a record that nests too
// deep to be read back. A missing field keeps its fresh value.
[[nodiscard]] bool RibbonFromJson(const nlohmann::json& json, sRibbonElement& record);

}  // namespace carrovan
