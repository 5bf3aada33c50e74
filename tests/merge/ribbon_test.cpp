#include <gtest/gtest.h>

#include "merge/ribbon_codec.h"
#include "merge/ribbon_merge.h"
#include "tests/merge/merge_support.h"
#include "text/text.h"

namespace carrovan {
namespace {

sRibbonElement Record(std::uint32_t id, std::vector<sRibbonElement> children = {}) {
  sRibbonElement record;
  record.id = id;
  record.children = std::move(children);
  return record;
}

std::wstring Repeated(const wchar_t* text, int count) {
  std::wstring repeated;
  for (int i = 0; i < count; ++i) repeated += text;
  return repeated;
}

std::wstring FreshText() { return RibbonElementToText({}); }

TEST(RibbonCodec, WritesTheFieldsInOrderWithTheChildrenLast) {
  sRibbonElement record;
  record.kind = -2;
  record.id = 0x01020304;
  record.text1 = L"A";
  record.value2 = 5;
  record.text2 = L"\x4E2D";
  record.value3 = 6;
  record.text3 = L"";
  record.text4 = L"z";
  record.children = {Record(9)};
  const std::wstring text = RibbonElementToText(record);
  const std::wstring child =
      L"00000000"
      L"09000000"
      L"fffeff00"
      L"00000000"
      L"fffeff00"
      L"00000000"
      L"fffeff00"
      L"fffeff00"
      L"00000000";
  EXPECT_EQ(text,
            L"feffffff"
            L"04030201"
            L"fffeff014100"
            L"05000000"
            L"fffeff012d4e"
            L"06000000"
            L"fffeff00"
            L"fffeff017a00"
            L"01000000" +
                child);
  sRibbonElement read;
  ASSERT_TRUE(RibbonElementFromText(text, read));
  EXPECT_EQ(read, record);
}

TEST(RibbonCodec, WritesEachLengthInItsShortestForm) {
  struct Row {
    std::size_t length;
    const wchar_t* prefix;
  };
  const Row rows[] = {{0, L"fffeff00"},
                      {254, L"fffefffe"},
                      {255, L"fffeffffff00"},
                      {0xFFFD, L"fffefffffdff"},
                      {0xFFFE, L"fffefffffffffeff0000"},
                      {0x10000, L"fffeffffffff00000100"}};
  for (const Row& row : rows) {
    sRibbonElement record;
    record.text1 = std::wstring(row.length, L'x');
    const std::wstring text = RibbonElementToText(record);
    EXPECT_EQ(text.substr(16, std::wstring(row.prefix).size()), row.prefix) << row.length;
    sRibbonElement read;
    EXPECT_TRUE(RibbonElementFromText(text, read)) << row.length;
    EXPECT_EQ(read, record) << row.length;
  }
}

TEST(RibbonCodec, CountsCharactersBeyondTheFirstPlaneAsTwo) {
  sRibbonElement record;
  record.text1 = FromUtf8("\xF0\x9F\x98\x80");
  const std::wstring text = RibbonElementToText(record);
  EXPECT_EQ(text.substr(16, 16), L"fffeff023dd800de");
  sRibbonElement read;
  ASSERT_TRUE(RibbonElementFromText(text, read));
  EXPECT_EQ(read, record);
}

TEST(RibbonCodec, KeepsAnUnpairedSurrogate) {
  const std::wstring text =
      L"0000000000000000"
      L"fffeff0100d8" +
      FreshText().substr(24);
  sRibbonElement read;
  ASSERT_TRUE(RibbonElementFromText(text, read));
  EXPECT_EQ(RibbonElementToText(read), text);
}

struct StoredText {
  const wchar_t* stored;
  RibbonText read;
};

TEST(RibbonCodec, ReadsEveryFormOfAStoredText) {
  const StoredText rows[] = {
      {L"00", ""},
      {L"0261e9", "a\xE9"},
      {L"03e4b8ad", "\xE4\xB8\xAD"},
      {L"ff01004f", "O"},                          // 8-bit, word length
      {L"ffffff010000004f", "O"},                  // 8-bit, double word length
      {L"ffffffffffffff01000000000000004f", "O"},  // 8-bit, length of eight bytes
      {L"fffeffff01004f00", L"O"},
      {L"fffeffffffff010000004f00", L"O"},
      {L"fffeffffffffffffffff01000000000000004f00", L"O"},
  };
  for (const StoredText& row : rows) {
    sRibbonElement read;
    const std::wstring text =
        L"0000000000000000" + std::wstring(row.stored) + FreshText().substr(24);
    EXPECT_TRUE(RibbonElementFromText(text, read)) << ToUtf8(row.stored);
    EXPECT_EQ(read.text1, row.read) << ToUtf8(row.stored);
  }
}

TEST(RibbonCodec, TakesTheMarkBehindTheMarkForALength) {
  sRibbonElement read;
  const std::wstring text =
      L"0000000000000000"
      L"fffefffffeff" +
      Repeated(L"7800", 0xFFFE) + FreshText().substr(24);
  ASSERT_TRUE(RibbonElementFromText(text, read));
  EXPECT_EQ(read.text1, RibbonText(std::wstring(0xFFFE, L'x')));
}

TEST(RibbonCodec, ReadsUpperCaseDigitsAndIgnoresTrailingBytes) {
  sRibbonElement record = Record(0xABCDEF01);
  std::wstring text = RibbonElementToText(record) + L"00ff";
  for (wchar_t& c : text) c = c >= L'a' && c <= L'f' ? static_cast<wchar_t>(c - 32) : c;
  sRibbonElement read;
  ASSERT_TRUE(RibbonElementFromText(text, read));
  EXPECT_EQ(read, record);
}

TEST(RibbonCodec, GivesAFreshRecordForATextThatDoesNotRead) {
  const std::wstring whole = RibbonElementToText(Record(7, {Record(8)}));
  std::vector<std::wstring> broken = {
      L"",
      L"000",
      L"zz",
      L"0x",
      L" 1",
      L"-1",
      L"+1",
      L"\xFF10\xFF10",
      whole + L"0",
      L"0000000000000000"
      L"fffeffffff"
      L"ffffffee" +
          FreshText().substr(24),  // four billion
      L"0000000000000000"
      L"ffffff"
      L"ffffffee" +
          FreshText().substr(24),
      L"0000000000000000"
      L"ffffffffffffff"
      L"ffffffffffffffff" +
          FreshText().substr(24),
      FreshText().substr(0, FreshText().size() - 8) + L"01000000",
      FreshText().substr(0, FreshText().size() - 8) + L"ffffffff" + FreshText()};
  for (std::size_t length = 0; length < whole.size(); ++length) {
    broken.push_back(whole.substr(0, length));
  }
  for (const std::wstring& text : broken) {
    sRibbonElement read = Record(1, {Record(2)});
    EXPECT_FALSE(RibbonElementFromText(text, read)) << ToUtf8(text);
    EXPECT_EQ(read, sRibbonElement()) << ToUtf8(text);
  }
}

TEST(RibbonCodec, ReadsTheDeepestNestingAndNoDeeper) {
  sRibbonElement record = Record(0);
  for (int level = 1; level < kRibbonLevels; ++level) {
    sRibbonElement parent = Record(static_cast<std::uint32_t>(level));
    parent.children.push_back(std::move(record));
    record = std::move(parent);
  }
  sRibbonElement read;
  EXPECT_TRUE(RibbonElementFromText(RibbonElementToText(record), read));
  EXPECT_EQ(read, record);
  EXPECT_FALSE(RibbonElementFromText(RibbonElementToText(Record(99, {record})), read));
}

TEST(MergeRibbonElementArrays, IsFalseWhenNothingIsMissing) {
  std::vector<sRibbonElement> second = {Record(1, {Record(2)})};
  EXPECT_FALSE(MergeRibbonElementArrays({}, second));
  EXPECT_FALSE(MergeRibbonElementArrays({Record(2), Record(1)}, second));
  EXPECT_EQ(second, std::vector<sRibbonElement>{Record(1, {Record(2)})});
}

TEST(MergeRibbonElementArrays, PlacesAMissingRecordBehindTheOneThatSharesMost) {
  std::vector<sRibbonElement> second = {Record(1, {Record(2)}), Record(3, {Record(4), Record(5)}),
                                        Record(6)};
  const sRibbonElement missing = Record(9, {Record(4), Record(5), Record(2)});
  EXPECT_TRUE(MergeRibbonElementArrays({missing}, second));
  const std::vector<sRibbonElement> expected = {
      Record(1, {Record(2)}), Record(3, {Record(4), Record(5)}), missing, Record(6)};
  EXPECT_EQ(second, expected);
}

TEST(MergeRibbonElementArrays, PlacesBehindTheFirstRecordWhenNoneSharesMore) {
  std::vector<sRibbonElement> second = {Record(1), Record(2)};
  EXPECT_TRUE(MergeRibbonElementArrays({Record(9)}, second));
  EXPECT_EQ(second, (std::vector<sRibbonElement>{Record(1), Record(9), Record(2)}));
  std::vector<sRibbonElement> empty;
  EXPECT_TRUE(MergeRibbonElementArrays({Record(9)}, empty));
  EXPECT_EQ(empty, std::vector<sRibbonElement>{Record(9)});
}

TEST(MergeRibbonElementArrays, BringsMissingChildrenOfAPresentRecord) {
  std::vector<sRibbonElement> second = {Record(1, {Record(2)}), Record(3)};
  EXPECT_TRUE(MergeRibbonElementArrays({Record(1, {Record(2), Record(7)})}, second));
  EXPECT_EQ(second, (std::vector<sRibbonElement>{Record(1, {Record(2)}), Record(7), Record(3)}));
}

std::string ElementXml(const std::string& name, std::uint32_t id) {
  return "<" + name + ">" + ToUtf8(RibbonElementToText(Record(id))) + "</" + name + ">";
}

std::string PanelXml(const std::string& content) {
  return "<EyeCustomRibbonPanel-1>" + content + "</EyeCustomRibbonPanel-1>";
}

TEST(RibbonPanel, ReadsRecordsInOrderAndKeepsUnreadableOnesFresh) {
  DomBench bench;
  LoadedXml panel(
      bench, PanelXml(ElementXml("RibbonElement", 3) + "<x/>" + ElementXml("RibbonElement-a", 4) +
                      "<RibbonElement-2>123</RibbonElement-2><RibbonElement/>" +
                      ElementXml("RibbonElement-1-2", 5) + ElementXml("RibbonElement_0", 6) +
                      "<!--RibbonElement-->"));
  EXPECT_TRUE(HasRibbonElements(panel.Root()));
  std::vector<sRibbonElement> records = {Record(1)};
  EXPECT_TRUE(ReadRibbonElements(panel.Root(), records));
  EXPECT_EQ(records, (std::vector<sRibbonElement>{Record(1), Record(3), Record(4), sRibbonElement(),
                                                  sRibbonElement()}));
}

TEST(RibbonPanel, HasNoneWhenNoBaseNameFits) {
  DomBench bench;
  LoadedXml panel(bench, PanelXml("<RibbonElement_0/><RibbonElement-1-2/><ribbonelement/>"
                                  "<x><RibbonElement/></x><?RibbonElement i?>"));
  std::vector<sRibbonElement> records;
  EXPECT_FALSE(HasRibbonElements(panel.Root()));
  EXPECT_FALSE(ReadRibbonElements(panel.Root(), records));
  RemoveRibbonElements(panel.Root());
  EXPECT_NE(panel.Saved().find("<RibbonElement_0/><RibbonElement-1-2/>"), std::string::npos);
}

TEST(RibbonPanel, RemovingPassesOverTheSiblingOfARemovedElement) {
  struct Row {
    std::string before;
    std::string after;
  };
  const Row rows[] = {
      {"<RibbonElement-1/><RibbonElement-2/><RibbonElement-3/>", "<RibbonElement-2/>"},
      {"<RibbonElement-1/><x/><RibbonElement-3/>", "<x/>"},
      {"<x/><RibbonElement-1/><RibbonElement-2/><y/>", "<x/><RibbonElement-2/><y/>"},
      {"<RibbonElement-1/><RibbonElement-2/><x/><RibbonElement-3/>", "<RibbonElement-2/><x/>"}};
  for (const Row& row : rows) {
    DomBench bench;
    LoadedXml panel(bench, PanelXml(row.before));
    RemoveRibbonElements(panel.Root());
    EXPECT_EQ(panel.Saved(), PanelXml(row.after));
  }
}

TEST(MergeRibbonPanel, NeverChangesTheNewPanel) {
  DomBench bench;
  LoadedXml oldPanel(bench,
                     PanelXml(ElementXml("RibbonElement-1", 1) + ElementXml("RibbonElement-2", 2)));
  const std::string newXml = PanelXml(ElementXml("RibbonElement-1", 3));
  LoadedXml newPanel(bench, newXml);
  EXPECT_FALSE(MergeRibbonPanel(oldPanel.Root(), newPanel.Root(), newPanel.Document()));
  EXPECT_EQ(newPanel.Saved(), newXml);
}

TEST(MergeRibbonPanel, IsFalseWithoutTwoPanelsAndOldRecords) {
  DomBench bench;
  LoadedXml panel(bench, PanelXml(ElementXml("RibbonElement-1", 1)));
  LoadedXml without(bench, PanelXml("<x/>"));
  LoadedXml category(bench,
                     "<EyeCustomRibbonCategory-1><RibbonElement/></EyeCustomRibbonCategory-1>");
  XmlDocument& document = panel.Document();
  EXPECT_FALSE(MergeRibbonPanel(XmlNode(), panel.Root(), document));
  EXPECT_FALSE(MergeRibbonPanel(panel.Root(), XmlNode(), document));
  EXPECT_FALSE(MergeRibbonPanel(without.Root(), panel.Root(), document));
  EXPECT_FALSE(MergeRibbonPanel(category.Root(), panel.Root(), document));
  EXPECT_FALSE(MergeRibbonPanel(panel.Root(), category.Root(), document));
}

}  // namespace
}  // namespace carrovan
