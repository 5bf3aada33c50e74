#include "registry_text/registry_key.h"

#include <gtest/gtest.h>

#include "text/text.h"

namespace carrovan {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(RegistryValue, StoresAStringWithItsTerminatingZero) {
  const RegistryValue value = MakeStringValue(L"name", L"a\x4E2D");
  EXPECT_EQ(value.name, L"name");
  EXPECT_EQ(value.type, kRegSz);
  EXPECT_EQ(value.data, (Bytes{0x61, 0x00, 0x2D, 0x4E, 0x00, 0x00}));
}

TEST(RegistryValue, StoresACharacterOutsideThe16BitRangeAsTwoUnits) {
  const RegistryValue value = MakeStringValue(L"", FromUtf8("\xF0\x9F\x98\x80"), kRegExpandSz);
  EXPECT_EQ(value.type, kRegExpandSz);
  EXPECT_EQ(value.data, (Bytes{0x3D, 0xD8, 0x00, 0xDE, 0x00, 0x00}));
}

TEST(RegistryValue, StoresAnEmptyStringAsAZero) {
  EXPECT_EQ(MakeStringValue(L"", L"").data, (Bytes{0, 0}));
}

TEST(RegistryValue, StoresANumberLittleEndian) {
  const RegistryValue value = MakeDwordValue(L"n", 0x1234ABCD);
  EXPECT_EQ(value.type, kRegDword);
  EXPECT_EQ(value.data, (Bytes{0xCD, 0xAB, 0x34, 0x12}));
}

}  // namespace
}  // namespace carrovan
