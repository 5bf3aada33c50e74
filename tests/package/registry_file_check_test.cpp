#include "package/registry_file_scan.h"

#include <gtest/gtest.h>

#include "tests/support/test_machine.h"
#include "text/text.h"

namespace carrovan {
namespace {

const std::wstring kWhole =
    L"Windows Registry Editor Version 5.00\r\n"
    L"\r\n"
    L"[HKEY_CURRENT_USER\\SOFTWARE\\Vantric]\r\n"
    L"@=\"the \\\"default\\\" one\"\r\n"
    L"\"a \\\\ name\"=dword:00000001\r\n"
    L"; a \"comment\r\n"
    L"\"two\r\nlines\"=\"as\r\n\r\nthey stand\"\r\n"
    L"\"bytes\"=hex(7):01,02,\\\r\n  03,04,\\\r\n  05\r\n"
    L"\"none\"=-\r\n"
    L"\r\n";

std::string Utf16(const std::wstring& text) {
  const auto bytes = EncodeText({text, true});
  return {bytes.begin(), bytes.end()};
}

std::optional<std::wstring> Lacks(const std::string& bytes, std::size_t partBytes = 3) {
  RegistryFileCheck check;
  for (std::size_t at = 0; at < bytes.size(); at += partBytes) {
    check.Take(std::string_view(bytes).substr(at, partBytes));
  }
  return check.Finish();
}

// Places behind which a file may end: line ends that do not lie in a value.
bool MayEndAt(std::size_t length) {
  const std::wstring front = kWhole.substr(0, length);
  if (!front.ends_with(L"\r\n")) return false;
  for (const wchar_t* inside :
       {L"\"two\r\n", L"=\"as\r\n", L"=\"as\r\n\r\n", L"02,\\\r\n", L"04,\\\r\n"}) {
    if (front.ends_with(inside)) return false;
  }
  return true;
}

TEST(RegistryFileCheck, WholeFilesLackNothing) {
  EXPECT_EQ(Lacks(Utf16(kWhole)), std::nullopt);
  EXPECT_EQ(Lacks(Utf16(kWhole), 1), std::nullopt);
  EXPECT_EQ(Lacks("REGEDIT4\n\n[HKEY_CURRENT_USER\\x]\n\"a\"=hex:01,\\\n  02\n"), std::nullopt);
  EXPECT_EQ(Lacks("REGEDIT4\r\n"), std::nullopt);
}

TEST(RegistryFileCheck, EveryCutOutsideALineEndIsFound) {
  for (std::size_t length = 0; length < kWhole.size(); ++length) {
    const std::string cut = Utf16(kWhole.substr(0, length));
    EXPECT_EQ(Lacks(cut).has_value(), !MayEndAt(length)) << length;
    EXPECT_TRUE(Lacks(cut + '\r')) << length << " and half a character";
  }
}

TEST(RegistryFileCheck, NamesWhatIsMissing) {
  EXPECT_EQ(Lacks(""), L"is empty");
  EXPECT_EQ(Lacks("MZ\r\n"), L"does not begin as a registry file");
  EXPECT_EQ(Lacks("\xFF\xFEW"), L"ends within a character");
  EXPECT_EQ(Lacks("REGEDIT4"), L"ends without the end of its last line");
  EXPECT_EQ(Lacks("REGEDIT4\n[HKEY_CURRENT_"), L"ends without the end of its last line");
  EXPECT_EQ(Lacks("REGEDIT4\n\"a\"=\"b\""), L"ends without the end of its last line");
  EXPECT_EQ(Lacks("REGEDIT4\n\"a\"=dword:00000"), L"ends inside a value");
  EXPECT_EQ(Lacks("REGEDIT4\n\"a\"=hex:01,\\\n"), L"ends inside a value");
  EXPECT_EQ(Lacks("REGEDIT4\n\"a\"=\"b\r\n"), L"ends inside a value");
  EXPECT_EQ(Lacks("REGEDIT4\n\"a\"=\"b\\\"\r\n"), L"ends inside a value");
}

// Room that was set aside and never written to.
TEST(RegistryFileCheck, ZerosBehindTheTextAreNoEnd) {
  EXPECT_TRUE(Lacks(Utf16(kWhole) + std::string(4096, '\0')));
}

TEST(RegistryFileCheck, ReadsFilesOnTheDisk) {
  const auto machine = NewTestMachine();
  const std::wstring path = machine->ScratchFolder() + L"a.reg";
  FileSystem& files = *machine->Ports().files;
  EXPECT_TRUE(WhatRegistryFileLacks(files, path));
  machine->PutFile(path, Utf16(kWhole));
  EXPECT_EQ(WhatRegistryFileLacks(files, path), std::nullopt);
  machine->PutFile(path, Utf16(kWhole.substr(0, kWhole.size() - 3)));
  EXPECT_EQ(WhatRegistryFileLacks(files, path), L"ends inside a value");
}

}  // namespace
}  // namespace carrovan
