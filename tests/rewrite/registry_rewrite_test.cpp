#include "rewrite/registry_rewrite.h"

#include <gtest/gtest.h>

#include "tests/rewrite/rewrite_bench.h"
#include "tests/support/fakes.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kFile[] = L"C:\\d\\a.reg";

class RegistryRewrite : public testing::Test {
 protected:
  // What an operation makes of a UTF-16 file.
  template <typename Operation>
  std::string After(const std::wstring& text, Operation operation) {
    bench.files.Put(kFile, Utf16File(text));
    EXPECT_EQ(operation(kFile, bench.Ports()), kSystemOk);
    return bench.files.Bytes(kFile);
  }

  std::string Replaced(const std::wstring& text, const std::wstring& search,
                       const std::wstring& replacement) {
    return After(text, [&](const std::wstring& file, const RewritePorts& ports) {
      return ReplaceInRegistryFile(file, {search, replacement}, ports);
    });
  }

  RewriteBench bench;
};

TEST_F(RegistryRewrite, ReplacesEveryOccurrenceAndKeepsTheMark) {
  EXPECT_EQ(Replaced(L"a 27.0 b 27.027.0\r\n", L"27.0", L"28.0"),
            Utf16File(L"a 28.0 b 28.028.0\r\n"));
  EXPECT_EQ(Replaced(L"x2025x", L"2025", L"x"), Utf16File(L"xxx"));
  EXPECT_EQ(Replaced(L"x2025x", L"2025", L"20262026"), Utf16File(L"x20262026x"));
}

TEST_F(RegistryRewrite, ReplacesFromLeftToRightWithoutOverlap) {
  EXPECT_EQ(Replaced(L"aaaaa", L"aa", L"b"), Utf16File(L"bba"));
  EXPECT_EQ(Replaced(L"aaaaa", L"aa", L"ba"), Utf16File(L"babaa"));
}

TEST_F(RegistryRewrite, ComparesCaseWhenReplacing) {
  EXPECT_EQ(Replaced(L"Vantric vantric", L"vantric", L"x"), Utf16File(L"Vantric x"));
}

TEST_F(RegistryRewrite, ReplacesNothingForAnEmptySearchText) {
  EXPECT_EQ(Replaced(L"abc", L"", L"x"), Utf16File(L"abc"));
  EXPECT_TRUE(bench.files.changes.empty());
}

TEST_F(RegistryRewrite, FindsATextThatGoesOverALineEnd) {
  EXPECT_EQ(Replaced(L"a\r\nb\r\nc", L"a\r\nb", L"x"), Utf16File(L"x\r\nc"));
}

TEST_F(RegistryRewrite, WritesNothingWhenNothingChanges) {
  bench.files.Put(kFile, Utf16File(L"\"a\"=\"b\"\n"));
  EXPECT_EQ(RewriteRegistryFile(kFile, {{L"x", L"y"}}, bench.Ports()), kSystemOk);
  EXPECT_TRUE(bench.files.changes.empty());
}

TEST_F(RegistryRewrite, WritesOnceForAllPasses) {
  bench.files.Put(kFile, Utf16File(L"\"a\"=\"P 27.0\"\r\n\"b\"=\"C:\\\\Users\\\\old\\\\x\"\r\n"));
  EXPECT_EQ(RewriteRegistryFile(kFile, {{L"P 27.0", L"P 28.0"}, {L"27", L"28"}}, bench.Ports()),
            kSystemOk);
  EXPECT_EQ(bench.files.changes, std::vector<std::wstring>{L"write C:\\d\\a.reg"});
  EXPECT_EQ(bench.files.Bytes(kFile), Utf16File(L"\"a\"=\"P 28.0\"\r\n"));
  EXPECT_EQ(bench.log.lines,
            (std::vector<std::wstring>{
                L"Successfully replaced 1 user paths",
                L"Successfully removed 1 registry entries with invalid absolute paths"}));
}

TEST_F(RegistryRewrite, LaterPassFindsWhatAnEarlierOneMade) {
  bench.files.Put(kFile, Utf16File(L"ab"));
  EXPECT_EQ(RewriteRegistryFile(kFile, {{L"a", L"b"}, {L"bb", L"c"}, {L"c", L"C:/Users/x"}},
                                bench.Ports()),
            kSystemOk);
  EXPECT_EQ(bench.files.Bytes(kFile), Utf16File(L"C:/Users/newuser"));
}

TEST_F(RegistryRewrite, GivesOddFilesBackByteForByte) {
  for (const std::string& bytes :
       {std::string(), std::string("\xFF\xFE"), std::string("\xFF"), std::string("\xFE\xFF\0a", 4),
        std::string("\xFF\xFE"
                    "a",
                    3),
        std::string("\xFF\xFE\x00\xD8", 4), std::string("\0", 1)}) {
    bench.files.Put(kFile, bytes);
    EXPECT_EQ(RewriteRegistryFile(kFile, {{L"2025", L"2026"}}, bench.Ports()), kSystemOk);
    EXPECT_EQ(bench.files.Bytes(kFile), bytes) << testing::PrintToString(bytes);
  }
  EXPECT_TRUE(bench.files.changes.empty());
}

TEST_F(RegistryRewrite, KeepsHalfAUnitAtTheEnd) {
  bench.files.Put(kFile, Utf16File(L"2025\r\n\"a\"=\"Q:\\\\x\"") + "z");
  EXPECT_EQ(RewriteRegistryFile(kFile, {{L"2025", L"2026"}}, bench.Ports()), kSystemOk);
  EXPECT_EQ(bench.files.Bytes(kFile), Utf16File(L"2026\r\n") + "z");
}

TEST_F(RegistryRewrite, KeepsUnpairedSurrogates) {
  std::string bytes = Utf16File(L"2025");
  bytes.append("\x00\xD8\x41\x00", 4);
  bench.files.Put(kFile, bytes);
  EXPECT_EQ(ReplaceInRegistryFile(kFile, {L"2025", L"2026"}, bench.Ports()), kSystemOk);
  EXPECT_EQ(bench.files.Bytes(kFile), Utf16File(L"2026") + std::string("\x00\xD8\x41\x00", 4));
}

TEST_F(RegistryRewrite, RewritesEightBitTextAndKeepsWhatIsNoText) {
  bench.files.Put(kFile, "\xFF\xE4\xB8 27.0 \xE4\xB8\xAD\x80\r\n");
  EXPECT_EQ(ReplaceInRegistryFile(kFile, {L"27.0 \x4E2D", L"28.0 \x6587"}, bench.Ports()),
            kSystemOk);
  EXPECT_EQ(bench.files.Bytes(kFile), "\xFF\xE4\xB8 28.0 \xE6\x96\x87\x80\r\n");
}

TEST_F(RegistryRewrite, SaysWhyAFileWasNotRewritten) {
  EXPECT_EQ(RewriteRegistryFile(L"C:\\d\\none.reg", {}, bench.Ports()), kFileNotFound);
  const std::string bytes = Utf16File(L"C:/Users/x");
  bench.files.Put(kFile, bytes);
  bench.files.MakeReadOnly(kFile);
  EXPECT_EQ(ReplaceUserPaths(kFile, bench.Ports()), kAccessDenied);
  bench.files.fault = [](const std::string& operation, const std::wstring&) {
    return operation == "read" ? kSharingViolation : kSystemOk;
  };
  EXPECT_EQ(RemoveInvalidAbsolutePaths(kFile, bench.Ports()), kSharingViolation);
  EXPECT_EQ(bench.files.Bytes(kFile), bytes);
  EXPECT_TRUE(bench.log.lines.empty());
}

TEST_F(RegistryRewrite, FullDiskLeavesTheFileAndReportsNothing) {
  const std::string bytes = Utf16File(L"\"a\"=\"C:/Users/x/y\"");
  bench.files.Put(kFile, bytes);
  bench.files.fault = [](const std::string& operation, const std::wstring&) {
    return operation == "write" ? kSystemDiskFull : kSystemOk;
  };
  EXPECT_EQ(RewriteRegistryFile(kFile, {}, bench.Ports()), kSystemDiskFull);
  EXPECT_EQ(bench.files.Bytes(kFile), bytes);
  EXPECT_TRUE(bench.log.lines.empty());
}

TEST_F(RegistryRewrite, FailureAtAnyStepLeavesTheFileAndReportsNothing) {
  const std::string bytes = Utf16File(L"\"a\"=\"C:/Users/x/y\"\r\n\"b\"=\"2025\"");
  for (const std::string step : {"read", "begin", "write part", "write"}) {
    bench.files.Put(kFile, bytes);
    bench.files.fault = [&](const std::string& operation, const std::wstring&) {
      return operation == step ? kSharingViolation : kSystemOk;
    };
    EXPECT_EQ(RewriteRegistryFile(kFile, {{L"2025", L"2026"}}, bench.Ports()), kSharingViolation)
        << step;
    EXPECT_EQ(bench.files.Bytes(kFile), bytes) << step;
    EXPECT_TRUE(bench.log.lines.empty()) << step;
  }
}

TEST_F(RegistryRewrite, BeginsNoFileWhenNothingChanges) {
  bench.files.Put(kFile, Utf16File(L"\"a\"=\"b\"\n"));
  bench.files.fault = [](const std::string& operation, const std::wstring&) {
    return operation == "begin" ? kAccessDenied : kSystemOk;
  };
  EXPECT_EQ(RewriteRegistryFile(kFile, {{L"x", L"y"}}, bench.Ports()), kSystemOk);
}

TEST_F(RegistryRewrite, TextLongerThanABlockKeepsItsLines) {
  std::wstring before;
  std::wstring after;
  for (int i = 0; i < 20000; ++i) {
    before += L"line " + std::to_wstring(i) + L" of C:/Users/someone/x\r\n";
    after += L"line " + std::to_wstring(i) + L" of C:/Users/newuser/x\r\n";
  }
  bench.files.partBytes = 100'001;
  bench.files.Put(kFile, Utf16File(before + L"end"));
  EXPECT_EQ(ReplaceUserPaths(kFile, bench.Ports()), kSystemOk);
  EXPECT_EQ(bench.files.Bytes(kFile), Utf16File(after + L"end"));
  EXPECT_EQ(bench.log.lines, std::vector<std::wstring>{L"Successfully replaced 20000 user paths"});
}

class UserPaths : public RegistryRewrite {
 protected:
  std::string Rewritten(const std::wstring& text) { return After(text, ReplaceUserPaths); }
};

TEST_F(UserPaths, PutsTheCurrentUserIntoEverySpelling) {
  const struct {
    const wchar_t* before;
    const wchar_t* after;
    int count;
  } kRows[] = {
      {L"\"C:\\\\Users\\\\olduser\\\\Documents\"", L"\"C:\\\\Users\\\\newuser\\\\Documents\"", 1},
      {L"C:/Users/olduser/x", L"C:/Users/newuser/x", 1},
      {L"C:\\Users\\olduser\\x", L"C:\\Users\\newuser\\x", 1},
      {L"file:///D:/Users/olduser/x", L"file:///D:/Users/newuser/x", 1},
      {L"\\Users\\olduser", L"\\Users\\newuser", 1},
      {L"D:\\\\Users\\\\olduser\\\\x", L"D:\\\\Users\\\\olduser\\\\x", 0},
      {L"C:\\\\Users\\\\newuser\\\\x", L"C:\\\\Users\\\\newuser\\\\x", 0},
      {L"C:/Users/newuser", L"C:/Users/newuser", 0},
      {L"C:/Users/newuser2/x", L"C:/Users/newuser/x", 1},
      {L"C:/Users/new/x", L"C:/Users/newuser/x", 1},
      {L"C:/Users/NewUser/x", L"C:/Users/newuser/x", 1},
      {L"c:\\\\Users\\\\old", L"c:\\\\Users\\\\old", 0},
      {L"c:/users/old", L"c:/users/old", 0},
      {L"C:/Users//x", L"C:/Users//x", 0},
      {L"C:/Users/", L"C:/Users/", 0},
      {L"C:/Users/\"", L"C:/Users/\"", 0},
      {L"C:/Users/old user/x", L"C:/Users/newuser user/x", 1},
      {L"C:/Users/old\tx C:/Users/a\nC:/Users/b\r",
       L"C:/Users/newuser\tx C:/Users/newuser\n"
       L"C:/Users/newuser\r",
       3},
      {L"C:/Users/C:/Users/x", L"C:/Users/newuser/Users/newuser", 2},
      {L"C:/Users/\x738B\x660E/x", L"C:/Users/newuser/x", 1},
      {L"\"a\"=\"%USERPROFILE%\\\\x;%USERPROFILE%\"",
       L"\"a\"=\"C:\\\\Users\\\\newuser\\\\x;C:\\\\Users\\\\newuser\"", 2},
      {L"%userprofile%", L"%userprofile%", 0},
      {L"", L"", 0},
  };
  for (const auto& row : kRows) {
    bench.log.lines.clear();
    EXPECT_EQ(Rewritten(row.before), Utf16File(row.after)) << ToUtf8(row.before);
    EXPECT_EQ(bench.log.lines,
              std::vector<std::wstring>{L"Successfully replaced " + std::to_wstring(row.count) +
                                        L" user paths"});
  }
}

TEST_F(UserPaths, LeavesTheCurrentUserAloneThoughTheNameHoldsBlanks) {
  bench.user.name = L"Test User";
  EXPECT_EQ(Rewritten(L"C:/Users/Test User/x C:\\\\Users\\\\Test User"),
            Utf16File(L"C:/Users/Test User/x C:\\\\Users\\\\Test User"));
  EXPECT_EQ(bench.log.lines, std::vector<std::wstring>{L"Successfully replaced 0 user paths"});
  EXPECT_EQ(Rewritten(L"C:/Users/Test Users/x"), Utf16File(L"C:/Users/Test User Users/x"));
}

TEST_F(UserPaths, WritesAChineseName) {
  bench.user.name = L"\x738B\x660E";
  bench.user.profile = L"C:\\Users\\\x738B\x660E";
  const std::wstring after = L"C:/Users/\x738B\x660E C:\\\\Users\\\\\x738B\x660E";
  EXPECT_EQ(Rewritten(L"C:/Users/old %USERPROFILE%"), Utf16File(after));
  bench.files.Put(kFile, "C:/Users/old %USERPROFILE%");
  EXPECT_EQ(ReplaceUserPaths(kFile, bench.Ports()), kSystemOk);
  EXPECT_EQ(bench.files.Bytes(kFile), ToUtf8(after));
}

TEST_F(UserPaths, KeepsSeparatorsSingleBehindTheProfile) {
  bench.user.profile = L"C:\\Users\\newuser\\";
  EXPECT_EQ(Rewritten(L"%USERPROFILE%\\\\x"), Utf16File(L"C:\\\\Users\\\\newuser\\\\x"));
}

TEST_F(UserPaths, LeavesTheVariableWhenTheProfileIsNotKnown) {
  bench.user.profile.reset();
  EXPECT_EQ(Rewritten(L"%USERPROFILE% C:/Users/old"), Utf16File(L"%USERPROFILE% C:/Users/newuser"));
}

TEST_F(UserPaths, DoesNothingWithoutAUser) {
  bench.user.name.reset();
  EXPECT_EQ(Rewritten(L"%USERPROFILE% C:/Users/old"), Utf16File(L"%USERPROFILE% C:/Users/old"));
  EXPECT_TRUE(bench.log.lines.empty());
}

class InvalidPaths : public RegistryRewrite {
 protected:
  InvalidPaths() { bench.files.Put(L"C:\\there\\x.dat", ""); }

  std::string Cleaned(const std::wstring& text) { return After(text, RemoveInvalidAbsolutePaths); }
};

TEST_F(InvalidPaths, DropsOnlyAbsolutePathsToNothing) {
  const struct {
    const wchar_t* line;
    bool kept;
  } kRows[] = {
      {L"\"a\"=\"C:\\\\NoSuchDir\\\\x.dat\"", false},
      {L"\"a\"=\"C:/NoSuchDir/x.dat\"", false},
      {L"\"a\"=\"C:\\\\there\\\\none\"", false},
      {L"\"a\"=\"Q:\\\\\"", false},
      {L"\"a\"=\"Q:/\"", false},
      {L"\"a\"=\"\\\\\\\\server\\\\share\\\\x\"", false},
      {L"@=\"C:\\\\NoSuchDir\"", false},
      {L"a=\"C:\\none\"", false},
      {L"\"a\" = \"C:\\\\none\" ", false},
      {L"\"a\"=\"C:\\\\there\\\\x.dat\"", true},
      {L"\"a\"=\"C:\\there\\x.dat\"", true},
      {L"\"a\"=\"c:/THERE\"", true},
      {L"\"a\"=\"C:\\\\there\\\\\"", true},
      {L"\"a\"=\"there\\\\none.dat\"", true},
      {L"\"a\"=\"C:none\"", true},
      {L"\"a\"=\"C:\"", true},
      {L"\"a\"=\"\"", true},
      {L"\"a\"=\"", true},
      {L"\"a\"=", true},
      {L"=\"\\\\\"", true},
      {L"\"a\"=\"\\none\"", true},
      {L"\"a\"=dword:00000001", true},
      {L"\"a\"=hex:43,00,3a,00,\\", true},
      {L"\"a\"=hex(2):43,00", true},
      {L"\"a\"=\"x C:\\\\none\"", true},
      {L"\"a\"=C:\\none", true},
      {L"\"a\"=\"C:\\\\none\" ; comment", true},
      {L"\"a=b\"=\"C:\\\\none\"", true},
      {L"[HKEY_CURRENT_USER\\a=\"C:\\\\none\"", true},
      {L"[-HKEY_CURRENT_USER\\Software\\C:\\\\none]", true},
      {L"\"C:\\\\none\"", true},
      {L"\"a\"=-", true},
  };
  for (const auto& row : kRows) {
    const std::wstring line = row.line;
    const std::wstring expected = row.kept ? line + L"\n" : L"";
    EXPECT_EQ(Cleaned(line + L"\n"), Utf16File(expected)) << ToUtf8(line);
  }
}

TEST_F(InvalidPaths, ReportsHowManyWereDroppedAndNothingForNone) {
  Cleaned(L"\"a\"=\"Q:\\\\x\"\r\n\"b\"=\"Q:\\\\x\"\r\n\"c\"=\"d\"\r\n");
  EXPECT_EQ(bench.log.lines,
            std::vector<std::wstring>{
                L"Successfully removed 2 registry entries with invalid absolute paths"});
  bench.log.lines.clear();
  Cleaned(L"\"c\"=\"d\"");
  EXPECT_TRUE(bench.log.lines.empty());
}

TEST_F(InvalidPaths, TrimsLinesAndEndsThemInCrLfWhenOneIsDropped) {
  EXPECT_EQ(Cleaned(L"\"v\"=hex:01,\\\r\n  02\r\n\"a\"=\"Q:\\\\x\"\r\n\r\n\t[k] \r\n"),
            Utf16File(L"\"v\"=hex:01,\\\r\n02\r\n\r\n[k]\r\n"));
}

TEST_F(InvalidPaths, TrimsEveryLineOfALongFileWhenTheLastOneIsDropped) {
  std::wstring before;
  std::wstring after;
  for (int i = 0; i < 20000; ++i) {
    const std::wstring line = L"\"" + std::to_wstring(i) + L"\"=\"C:/Users/";
    before += L"  " + line + L"someone\\old\" \n";
    after += line + L"newuser\\new\"\r\n";
  }
  bench.files.partBytes = 100'001;
  bench.files.Put(L"C:\\Users\\newuser\\new", "");
  bench.files.Put(kFile, Utf16File(before + L"\"a\"=\"Q:\\\\x\""));
  EXPECT_EQ(RewriteRegistryFile(kFile, {{L"old", L"new"}}, bench.Ports()), kSystemOk);
  EXPECT_TRUE(bench.files.Bytes(kFile) == Utf16File(after));
  EXPECT_EQ(bench.files.changes, std::vector<std::wstring>{L"write C:\\d\\a.reg"});
  EXPECT_EQ(bench.log.lines,
            (std::vector<std::wstring>{
                L"Successfully replaced 20000 user paths",
                L"Successfully removed 1 registry entries with invalid absolute paths"}));
}

TEST_F(InvalidPaths, FileWithLfOnlyAndNoEndOfLineGrows) {
  const std::wstring before = L"Windows Registry Editor Version 5.00\n\n[k]\n\"b\"=\"c\"\n";
  const std::wstring after = L"Windows Registry Editor Version 5.00\r\n\r\n[k]\r\n\"b\"=\"c\"\r\n";
  EXPECT_EQ(Cleaned(before + L"\"a\"=\"Q:\\\\x\"\nx"), Utf16File(after + L"x\r\n"));
  EXPECT_EQ(Cleaned(L"\"a\"=\"Q:\\\\a long path that leaves room\"\n" + before + L"x"),
            Utf16File(after + L"x\r\n"));
}

TEST_F(InvalidPaths, LeavesAFileWithNothingToDropUntouched) {
  const std::wstring text = L"  \"a\"=\"b\"\n\n\t x";
  EXPECT_EQ(Cleaned(text), Utf16File(text));
  EXPECT_TRUE(bench.files.changes.empty());
}

TEST_F(InvalidPaths, LooksForPathsLongerThanTheFixedBuffers) {
  const std::wstring folder = L"C:\\there\\" + std::wstring(300, L'x');
  bench.files.Put(folder, "");
  const std::wstring escaped = ReplaceAll(folder, L"\\", L"\\\\");
  const std::wstring text = L"\"a\"=\"" + escaped + L"\"\r\n";
  EXPECT_EQ(Cleaned(text), Utf16File(text));
  EXPECT_EQ(Cleaned(L"\"a\"=\"" + escaped + L"y\"\r\n"), Utf16File(L""));
}

TEST_F(InvalidPaths, EightBitFileKeepsItsBytes) {
  bench.files.Put(kFile, "\"\xFF\"=\"\xE4\xB8\xAD\"\n\"a\"=\"Q:\\\\\xE4\xB8\xAD\"\n");
  EXPECT_EQ(RemoveInvalidAbsolutePaths(kFile, bench.Ports()), kSystemOk);
  EXPECT_EQ(bench.files.Bytes(kFile), "\"\xFF\"=\"\xE4\xB8\xAD\"\r\n");
}

TEST_F(InvalidPaths, FindsPathsInEveryScript) {
  bench.files.Put(L"C:\\\x4E2D\x6587\\x", "");
  const std::wstring text = L"\"a\"=\"C:\\\\\x4E2D\x6587\\\\x\"\r\n";
  EXPECT_EQ(Cleaned(text), Utf16File(text));
  EXPECT_EQ(Cleaned(L"\"a\"=\"C:\\\\\x4E2D\\\\x\"\r\n"), Utf16File(L""));
}

// Counts how often each path is asked for.
class CountingFiles : public ForwardingFiles {
 public:
  using ForwardingFiles::ForwardingFiles;
  mutable std::map<std::wstring, int> asked;

  bool Exists(const std::wstring& path) const override {
    ++asked[path];
    return ForwardingFiles::Exists(path);
  }
};

TEST_F(InvalidPaths, AsksForEachDistinctPathOnce) {
  CountingFiles files(bench.files);
  std::wstring text;
  for (int i = 0; i < 50; ++i) {
    text += L"\"a\"=\"C:\\\\there\\\\x.dat\"\r\n\"b\"=\"C:\\\\none\\\\" + std::to_wstring(i % 7) +
            L"\"\r\n\"c\"=\"C:\\\\there\\\\none\"\r\n";
  }
  bench.files.Put(kFile, Utf16File(text));
  EXPECT_EQ(RemoveInvalidAbsolutePaths(kFile, {files, bench.user, bench.codePage, bench.log}),
            kSystemOk);
  EXPECT_EQ(
      files.asked,
      (std::map<std::wstring, int>{
          {L"C:\\none", 1}, {L"C:\\there", 1}, {L"C:\\there\\x.dat", 1}, {L"C:\\there\\none", 1}}));
}

TEST_F(InvalidPaths, AsksOnceThoughTheFileIsReadAgain) {
  CountingFiles files(bench.files);
  std::wstring text;
  for (int i = 0; i < 5000; ++i) text += L"\"a\"=\"C:/there/x.dat\"\r\n";
  bench.files.Put(kFile, Utf16File(L"2025\r\n" + text + L"\"c\"=\"C:\\\\there\\\\none\""));
  EXPECT_EQ(RewriteRegistryFile(kFile, {{L"2025", L"2026"}},
                                {files, bench.user, bench.codePage, bench.log}),
            kSystemOk);
  EXPECT_EQ(bench.files.Bytes(kFile), Utf16File(L"2026\r\n" + text));
  EXPECT_EQ(files.asked, (std::map<std::wstring, int>{
                             {L"C:\\there", 1}, {L"C:/there/x.dat", 1}, {L"C:\\there\\none", 1}}));
}

TEST_F(InvalidPaths, KnowsAMissingFolderBySpelling) {
  CountingFiles files(bench.files);
  bench.files.Put(kFile, Utf16File(L"\"a\"=\"C:\\\\none\\\\x\"\n\"b\"=\"C:\\\\none\\\\y\"\n"
                                   L"\"c\"=\"C:\\\\none\\\\..\"\n\"d\"=\"C:\\\\none\\\\\"\n"
                                   L"\"e\"=\"C:/none/z\"\n\"f\"=\"C:\\\\none\\\\..\\\\there\"\n"));
  EXPECT_EQ(RemoveInvalidAbsolutePaths(kFile, {files, bench.user, bench.codePage, bench.log}),
            kSystemOk);
  EXPECT_EQ(files.asked, (std::map<std::wstring, int>{
                             {L"C:\\none", 1}, {L"C:\\none\\..", 1}, {L"C:\\none\\..\\there", 1}}));
}

TEST_F(InvalidPaths, StepsBackOutOfAMissingFolderAreLeftToTheSystem) {
  CountingFiles files(bench.files);
  bench.files.Put(kFile, Utf16File(L"\"a\"=\"C:\\\\none\\\\..\\\\there\""));
  EXPECT_EQ(RemoveInvalidAbsolutePaths(kFile, {files, bench.user, bench.codePage, bench.log}),
            kSystemOk);
  EXPECT_EQ(files.asked, (std::map<std::wstring, int>{{L"C:\\none\\..\\there", 1}}));
}

// Has the plain characters only, as a code page of another script would.
class PlainCodePage : public CodePage {
 public:
  std::u16string Decode(std::string_view bytes) const override {
    return std::u16string(bytes.begin(), bytes.end());
  }
  std::string Encode(std::u16string_view text) const override {
    std::string bytes;
    for (const char16_t c : text) bytes.push_back(c < 0x80 ? static_cast<char>(c) : '?');
    return bytes;
  }
};

TEST_F(RegistryRewrite, LeavesUsersWhereTheFileCannotHoldTheName) {
  const PlainCodePage codePage;
  bench.user.name = L"\x65B0\x7528\x6237";
  bench.user.profile = L"C:\\Users\\plain";
  const RewritePorts ports{bench.files, bench.user, codePage, bench.log};
  const std::string bytes = "\"a\"=\"C:\\\\Users\\\\old\\\\x\"\r\n";
  bench.files.Put(kFile, bytes);
  EXPECT_EQ(ReplaceUserPaths(kFile, ports), kSystemOk);
  EXPECT_EQ(bench.files.Bytes(kFile), bytes);
}

}  // namespace
}  // namespace carrovan
