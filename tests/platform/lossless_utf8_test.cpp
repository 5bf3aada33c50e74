#include "platform/posix/host_access.h"

#include <gtest/gtest.h>

#include "text/text.h"

namespace carrovan {
namespace {

TEST(LosslessUtf8, GivesEveryByteBack) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all.push_back(static_cast<char>(byte));
  for (const std::string& bytes :
       {std::string(), std::string("plain"), std::string("\xC3\xA4 \xE4\xB8\xAD \xF0\x9F\x98\x80"),
        std::string("\xF0\x9F\x92\x80"),  // its second 16-bit unit is U+DC80
        std::string("bad \xFF\x80 byte"), std::string("\xE4\xB8"), std::string("\xED\xB2\x80"),
        std::string("\xC0\xAE\xC0\xAE"), std::string("\xC3\xC3\xA4"), all}) {
    EXPECT_EQ(ToLosslessUtf8(FromLosslessUtf8(bytes)), bytes);
  }
}

TEST(LosslessUtf8, ReadsWellFormedTextAsItIs) {
  const std::string utf8 = "a \xC3\xA4 \xE4\xB8\xAD \xF0\x9F\x98\x80";
  EXPECT_EQ(FromLosslessUtf8(utf8), FromUtf8(utf8));
}

TEST(LosslessUtf8, ShowsABadByteAsAnUnpairedSurrogate) {
  EXPECT_EQ(ToUtf16(FromLosslessUtf8("a\xFFz")), u"a\xDCFFz");
  EXPECT_EQ(ToUtf16(FromLosslessUtf8("\xC3")), u"\xDCC3");
}

TEST(LosslessUtf8, ReplacesAnyOtherUnpairedSurrogate) {
  for (const std::u16string units : {u"\xD83D", u"\xDC00", u"\xDC7F", u"\xDD00", u"\xDFFF"}) {
    EXPECT_EQ(ToLosslessUtf8(FromUtf16(units)), "\xEF\xBF\xBD");
  }
}

}  // namespace
}  // namespace carrovan
