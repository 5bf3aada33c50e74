#include "rewrite/xml_rewrite.h"

#include <gtest/gtest.h>

#include "tests/rewrite/rewrite_bench.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kFile[] = L"C:\\d\\a.xml";
constexpr wchar_t kLeftover[] = L"C:\\d\\a.xml.tmp";

class XmlRewrite : public testing::Test {
 protected:
  SystemCode Replace() {
    return ReplaceInXmlLines(kFile, L"2025", L"2026", bench.files, bench.codePage);
  }

  std::string Replaced(const std::string& bytes) {
    bench.files.Put(kFile, bytes);
    EXPECT_EQ(Replace(), kSystemOk);
    return bench.files.Bytes(kFile);
  }

  std::string WithUser(const std::string& bytes) {
    bench.files.Put(kFile, bytes);
    EXPECT_EQ(ReplaceUserPathsInXml(kFile, bench.Ports()), kSystemOk);
    return bench.files.Bytes(kFile);
  }

  RewriteBench bench;
};

TEST_F(XmlRewrite, ReplacesInEveryLineAndEndsEachInCrLf) {
  EXPECT_EQ(Replaced("<a>2025\n20252025\r\n</a>"), "<a>2026\r\n20262026\r\n</a>\r\n");
  EXPECT_EQ(Replaced("20\n25"), "20\r\n25\r\n");
  EXPECT_EQ(Replaced("\n\n"), "\r\n\r\n");
  EXPECT_EQ(Replaced("a\r"), "a\r\r\n");
  EXPECT_EQ(Replaced(""), "");
}

TEST_F(XmlRewrite, KeepsTheEncoding) {
  EXPECT_EQ(Replaced(Utf16File(L"\x4E2D 2025\r\n\x0A25\x250A\n")),
            Utf16File(L"\x4E2D 2026\r\n\x0A25\x250A\r\n"));
  EXPECT_EQ(Replaced("\xEF\xBB\xBF<a>\xE4\xB8\xAD 2025</a>"),
            "\xEF\xBB\xBF<a>\xE4\xB8\xAD 2026</a>\r\n");
  EXPECT_EQ(Replaced("<a>\xD6\xD0 2025\xFF</a>\r\n"), "<a>\xD6\xD0 2026\xFF</a>\r\n");
  EXPECT_EQ(Replaced("\xFF\xFE"), "\xFF\xFE");
  EXPECT_EQ(Replaced(Utf16File(L"2025\r\n") + "x"), Utf16File(L"2026\r\n") + "x");
}

TEST_F(XmlRewrite, LeavesADocumentInAnotherEncodingAlone) {
  for (const std::string& bytes : {std::string("\xFE\xFF\0a\0\n", 6), std::string("2\0\n\0", 4)}) {
    bench.files.Put(kFile, bytes);
    EXPECT_EQ(Replace(), kInvalidData);
    EXPECT_EQ(bench.files.Bytes(kFile), bytes);
  }
}

TEST_F(XmlRewrite, WritesNothingWhenNothingChanges) {
  Replaced("<a/>\r\n");
  EXPECT_TRUE(bench.files.changes.empty());
}

TEST_F(XmlRewrite, TakesAwayWhatABrokenRunLeft) {
  bench.files.Put(kLeftover, "half");
  EXPECT_EQ(Replaced("2025\r\n"), "2026\r\n");
  EXPECT_FALSE(bench.files.Has(kLeftover));
}

TEST_F(XmlRewrite, LeavesTheFileWhenTheNameBesideItIsTaken) {
  bench.files.PutFolder(kLeftover);
  bench.files.Put(kFile, "2025\r\n");
  EXPECT_EQ(Replace(), kAccessDenied);
  EXPECT_EQ(bench.files.Bytes(kFile), "2025\r\n");
}

TEST_F(XmlRewrite, SaysWhyAFileWasNotRewritten) {
  EXPECT_EQ(Replace(), kFileNotFound);
  bench.files.Put(kFile, "2025");
  bench.files.MakeReadOnly(kFile);
  EXPECT_EQ(Replace(), kAccessDenied);
  EXPECT_EQ(bench.files.Bytes(kFile), "2025");
}

TEST_F(XmlRewrite, FullDiskLeavesTheFile) {
  bench.files.Put(kFile, "2025");
  bench.files.fault = [](const std::string& operation, const std::wstring&) {
    return operation == "write" ? kSystemDiskFull : kSystemOk;
  };
  EXPECT_EQ(Replace(), kSystemDiskFull);
  EXPECT_EQ(bench.files.Bytes(kFile), "2025");
}

TEST_F(XmlRewrite, PutsTheCurrentUserIntoBothSpellings) {
  const struct {
    const char* before;
    const char* after;
  } kRows[] = {
      {"<p v=\"C:\\Users\\old\\x\"/>", "<p v=\"C:\\Users\\newuser\\x\"/>"},
      {"<p v='C:\\Users\\old'/>", "<p v='C:\\Users\\newuser'/>"},
      {"<p>C:\\Users\\old</p>", "<p>C:\\Users\\newuser</p>"},
      {"<p>C:/Users/old</p>\n", "<p>C:/Users/newuser</p>\n"},
      {"<p>&quot;C:/Users/old&quot;</p>", "<p>&quot;C:/Users/newuser&quot;</p>"},
      {"<p>C:/Users/old&lt;x&gt;</p>", "<p>C:/Users/newuser&lt;x&gt;</p>"},
      {"<p>C:/Users/A&amp;B/x</p>", "<p>C:/Users/newuser/x</p>"},
      {"<p>C:\\Users\\newuser</p>", "<p>C:\\Users\\newuser</p>"},
      {"<p>C:\\Users\\newuser2</p>", "<p>C:\\Users\\newuser</p>"},
      {"<p>C:\\\\Users\\\\old D:\\Users\\old /Users/old %USERPROFILE%</p>",
       "<p>C:\\\\Users\\\\old D:\\Users\\old /Users/old %USERPROFILE%</p>"},
      {"<p>C:\\Users\\</p>", "<p>C:\\Users\\</p>"},
  };
  for (const auto& row : kRows) EXPECT_EQ(WithUser(row.before), row.after);
  EXPECT_TRUE(bench.log.lines.empty());
}

TEST_F(XmlRewrite, EscapesTheUsersName) {
  bench.user.name = L"O'Brien & Co";
  const std::string after = "<p v='C:\\Users\\O&apos;Brien &amp; Co\\x'/>";
  EXPECT_EQ(WithUser("<p v='C:\\Users\\old\\x'/>"), after);
  EXPECT_EQ(WithUser(after), after);
  const std::string plain = "<p v=\"C:\\Users\\O'Brien & Co\"/>";
  EXPECT_EQ(WithUser(plain), plain);
}

TEST_F(XmlRewrite, WritesAChineseNameSoThatItReadsBack) {
  bench.user.name = L"\x738B\xD83D\xDE00";
  const std::string name = "\xE7\x8E\x8B\xF0\x9F\x98\x80";
  const std::string references = "&#29579;&#128512;";
  EXPECT_EQ(WithUser("<p>C:/Users/old</p>"), "<p>C:/Users/" + name + "</p>");
  EXPECT_EQ(WithUser(Utf16File(L"<p>C:/Users/old</p>")),
            Utf16File(L"<p>C:/Users/" + *bench.user.name + L"</p>"));
  const std::string utf8 = "<?xml version=\"1.0\" encoding='utf-8'?><p>C:/Users/";
  EXPECT_EQ(WithUser(utf8 + "old</p>"), utf8 + name + "</p>");
  const std::string latin = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><p>C:/Users/";
  EXPECT_EQ(WithUser(latin + "old</p>"), latin + references + "</p>");
  EXPECT_EQ(WithUser(latin + references + "</p>"), latin + references + "</p>");
  EXPECT_EQ(WithUser("<p>\xFF C:/Users/old</p>"), "<p>\xFF C:/Users/" + references + "</p>");
}

TEST_F(XmlRewrite, DoesNothingWithoutAUser) {
  bench.user.name.reset();
  EXPECT_EQ(WithUser("<p>C:/Users/old</p>"), "<p>C:/Users/old</p>");
  EXPECT_EQ(ReplaceUserPathsInXml(L"C:\\d\\none.xml", bench.Ports()), kFileNotFound);
}

}  // namespace
}  // namespace carrovan
