#include "text/text.h"

#include <gtest/gtest.h>

#include <array>

namespace carrovan {
namespace {

// One character outside the 16-bit range, as this system's wide text holds it.
const std::wstring kEmoji = FromUtf8("\xF0\x9F\x98\x80");

TEST(Text, ConvertsUtf8BothWays) {
  const struct {
    std::string utf8;
    std::u16string units;
  } kRows[] = {
      {"", u""},
      {"plain", u"plain"},
      {"\xC3\xA4", u"\u00E4"},
      {"\xE4\xB8\xAD\xE6\x96\x87", u"\u4E2D\u6587"},
      {"\xEF\xBF\xBF", u"\xFFFF"},
      {"\xF0\x9F\x98\x80", u"\xD83D\xDE00"},
      {"\xF4\x8F\xBF\xBF", u"\xDBFF\xDFFF"},
      {std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.utf8);
    EXPECT_EQ(ToUtf16(FromUtf8(row.utf8)), row.units);
    EXPECT_EQ(ToUtf8(FromUtf8(row.utf8)), row.utf8);
    EXPECT_EQ(FromUtf16(row.units), FromUtf8(row.utf8));
    EXPECT_TRUE(IsUtf8(row.utf8));
  }
}

TEST(Text, ReplacesEachByteThatIsNotUtf8) {
  const struct {
    std::string bytes;
    std::size_t replacements;
  } kRows[] = {
      {"\xFF", 1},
      {"\x80", 1},
      {"\xC3", 1},              // cut short
      {"\xE4\xB8", 2},          // cut short
      {"\xF0\x9F\x98", 3},      // cut short
      {"\xC0\xAF", 2},          // a longer form than needed
      {"\xE0\x80\xAF", 3},      // a longer form than needed
      {"\xF0\x80\x80\xAF", 4},  // a longer form than needed
      {"\xED\xA0\x80", 3},      // a surrogate
      {"\xF4\x90\x80\x80", 4},  // beyond the last character
      {"\xF5\x80\x80\x80", 4},  // beyond the last character
      {"\xC3\xC3", 2},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::PrintToString(row.bytes));
    EXPECT_EQ(FromUtf8(row.bytes), std::wstring(row.replacements, L'\xFFFD'));
    EXPECT_FALSE(IsUtf8(row.bytes));
    EXPECT_FALSE(IsUtf8("ok" + row.bytes));
  }
}

TEST(Text, GoesOnBehindABadByte) { EXPECT_EQ(FromUtf8("a\xFFz"), L"a\xFFFDz"); }

TEST(Text, ReplacesAnUnpairedSurrogateInUtf8) {
  EXPECT_EQ(ToUtf8(FromUtf16(u"a\xD83Dz")), "a\xEF\xBF\xBDz");
  EXPECT_EQ(ToUtf8(FromUtf16(u"\xDE00")), "\xEF\xBF\xBD");
}

TEST(Text, KeepsAnUnpairedSurrogateInUtf16) {
  for (const std::u16string& units : {std::u16string(u"a\xD83D"), std::u16string(u"\xDE00\xD83D"),
                                      std::u16string(u"\xD83D\xD83D\xDE00")}) {
    EXPECT_EQ(ToUtf16(FromUtf16(units)), units);
  }
}

TEST(Text, ComparesLettersOfTheAlphabetWithoutCase) {
  EXPECT_TRUE(EqualsIgnoringAsciiCase(L".UcEx", L".uCeX"));
  EXPECT_TRUE(EqualsIgnoringAsciiCase(L"", L""));
  EXPECT_FALSE(EqualsIgnoringAsciiCase(L"abc", L"abcd"));
  EXPECT_FALSE(EqualsIgnoringAsciiCase(L"[", L"{"));
  EXPECT_FALSE(EqualsIgnoringAsciiCase(L"\x00C4", L"\x00E4"));
}

TEST(Text, ComparesEndingsWithoutRegardToCase) {
  EXPECT_TRUE(EndsWithIgnoringAsciiCase(L"menu.UIK", L".uik"));
  EXPECT_TRUE(EndsWithIgnoringAsciiCase(L".uik", L".UIK"));
  EXPECT_TRUE(EndsWithIgnoringAsciiCase(L"menu", L""));
  EXPECT_FALSE(EndsWithIgnoringAsciiCase(L"uik", L".uik"));
  EXPECT_FALSE(EndsWithIgnoringAsciiCase(L"menu.uik.bak", L".uik"));
}

TEST(Text, TakesNamesThatDifferInCaseForTheSame) {
  const std::array<std::array<const wchar_t*, 2>, 9> kRows = {{
      {L"", L""},
      {L"Readme.TXT", L"README.txt"},
      {L"\x00C4pfel", L"\x00E4PFEL"},                  // German
      {L"\x0178", L"\x00FF"},                          // the pair that lies far apart
      {L"\x0160koda", L"\x0161KODA"},                  // Czech
      {L"\x0393\x0391", L"\x03B3\x03B1"},              // Greek
      {L"\x041C\x0418\x0420", L"\x043C\x0438\x0440"},  // Russian
      {L"\xFF21", L"\xFF41"},                          // wide Latin
      {L"\x4E2D", L"\x4E2D"},
  }};
  for (const auto& [a, b] : kRows) EXPECT_EQ(CompareNames(a, b), 0) << ToUtf8(a);
}

TEST(Text, TellsLookalikesApart) {
  EXPECT_NE(CompareNames(L"\x00D7", L"\x00F7"), 0);  // times and divided by
  EXPECT_NE(CompareNames(L"\x00DF", L"ss"), 0);
  EXPECT_NE(CompareNames(L"\x0131", L"I"), 0);  // dotless i
  EXPECT_NE(CompareNames(L"a", L"a "), 0);
}

TEST(Text, OrdersNamesByUpperCaseUnits) {
  const std::array<std::wstring, 10> kOrder = {
      L"", L"a-b", L"a.b", L"A1", L"ab", L"Z", L"_x", L"\x4E2D", kEmoji, L"\xFF21",
  };
  for (std::size_t i = 0; i + 1 < kOrder.size(); ++i) {
    SCOPED_TRACE(ToUtf8(kOrder[i]) + " before " + ToUtf8(kOrder[i + 1]));
    EXPECT_LT(CompareNames(kOrder[i], kOrder[i + 1]), 0);
    EXPECT_GT(CompareNames(kOrder[i + 1], kOrder[i]), 0);
  }
}

TEST(Text, ReplacesEveryOccurrence) {
  const struct {
    const wchar_t* text;
    const wchar_t* search;
    const wchar_t* replacement;
    const wchar_t* expected;
  } kRows[] = {
      {L"", L"a", L"b", L""},
      {L"abc", L"", L"x", L"abc"},
      {L"aXbXc", L"X", L"--", L"a--b--c"},
      {L"aaa", L"aa", L"b", L"ba"},
      {L"aaa", L"a", L"aa", L"aaaaaa"},
      {L"abc", L"abc", L"", L""},
      {L"Local", L"local", L"x", L"Local"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(ReplaceAll(row.text, row.search, row.replacement), row.expected);
  }
}

TEST(Text, FindsNoEmptyText) {
  EXPECT_TRUE(Contains(L"abc", L"bc"));
  EXPECT_FALSE(Contains(L"abc", L"BC"));
  EXPECT_FALSE(Contains(L"abc", L""));
  EXPECT_FALSE(Contains(L"", L""));
}

TEST(Text, TakesTheFirstAndTheLastCharacterOfEveryLength) {
  const std::pair<const char*, std::u16string> kRows[] = {
      {"\x01", u"\x0001"},
      {"\x7F", u"\x007F"},
      {"\xC2\x80", u"\x0080"},
      {"\xDF\xBF", u"\x07FF"},
      {"\xE0\xA0\x80", u"\x0800"},
      {"\xEF\xBF\xBF", u"\xFFFF"},
      {"\xF0\x90\x80\x80", u"\xD800\xDC00"},
      {"\xF4\x8F\xBF\xBF", u"\xDBFF\xDFFF"},
  };
  for (const auto& [utf8, utf16] : kRows) {
    EXPECT_EQ(ToUtf16(FromUtf8(utf8)), utf16) << testing::PrintToString(utf8);
    EXPECT_EQ(ToUtf8(FromUtf16(utf16)), utf8) << testing::PrintToString(utf8);
  }
}

TEST(Text, NeighboursOfTheLettersHaveNoCase) {
  for (const auto& [a, b] : {std::pair{L"{", L"["}, {L"|", L"\\"}, {L"}", L"]"}, {L"`", L"@"}}) {
    EXPECT_NE(CompareNames(a, b), 0) << ToUtf8(a);
  }
  EXPECT_EQ(CompareNames(L"az", L"AZ"), 0);
}

}  // namespace
}  // namespace carrovan
