#include "report/report_page.h"

#include <gtest/gtest.h>

#include "report/inspection_page.h"
#include "report/page_markup.h"
#include "text/text.h"

namespace carrovan {
namespace {

ReportItem Item(ItemKind kind, const std::wstring& name) {
  ReportItem item;
  item.kind = kind;
  item.what = L"value";
  item.place = L"HKEY_CURRENT_USER\\Software";
  item.name = name;
  return item;
}

ReportPage PageWith(std::vector<ReportItem> items) {
  ReportPage page;
  page.title = L"Import";
  page.resultText = L"Done";
  page.itemsHeading = L"What changed";
  page.nothing = L"Nothing was changed.";
  page.categories.push_back({L"Options", std::move(items)});
  return page;
}

std::size_t CountOf(const std::string& text, const std::string& search) {
  std::size_t count = 0;
  for (auto at = text.find(search); at != std::string::npos; at = text.find(search, at + 1)) {
    ++count;
  }
  return count;
}

bool Holds(const std::string& page, const std::string& part) {
  return page.find(part) != std::string::npos;
}

// What a hostile package may name anything in it.
const std::wstring kHostile =
    L"</title></style></script><script>document.title='sentinel'</script>"
    L"\" onload=\"x\" '<img src=x onerror=alert(1)>&lt;";

TEST(PageMarkupTest, MarkupAndQuotesAreText) {
  EXPECT_EQ(MarkupOf(L"<b a=\"1\" c='2'>&amp;</b>"),
            "&lt;b a=&quot;1&quot; c=&#39;2&#39;&gt;&amp;amp;&lt;/b&gt;");
}

TEST(PageMarkupTest, WhatCannotBeSeenIsAVisibleEscape) {
  EXPECT_EQ(MarkupOf(L"a\nb"), "a<span class=\"esc\">\\n</span>b");
  EXPECT_EQ(MarkupOf(std::wstring(L"\0", 1)), "<span class=\"esc\">\\u0000</span>");
  for (const wchar_t unseen : {L'\x1B', L'\x7F', L'\x85', L'\xAD', L'\x61C', L'\x200B', L'\x200E',
                               L'\x200F', L'\x2028', L'\x202E', L'\x2066', L'\xFEFF', L'\xFFFE'}) {
    const std::string markup = MarkupOf(std::wstring(1, unseen));
    EXPECT_TRUE(markup.starts_with("<span class=\"esc\">\\u")) << markup;
  }
}

TEST(PageMarkupTest, HalfOfAPairIsAnEscapeAndAPairIsNot) {
  EXPECT_EQ(MarkupOf(FromUtf16(u"\U0001F600")), "\xF0\x9F\x98\x80");
  const std::u16string half{char16_t{0xD83D}};
  EXPECT_EQ(MarkupOf(FromUtf16(half)), "<span class=\"esc\">\\uD83D</span>");
}

TEST(PageMarkupTest, NameStandsAloneInItsDirectionAndMayBreak) {
  EXPECT_EQ(NameMarkup(L"C:\\\x05D0"), "<bdi>C:\\<wbr>\xD7\x90</bdi>");
}

TEST(PageMarkupTest, TitleHoldsNoElements) {
  EXPECT_EQ(TitleMarkup(L"</title>\x7"), "&lt;/title&gt;\\u0007");
}

TEST(PageMarkupTest, LongTextIsCutBetweenCharacters) {
  EXPECT_EQ(CutText(L"abc", 3), L"abc");
  EXPECT_EQ(CutText(L"abcd", 3), L"abc\x2026 (4 characters)");
  const std::wstring cut = CutText(L"ab" + FromUtf16(u"\U0001F600") + L"cd", 3);
  EXPECT_FALSE(Holds(MarkupOf(cut), "\\uD8")) << MarkupOf(cut);
}

TEST(ReportPageTest, HostileTextIsTextInEveryPlace) {
  ReportPage page = PageWith({});
  page.title = page.subject = page.resultText = page.itemsHeading = page.program = kHostile;
  page.facts = {{kHostile, kHostile}};
  page.lines = {{kHostile, {kHostile}}};
  page.categories[0].label = kHostile;
  ReportItem item = Item(ItemKind::kChanged, kHostile);
  item.what = item.place = item.note = kHostile;
  item.before = item.after = kHostile;
  item.tree.emplace();
  item.tree->root.name = item.tree->root.text = item.tree->root.before = kHostile;
  item.tree->root.mark = NodeMark::kChanged;
  ReportItem failed = Item(ItemKind::kMerged, L"");
  failed.tree.emplace().failure = kHostile;
  page.categories[0].items = {item, failed};
  const std::string html = WritePage(page);
  EXPECT_EQ(CountOf(html, "<script"), 1u);
  EXPECT_EQ(CountOf(html, "</script"), 1u);
  EXPECT_EQ(CountOf(html, "</style"), 1u);
  EXPECT_EQ(CountOf(html, "</title"), 1u);
  EXPECT_EQ(CountOf(html, "<img"), 0u);
  EXPECT_EQ(CountOf(html, "onload=\"x"), 0u);
  EXPECT_GE(CountOf(html, "&lt;script&gt;"), 18u);
}

TEST(ReportPageTest, PolicyForbidsAllButItsOwnStyleAndScript) {
  const std::string html = WritePage(PageWith({}));
  EXPECT_TRUE(Holds(html,
                    "content=\"default-src 'none'; base-uri 'none'; form-action 'none'; "
                    "style-src 'sha256-"));
  EXPECT_FALSE(Holds(html, "unsafe"));
  EXPECT_FALSE(Holds(html, "http:"));
  EXPECT_FALSE(Holds(html, "https:"));
  EXPECT_FALSE(Holds(html, "style=\""));
}

TEST(ReportPageTest, SummaryCountsEachKindButFoldersAndKeys) {
  ReportItem folder = Item(ItemKind::kAdded, L"folder");
  folder.counts = false;
  const std::string html =
      WritePage(PageWith({Item(ItemKind::kAdded, L"a"), Item(ItemKind::kRemoved, L"b"),
                          Item(ItemKind::kRemoved, L"c"), Item(ItemKind::kRemoved, L"d"), folder}));
  EXPECT_TRUE(Holds(html, "<i></i>1 added</span>"));
  EXPECT_TRUE(Holds(html, "<i></i>3 removed</span>"));
  EXPECT_TRUE(Holds(html, "<rect class=\"k-added\" x=\"0.000%\" width=\"25.000%\""));
  EXPECT_TRUE(Holds(html, "<rect class=\"k-removed\" x=\"25.000%\" width=\"75.000%\""));
  EXPECT_TRUE(Holds(html, "<small>5 items</small>"));
}

TEST(ReportPageTest, ItemsOfOnePlaceStandTogetherBelowItsName) {
  ReportItem elsewhere = Item(ItemKind::kAdded, L"c");
  elsewhere.place = L"HKEY_CURRENT_USER\\Other";
  const std::string html =
      WritePage(PageWith({Item(ItemKind::kAdded, L"a"), Item(ItemKind::kAdded, L"b"), elsewhere}));
  EXPECT_EQ(CountOf(html, "<section class=\"place\">"), 2u);
  EXPECT_EQ(CountOf(html, "<h3>"), 2u);
}

TEST(ReportPageTest, ValuesAreShownFromAndTo) {
  ReportItem item = Item(ItemKind::kChanged, L"n");
  item.before = L"\"x\"";
  item.after = std::wstring(500, L'y');
  const std::string html = WritePage(PageWith({item}), {.text = 4});
  EXPECT_TRUE(Holds(html, "<dt>from</dt><dd><bdi class=\"value\">&quot;x&quot;</bdi>"));
  EXPECT_TRUE(Holds(html, "<dt>to</dt><dd><bdi class=\"value\">yyyy\xE2\x80\xA6 (500 characters)"));
}

TEST(ReportPageTest, TooManyItemsAreCutWithALineThatSaysSo) {
  std::vector<ReportItem> items(5, Item(ItemKind::kAdded, L"a"));
  const std::string html = WritePage(PageWith(items), {.items = 3});
  EXPECT_EQ(CountOf(html, "data-kind=\"added\""), 3u);
  EXPECT_TRUE(Holds(html, "2 more items are not shown."));
  EXPECT_TRUE(Holds(html, "<i></i>5 added</span>"));
  EXPECT_FALSE(Holds(WritePage(PageWith(items)), "not shown."));
}

TEST(ReportPageTest, TooManyTreesAreCutWithALineThatSaysSo) {
  ReportItem item = Item(ItemKind::kMerged, L"a");
  item.tree.emplace().root.name = L"root";
  const std::string html = WritePage(PageWith({item, item, item}), {.trees = 2});
  EXPECT_EQ(CountOf(html, "<details class=\"tree\">"), 2u);
  EXPECT_EQ(CountOf(html, "The page shows no more trees"), 1u);
}

TEST(ReportPageTest, PageWithoutChangesSaysSo) {
  ReportPage page = PageWith({});
  page.categories.clear();
  const std::string html = WritePage(page);
  EXPECT_TRUE(Holds(html, "<p>Nothing was changed.</p>"));
  EXPECT_FALSE(Holds(html, "<form"));
}

TEST(InspectionPageTest, FoldersBeyondWhatAPageCanShowAreOneCategory) {
  PackageInspection inspection;
  for (int i = 0; i < 100; ++i) {
    inspection.entries.push_back({std::to_wstring(i) + L"\\a.reg", 1, 1, {}});
  }
  const ReportPage page = PageOfInspection(L"x.ucex", inspection, L"p");
  ASSERT_EQ(page.categories.size(), 41u);
  EXPECT_EQ(page.categories.back().items.size(), 60u);
}

}  // namespace
}  // namespace carrovan
