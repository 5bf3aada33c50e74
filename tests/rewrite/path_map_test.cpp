#include "rewrite/path_map.h"

#include <gtest/gtest.h>

#include "rewrite/path_search.h"
#include "text/text.h"

namespace carrovan {
namespace {

PathMap MapOf(std::vector<PathMapping> mappings) { return PathMap(std::move(mappings)); }

PathMapping Parsed(std::wstring_view text) {
  const ParsedMapping parsed = ParsePathMapping(text);
  EXPECT_TRUE(parsed.mapping) << ToUtf8(text) << ": " << ToUtf8(parsed.problem);
  return parsed.mapping.value_or(PathMapping{});
}

std::wstring FromOf(const PathMap& map, std::wstring_view path) {
  const PathMapping* mapping = map.Find(path);
  return mapping == nullptr ? L"" : mapping->from;
}

TEST(PathMappingTest, IsTidyHoweverItIsWritten) {
  const PathMapping expected{L"D:\\Old Parts", L"\\\\server\\share"};
  for (const wchar_t* text : {L"D:\\Old Parts=\\\\server\\share", L"D:/Old Parts/=//server/share/",
                              L"  D:\\\\Old Parts\\ = \\\\server\\\\share\\ "}) {
    EXPECT_EQ(Parsed(text), expected);
  }
  EXPECT_EQ(Parsed(L"D:\\=E:\\"), (PathMapping{L"D:", L"E:"}));
  EXPECT_EQ(Parsed(L"%USERPROFILE%\\a=C:\\b"), (PathMapping{L"%USERPROFILE%\\a", L"C:\\b"}));
}

TEST(PathMappingTest, PartsAtTheEqualsThatHasAPathBehindIt) {
  EXPECT_EQ(Parsed(L"C:\\a=b\\c=D:\\e=f"), (PathMapping{L"C:\\a=b\\c", L"D:\\e=f"}));
}

TEST(PathMappingTest, SaysWhyATextIsNone) {
  const auto problem = [](std::wstring_view text) { return ParsePathMapping(text).problem; };
  EXPECT_EQ(problem(L"C:\\a"), L"there is no \"=\" in it");
  EXPECT_EQ(problem(L"a=C:\\b"), L"\"a\" is no absolute path");
  EXPECT_EQ(problem(L"C:\\a=b"), L"\"b\" is no absolute path");
  EXPECT_EQ(problem(L"=C:\\b"), L"\"\" is no absolute path");
  EXPECT_EQ(problem(L"\\\\server=C:\\b"), L"\"\\\\server\" is no absolute path");
  EXPECT_EQ(problem(L"C:\\a=C:\\b<"), L"\"C:\\b<\" holds what no path holds");
  EXPECT_EQ(problem(L"C:\\a=C:\\" + std::wstring(kLongestPath, L'x')),
            L"a path is longer than any can be");
}

TEST(PathMapTest, FindsWholeNamesInAnyCaseAndTheLongestFirst) {
  const PathMap map =
      MapOf({{L"C:\\Lib", L"D:\\a"}, {L"c:\\lib\\Gears", L"D:\\b"}, {L"E:", L"F:"}});
  EXPECT_EQ(FromOf(map, L"c:\\LIB\\x"), L"C:\\Lib");
  EXPECT_EQ(FromOf(map, L"C:\\Lib"), L"C:\\Lib");
  EXPECT_EQ(FromOf(map, L"C:\\Lib\\gears\\x"), L"c:\\lib\\Gears");
  EXPECT_EQ(FromOf(map, L"C:\\Lib\\gears2"), L"C:\\Lib");
  EXPECT_EQ(FromOf(map, L"C:\\Library"), L"");
  EXPECT_EQ(FromOf(map, L"E:\\"), L"E:");
  EXPECT_EQ(FromOf(map, L"\xC4:\\Lib"), L"");
}

TEST(PathMapTest, NamesTwoThatContradict) {
  EXPECT_EQ(PathMap::Contradiction({{L"C:\\a", L"D:\\x"}, {L"c:\\A", L"D:\\X"}}), std::nullopt);
  EXPECT_EQ(PathMap::Contradiction({{L"C:\\a", L"D:\\x"}, {L"c:\\A", L"D:\\y"}}),
            L"\"c:\\A\" is mapped to \"D:\\x\" and to \"D:\\y\"");
}

std::vector<std::wstring> Found(std::u16string_view text, PathSpelling spelling) {
  std::vector<std::wstring> paths;
  for (auto found = FindPath(text, spelling); found; found = FindPath(text, spelling, found->end)) {
    paths.push_back(FromUtf16(found->path));
  }
  return paths;
}

using Paths = std::vector<std::wstring>;

TEST(PathSearchTest, FindsDrivesServersAndVariables) {
  EXPECT_EQ(Found(u"C:\\a b\\c.x", PathSpelling::kPlain), (Paths{L"C:\\a b\\c.x"}));
  EXPECT_EQ(Found(u"\\\\server\\share\\x", PathSpelling::kPlain), (Paths{L"\\\\server\\share\\x"}));
  EXPECT_EQ(Found(u"%TEMP%\\x", PathSpelling::kPlain), (Paths{L"%TEMP%\\x"}));
  EXPECT_EQ(Found(u"\\\\?\\C:\\a", PathSpelling::kPlain), (Paths{L"C:\\a"}));
  EXPECT_EQ(Found(u"file:///C:/a/b", PathSpelling::kPlain), (Paths{L"C:\\a\\b"}));
}

TEST(PathSearchTest, PassesOverWhatOnlyLooksLikeAPath) {
  for (const char16_t* text : {u"http://a/b", u"ab:\\c", u"C:", u"C:x", u"\\\\", u"\\\\server",
                               u"\\a\\b", u"100% of 50%", u"a\\\\b\\c", u"%TEMP%x\\"}) {
    EXPECT_EQ(Found(text, PathSpelling::kPlain), Paths()) << ToUtf8(FromUtf16(text));
  }
  // One backslash between quotes.
  EXPECT_EQ(Found(u"\\\\a\\\\b", PathSpelling::kRegistry), Paths());
}

TEST(PathSearchTest, EndsAPathWhereAnotherBeginsOrNoPathGoesOn) {
  EXPECT_EQ(Found(u"C:\\a;D:\\b; %T%\\c,\\\\s\\d", PathSpelling::kPlain),
            (Paths{L"C:\\a", L"D:\\b", L"%T%\\c", L"\\\\s\\d"}));
  EXPECT_EQ(Found(u"C:\\a;b,c\\d", PathSpelling::kPlain), (Paths{L"C:\\a;b,c\\d"}));
  EXPECT_EQ(Found(u"C:\\a D:\\b", PathSpelling::kPlain), (Paths{L"C:\\a", L"D:\\b"}));
  EXPECT_EQ(Found(u"\\\"C:\\\\a\\\\\\\" /x", PathSpelling::kRegistry), (Paths{L"C:\\a\\"}));
  EXPECT_EQ(Found(std::u16string_view(u"C:\\a\0D:\\b\0", 10), PathSpelling::kPlain),
            (Paths{L"C:\\a", L"D:\\b"}));
}

TEST(PathSearchTest, ReadsReferencesAndAttributesOfADocument) {
  EXPECT_EQ(Found(u"<a b=\"C:\\R&amp;D\\x\" c='D:\\bob's&apos;s' />", PathSpelling::kDocument),
            (Paths{L"C:\\R&D\\x", L"D:\\bob's's"}));
  EXPECT_EQ(Found(u"<a>C:\\&#x6587;&#26723;</a>", PathSpelling::kDocument),
            (Paths{L"C:\\\x6587\x6863"}));
  EXPECT_EQ(Found(u"x=&quot;C:\\a&quot;", PathSpelling::kDocument), (Paths{L"C:\\a"}));
}

std::wstring Mapped(std::u16string text, PathSpelling spelling, const PathMap& map) {
  ReplacePaths(text, spelling, [&](const SpelledPath& found) -> std::optional<NewBeginning> {
    const PathMapping* mapping = map.Find(FromUtf16(found.path));
    if (mapping == nullptr) return std::nullopt;
    return NewBeginning{mapping->from.size(), ToUtf16(mapping->to)};
  });
  return FromUtf16(text);
}

TEST(PathSearchTest, ReplacesInTheSpellingThatItFinds) {
  const std::vector<PathMapping> mappings = {{L"C:\\Lib", L"\\\\srv\\it's"},
                                             {L"\\\\old\\x", L"E:"}};
  const PathMap map(mappings);
  EXPECT_EQ(Mapped(u"C:\\\\LIB\\\\a", PathSpelling::kRegistry, map), L"\\\\\\\\srv\\\\it's\\\\a");
  EXPECT_EQ(Mapped(u"C:/lib/a/b", PathSpelling::kRegistry, map), L"//srv/it's/a/b");
  EXPECT_EQ(Mapped(u"C:\\lib", PathSpelling::kPlain, map), L"\\\\srv\\it's");
  EXPECT_EQ(Mapped(u"\"C:\\lib\\&amp;\"", PathSpelling::kDocument, map),
            L"\"\\\\srv\\it&apos;s\\&amp;\"");
  EXPECT_EQ(Mapped(u"\\\\OLD\\x\\y", PathSpelling::kPlain, map), L"E:\\y");
  EXPECT_EQ(Mapped(u"\\\\\\\\old\\\\x\\\\y", PathSpelling::kRegistry, map), L"E:\\\\y");
  EXPECT_EQ(Mapped(u"C:\\Lib;C:\\Library;C:\\lib\\", PathSpelling::kPlain, map),
            L"\\\\srv\\it's;C:\\Library;\\\\srv\\it's\\");
}

TEST(PathSearchTest, SpellsByReferenceWhatAnEncodingMayLack) {
  const PathMap map = MapOf({{L"C:\\a", L"D:\\\x6587"}});
  EXPECT_EQ(Mapped(u"C:\\a\\b", PathSpelling::kAsciiDocument, map), L"D:\\&#25991;\\b");
  EXPECT_EQ(Mapped(u"C:\\a\\b", PathSpelling::kDocument, map), L"D:\\\x6587\\b");
}

}  // namespace
}  // namespace carrovan
