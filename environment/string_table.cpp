#include "environment/string_table.h"

#include <algorithm>

namespace carrovan {
namespace {

constexpr StringTableEntry kTable[] = {
#define CARROVAN_STRING(number, name, text) {StringId::name, L##text},
#include "resources/strings.inc"
#undef CARROVAN_STRING
};

}  // namespace

std::span<const StringTableEntry> StringTable() { return kTable; }

std::wstring_view Text(StringId id) {
  const auto at = std::lower_bound(
      std::begin(kTable), std::end(kTable), id,
      [](const StringTableEntry& entry, StringId wanted) { return entry.id < wanted; });
  return at != std::end(kTable) && at->id == id ? at->text : std::wstring_view();
}

}  // namespace carrovan
