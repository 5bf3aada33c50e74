#include "registry_text/registry_file_parser.h"

#include <gtest/gtest.h>

#include "registry_text/registry_key.h"
#include "text/text.h"

namespace carrovan {
namespace {

using Bytes = std::vector<std::uint8_t>;

const std::wstring kHeader = L"Windows Registry Editor Version 5.00\r\n\r\n";
const std::wstring kKey = L"[HKEY_CURRENT_USER\\Software\\K]\r\n";

RegistryFile Parsed(const std::wstring& body) {
  const auto file = ParseRegistryFile(kHeader + kKey + body);
  return file.value_or(RegistryFile());
}

// The one value of a body without problems.
std::optional<RegistryValueChange> OnlyValue(const std::wstring& body) {
  const RegistryFile file = Parsed(body);
  if (!file.problems.empty() || file.keys.size() != 1 || file.keys[0].values.size() != 1) {
    return std::nullopt;
  }
  return file.keys[0].values[0];
}

TEST(RegistryFileParser, TakesOnlyTheTwoHeaders) {
  for (const wchar_t* header : {L"Windows Registry Editor Version 5.00\r\n", L"REGEDIT4\n",
                                L"REGEDIT4", L" \tREGEDIT4\r\n"}) {
    EXPECT_TRUE(ParseRegistryFile(header)) << ToUtf8(header);
  }
  for (const wchar_t* header :
       {L"", L"\r\n", L"REGEDIT", L"REGEDIT5\r\n", L"Windows Registry Editor Version 5.0\r\n",
        L"Windows Registry Editor Version 6.00\r\n", L"windows registry editor version 5.00\r\n",
        L"Windows Registry Editor Version 5.00 x\r\n",
        L"\r\nWindows Registry Editor Version 5.00\r\n", L"[HKEY_CURRENT_USER\\K]\r\n",
        L"<xml/>"}) {
    EXPECT_FALSE(ParseRegistryFile(header)) << ToUtf8(header);
  }
}

TEST(RegistryFileParser, ReadsEveryKindOfValue) {
  const struct {
    const wchar_t* body;
    RegistryValue value;
  } kRows[] = {
      {L"\"a\"=\"text\"\r\n", MakeStringValue(L"a", L"text")},
      {L"\"a\"=\"\"\r\n", MakeStringValue(L"a", L"")},
      {L"@=\"text\"\r\n", MakeStringValue(L"", L"text")},
      {L"\"\"=\"text\"\r\n", MakeStringValue(L"", L"text")},
      {L"\"@\"=\"text\"\r\n", MakeStringValue(L"@", L"text")},
      {L"\"a\"=\"C:\\\\b \\\"c\\\"\"\r\n", MakeStringValue(L"a", L"C:\\b \"c\"")},
      {L"\"a\"=\"1\\r\\n2\"\r\n", MakeStringValue(L"a", L"1\r\n2")},
      {L"\"a\"=\"; [x] = \\\\\"\r\n", MakeStringValue(L"a", L"; [x] = \\")},
      {L"\"q\\\"uo\\\\te\"=\"x\"\r\n", MakeStringValue(L"q\"uo\\te", L"x")},
      {L"\"\x4E2D\"=\"\x6587\"\r\n", MakeStringValue(L"\x4E2D", L"\x6587")},
      {L"\"a\"=dword:1234abCD\r\n", MakeDwordValue(L"a", 0x1234ABCD)},
      {L"\"a\"=dword:5\r\n", MakeDwordValue(L"a", 5)},
      {L"\"a\"=dword: 5\r\n", MakeDwordValue(L"a", 5)},
      {L"\"a\"=hex:de,AD,5\r\n", {L"a", kRegBinary, {0xDE, 0xAD, 0x05}}},
      {L"\"a\"=hex:\r\n", {L"a", kRegBinary, {}}},
      {L"\"a\"=hex:01, 02 ,03\r\n", {L"a", kRegBinary, {1, 2, 3}}},
      {L"\"a\"=hex:01,02,\r\n", {L"a", kRegBinary, {1, 2}}},
      {L"\"a\"=hex(0):01\r\n", {L"a", kRegNone, {1}}},
      {L"\"a\"=hex(1):41,00\r\n", {L"a", kRegSz, {0x41, 0}}},
      {L"\"a\"=hex(2):41,00,00,00\r\n", MakeStringValue(L"a", L"A", kRegExpandSz)},
      {L"\"a\"=hex(4):01,02\r\n", {L"a", kRegDword, {1, 2}}},
      {L"\"a\"=hex(5):00,00,00,01\r\n", {L"a", kRegDwordBigEndian, {0, 0, 0, 1}}},
      {L"\"a\"=hex(7):41,00,00,00,00,00\r\n", {L"a", kRegMultiSz, {0x41, 0, 0, 0, 0, 0}}},
      {L"\"a\"=hex(b):01,00,00,00,00,00,00,00\r\n", {L"a", kRegQword, {1, 0, 0, 0, 0, 0, 0, 0}}},
      {L"\"a\"=hex(ffffffff):01\r\n", {L"a", 0xFFFFFFFF, {1}}},
  };
  for (const auto& row : kRows) {
    const auto change = OnlyValue(row.body);
    ASSERT_TRUE(change) << ToUtf8(row.body);
    EXPECT_EQ(change->value, row.value) << ToUtf8(row.body);
    EXPECT_FALSE(change->remove);
  }
}

TEST(RegistryFileParser, TakesBlanksCommentsAndAnyLineEnd) {
  for (const wchar_t* body : {
           L"\"a\"=\"text\"",
           L"\"a\"=\"text\"\n",
           L"  \"a\" \t=  \"text\"  \r\n",
           L"\"a\"=\"text\" ; comment\r\n",
           L"\r\n; comment\r\n   ; [comment]\r\n\"a\"=\"text\"\r\n;\"b\"=\"x\"\r\n",
       }) {
    const auto change = OnlyValue(body);
    ASSERT_TRUE(change) << ToUtf8(body);
    EXPECT_EQ(change->value, MakeStringValue(L"a", L"text"));
  }
}

TEST(RegistryFileParser, TakesLineEndsInNamesAndTextsAsTheyStand) {
  const RegistryFile file = Parsed(
      L"\"two\r\nlines\"=\"as\r\n\r\n  they \\\"stand\\\"\\r\n\" ; comment\r\n"
      L"\"lf\"=\"a\nb\"\r\n@=\"\r\n\"\r\njunk\r\n\"z\"=\"ok\"");
  ASSERT_EQ(file.keys.size(), 1u);
  const auto& values = file.keys[0].values;
  ASSERT_EQ(values.size(), 4u);
  EXPECT_EQ(values[0].value, MakeStringValue(L"two\r\nlines", L"as\r\n\r\n  they \"stand\"\r\n"));
  EXPECT_EQ(values[1].value, MakeStringValue(L"lf", L"a\nb"));
  EXPECT_EQ(values[2].value, MakeStringValue(L"", L"\r\n"));
  EXPECT_EQ(values[3].value, MakeStringValue(L"z", L"ok"));
  ASSERT_EQ(file.problems.size(), 1u);
  EXPECT_EQ(file.problems[0].line, 13u);
}

TEST(RegistryFileParser, KeepsTheFirstProblemsOfAFileThatHasNothingElse) {
  std::wstring junk;
  for (int i = 0; i < 100'000; ++i) junk += L"x\n";
  const RegistryFile file = Parsed(junk + L"\"z\"=\"ok\"");
  ASSERT_EQ(file.problems.size(), 100u);
  EXPECT_EQ(file.problems.back().line, file.problems.front().line + 99);
  ASSERT_EQ(file.keys.size(), 1u);
  EXPECT_EQ(file.keys[0].values.size(), 1u);
}

TEST(RegistryFileParser, GoesOnBehindABackslash) {
  for (const wchar_t* body : {
           L"\"a\"=hex:01,\\\r\n  02,\\\r\n  03\r\n",
           L"\"a\"=hex:01,\\\n02,03\n",
           L"\"a\"=hex:\\\r\n  01,02,03\r\n",
           L"\"a\"=hex:01,02,\\  \r\n\t03\r\n",
           L"\"a\"=hex:01,02,\\ ; comment\r\n  03\r\n",
           L"\"a\"=hex:01,02,\\\r\n; comment\r\n  03\r\n",
       }) {
    const auto change = OnlyValue(body);
    ASSERT_TRUE(change) << ToUtf8(body);
    EXPECT_EQ(change->value.data, (Bytes{1, 2, 3})) << ToUtf8(body);
  }
}

TEST(RegistryFileParser, ReadsRemovals) {
  const RegistryFile file =
      Parsed(L"\"a\"=-\r\n@=- ; x\r\n[-HKEY_LOCAL_MACHINE\\Software\\Gone]\r\n");
  EXPECT_TRUE(file.problems.empty());
  ASSERT_EQ(file.keys.size(), 2u);
  ASSERT_EQ(file.keys[0].values.size(), 2u);
  EXPECT_TRUE(file.keys[0].values[0].remove);
  EXPECT_EQ(file.keys[0].values[0].value.name, L"a");
  EXPECT_TRUE(file.keys[0].values[1].remove);
  EXPECT_EQ(file.keys[0].values[1].value.name, L"");
  EXPECT_TRUE(file.keys[1].remove);
  EXPECT_EQ(file.keys[1].hive, RegistryHive::kLocalMachine);
  EXPECT_EQ(file.keys[1].keyPath, L"Software\\Gone");
}

TEST(RegistryFileParser, ReadsKeyPaths) {
  const struct {
    const wchar_t* line;
    RegistryHive hive;
    const wchar_t* keyPath;
  } kRows[] = {
      {L"[HKEY_CURRENT_USER\\A b\\c]", RegistryHive::kCurrentUser, L"A b\\c"},
      {L"[HKEY_LOCAL_MACHINE\\A]", RegistryHive::kLocalMachine, L"A"},
      {L"[hkcu\\A]", RegistryHive::kCurrentUser, L"A"},
      {L"[HKLM\\A]", RegistryHive::kLocalMachine, L"A"},
      {L"[HKEY_CURRENT_USER]", RegistryHive::kCurrentUser, L""},
      {L"[HKEY_CURRENT_USER\\A\\]", RegistryHive::kCurrentUser, L"A"},
      {L"[HKEY_CURRENT_USER\\\\A\\\\b]", RegistryHive::kCurrentUser, L"A\\b"},
      {L"  [HKEY_CURRENT_USER\\A]", RegistryHive::kCurrentUser, L"A"},
      {L"[HKEY_CURRENT_USER\\A]junk", RegistryHive::kCurrentUser, L"A"},
      {L"[HKEY_CURRENT_USER\\odd [x] \"q\" ;k]", RegistryHive::kCurrentUser, L"odd [x] \"q\" ;k"},
      {L"[HKEY_CURRENT_USER\\\x4E2D]", RegistryHive::kCurrentUser, L"\x4E2D"},
  };
  for (const auto& row : kRows) {
    const auto file = ParseRegistryFile(kHeader + row.line);
    ASSERT_TRUE(file && file->problems.empty() && file->keys.size() == 1) << ToUtf8(row.line);
    EXPECT_EQ(file->keys[0].hive, row.hive);
    EXPECT_EQ(file->keys[0].keyPath, row.keyPath);
    EXPECT_FALSE(file->keys[0].remove);
  }
}

struct BadLine {
  const wchar_t* line;
  const wchar_t* problem;
};

// Leaves the line out and reads the one behind it.
void ExpectOneProblem(const BadLine& row, const std::wstring& behind) {
  SCOPED_TRACE(ToUtf8(row.line));
  const RegistryFile file = Parsed(row.line + std::wstring(L"\r\n") + behind);
  ASSERT_EQ(file.problems.size(), 1u);
  EXPECT_EQ(file.problems[0].line, 4u);
  EXPECT_EQ(file.problems[0].text, row.problem);
  ASSERT_FALSE(file.keys.empty());
  ASSERT_EQ(file.keys.back().values.size(), 1u);
  EXPECT_EQ(file.keys.back().values[0].value, MakeStringValue(L"z", L"ok"));
}

TEST(RegistryFileParser, RejectsUnterminatedString) {
  const wchar_t* problem = L"a string that does not end or holds an unknown escape";
  for (const wchar_t* line : {L"\"a\"=\"abc", L"\"a\"=\"", L"\"a\"=\"abc\\", L"\"a\"=\"abc\\\""}) {
    ExpectOneProblem({line, problem}, L"\"z\"=\"ok\"\r\n");
  }
}

TEST(RegistryFileParser, RejectsValuesThatSayNothing) {
  constexpr BadLine kRows[] = {
      {L"\"a\"=\"x\\q\"", L"a string that does not end or holds an unknown escape"},
      {L"\"a", L"a value without a quoted name"},
      {L"a=\"x\"", L"a value without a quoted name"},
      {L"=5", L"a value without a quoted name"},
      {L"junk", L"a value without a quoted name"},
      {L"\"a\"", L"a value name without an equals sign"},
      {L"@", L"a value name without an equals sign"},
      {L"\"a\"=", L"a value of unknown kind"},
      {L"\"a\"=unknown", L"a value of unknown kind"},
      {L"\"a\"=DWORD:5", L"a value of unknown kind"},
      {L"\"a\"=dword:", L"a number that is not hexadecimal or too long"},
      {L"\"a\"=dword:xyz", L"a number that is not hexadecimal or too long"},
      {L"\"a\"=dword:-1", L"a number that is not hexadecimal or too long"},
      {L"\"a\"=dword:123456789", L"a number that is not hexadecimal or too long"},
      {L"\"a\"=dword:5x", L"more text behind a value"},
      {L"\"a\"=\"x\" junk", L"more text behind a value"},
      {L"\"a\"=- 1", L"more text behind a value"},
      {L"\"a\"=hex01", L"a type that is not a number"},
      {L"\"a\"=hex():01", L"a type that is not a number"},
      {L"\"a\"=hex(x):01", L"a type that is not a number"},
      {L"\"a\"=hex(1:01", L"a type that is not a number"},
      {L"\"a\"=hex(123456789):01", L"a type that is not a number"},
      {L"\"a\"=hex:zz", L"bytes that are not hexadecimal"},
      {L"\"a\"=hex:012", L"bytes that are not hexadecimal"},
      {L"\"a\"=hex:01,,02", L"bytes that are not hexadecimal"},
      {L"\"a\"=hex:,01", L"bytes that are not hexadecimal"},
      {L"\"a\"=hex:01 02", L"more text behind a value"},
      {L"\"a\"=hex:01\\", L"more text behind a value"},
      {L"\"a\"=hex:01,\\02", L"more text behind a line that goes on"},
      {L"\"a\"=hex:01,\\", L"bytes that go on nowhere"},
  };
  for (const BadLine& row : kRows) ExpectOneProblem(row, L"\"z\"=\"ok\"\r\n");
}

TEST(RegistryFileParser, RejectsKeysThatCannotBe) {
  const std::wstring tooLong = L"[HKEY_CURRENT_USER\\" + std::wstring(256, L'n') + L"]";
  const BadLine kRows[] = {
      {L"[HKEY_CURRENT_USER\\K", L"a key without its closing bracket"},
      {L"[HKEY_NOPE\\K]", L"a key below an unknown root"},
      {L"[\\HKEY_CURRENT_USER\\K]", L"a key below an unknown root"},
      {L"[]", L"a key below an unknown root"},
      {L"[-]", L"a key below an unknown root"},
      {L"[-HKEY_CURRENT_USER]", L"a root cannot be removed"},
      {L"[-HKEY_CURRENT_USER\\]", L"a root cannot be removed"},
      {tooLong.c_str(), L"a key name is too long"},
  };
  for (const BadLine& row : kRows) ExpectOneProblem(row, kKey + L"\"z\"=\"ok\"\r\n");
}

TEST(RegistryFileParser, RejectsValuesWithoutAKey) {
  const auto file = ParseRegistryFile(kHeader + L"\"a\"=\"1\"\r\n[HKEY_NOPE]\r\n\"b\"=\"1\"\r\n" +
                                      L"[-HKEY_CURRENT_USER\\K]\r\n\"c\"=\"1\"\r\n");
  ASSERT_TRUE(file);
  ASSERT_EQ(file->problems.size(), 4u);
  for (const std::size_t i : {0u, 2u, 3u}) {
    EXPECT_EQ(file->problems[i].text, L"a value that belongs to no key");
  }
  EXPECT_EQ(file->problems[3].line, 7u);
  ASSERT_EQ(file->keys.size(), 1u);
  EXPECT_TRUE(file->keys[0].values.empty());
}

TEST(RegistryFileParser, LeavesTheNextKeyAloneWhenBytesGoOnNowhere) {
  const RegistryFile file =
      Parsed(L"\"a\"=hex:01,\\\r\n[HKEY_CURRENT_USER\\Next]\r\n\"z\"=\"ok\"\r\n");
  EXPECT_EQ(file.problems.size(), 1u);
  ASSERT_EQ(file.keys.size(), 2u);
  EXPECT_TRUE(file.keys[0].values.empty());
  EXPECT_EQ(file.keys[1].keyPath, L"Next");
  EXPECT_EQ(file.keys[1].values.size(), 1u);
}

TEST(RegistryFileParser, WidensTheTextBytesOfTheForerunner) {
  const auto file = ParseRegistryFile(L"REGEDIT4\r\n" + kKey +
                                      L"\"a\"=hex(2):25,c3,a4,00\r\n\"b\"=hex:25,00\r\n");
  ASSERT_TRUE(file && file->keys.size() == 1 && file->keys[0].values.size() == 2);
  EXPECT_EQ(file->keys[0].values[0].value, MakeStringValue(L"a", L"%\x00E4", kRegExpandSz));
  EXPECT_EQ(file->keys[0].values[1].value.data, (Bytes{0x25, 0x00}));
}

TEST(RegistryFileParser, BoundsTheDepthOfAKey) {
  const auto keyOf = [](std::size_t levels) {
    std::wstring line = L"[HKEY_CURRENT_USER";
    for (std::size_t i = 0; i < levels; ++i) line += L"\\d";
    return kHeader + line + L"]\r\n\"a\"=\"1\"\r\n";
  };
  EXPECT_TRUE(ParseRegistryFile(keyOf(kMostKeyLevels))->problems.empty());
  for (const std::size_t levels : {kMostKeyLevels + 1, std::size_t{100'000}}) {
    const auto file = ParseRegistryFile(keyOf(levels));
    ASSERT_EQ(file->problems.size(), 2u);
    EXPECT_EQ(file->problems[0].text, L"a key below too many others");
  }
}

TEST(RegistryFileParser, BoundsTheLengthOfAValueName) {
  const std::wstring longest(kLongestValueName, L'n');
  EXPECT_TRUE(OnlyValue(L"\"" + longest + L"\"=\"1\""));
  const RegistryFile file = Parsed(L"\"" + longest + L"n\"=\"1\"");
  ASSERT_EQ(file.problems.size(), 1u);
  EXPECT_EQ(file.problems[0].text, L"a value name is too long");
}

TEST(RegistryFileParser, ReadsAVeryLongLine) {
  std::wstring bytes = L"00";
  for (int i = 0; i < 300'000; ++i) bytes += L",00";
  const auto change = OnlyValue(L"\"a\"=hex:" + bytes);
  ASSERT_TRUE(change);
  EXPECT_EQ(change->value.data.size(), 300'001u);
}

}  // namespace
}  // namespace carrovan
