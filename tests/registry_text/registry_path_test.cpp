#include "registry_text/registry_key.h"

#include <gtest/gtest.h>

namespace carrovan {
namespace {

TEST(RegistryPath, TakesNamesOffAPathOneByOne) {
  std::wstring_view path = L"\\a\\\\b c\\";
  EXPECT_EQ(TakeKeyName(path), L"a");
  EXPECT_EQ(TakeKeyName(path), L"b c");
  EXPECT_EQ(TakeKeyName(path), L"");
  EXPECT_EQ(TakeKeyName(path), L"");
}

}  // namespace
}  // namespace carrovan
