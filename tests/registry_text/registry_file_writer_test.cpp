#include "registry_text/registry_file_writer.h"

#include <gtest/gtest.h>

#include "registry_text/registry_file_parser.h"
#include "text/text.h"

namespace carrovan {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr RegistryHive kUser = RegistryHive::kCurrentUser;

const std::wstring kEmoji = FromUtf8("\xF0\x9F\x98\x80");

std::wstring Lines(const std::vector<std::wstring>& lines) {
  std::wstring text;
  for (const std::wstring& line : lines) text += line + L"\r\n";
  return text;
}

Bytes Counting(std::size_t count) {
  Bytes bytes;
  for (std::size_t i = 0; i < count; ++i) bytes.push_back(static_cast<std::uint8_t>(i));
  return bytes;
}

RegistryValue Text(std::wstring name, const std::u16string& units) {
  RegistryValue value{std::move(name), kRegSz, {}};
  for (const char16_t unit : units) {
    value.data.push_back(static_cast<std::uint8_t>(unit & 0xFF));
    value.data.push_back(static_cast<std::uint8_t>(unit >> 8));
  }
  return value;
}

// The one value line of a key, without what stands around it.
std::wstring ValueLine(const RegistryValue& value,
                       RegistryFileForm form = RegistryFileForm::kExport) {
  RegistryKey key;
  key.SetValue(value);
  const std::wstring text = WriteRegistryFile(kUser, L"K", key, form);
  const std::wstring front =
      L"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\K]\r\n";
  EXPECT_TRUE(text.starts_with(front) && text.ends_with(L"\r\n\r\n"));
  return text.substr(front.size(), text.size() - front.size() - 4);
}

TEST(RegistryFileWriter, WritesKeysDepthFirst) {
  RegistryKey root;
  root.Make(L"SubB\\Deep").SetValue(MakeDwordValue(L"n", 1));
  root.Make(L"sub_a");
  root.Make(L"odd [x] \"q\" ;k");
  root.Make(L"\x4E2D\x6587").SetValue(MakeStringValue(L"", L"d"));
  root.SetValue(MakeStringValue(L"z", L"1"));
  root.SetValue(MakeStringValue(L"a", L"2"));
  EXPECT_EQ(WriteRegistryFile(kUser, L"software\\KEY", root, RegistryFileForm::kExport),
            Lines({
                L"Windows Registry Editor Version 5.00",
                L"",
                L"[HKEY_CURRENT_USER\\software\\KEY]",
                L"\"z\"=\"1\"",
                L"\"a\"=\"2\"",
                L"",
                L"[HKEY_CURRENT_USER\\software\\KEY\\odd [x] \"q\" ;k]",
                L"",
                L"[HKEY_CURRENT_USER\\software\\KEY\\SubB]",
                L"",
                L"[HKEY_CURRENT_USER\\software\\KEY\\SubB\\Deep]",
                L"\"n\"=dword:00000001",
                L"",
                L"[HKEY_CURRENT_USER\\software\\KEY\\sub_a]",
                L"",
                L"[HKEY_CURRENT_USER\\software\\KEY\\\x4E2D\x6587]",
                L"@=\"d\"",
                L"",
            }));
}

TEST(RegistryFileWriter, WritesAWholeHive) {
  EXPECT_EQ(WriteRegistryFile(RegistryHive::kLocalMachine, L"", RegistryKey(),
                              RegistryFileForm::kLossless),
            Lines({L"Windows Registry Editor Version 5.00", L"", L"[HKEY_LOCAL_MACHINE]", L""}));
}

// The lines are those that the system's registry tool wrote for the same values.
TEST(RegistryFileWriter, WritesEveryKindOfValueAsTheToolDoes) {
  const struct {
    RegistryValue value;
    std::wstring line;
  } kRows[] = {
      {MakeStringValue(L"", L"default"), L"@=\"default\""},
      {MakeStringValue(L" lead", L"x"), L"\" lead\"=\"x\""},
      {MakeStringValue(L"@", L"x"), L"\"@\"=\"x\""},
      {MakeStringValue(L"[x]=;", L"x"), L"\"[x]=;\"=\"x\""},
      {MakeStringValue(L"z8 q\"uo\\te", L"x"), L"\"z8 q\\\"uo\\\\te\"=\"x\""},
      {MakeStringValue(L"cr\r\nlf", L"x"), L"\"cr\\r\\nlf\"=\"x\""},
      {MakeStringValue(L"a", L""), L"\"a\"=\"\""},
      {MakeStringValue(L"a", L"a\"b\\c"), L"\"a\"=\"a\\\"b\\\\c\""},
      {MakeStringValue(L"a", L"a\r\nb"), L"\"a\"=\"a\\r\\nb\""},
      {MakeStringValue(L"a", L"a\tb\x01"), L"\"a\"=\"a\tb\x01\""},
      {MakeStringValue(L"a", L"\x4E2D" + kEmoji), L"\"a\"=\"\x4E2D" + kEmoji + L"\""},
      {Text(L"lone\xD83D", std::u16string(u"a\xDE00z\0", 4)),
       FromUtf16(u"\"lone\xD83D\"=\"a\xDE00z\"")},
      {Text(L"none", u""), L"\"none\"=\"\""},
      {Text(L"unterminated", u"abc"), L"\"unterminated\"=\"abc\""},
      {Text(L"zero inside", std::u16string(u"ab\0cd\0", 6)), L"\"zero inside\"=\"ab\""},
      {Text(L"two zeros", std::u16string(u"ab\0\0", 4)), L"\"two zeros\"=\"ab\""},
      {MakeStringValue(L"m", L"%A%\\x", kRegExpandSz),
       L"\"m\"=hex(2):25,00,41,00,25,00,5c,00,78,00,00,00"},
      {{L"n", kRegExpandSz, {}}, L"\"n\"=hex(2):"},
      {{L"o", kRegMultiSz, {0x6F, 0, 0, 0, 0, 0}}, L"\"o\"=hex(7):6f,00,00,00,00,00"},
      {{L"p", kRegMultiSz, {0, 0}}, L"\"p\"=hex(7):00,00"},
      {MakeDwordValue(L"q", 0x1234ABCD), L"\"q\"=dword:1234abcd"},
      {MakeDwordValue(L"q", 0), L"\"q\"=dword:00000000"},
      {{L"s", kRegDword, {}}, L"\"s\"=hex(4):"},
      {{L"u", kRegDwordBigEndian, {0xCD, 0xAB, 0x34, 0x12}}, L"\"u\"=hex(5):cd,ab,34,12"},
      {{L"v", kRegQword, {1, 2, 3, 4, 5, 6, 7, 8}}, L"\"v\"=hex(b):01,02,03,04,05,06,07,08"},
      {{L"w", kRegNone, {1, 2}}, L"\"w\"=hex(0):01,02"},
      {{L"x", kRegNone, {}}, L"\"x\"=hex(0):"},
      {{L"y", kRegBinary, {}}, L"\"y\"=hex:"},
      {{L"z", kRegBinary, {0xDE, 0xAD}}, L"\"z\"=hex:de,ad"},
      {{L"z1", 6, {0xDE}}, L"\"z1\"=hex(6):de"},
      {{L"z4", 10, {0xDE}}, L"\"z4\"=hex(a):de"},
      {{L"z6", 0x1234, {0xDE}}, L"\"z6\"=hex(1234):de"},
      {{L"z7", 0xFFFFFFFF, {0xDE}}, L"\"z7\"=hex(ffffffff):de"},
  };
  for (const auto& row : kRows) EXPECT_EQ(ValueLine(row.value), row.line) << ToUtf8(row.line);
}

// The tool of the tests reads past a short number and cuts a long one.
TEST(RegistryFileWriter, WritesANumberOfWrongSizeAsBytes) {
  EXPECT_EQ(ValueLine({L"a", kRegDword, {1, 2, 3}}), L"\"a\"=hex(4):01,02,03");
  EXPECT_EQ(ValueLine({L"a", kRegDword, {1, 2, 3, 4, 5}}), L"\"a\"=hex(4):01,02,03,04,05");
}

TEST(RegistryFileWriter, WrapsBytesAsTheToolDoes) {
  EXPECT_EQ(ValueLine({L"", kRegBinary, Counting(60)}) + L"\r\n",
            Lines({
                L"@=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,16,17,\\",
                L"  18,19,1a,1b,1c,1d,1e,1f,20,21,22,23,24,25,26,27,28,29,2a,2b,2c,2d,2e,2f,30,\\",
                L"  31,32,33,34,35,36,37,38,39,3a,3b",
            }));
  EXPECT_EQ(ValueLine({L"n022", kRegBinary, Counting(22)}),
            L"\"n022\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15");
  EXPECT_EQ(
      ValueLine({L"n047", kRegBinary, Counting(47)}) + L"\r\n",
      Lines({
          L"\"n047\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,\\",
          L"  16,17,18,19,1a,1b,1c,1d,1e,1f,20,21,22,23,24,25,26,27,28,29,2a,2b,2c,2d,2e",
      }));
  EXPECT_EQ(
      ValueLine({L"n048", kRegBinary, Counting(48)}) + L"\r\n",
      Lines({
          L"\"n048\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,\\",
          L"  16,17,18,19,1a,1b,1c,1d,1e,1f,20,21,22,23,24,25,26,27,28,29,2a,2b,2c,2d,2e,\\",
          L"  2f",
      }));
}

// How many of 60 bytes the tool put on the first line, by the length of the value's name.
TEST(RegistryFileWriter, WrapsBehindALongNameAsTheToolDoes) {
  const struct {
    std::wstring name;
    std::size_t bytesOnFirstLine;
  } kRows[] = {
      {std::wstring(50, L'x'), 7},
      {std::wstring(55, L'x'), 5},
      {std::wstring(57, L'x'), 5},
      {std::wstring(58, L'x'), 4},
      {std::wstring(60, L'x'), 4},
      {std::wstring(61, L'x'), 3},
      {std::wstring(63, L'x'), 3},
      {std::wstring(64, L'x'), 2},
      {std::wstring(66, L'x'), 2},
      {std::wstring(67, L'x'), 1},
      {std::wstring(200, L'x'), 1},
      {std::wstring(60, L'q') + L"\"", 3},
      {std::wstring(62, L'q') + L"\"", 2},
      {ReplaceAll(std::wstring(20, L'x'), L"x", kEmoji), 10},
      {ReplaceAll(std::wstring(27, L'x'), L"x", kEmoji), 6},
      {ReplaceAll(std::wstring(30, L'x'), L"x", kEmoji), 4},
  };
  for (const auto& row : kRows) {
    const std::wstring line = ValueLine({row.name, kRegBinary, Counting(60)});
    const std::wstring first = line.substr(0, line.find(L'\\' + std::wstring(L"\r\n")));
    const auto commas = static_cast<std::size_t>(std::count(first.begin(), first.end(), L','));
    EXPECT_EQ(commas, row.bytesOnFirstLine) << ToUtf8(first);
  }
}

TEST(RegistryFileWriter, LosesNothingWhenItIsAskedTo) {
  RegistryKey key;
  key.SetValue(MakeStringValue(L"plain", L"a\"b\\c\r\nd"));
  key.SetValue(MakeStringValue(L"empty", L""));
  key.SetValue(Text(L"none", u""));
  key.SetValue(Text(L"unterminated", u"abc"));
  key.SetValue(Text(L"zero inside", std::u16string(u"ab\0cd\0", 6)));
  key.SetValue({L"odd", kRegSz, {0x61, 0, 0x62}});
  key.SetValue(Text(L"lone", std::u16string(u"\xD83D\0", 2)));
  key.SetValue({L"short number", kRegDword, {1, 2, 3}});
  key.SetValue({L"bytes", kRegBinary, Counting(200)});
  const auto file =
      ParseRegistryFile(WriteRegistryFile(kUser, L"K", key, RegistryFileForm::kLossless));
  ASSERT_TRUE(file && file->problems.empty() && file->keys.size() == 1);
  std::vector<RegistryValue> expected;
  for (const RegistryValue* value : key.AllValues()) expected.push_back(*value);
  std::vector<RegistryValue> found;
  for (const RegistryValueChange& change : file->keys[0].values) found.push_back(change.value);
  EXPECT_EQ(found, expected);
}

TEST(RegistryFileWriter, WritesTheChangesOfOneHive) {
  const auto file =
      ParseRegistryFile(Lines({L"REGEDIT4", L"[HKCU\\Software]", L"\"a\\\"\"=-", L"@=-",
                               L"\"b\"=\"c\\\\\"", L"@=hex(7):61,00", L"[-HKCU\\Software\\Gone]",
                               L"[HKLM\\Other]", L"\"x\"=\"y\"", L"[HKCU]"}));
  const std::wstring text = WriteRegistryChanges(*file, kUser);
  EXPECT_EQ(text,
            Lines({L"Windows Registry Editor Version 5.00", L"", L"[HKEY_CURRENT_USER\\Software]",
                   L"\"a\\\"\"=-", L"@=-", L"\"b\"=\"c\\\\\"", L"@=hex(7):61,00,00,00", L"",
                   L"[-HKEY_CURRENT_USER\\Software\\Gone]", L"", L"[HKEY_CURRENT_USER]"}));
  EXPECT_EQ(WriteRegistryChanges(*ParseRegistryFile(text), kUser), text);
}

TEST(RegistryFileWriter, WritesAStringInQuotesWhereTheyHoldIt) {
  EXPECT_EQ(ValueLine(MakeStringValue(L"a", L"x"), RegistryFileForm::kLossless), L"\"a\"=\"x\"");
  EXPECT_EQ(ValueLine(Text(L"a", u"x"), RegistryFileForm::kLossless), L"\"a\"=hex(1):78,00");
}

}  // namespace
}  // namespace carrovan
