// Registry files that come in parts: the units of their text, and their keys one by one.
#include <gtest/gtest.h>

#include "registry_text/registry_file_parser.h"
#include "registry_text/registry_file_writer.h"
#include "text/text.h"

namespace carrovan {
namespace {

std::u16string UnitsOf(std::string_view bytes, std::size_t partBytes) {
  RegistryTextUnits units;
  units.Expect(bytes.size());
  for (std::size_t at = 0; at < bytes.size(); at += partBytes) {
    units.Take(bytes.substr(at, partBytes));
  }
  return units.Finish();
}

std::u16string WholeUnitsOf(std::string_view bytes) {
  return ToUtf16(DecodeText(std::vector<std::uint8_t>(bytes.begin(), bytes.end())).text);
}

TEST(RegistryTextUnits, AreThoseOfTheWholeTextHoweverItsPartsAreCut) {
  using namespace std::string_literals;
  const std::string texts[] = {"",
                               "a",
                               "\xFF",
                               "\xFF\xFE",
                               "\xFF\xFE"s + "a\0b\0c"s,
                               "\xFF\xFE"s + "\x3D\xD8\x00\xDE\x3D\xD8"s,
                               "\xEF\xBB",
                               "\xEF\xBB\xBF"s,
                               "\xEF\xBB\xBF"s + "a\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x98\x80z",
                               "\x80\x80\x80\x80\x80\x80"s + "a",
                               "\xF0\x9F\x98",
                               "\xE4\xB8\x61\xE4\xB8\xAD\xAD\xF0\x9F\x98\x80\x80"};
  for (const std::string& text : texts) {
    for (std::size_t part = 1; part <= text.size() + 1; ++part) {
      EXPECT_EQ(UnitsOf(text, part), WholeUnitsOf(text)) << text << " in parts of " << part;
    }
  }
}

TEST(RegistryKeys, ComeOneByOneWithTheirValues) {
  const std::wstring text =
      L"Windows Registry Editor Version 5.00\r\n[HKCU\\a]\r\n\"v\"=\"1\"\r\n[HKCU\\b]\r\n"
      L"nothing\r\n[-HKLM\\c]\r\n[HKCU\\a]\r\n@=dword:00000002\r\n";
  RegistryFile file;
  const auto problems = ParseRegistryKeys(
      ToUtf16(text), [&file](RegistryKeyChange key) { file.keys.push_back(std::move(key)); });
  ASSERT_TRUE(problems);
  ASSERT_EQ(problems->size(), 1u);
  EXPECT_EQ(problems->front().line, 5u);
  ASSERT_EQ(file.keys.size(), 4u);
  EXPECT_EQ(file.keys[0].keyPath, L"a");
  EXPECT_EQ(file.keys[0].values.size(), 1u);
  EXPECT_TRUE(file.keys[1].values.empty());
  EXPECT_TRUE(file.keys[2].remove);
  EXPECT_EQ(file.keys[3].values[0].value, MakeDwordValue(L"", 2));
}

TEST(RegistryKeys, AreNoneInATextThatIsNoRegistryFile) {
  EXPECT_FALSE(ParseRegistryKeys(u"[HKEY_CURRENT_USER\\a]\r\n", [](const RegistryKeyChange&) {
    ADD_FAILURE() << "a key of no registry file";
  }));
}

TEST(RegistryData, IsSharedByItsCopiesUntilOneIsChanged) {
  const RegistryValue value = MakeStringValue(L"v", L"text");
  RegistryValue copy = value;
  EXPECT_EQ(copy.data.data(), value.data.data());
  copy.data.push_back(1);
  EXPECT_NE(copy.data.data(), value.data.data());
  EXPECT_EQ(value, MakeStringValue(L"v", L"text"));
  EXPECT_EQ(copy.data.size(), value.data.size() + 1);
  EXPECT_EQ(RegistryData(), RegistryData(RegistryData::Bytes()));
}

TEST(RegistryValueText, EndsWhereTheCallerWantsNoMore) {
  const RegistryValue value = MakeStringValue(L"v", L"abcdef");
  EXPECT_EQ(RegistryValueText(value), L"\"abcdef\"");
  EXPECT_EQ(RegistryValueText(value, 3), L"\"ab");
  EXPECT_EQ(RegistryValueText({L"v", kRegBinary, {1, 2, 3}}, 6), L"hex:01");
}

TEST(RegistryFileWriter, HandsOnInPartsWhatItWritesAsAWhole) {
  RegistryKey key;
  key.Make(L"a\\b").SetValue(MakeStringValue(L"text", std::wstring(100'000, L'x')));
  key.Make(L"a\\c").SetValue({L"bytes", kRegBinary, RegistryData::Bytes(50'000, 7)});
  std::u16string parts;
  std::size_t count = 0;
  WriteRegistryFile(RegistryHive::kCurrentUser, L"K", key, RegistryFileForm::kLossless,
                    [&](std::u16string_view part) {
                      parts.append(part);
                      ++count;
                    });
  EXPECT_GT(count, 5u);
  EXPECT_EQ(FromUtf16(parts),
            WriteRegistryFile(RegistryHive::kCurrentUser, L"K", key, RegistryFileForm::kLossless));
}

}  // namespace
}  // namespace carrovan
