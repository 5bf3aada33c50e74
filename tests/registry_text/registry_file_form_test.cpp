#include "registry_text/registry_file_form.h"

#include <gtest/gtest.h>

#include "registry_text/registry_file_parser.h"
#include "registry_text/registry_file_writer.h"
#include "tests/support/registry_bytes.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr char kHeader[] = "Windows Registry Editor Version 5.00\r\n";
constexpr char kKey[] = "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric]\r\n";

std::optional<std::wstring> Scan(std::string_view bytes, std::size_t partBytes = 1 << 20) {
  RegistryFormScan scan;
  for (; !bytes.empty(); bytes.remove_prefix(std::min(partBytes, bytes.size()))) {
    scan.Take(bytes.substr(0, partBytes));
  }
  return scan.Finish();
}

std::optional<std::wstring> ScanText(const std::string& text) { return Scan(RegistryBytes(text)); }
std::optional<std::wstring> ScanLine(const std::string& line) {
  return ScanText(kHeader + std::string("\r\n") + kKey + line);
}

TEST(RegistryFormScan, UnderstandsWhatTheToolWrites) {
  RegistryKey key;
  std::vector<std::uint8_t> bytes(300, 0xAB);
  for (const std::uint32_t type : {0U, 2U, 3U, 4U, 7U, 11U, 0x80000001U}) {
    key.SetValue({L"type " + std::to_wstring(type), type, bytes});
    key.SetValue({L"empty " + std::to_wstring(type), type, {}});
  }
  key.SetValue(MakeStringValue(L"", L"default"));
  key.SetValue(MakeStringValue(L"a \"quoted\" \\ name\r\n", L"C:\\\"x\"\r\n\t\x4E2D"));
  key.SetValue(MakeStringValue(std::wstring(kLongestValueName, L'n'), std::wstring(100000, L'x')));
  key.SetValue(MakeDwordValue(L"d", 0xFFFFFFFF));
  key.Make(L"Sub key\\-" + std::wstring(kLongestKeyName - 1, L'k'));
  const std::wstring text = WriteRegistryFile(RegistryHive::kCurrentUser, L"SOFTWARE\\Vantric", key,
                                              RegistryFileForm::kExport);
  const std::string file = RegistryBytes(ToUtf8(text));
  EXPECT_EQ(Scan(file), std::nullopt);
  EXPECT_EQ(Scan(file, 1), std::nullopt);
  EXPECT_TRUE(ParseRegistryFile(text)->problems.empty());
}

TEST(RegistryFormScan, UnderstandsEachFormOfALine) {
  for (const char* line :
       {"", "\r\n", "@=\"\"\r\n", "\"a\"=\"\\\\ \\\" \\r\\n\"\r\n", "\"a\"=dword:0123aBcD\r\n",
        "\"a\"=hex:\r\n", "\"a\"=hex:01\r\n", "\"a\"=hex(b):01,fF\r\n",
        "\"a\"=hex(80000001):01,\\\r\n  02,\\\r\n03\r\n", "\"a\"=hex:\\\r\n  01\r\n",
        "[HKEY_LOCAL_MACHINE]\r\n", "\r\n[hkey_current_user\\a b\\{c}]\r\n\"x;\"=\"[;\"\r\n"}) {
    EXPECT_EQ(ScanLine(line), std::nullopt) << line;
    const auto file = ParseRegistryFile(FromUtf8(kHeader + std::string("\r\n") + kKey + line));
    EXPECT_TRUE(file->problems.empty()) << line;
  }
}

TEST(RegistryFormScan, UnderstandsNoOtherLine) {
  for (const char* line : {" ",
                           "\t\r\n",
                           ";comment\r\n",
                           " \"a\"=\"b\"\r\n",
                           "\"a\"=\"x\\c\"\r\n",
                           "\"a\" =\"b\"\r\n",
                           "\"a\"= \"b\"\r\n",
                           "\"a\"=\"b\" \r\n",
                           "\"a\"=\"b\";x\r\n",
                           "\"a\"=\"b\r\nc\"\r\n",
                           "\"a\"=-\r\n",
                           "@=-\r\n",
                           "@\r\n",
                           "\"a\"\r\n",
                           "a=\"b\"\r\n",
                           "\"\"=\"b\"\r\n",
                           "\"a\"=dword:1\r\n",
                           "\"a\"=dword:000000001\r\n",
                           "\"a\"=dword:0000000g\r\n",
                           "\"a\"=dword:\r\n",
                           "\"a\"=qword:01\r\n",
                           "\"a\"=hex:011\r\n",
                           "\"a\"=hex:1\r\n",
                           "\"a\"=hex:01,\r\n",
                           "\"a\"=hex:,01\r\n",
                           "\"a\"=hex:01,,02\r\n",
                           "\"a\"=hex: 01\r\n",
                           "\"a\"=hex:01 02\r\n",
                           "\"a\"=hex():01\r\n",
                           "\"a\"=hex(g):01\r\n",
                           "\"a\"=hex(000000001):01\r\n",
                           "\"a\"=hex(2)01\r\n",
                           "\"a\"=hex01\r\n",
                           "\"a\"=hex:01\\\r\n02\r\n",
                           "\"a\"=hex:01,\\\r\n\r\n",
                           "\"a\"=hex:01,\\\r\n;c\r\n02\r\n",
                           "\"a\"=hex:01,\\ \r\n02\r\n",
                           "\"a\"=hex:01,\\\r\n[HKEY_CURRENT_USER\\a]\r\n",
                           "\"a\"=hex:01,\\\r\n\t02\r\n",
                           "\"a\"=\"b\"\n",
                           "\"a\"=\"b\"\r\r\n",
                           "\"a\"=\"b\"\n\r",
                           "\"a\"=\"b\"\r",
                           "\n",
                           "\"a\"=\"\x01\"\r\n",
                           "\"a\x01\"=\"\"\r\n",
                           "\xEF\xBB\xBF\r\n",
                           "Windows Registry Editor Version 5.00\r\n",
                           "[-HKEY_CURRENT_USER\\a]\r\n",
                           "[]\r\n",
                           "[HKEY_CURRENT_USER\\a\r\n",
                           "[HKEY_CURRENT_USER\\a] \r\n",
                           "[HKEY_CURRENT_USER\\a]b]\r\n",
                           "[HKEY_CURRENT_USER\\[a]\r\n",
                           "[HKEY_CURRENT_USER\\]\r\n",
                           "[HKEY_CURRENT_USER\\\\a]\r\n",
                           "[\\HKEY_CURRENT_USER\\a]\r\n",
                           "[HKCU\\a]\r\n",
                           "[HKEY_USERS\\a]\r\n",
                           " [HKEY_CURRENT_USER\\a]\r\n",
                           "[HKEY_CURRENT_USER\\a]\n"}) {
    EXPECT_TRUE(ScanLine(line)) << line;
  }
  EXPECT_TRUE(ScanLine("\"" + std::string(kLongestValueName + 1, 'n') + "\"=\"\"\r\n"));
  EXPECT_TRUE(ScanLine("[HKEY_CURRENT_USER\\" + std::string(kLongestKeyName + 1, 'k') + "]\r\n"));
  std::string deep = "[HKEY_CURRENT_USER";
  for (std::size_t i = 0; i <= kMostKeyLevels; ++i) deep += "\\k";
  EXPECT_TRUE(ScanLine(deep + "]\r\n"));
}

TEST(RegistryFormScan, UnderstandsNoOtherHeaderOrEncoding) {
  EXPECT_EQ(ScanText(kHeader), std::nullopt);
  const std::string text = kHeader + std::string("\r\n") + kKey;
  for (const std::string& bytes :
       {std::string(), std::string("\xFF"), std::string("\xFF\xFE"), text, "\xEF\xBB\xBF" + text,
        RegistryBytes("REGEDIT4\r\n"), RegistryBytes(" " + text),
        RegistryBytes("\xEF\xBB\xBF" + text),
        RegistryBytes("Windows Registry Editor Version 5.00\r\r\n"), RegistryBytes("\r\n" + text),
        RegistryBytes("Windows Registry Editor Version 5.00 \r\n"),
        RegistryBytes("Windows Registry Editor Version 5.00\n"), RegistryBytes(text) + "x",
        RegistryBytes(text).substr(2), RegistryBytes(kHeader + std::string("\"a\"=\"b\"\r\n"))}) {
    EXPECT_TRUE(Scan(bytes)) << bytes;
  }
}

TEST(RegistryFormScan, FindsAFileThatWasCutShort) {
  const std::string file =
      RegistryFileBytes(kKey + std::string("\"a\"=\"b\"\r\n\"c\"=hex:01,\\\r\n  02\r\n"));
  std::size_t whole = 0;
  for (std::size_t size = 0; size <= file.size(); ++size) {
    const auto problem = Scan(file.substr(0, size));
    const std::string_view kept = std::string_view(file).substr(0, size);
    constexpr std::string_view kLineEnd("\r\0\n\0", 4);
    const bool endsBetweenLines =
        kept.ends_with(kLineEnd) && !kept.ends_with(std::string_view("\\\0\r\0\n\0", 6));
    EXPECT_EQ(!problem, endsBetweenLines) << size;
    if (!problem) ++whole;
  }
  EXPECT_EQ(whole, 5u);
}

TEST(RegistryFormScan, NamesTheFirstLineAndWhatIsWrongWithIt) {
  EXPECT_EQ(ScanLine("\r\n\"a\"=\"x\\c\"\r\n\"b\"\r\n"),
            L"line 5 is not understood: an unknown escape");
  EXPECT_EQ(Scan("\xEF\xBB\xBFx"),
            L"line 1 is not understood: UTF-8 behind its mark, which the registry tool refuses");
}

}  // namespace
}  // namespace carrovan
