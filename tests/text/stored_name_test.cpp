#include "text/path_text.h"

#include <gtest/gtest.h>

#include "text/text.h"

namespace carrovan {
namespace {

TEST(StoredName, TakesNamesOfFilesAndFolders) {
  for (const wchar_t* name : {
           L"a",
           L"config.ini",
           L"Options\\General.reg",
           L"Roaming/ORMA/en-us/Customization/menu.xml",
           L"Local\\\x4E2D\x6587\\\x00E4.xml",
           L"folder\\",
           L"folder/",
           L"a b.c d",
           L".hidden",
           L"a..b",
           L"CONSOLE.txt",
           L"COM10",
           L"LPTX",
           L"nul_",
           L"COM",
       }) {
    EXPECT_EQ(RefusalOfStoredName(name), std::nullopt) << ToUtf8(name);
  }
}

TEST(StoredName, RefusesNamesThatLeadElsewhereOrNowhere) {
  const struct {
    std::wstring name;
    const wchar_t* refusal;
  } kRows[] = {
      {L"", L"is empty"},
      {L"\\a", L"is an absolute path"},
      {L"/a", L"is an absolute path"},
      {L"\\\\server\\share\\a", L"is an absolute path"},
      {L"\\\\?\\C:\\a", L"is an absolute path"},
      {L"C:\\a", L"holds a colon"},
      {L"C:a", L"holds a colon"},
      {L"a.txt:stream", L"holds a colon"},
      {L"..", L"leads out of the folder"},
      {L"..\\a", L"leads out of the folder"},
      {L"../a", L"leads out of the folder"},
      {L"a\\..\\..\\b", L"leads out of the folder"},
      {L"a/../b", L"leads out of the folder"},
      {L"a\\..", L"leads out of the folder"},
      {L".. \\a", L"ends in a dot or a blank"},
      {L"...", L"ends in a dot or a blank"},
      {L".", L"ends in a dot or a blank"},
      {L"a.\\b", L"ends in a dot or a blank"},
      {L"a ", L"ends in a dot or a blank"},
      {L"a\\\\b", L"has an empty folder name"},
      {L"a//", L"has an empty folder name"},
      {L"CON", L"names a device"},
      {L"a\\nul.txt", L"names a device"},
      {L"aux.tar.gz", L"names a device"},
      {L"PRN .x", L"names a device"},
      {L"com1", L"names a device"},
      {L"COM0.txt", L"names a device"},
      {L"LPT\x00B2.log", L"names a device"},
      {L"conin$", L"names a device"},
      {L"a\nb", L"holds a control character"},
      {std::wstring(L"a\0b", 3), L"holds a control character"},
      {L"\x1F", L"holds a control character"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(RefusalOfStoredName(row.name), std::wstring(row.refusal)) << ToUtf8(row.name);
  }
}

}  // namespace
}  // namespace carrovan
