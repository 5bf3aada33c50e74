#include "platform/windows/module_loading.h"

#include <gtest/gtest.h>

#include "environment/string_table.h"

namespace carrovan {
namespace {

TEST(ModuleStrings, ResourcesHoldEveryTextOfTheTableUnderItsNumber) {
  for (const StringTableEntry& entry : StringTable()) {
    const int number = static_cast<int>(entry.id);
    EXPECT_EQ(LoadModuleString(static_cast<unsigned>(number)), entry.text) << number;
  }
}

TEST(ModuleStrings, NumberWithoutATextIsEmpty) { EXPECT_EQ(LoadModuleString(105), L""); }

}  // namespace
}  // namespace carrovan
