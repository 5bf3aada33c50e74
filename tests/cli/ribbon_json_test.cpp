#include "cli/ribbon_json.h"

#include <gtest/gtest.h>

#include <random>

#include "merge/ribbon_codec.h"
#include "platform/posix/host_facts.h"
#include "text/text.h"

namespace carrovan {
namespace {

// Two characters of a Chinese code page; a byte that belongs to none of them is no text.
class ChineseCodePage : public CodePage {
 public:
  std::u16string Decode(std::string_view bytes) const override {
    std::u16string text;
    while (!bytes.empty()) {
      std::size_t taken = 2;
      if (bytes.starts_with("\xC8\xAB")) {
        text += u'\x5168';
      } else if (bytes.starts_with("\xCD\xBC")) {
        text += u'\x56FE';
      } else {
        const auto byte = static_cast<unsigned char>(bytes.front());
        text += static_cast<char16_t>(byte < 0x80 ? byte : 0xDC00 + byte);
        taken = 1;
      }
      bytes.remove_prefix(taken);
    }
    return text;
  }

  std::string Encode(std::u16string_view text) const override {
    std::string bytes;
    for (const char16_t unit : text) {
      if (unit == u'\x5168') {
        bytes += "\xC8\xAB";
      } else if (unit == u'\x56FE') {
        bytes += "\xCD\xBC";
      } else if (unit < 0x80) {
        bytes += static_cast<char>(unit);
      } else {
        bytes += unit >= 0xDC80 && unit <= 0xDCFF ? static_cast<char>(unit - 0xDC00) : '?';
      }
    }
    return bytes;
  }
};

// The hexadecimal text of a record whose first text is stored as given.
std::wstring RecordWith(const std::wstring& storedText) {
  return L"0100000002000000" + storedText +
         L"00000000"
         L"fffeff00"
         L"00000000"
         L"fffeff00"
         L"fffeff00"
         L"00000000";
}

// What a record's text becomes by way of JSON.
std::wstring ThroughJson(const std::wstring& text, const CodePage& codePage) {
  sRibbonElement record;
  if (!RibbonElementFromText(text, record)) return L"not read";
  sRibbonElement again;
  if (!RibbonFromJson(ToUtf8(RibbonToJson(record, codePage)), codePage, again)) return L"no JSON";
  return RibbonElementToText(again);
}

TEST(RibbonJson, EncodesEveryStoredTextBackToTheSameBytes) {
  const std::wstring rows[] = {
      L"fffeff00",
      L"fffeff0100d8",                      // the first half of a pair alone
      L"fffeff01ffdf",                      // the second
      L"fffeff0300d800d800dc",              // a half and a pair
      L"fffeff0200dc00d8",                  // the halves of a pair the other way round
      L"fffeff01d0fd",                      // the character by which halves are carried
      L"fffeff03d0fdd0fd00d8",              // more of it
      L"fffeff02d0fd00e0",                  // and a character that could follow it
      L"fffeff0422005c0075000a00",          // what JSON escapes
      L"fffeff065c0075006400380030003000",  // six characters that look like an escape
      L"00",                                // texts in 8 bits
      L"03616263",
      L"04c8abcdbc",
      L"05c8abff41c8",
      L"02c4ac",
      L"03e5bfab",
  };
  const Utf8CodePage utf8;
  const ChineseCodePage chinese;
  for (const std::wstring& row : rows) {
    const std::wstring text = RecordWith(row);
    EXPECT_EQ(ThroughJson(text, utf8), text);
    EXPECT_EQ(ThroughJson(text, chinese), text);
  }
}

TEST(RibbonJson, EncodesTextsOfAnyUnitsAndBytesBackToTheSame) {
  std::mt19937 random(1);
  const Utf8CodePage utf8;
  const ChineseCodePage chinese;
  constexpr wchar_t kDigits[] = L"0123456789abcdef";
  for (int i = 0; i < 2000; ++i) {
    const bool isNarrow = random() % 2 == 0;
    const auto length = static_cast<unsigned>(random() % 6);
    std::wstring stored = isNarrow ? L"0" : L"fffeff0";
    stored += kDigits[length];
    for (unsigned j = 0; j < length * (isNarrow ? 1 : 2); ++j) {
      const auto byte =
          static_cast<unsigned>(random() % 3 == 0 ? 0xC0 + random() % 0x40 : random() % 256);
      stored += kDigits[byte >> 4];
      stored += kDigits[byte & 0xF];
    }
    const std::wstring text = RecordWith(stored);
    EXPECT_EQ(ThroughJson(text, utf8), text);
    EXPECT_EQ(ThroughJson(text, chinese), text);
  }
}

TEST(RibbonJson, ShowsTextsForPeople) {
  sRibbonElement record;
  record.text1 = std::string("\xC8\xAB\xCD\xBC");
  record.text2 = std::wstring(
      L"a\xD83D"
      L"b");
  record.text3 = std::wstring(L"\x5168\"");
  const std::wstring json = RibbonToJson(record, ChineseCodePage());
  EXPECT_NE(json.find(L"\"text1\": {\n    \"narrow\": \"\x5168\x56FE\"\n  }"), json.npos);
  EXPECT_NE(json.find(L"\"text2\": \"a\\ud83db\""), json.npos);
  EXPECT_NE(json.find(L"\"text3\": \"\x5168\\\"\""), json.npos);
}

TEST(RibbonJson, ReadsEscapesOfEveryKind) {
  struct Row {
    const char* json;
    std::wstring text;
  };
  const Row rows[] = {{"\"\\ud83d\\ude00\"", FromUtf8("\xF0\x9F\x98\x80")},
                      {"\"\\uD83Dx\"", L"\xD83Dx"},
                      {"\"\\uDE00\\ud83d\"", L"\xDE00\xD83D"},
                      {"\"\\\\ud83d\"", L"\\ud83d"},
                      {"\"\\u0041\\ufdd0\"", L"A\xFDD0"}};
  for (const Row& row : rows) {
    sRibbonElement record;
    ASSERT_TRUE(RibbonFromJson("{\"text1\":" + std::string(row.json) + "}", Utf8CodePage(), record))
        << row.json;
    EXPECT_EQ(record.text1, RibbonText(row.text)) << row.json;
  }
}

TEST(RibbonJson, RefusesWhatIsNoText) {
  for (const char* text : {"1", "null", "[]", "{}", "{\"narrow\":1}", "{\"wide\":\"a\"}",
                           "{\"narrow\":\"a\",\"x\":\"b\"}", "\"\\ud8\"", "\"\\ux000\"", "\"\\"}) {
    sRibbonElement record;
    EXPECT_FALSE(RibbonFromJson("{\"text1\":" + std::string(text) + "}", Utf8CodePage(), record))
        << text;
  }
}

}  // namespace
}  // namespace carrovan
