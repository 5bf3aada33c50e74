#include "rewrite/path_walk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "registry_text/registry_file_writer.h"
#include "tests/rewrite/rewrite_bench.h"
#include "tests/support/fakes.h"
#include "text/text.h"

namespace carrovan {
namespace {

PathMap MapOf(std::vector<PathMapping> mappings) { return PathMap(std::move(mappings)); }

constexpr wchar_t kRegFile[] = L"C:\\d\\a.reg";
constexpr wchar_t kDocument[] = L"C:\\d\\a.xml";

class PathWalkTest : public testing::Test {
 protected:
  // The file's bytes after the mapping; what was walked is kept.
  std::string Mapped(const std::wstring& file, std::string bytes, const PathMap& map) {
    bench.files.Put(file, std::move(bytes));
    walked.clear();
    EXPECT_EQ(MapPaths(file, bench.files, bench.codePage, map,
                       [this](const WalkedPath& path) { walked.push_back(path); }),
              kSystemOk);
    return bench.files.Bytes(file);
  }

  std::string MappedReg(const std::wstring& text, const PathMap& map) {
    return Mapped(kRegFile, Utf16File(text), map);
  }

  std::vector<std::wstring> Paths() const {
    std::vector<std::wstring> paths;
    for (const WalkedPath& path : walked) paths.push_back(path.path);
    return paths;
  }

  RewriteBench bench;
  std::vector<WalkedPath> walked;
  const PathMap toNew = MapOf({{L"C:\\Lib", L"D:\\New"}});
};

// Has no characters but those of ASCII.
class AsciiCodePage : public CodePage {
 public:
  std::u16string Decode(std::string_view bytes) const override {
    return {bytes.begin(), bytes.end()};
  }
  std::string Encode(std::u16string_view text) const override {
    std::string bytes;
    for (const char16_t c : text) bytes.push_back(c < 0x80 ? static_cast<char>(c) : '?');
    return bytes;
  }
};

TEST_F(PathWalkTest, MapsNamesAndStringsOfARegistryFileAndNothingElse) {
  EXPECT_EQ(MappedReg(L"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_X\\C:\\Lib\\k]\r\n"
                      L"; C:\\\\Lib\r\n@=\"c:\\\\lib\"\r\n\"C:\\\\Lib\\\\a\"=dword:00000001\n"
                      L"\"b\" = \"x \\\"C:/LIB/p\\\" C:\\\\Library\"  \r\n\"c\"=hex:43,00\r\n",
                      toNew),
            Utf16File(L"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_X\\C:\\Lib\\k]\r\n"
                      L"; C:\\\\Lib\r\n@=\"D:\\\\New\"\r\n\"D:\\\\New\\\\a\"=dword:00000001\n"
                      L"\"b\" = \"x \\\"D:/New/p\\\" C:\\\\Library\"  \r\n\"c\"=hex:43,00\r\n"));
  ASSERT_EQ(walked.size(), 4u);
  EXPECT_EQ(walked[0].place, (PathPlace{L"HKEY_X\\C:\\Lib\\k", L"", 5}));
  EXPECT_EQ(walked[1].place, (PathPlace{L"HKEY_X\\C:\\Lib\\k", L"C:\\Lib\\a", 6}));
  EXPECT_EQ(walked[2].becomes, L"D:\\New\\p");
  EXPECT_EQ(walked[3].outcome, PathOutcome::kStays);
}

TEST_F(PathWalkTest, MapsStringsThatStandAsBytesOnSeveralLines) {
  RegistryKey key;
  key.SetValue(MakeStringValue(L"Expand", L"C:\\Lib\\a;%TEMP%\\b", kRegExpandSz));
  std::wstring list = L"C:\\Lib\\one";
  list += L'\0';
  list += L"c:\\LIB\\two";
  list += L'\0';
  key.SetValue(MakeStringValue(L"List", list, kRegMultiSz));
  const auto text = [&key] {
    return WriteRegistryFile(RegistryHive::kCurrentUser, L"S", key, RegistryFileForm::kExport);
  };
  const std::wstring before = text();
  ASSERT_NE(before.find(L"\\\r\n  "), std::wstring::npos);
  key.SetValue(MakeStringValue(L"Expand", L"D:\\New\\a;%TEMP%\\b", kRegExpandSz));
  key.SetValue(MakeStringValue(
      L"List", ReplaceAll(ReplaceAll(list, L"C:\\Lib", L"D:\\New"), L"c:\\LIB", L"D:\\New"),
      kRegMultiSz));
  EXPECT_EQ(MappedReg(before, toNew), Utf16File(text()));
  EXPECT_EQ(Paths(), (std::vector<std::wstring>{L"C:\\Lib\\a", L"%TEMP%\\b", L"C:\\Lib\\one",
                                                L"c:\\LIB\\two"}));
  EXPECT_TRUE(walked[0].place.asBytes);
}

TEST_F(PathWalkTest, MapsEightBitBytesOfTheOldForm) {
  EXPECT_EQ(
      Mapped(kRegFile, "REGEDIT4\r\n\r\n[K]\r\n\"a\"=hex(2):43,3a,5c,4c,69,62,5c,78,00\r\n", toNew),
      "REGEDIT4\r\n\r\n[K]\r\n\"a\"=hex(2):44,3a,5c,4e,65,77,5c,78,00\r\n");
}

TEST_F(PathWalkTest, MapsInAStringThatGoesOverALineEnd) {
  EXPECT_EQ(
      MappedReg(L"[K]\r\n\"a\"=\"first\r\nC:\\\\Lib\\\\x\"\r\n\"b\"=\"C:\\\\Lib\"\r\n", toNew),
      Utf16File(L"[K]\r\n\"a\"=\"first\r\nD:\\\\New\\\\x\"\r\n\"b\"=\"D:\\\\New\"\r\n"));
}

TEST_F(PathWalkTest, LeavesAFileWithoutAMappedPathUntouched) {
  bench.files.changes.clear();
  const std::string bytes = Utf16File(L"[K]\r\n\"a\"=\"D:\\\\x\"\r\n\"cut\"=hex(2):43,") + "x";
  EXPECT_EQ(Mapped(kRegFile, bytes, toNew), bytes);
  EXPECT_TRUE(bench.files.changes.empty());
  EXPECT_EQ(walked.size(), 1u);
}

TEST_F(PathWalkTest, KeepsAnOddLastByteAndALineWithoutItsEnd) {
  EXPECT_EQ(MappedReg(L"[K]\n\"a\"=\"C:\\\\Lib\"", toNew), Utf16File(L"[K]\n\"a\"=\"D:\\\\New\""));
  EXPECT_EQ(Mapped(kRegFile, Utf16File(L"[K]\n\"a\"=\"C:\\\\Lib\"\n") + "x", toNew),
            Utf16File(L"[K]\n\"a\"=\"D:\\\\New\"\n") + "x");
}

TEST_F(PathWalkTest, LeavesAPathThatWouldBecomeTooLong) {
  const PathMap longer = MapOf({{L"C:\\Lib", L"D:\\" + std::wstring(kLongestPath - 10, L'n')}});
  const std::wstring text = L"[K]\r\n\"a\"=\"C:\\\\Lib\\\\0123456789\"\r\n";
  EXPECT_EQ(MappedReg(text, longer), Utf16File(text));
  ASSERT_EQ(walked.size(), 1u);
  EXPECT_EQ(walked[0].outcome, PathOutcome::kTooLong);
  // The name of a value holds less than its data.
  const PathMap half = MapOf({{L"C:\\Lib", L"D:\\" + std::wstring(20000, L'n')}});
  MappedReg(L"[K]\r\n\"C:\\\\Lib\"=\"C:\\\\Lib\"\r\n", half);
  ASSERT_EQ(walked.size(), 2u);
  EXPECT_EQ(walked[0].outcome, PathOutcome::kMapped);
  EXPECT_EQ(walked[1].outcome, PathOutcome::kTooLong);
}

TEST_F(PathWalkTest, LeavesAPathThatTheFilesEncodingCannotHold) {
  const PathMap chinese = MapOf({{L"C:\\Lib", L"D:\\\x6587"}});
  bench.files.Put(kRegFile, "REGEDIT4\r\n[K]\r\n\"a\"=\"C:\\\\Lib\"\r\n");
  bench.files.changes.clear();
  EXPECT_EQ(MapPaths(kRegFile, bench.files, AsciiCodePage(), chinese,
                     [this](const WalkedPath& path) { walked.push_back(path); }),
            kSystemOk);
  EXPECT_TRUE(bench.files.changes.empty());
  ASSERT_EQ(walked.size(), 1u);
  EXPECT_EQ(walked[0].outcome, PathOutcome::kUnspelled);
}

TEST_F(PathWalkTest, MapsEveryTextOfADocument) {
  EXPECT_EQ(Mapped(kDocument,
                   "<?xml version='1.0'?>\n<a p=\"C:\\Lib\\R&amp;D\"\n  q='c:/lib/x'>"
                   "C:\\Library C:\\Lib</a>\n",
                   toNew),
            "<?xml version='1.0'?>\n<a p=\"D:\\New\\R&amp;D\"\n  q='D:/New/x'>"
            "C:\\Library D:\\New</a>\n");
  ASSERT_EQ(walked.size(), 4u);
  EXPECT_EQ(walked[0].path, L"C:\\Lib\\R&D");
  EXPECT_EQ(walked[0].place.line, 2u);
  EXPECT_EQ(walked[3].place.line, 3u);
}

TEST_F(PathWalkTest, RefusesADocumentInAnotherEncoding) {
  bench.files.Put(kDocument, std::string("\xFE\xFF\0<", 4));
  EXPECT_EQ(WalkPaths(kDocument, bench.files, bench.codePage, toNew, {}), kInvalidData);
  EXPECT_EQ(WalkPaths(L"C:\\d\\none.reg", bench.files, bench.codePage, toNew, {}), kFileNotFound);
}

// Values of every kind that names paths.
RegistryKey RandomKey(std::mt19937& random) {
  const std::vector<std::wstring> beginnings = {
      L"C:\\A",    L"C:\\A",     L"C:\\A\\B", L"C:\\AB",         L"C:/A", L"X:\\A",
      L"\\\\s\\A", L"%HOME%\\A", L"C:\\\\A",  L"text \"C:\\A\"", L"C:",   L"\\\\s\\share\\A"};
  const std::vector<std::wstring> ends = {L"",       L"\\",      L"\\x y", L"\\\x6587\\z.prt",
                                          L";C:\\A", L", C:\\A", L"\"",    L"\\B\\C"};
  const auto pick = [&random](const auto& from) { return from[random() % from.size()]; };
  RegistryKey key;
  const std::size_t count = random() % 6;
  for (std::size_t i = 0; i < count; ++i) {
    std::wstring text = pick(beginnings) + pick(ends);
    const std::uint32_t type = std::vector{kRegSz, kRegExpandSz, kRegMultiSz}[random() % 3];
    if (type == kRegMultiSz) {
      text += L'\0';
      text += pick(beginnings) + pick(ends);
      text += L'\0';
    }
    const std::wstring name = random() % 3 == 0 ? pick(beginnings) + pick(ends) : L"n";
    key.SetValue(MakeStringValue(name + std::to_wstring(i), text, type));
  }
  return key;
}

// In every other round through a network path, so that both change their kind.
TEST_F(PathWalkTest, MappingThereAndBackGivesTheFileBackWhereNoPathWasTheNewOneBefore) {
  for (unsigned seed = 0; seed < CARROVAN_RANDOM_TEXTS / 10; ++seed) {
    std::mt19937 random(seed);
    const RegistryKey key = RandomKey(random);
    const std::string before = Utf16File(
        WriteRegistryFile(RegistryHive::kCurrentUser, L"S", key, RegistryFileForm::kExport));
    const std::wstring other = seed % 2 == 0 ? L"Q:\\New place" : L"\\\\q\\new";
    bench.files.partBytes = 1 + random() % 90;
    const std::string there = Mapped(kRegFile, before, MapOf({{L"C:\\A", other}}));
    const bool anyMapped = std::ranges::any_of(
        walked, [](const WalkedPath& path) { return path.outcome == PathOutcome::kMapped; });
    EXPECT_EQ(there != before, anyMapped) << seed;
    for (const WalkedPath& path : walked) {
      EXPECT_EQ(path.outcome == PathOutcome::kMapped, path.becomes.starts_with(other));
    }
    const std::string back = Mapped(kRegFile, there, MapOf({{other, L"C:\\A"}}));
    EXPECT_EQ(back, before) << seed;
  }
}

}  // namespace
}  // namespace carrovan
