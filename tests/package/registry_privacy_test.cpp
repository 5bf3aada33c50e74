#include "package/registry_privacy.h"

#include <gtest/gtest.h>

#include <random>

#include "package/shared_package.h"
#include "registry_text/registry_file_form.h"
#include "tests/package/memory_archive.h"
#include "tests/support/registry_bytes.h"
#include "text/text.h"

namespace carrovan {
namespace {

using Texts = std::vector<std::wstring>;

const std::string kKey = "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC 28.0\\General]\r\n";

TEST(PrivacyRules, NameIsFoundAsAWordOfItsOwnInAnyCase) {
  struct Row {
    std::wstring text;
    std::wstring name;
    bool isNamed;
  };
  const Row kRows[] = {
      {L"ada", L"ada", true},
      {L"of ADA, 2026", L"Ada", true},
      {L"ada's part", L"ada", true},
      {L"(ada)", L"ada", true},
      {L"adapter", L"ada", false},
      {L"Canada", L"ada", false},
      {L"ada_2", L"ada", false},
      {L"adapter of ada", L"ada", true},
      {std::wstring(L"\x00C9") + L"ada", L"ada", false},
      {L"ada\x96F6\x4EF6", L"ada", true},
      {L"\x6211\x662F\x5F20\x4F1F\x7684", L"\x5F20\x4F1F", true},
      {L"\x5F20", L"\x5F20\x4F1F", false},
      {L"an option", L"an", false},
      {L"AN", L"an", true},
      {L"O'Brien", L"o'brien", true},
      {L"anything", L"", false},
  };
  for (const Row& row : kRows) {
    EXPECT_EQ(NamesAsWord(row.text, row.name), row.isNamed) << testing::PrintToString(row.text);
  }
}

TEST(PrivacyRules, ProfileFoldersAreFoundInEverySpelling) {
  struct Row {
    std::wstring text;
    Texts names;
  };
  const Row kRows[] = {
      {L"C:\\Users\\ada\\x", {L"ada"}},
      {L"c:/USERS/Ada Lovelace/x", {L"Ada Lovelace"}},
      {L"C:\\\\Users\\\\ada\\\\x", {L"ada"}},
      {L"D:\\Users\\ada", {L"ada"}},
      {L"\\\\server\\Users\\\x5F20\x4F1F;C:\\Users\\O'Brien\\", {L"\x5F20\x4F1F", L"O'Brien"}},
      {L"<a b='C:\\Users\\ada' c='\\x'/>", {L"ada"}},
      {L"<a b='C:\\Users\\ada'/>", {L"ada"}},
      {L"<a b=\"C:\\Users\\ada\"/>", {L"ada"}},
      {L"&quot;C:\\Users\\ada&quot; x", {L"ada"}},
      {L"C:\\Users\\a&amp;b\\x", {L"a&amp;b"}},
      {L"C:\\Documents and Settings\\ada\\x", {L"ada"}},
      {L"C:\\Users\\Public\\x", {}},
      {L"C:\\Users\\%USERNAME%\\x", {}},
      {L"%USERPROFILE%\\x", {}},
      {L"C:\\Users\\", {}},
      {L"C:\\OtherUsers\\ada", {}},
      {L"Users\\ada", {}},
  };
  for (const Row& row : kRows) {
    EXPECT_EQ(ProfileNamesIn(row.text), row.names) << testing::PrintToString(row.text);
    EXPECT_EQ(NamesProfileFolder(row.text), !row.names.empty());
  }
}

TEST(PrivacyRules, EachRuleHasAReasonAndNamesHavePatterns) {
  for (const PrivacyRule& rule : PrivacyRules()) {
    const bool isOfNames = rule.kind == PrivacyRuleKind::kKeyName ||
                           rule.kind == PrivacyRuleKind::kValueName ||
                           rule.kind == PrivacyRuleKind::kFileName;
    EXPECT_EQ(rule.pattern.empty(), !isOfNames) << testing::PrintToString(rule.reason);
    EXPECT_FALSE(rule.reason.empty());
  }
}

TEST(PrivacyRules, FilesAreJudgedByTheirNameAlone) {
  const PrivateNames names;
  const PrivacyJudge judge(names);
  EXPECT_NE(judge.RuleForFile(L"Local\\Vantric\\Recent.TXT"), nullptr);
  EXPECT_NE(judge.RuleForFile(L"Local\\a.mru"), nullptr);
  EXPECT_EQ(judge.RuleForFile(L"Local\\Recent.d\\gear.prt"), nullptr);
  EXPECT_EQ(judge.RuleForFile(L"Local\\recently bought.prt"), nullptr);
}

class RegistryPrivacy : public testing::Test {
 protected:
  // The file without what is personal.
  std::string Filtered(const std::string& bytes, std::size_t partBytes = 5) {
    const PrivacyJudge judge(names_);
    std::string kept;
    found_.clear();
    RegistryPrivacyFilter filter(judge, L"Options\\General.reg", found_,
                                 [&kept](std::string_view part) { kept.append(part); });
    for (std::size_t at = 0; at < bytes.size(); at += partBytes) {
      filter.Take(std::string_view(bytes).substr(at, partBytes));
    }
    filter.Finish();
    return kept;
  }

  Texts FoundNames() const {
    Texts names;
    for (const PrivateItem& item : found_) names.push_back(item.isValue ? item.name : item.key);
    return names;
  }

  // Whether a value of General with this data is left out; all else must stay.
  bool IsLeftOut(const std::string& value) {
    const std::string front = kKey + "\"front\"=hex:01,\\\r\n  02\r\n";
    const std::string end = "\"end\"=\"C:\\\\x\\\\\"\r\n\r\n";
    const std::string kept = Filtered(RegistryFileBytes(front + value + end));
    const bool isGone = kept == RegistryFileBytes(front + end);
    EXPECT_TRUE(isGone || kept == RegistryFileBytes(front + value + end)) << value;
    EXPECT_EQ(isGone, found_.size() == 1U) << value;
    return isGone;
  }

  PrivateNames names_{{L"Ada"}, L"WORKSHOP7"};
  std::vector<PrivateItem> found_;
};

// The data of a text as a registry file writes it byte by byte.
std::string HexOf(std::u16string text) {
  text.push_back(u'\0');
  std::string hex;
  for (const char16_t unit : text) {
    for (const int byte : {unit & 0xFF, unit >> 8}) {
      if (!hex.empty()) hex += ",";
      if (hex.size() % 75 == 0 && !hex.empty()) hex += "\\\r\n  ";
      hex += "0123456789abcdef"[byte >> 4];
      hex += "0123456789abcdef"[byte & 15];
    }
  }
  return hex + "\r\n";
}

TEST_F(RegistryPrivacy, ValuesOfEveryKindAreLookedInto) {
  EXPECT_TRUE(IsLeftOut("\"v\"=\"C:\\\\Users\\\\bob\\\\Parts\"\r\n"));
  EXPECT_TRUE(IsLeftOut("\"v\"=\"made by ADA\"\r\n"));
  EXPECT_TRUE(IsLeftOut("\"v\"=\"\\\\\\\\workshop7\\\\parts\"\r\n"));
  EXPECT_TRUE(IsLeftOut("\"v\"=hex(2):" + HexOf(u"C:\\Users\\bob\\x")));
  EXPECT_TRUE(IsLeftOut("\"v\"=hex(7):" + HexOf(std::u16string(u"x\0of ada\0", 9))));
  EXPECT_TRUE(IsLeftOut("\"v\"=hex:" + HexOf(u"C:\\Users\\bob\\x")));
  EXPECT_TRUE(IsLeftOut("\"C:\\\\Users\\\\bob\\\\gear.prt\"=dword:00000001\r\n"));
  EXPECT_TRUE(IsLeftOut("@=\"ada\"\r\n"));
  EXPECT_TRUE(IsLeftOut("\"v\"=\"line\r\nC:\\\\Users\\\\bob\"\r\n"));
  EXPECT_TRUE(IsLeftOut("\"RecentFile1\"=dword:00000001\r\n"));
  EXPECT_TRUE(IsLeftOut("\"Computer Name\"=\"x\"\r\n"));
}

TEST_F(RegistryPrivacy, WhatOnlyLooksLikeItStays) {
  EXPECT_FALSE(IsLeftOut("\"v\"=\"adapter\"\r\n"));
  EXPECT_FALSE(IsLeftOut("\"v\"=\"WORKSHOP70\"\r\n"));
  EXPECT_FALSE(IsLeftOut("\"v\"=\"C:\\\\Users\\\\Public\\\\x\"\r\n"));
  EXPECT_FALSE(IsLeftOut("\"v\"=hex(2):" + HexOf(u"%USERPROFILE%\\x")));
  EXPECT_FALSE(IsLeftOut("\"v\"=hex(7):" + HexOf(std::u16string(u"Can\0ada2\0", 9))));
  EXPECT_FALSE(IsLeftOut("\"Most recent\"=dword:0000ada0\r\n"));
  EXPECT_FALSE(IsLeftOut("; a comment \"\r\n"));
  EXPECT_FALSE(IsLeftOut("\"v\"=\"quoted \\\"x\\\\\"\r\n"));
}

TEST_F(RegistryPrivacy, KeyGoesWithItsValuesAndTheKeysBelow) {
  const std::string root = "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC 28.0";
  const std::string stays = root + "\\Draw]\r\n\"a\"=dword:00000001\r\n\r\n";
  const std::string file = stays + root + "\\Directories\\Recent]\r\n\"a\"=\"x\r\ny\"\r\n\r\n" +
                           root +
                           "\\Directories\\Recent\\More]\r\n\"a\"=hex:01,\\\r\n  02\r\n\r\n" +
                           root + "\\Profiles\\ada]\r\n\"a\"=\"x\"\r\n\r\n";
  EXPECT_EQ(Filtered(RegistryFileBytes(file + stays)),
            RegistryFileBytes(stays + "\r\n\r\n\r\n" + stays));
  EXPECT_EQ(FoundNames().size(), 3U);
}

TEST_F(RegistryPrivacy, NamesOfTheVersionsOwnKeysAreNobodys) {
  names_.users = {L"Vantric", L"General", L"SOFTWARE"};
  const std::string file = RegistryFileBytes(kKey + "\"a\"=dword:00000001\r\n\r\n");
  EXPECT_EQ(Filtered(file), file);
}

TEST_F(RegistryPrivacy, FileComesOutWholeWhereverItsPartsEnd) {
  const std::string file = RegistryFileBytes(
      kKey + "\"v\"=\"of ada\"\r\n\"\xE4\xB8\xAD\"=\"\xF0\x9F\x98\x80 x\"\r\n\r\n");
  const std::string expected =
      RegistryFileBytes(kKey + "\"\xE4\xB8\xAD\"=\"\xF0\x9F\x98\x80 x\"\r\n\r\n");
  for (const std::size_t part : {1, 2, 3, 1000}) EXPECT_EQ(Filtered(file, part), expected);
  EXPECT_EQ(Filtered("REGEDIT4\r\n\r\n" + kKey + "\"v\"=\"ada\"\r\n\"w\"=\"x\"\r\n"),
            "REGEDIT4\r\n\r\n" + kKey + "\"w\"=\"x\"\r\n");
}

// Any file of such lines is one as the registry tool writes it.
std::string RandomFile(std::mt19937& random) {
  const std::string root = "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC 28.0";
  const std::string lines[] = {
      root + "]\r\n",
      root + "\\General]\r\n",
      root + "\\Recent Files\\x]\r\n",
      root + "\\of ada]\r\n",
      "\r\n",
      "\"v\"=\"ada\"\r\n",
      "\"v\\\"=\"=\"x\\\\\"\r\n",
      "\"[x]\"=\"adapter [\\\"@=\"\r\n",
      "\"Users\"=hex(2):43,00,3a,00,\\\r\n  5c,00\r\n",
      "@=\"C:\\\\Users\\\\x\"\r\n",
      "\"MRU\"=dword:00000001\r\n",
      "\"h\"=hex(7):61,00,64,00,61,\\\r\n  00,00,00\r\n",
      "\"h\"=hex:\r\n",
  };
  std::string text = root + "]\r\n";
  for (int i = 0; i < 12; ++i) text += lines[random() % std::size(lines)];
  return RegistryFileBytes(text);
}

std::wstring WhatIsNotUnderstood(const std::string& file) {
  RegistryFormScan form;
  form.Take(file);
  return form.Finish().value_or(L"");
}

TEST_F(RegistryPrivacy, WhatIsLeftIsARegistryFileWithNothingPersonal) {
  std::mt19937 random(1);
  std::size_t changed = 0;
  for (int round = 0; round < 500; ++round) {
    const std::string file = RandomFile(random);
    ASSERT_EQ(WhatIsNotUnderstood(file), L"");
    const std::string kept = Filtered(file, 1 + random() % 9);
    EXPECT_EQ(kept == file, found_.empty());
    changed += kept == file ? 0 : 1;
    EXPECT_EQ(WhatIsNotUnderstood(kept), L"");
    EXPECT_EQ(Filtered(kept), kept);
    EXPECT_TRUE(found_.empty());
  }
  EXPECT_GT(changed, 100U);
}

TEST(DocumentPrivacy, NobodyTakesTheUsersPlace) {
  const auto neutral = [](std::string bytes) {
    MakeDocumentNeutral(bytes);
    return bytes;
  };
  EXPECT_EQ(neutral("<a b='C:\\Users\\ada' c='/users/bob/x'>ada C:/Users/Ada L/y</a>"),
            "<a b='C:\\Users\\Public' c='/users/Public/x'>ada C:/Users/Public/y</a>");
  EXPECT_EQ(neutral("<a>\xE4\xB8\xAD C:\\Users\\\xE5\xBC\xA0\\x</a>"),
            "<a>\xE4\xB8\xAD C:\\Users\\Public\\x</a>");
  EXPECT_EQ(neutral(RegistryBytes("<a>C:\\Users\\\xE5\xBC\xA0\\x</a>") + "\x01"),
            RegistryBytes("<a>C:\\Users\\Public\\x</a>") + "\x01");
  EXPECT_EQ(neutral("<a>C:\\Users\\Public\\</a>"), "<a>C:\\Users\\Public\\</a>");
}

TEST(PrivateItems, UsersAreTakenFromThePackageItself) {
  MemoryArchive archive;
  archive.Add(L"config.ini", "[Base]\r\n");
  archive.Add(L"Options\\Draw.reg", RegistryFileBytes(kKey + "\"Owner\"=\"BOB S\"\r\n"));
  archive.Add(L"Register\\VANTRIC2026.reg",
              RegistryFileBytes(kKey + "\"a\"=\"C:\\\\Users\\\\Bob S\\\\x\"\r\n"));
  archive.Add(L"Local\\a.xml", "<a>C:\\Users\\x\\y C:\\Users\\x</a>");
  archive.Add(L"Local\\b.xml", "", ArchiveResult::kDamaged);
  archive.Add(L"Local\\recent.txt", "");
  Texts found;
  for (const PrivateItem& item : FindPrivateItems(archive)) {
    found.push_back(item.entry + L" " + item.name + (item.isChanged ? L"~" : L"") + L": " +
                    item.reason);
  }
  EXPECT_EQ(found,
            (Texts{L"Options\\Draw.reg Owner: names the user",
                   L"Register\\VANTRIC2026.reg a: names a user's profile folder",
                   L"Local\\a.xml ~: names users' profile folders, which become those of Public: 2",
                   L"Local\\b.xml : cannot be looked into",
                   L"Local\\recent.txt : a list of recent files"}));
}

}  // namespace
}  // namespace carrovan
