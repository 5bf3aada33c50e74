#include "package/registry_file_scan.h"

#include <gtest/gtest.h>

#include "text/text.h"

namespace carrovan {
namespace {

using namespace std::string_literals;

const std::string kHeader = "Windows Registry Editor Version 5.00\r\n\r\n";

std::optional<std::wstring> RefusalOf(const std::string& bytes, std::size_t partBytes,
                                      const std::wstring& company = L"Vantric") {
  RegistryFileScan scan(company);
  for (std::size_t at = 0; at < bytes.size(); at += partBytes) {
    scan.Take(std::string_view(bytes).substr(at, partBytes));
  }
  return scan.Finish();
}

std::optional<std::wstring> RefusalOf(const std::string& bytes) {
  return RefusalOf(bytes, bytes.size() + 1);
}

std::string Utf16(const std::string& text) {
  const auto bytes = EncodeText({FromUtf8(text), true});
  return {bytes.begin(), bytes.end()};
}

std::string BigEndian(const std::string& text) {
  std::string swapped = Utf16(text);
  for (std::size_t i = 0; i + 1 < swapped.size(); i += 2) std::swap(swapped[i], swapped[i + 1]);
  return swapped;
}

// Each way in which a tool may be given the same text.
std::vector<std::string> FormsOf(const std::string& body) {
  const std::string lineFeeds = ToUtf8(ReplaceAll(FromUtf8(kHeader + body), L"\r\n", L"\n"));
  return {kHeader + body,        "REGEDIT4\r\n\r\n" + body, "\xEF\xBB\xBF" + kHeader + body,
          Utf16(kHeader + body), Utf16(lineFeeds),          lineFeeds};
}

const std::string kAllowed[] = {
    "",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric]\r\n\"a\"=\"b\"\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC 28.0\\Draw]\r\n",
    "[hkey_current_user\\Software\\VANTRIC\\x]\r\n",
    "[HKCU\\Software\\vantric\\x]\r\n",
    "[-HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC 28.0]\r\n",
    " \t[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\x]\t \r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\x] ; comment\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\x]",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\x]\r",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\a]b [c]\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\\xE8\x9E\xBA\xE6\xA0\x93]\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\..\\Microsoft]\r\n",
    "; [HKEY_LOCAL_MACHINE\\x]\r\n",
    "\"a\"=\"[HKEY_LOCAL_MACHINE\\\\x]\"\r\n@=\"HKEY_CLASSES_ROOT\"\r\n",
    "\"a\"=hex:01,02,\\\r\n  03,04\r\n",
    "\"a\"=\"first\r\nsecond line of a text\r\n\"\r\n",
};

TEST(RegistryFileScan, AllowsKeysOfTheCompanyInEveryForm) {
  for (const std::string& body : kAllowed) {
    for (const std::string& form : FormsOf(body)) {
      EXPECT_EQ(RefusalOf(form), std::nullopt) << form;
    }
  }
}

const std::string kOutside[] = {
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantric]\r\n",
    "[HKLM\\SOFTWARE\\Vantric]\r\n",
    "[HKEY_CLASSES_ROOT\\.exe]\r\n",
    "[HKEY_USERS\\.DEFAULT\\SOFTWARE\\Vantric]\r\n",
    "[HKEY_CURRENT_CONFIG\\SOFTWARE\\Vantric]\r\n",
    "[HKEY_CURRENT_USER]\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE]\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\VantricX]\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantri]\r\n",
    "[HKEY_CURRENT_USER\\Vantric]\r\n",
    "[HKEY_CURRENT_USER\\Environment]\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run]\r\n\"a\"=\"b\"\r\n",
    "[-HKEY_CURRENT_USER\\SOFTWARE]\r\n",
    "[-HKEY_CURRENT_USER\\SOFTWARE\\Microsoft]\r\n",
    "[--HKEY_CURRENT_USER\\SOFTWARE\\Vantric]\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\x]\r\n[HKEY_LOCAL_MACHINE\\x]\r\n",
    // Odd spellings.
    "  \t [HKEY_LOCAL_MACHINE\\x]\r\n",
    "[ HKEY_CURRENT_USER\\SOFTWARE\\Vantric]\r\n",
    "[HKEY_CURRENT_USER \\SOFTWARE\\Vantric]\r\n",
    "[HKEY_CURRENT_USER\\ SOFTWARE\\Vantric]\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric ]\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\t\\x]\r\n",
    "[HKEY_CURRENT_USER/SOFTWARE/Vantric]\r\n",
    "[\"HKEY_CURRENT_USER\\SOFTWARE\\Vantric\"]\r\n",
    // The key ends at the first closing bracket, or at the last one.
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric]\\..\\x]\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE]\\Vantric]\r\n",
    // Behind what another line leaves open.
    "\"a\"=hex:01,02,\\\r\n[HKEY_LOCAL_MACHINE\\x]\r\n",
    "\"a\"=hex:01,02,\\\r\n  [HKEY_LOCAL_MACHINE\\x]\r\n",
    "\"a\"=\"open\r\n[HKEY_LOCAL_MACHINE\\x]\r\n",
    "; comment \\\r\n[HKEY_LOCAL_MACHINE\\x]\r\n",
    // Line ends that only some tools know.
    "; comment\r[HKEY_LOCAL_MACHINE\\x]\r\n",
    "\"a\"=\"b\"\r[HKEY_LOCAL_MACHINE\\x]\r\n",
    "; comment\f[HKEY_LOCAL_MACHINE\\x]\r\n",
    "; comment\v[HKEY_LOCAL_MACHINE\\x]\r\n",
    "; comment\0[HKEY_LOCAL_MACHINE\\x]\r\n"s,
};

TEST(RegistryFileScan, RefusesALineThatEndsTwice) {
  EXPECT_TRUE(RefusalOf("REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\SOFTWARE\\Vantric]\r\r\n"));
  EXPECT_FALSE(RefusalOf("REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\SOFTWARE\\Vantric]\r\n\r\n"));
}

TEST(RegistryFileScan, RefusesKeysOutsideInEveryForm) {
  for (const std::string& body : kOutside) {
    for (const std::string& form : FormsOf(body)) {
      const auto refusal = RefusalOf(form);
      ASSERT_TRUE(refusal) << form;
      EXPECT_NE(refusal->find(L"which lies outside HKEY_CURRENT_USER\\SOFTWARE\\Vantric"),
                std::wstring::npos)
          << ToUtf8(*refusal);
    }
  }
}

const std::string kNotUnderstood[] = {
    "[\r\n",
    "[]\r\n",
    "[-]\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric] junk\r\n",
    "[HKEY_CURRENT_USER\\\\SOFTWARE\\Vantric]\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\\\Vantric]\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\]\r\n",
    "[\\HKEY_CURRENT_USER\\SOFTWARE\\Vantric]\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\rX]\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\0X]\r\n"s,
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric]\rX]\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric]\fX]\r\n",
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric]\0X]\r\n"s,
    "\xC2\xA0[HKEY_LOCAL_MACHINE\\x]\r\n",
    "\xEF\xBB\xBF[HKEY_LOCAL_MACHINE\\x]\r\n",
    "\xE3\x80\x80[HKEY_CURRENT_USER\\SOFTWARE\\Vantric]\r\n",
    "x [HKEY_LOCAL_MACHINE\\x]\r\n",
    "HKEY_CLASSES_ROOT\\.exe = x\r\n",
    "hkey_local_machine\\x\r\n",
};

TEST(RegistryFileScan, RefusesWhatCouldBeAKeyButIsNotUnderstood) {
  for (const std::string& body : kNotUnderstood) {
    for (const std::string& form : FormsOf(body)) {
      const auto refusal = RefusalOf(form);
      ASSERT_TRUE(refusal) << form;
      EXPECT_NE(refusal->find(L"could be taken for a key"), std::wstring::npos) << ToUtf8(*refusal);
    }
  }
}

TEST(RegistryFileScan, RefusesKeysWithoutAHeaderToo) {
  for (const char* text : {"[HKEY_LOCAL_MACHINE\\x]", "REGEDIT\r\nHKEY_CLASSES_ROOT\\.a = b",
                           "regedit4\r\n[HKEY_LOCAL_MACHINE\\x]", "\r\n\r\n[HKLM\\x]"}) {
    EXPECT_TRUE(RefusalOf(text)) << text;
  }
}

TEST(RegistryFileScan, RefusesKeysInEncodingsThatOnlyOtherToolsTake) {
  const std::string text = kHeader + "[HKEY_LOCAL_MACHINE\\x]\r\n";
  EXPECT_TRUE(RefusalOf(Utf16(text).substr(2)));
  EXPECT_TRUE(RefusalOf(BigEndian(text)));
  EXPECT_TRUE(RefusalOf(BigEndian(text).substr(2)));
}

TEST(RegistryFileScan, LeavesAFileAloneThatIsNone) {
  for (const std::string& text :
       {std::string(), std::string("x"), std::string("\xFF"), std::string("\xFF\xFE"),
        std::string("\xFF\xFEx"), std::string("not a registry file"), std::string(5000, '\0')}) {
    EXPECT_EQ(RefusalOf(text), std::nullopt) << text;
  }
}

TEST(RegistryFileScan, NamesTheFirstLineThatIsWrong) {
  EXPECT_EQ(RefusalOf("REGEDIT4\n\n[HKCU\\SOFTWARE\\Vantric]\r\n[HKLM\\A]\r\n[HKLM\\B]"),
            L"line 4 names the key HKLM\\A, which lies outside "
            L"HKEY_CURRENT_USER\\SOFTWARE\\Vantric");
  EXPECT_EQ(RefusalOf("[HKLM"),
            L"line 1 could be taken for a key, but not for one that can be "
            L"understood");
}

TEST(RegistryFileScan, ShowsOnlyTheBeginningOfALongKey) {
  const auto refusal = RefusalOf("[HKLM\\" + std::string(5000, 'k') + "]");
  ASSERT_TRUE(refusal);
  EXPECT_LT(refusal->size(), 400U);
  EXPECT_NE(refusal->find(L"kkk..., which"), std::wstring::npos);
}

TEST(RegistryFileScan, KeepsNoLineThatIsTooLong) {
  const auto refusal = RefusalOf("[HKCU\\SOFTWARE\\Vantric\\" + std::string(1 << 20, 'k') + "]");
  EXPECT_EQ(refusal, L"line 1 is too long to be understood");
  EXPECT_EQ(RefusalOf("\"a\"=\"" + std::string(1 << 20, 'v') + "\"\r\n"), std::nullopt);
}

TEST(RegistryFileScan, SaysTheSameHoweverTheFileIsCut) {
  for (const auto* rows : {&kAllowed[1], &kOutside[5]}) {
    for (const std::string& form : FormsOf(*rows)) {
      const auto expected = RefusalOf(form);
      for (const std::size_t partBytes : {1U, 2U, 3U, 64U}) {
        EXPECT_EQ(RefusalOf(form, partBytes), expected) << form << " by " << partBytes;
      }
    }
  }
}

TEST(RegistryFileScan, ComparesTheCompanyAsTheRegistryDoes) {
  const std::string key = "[HKCU\\SOFTWARE\\\xC3\x84\xE8\x9E\xBA Co\\x]";
  EXPECT_EQ(RefusalOf(key, 100, L"\xE4\x87BA CO"), std::nullopt);
  EXPECT_TRUE(RefusalOf(key, 100, L"\x87BA"));
  EXPECT_TRUE(RefusalOf("[HKCU\\SOFTWARE\\]", 100, L""));
  EXPECT_TRUE(RefusalOf("[HKCU\\SOFTWARE\\x]", 100, L""));
}

}  // namespace
}  // namespace carrovan
