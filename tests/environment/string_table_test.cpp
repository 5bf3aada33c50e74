#include "environment/string_table.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace carrovan {
namespace {

TEST(StringTable, NumbersAscendWithoutRepeats) {
  const auto table = StringTable();
  EXPECT_TRUE(std::is_sorted(table.begin(), table.end(),
                             [](const auto& a, const auto& b) { return a.id <= b.id; }));
  EXPECT_EQ(
      std::ranges::count_if(
          table, [](const StringTableEntry& entry) { return static_cast<int>(entry.id) < 200; }),
      72);
}

TEST(StringTable, EveryTextIsFoundByItsNumber) {
  for (const StringTableEntry& entry : StringTable()) {
    EXPECT_EQ(Text(entry.id), entry.text);
    EXPECT_FALSE(entry.text.empty());
  }
}

TEST(StringTable, UnknownNumberHasNoText) {
  EXPECT_EQ(Text(static_cast<StringId>(105)), L"");
  EXPECT_EQ(Text(static_cast<StringId>(999)), L"");
}

TEST(StringTable, TrailingBlanksAreKept) {
  EXPECT_EQ(Text(static_cast<StringId>(120)),
            L"Your settings have been successfully exported to  ");
  EXPECT_EQ(Text(static_cast<StringId>(121)),
            L"Your settings have been successfully imported to  ");
  EXPECT_EQ(
      Text(static_cast<StringId>(122)),
      L"Relevant settings selected have been reset. \n\nSettings take effect after restarting ");
}

TEST(StringTable, MessagesSpellTheProductAsTheyAlwaysDid) {
  EXPECT_EQ(Text(static_cast<StringId>(178)), L"Please run Vantric at least once");
  EXPECT_NE(Text(static_cast<StringId>(177)).find(L"run Vantric at"), std::wstring_view::npos);
  EXPECT_NE(Text(static_cast<StringId>(181)).find(L"run VANTRIC at"), std::wstring_view::npos);
  EXPECT_NE(Text(static_cast<StringId>(182)).find(L"run VANTRIC at"), std::wstring_view::npos);
}

}  // namespace
}  // namespace carrovan
