#include "merge/xml_merge.h"

#include <gtest/gtest.h>

#include "tests/merge/merge_support.h"

namespace carrovan {
namespace {

struct Row {
  const char* oldXml;
  const char* newXml;
  const char* merged;
};

void ExpectMerges(const std::vector<Row>& rows) {
  DomBench bench;
  for (const Row& row : rows) {
    EXPECT_EQ(bench.MergeXml(row.oldXml, row.newXml), row.merged)
        << "old " << row.oldXml << "\nnew " << row.newXml;
  }
  EXPECT_TRUE(bench.log.lines.empty());
}

TEST(MergeXmlNodes, CarriesOldTextIntoAMatchedElement) {
  ExpectMerges(
      {{"<r><Caption>old</Caption></r>", "<r><Caption>new</Caption></r>",
        "<r><Caption>old</Caption></r>"},
       {"<r>old</r>", "<r>new</r>", "<r>old</r>"},
       {"<r><a> x &amp; &lt;y </a></r>", "<r><a>y</a></r>", "<r><a> x &amp; &lt;y </a></r>"},
       {"<r><a>\xE4\xB8\xAD\xF0\x9F\x98\x80</a></r>", "<r><a>y</a></r>",
        "<r><a>\xE4\xB8\xAD\xF0\x9F\x98\x80</a></r>"}});
}

std::string RootWith(const std::string& name, const std::string& content) {
  return "<r><" + name + ">" + content + "</" + name + "></r>";
}

TEST(MergeXmlNodes, KeepsTheNewTextOfValueElements) {
  for (const char* name : {"Size", "Major", "Minor", "ID", "Name", "Style", "UserDefine",
                           "UserDefinePanelID", "CollapseOrder", "IsAutoFindPanelIcon"}) {
    DomBench bench;
    const std::string oldXml = RootWith(name, "1<sub/>");
    const std::string newXml = RootWith(name, "2");
    EXPECT_EQ(bench.MergeXml(oldXml, newXml), newXml) << name;
  }
}

TEST(MergeXmlNodes, ComparesValueElementNamesExactly) {
  ExpectMerges(
      {{"<r><name>1</name></r>", "<r><name>2</name></r>", "<r><name>1</name></r>"},
       {"<r><Name-1>1</Name-1></r>", "<r><Name-1>2</Name-1></r>", "<r><Name-1>1</Name-1></r>"}});
}

TEST(MergeXmlNodes, KeepsAValueElementThatIsTheRoot) {
  ExpectMerges({{"<Name>1<x/></Name>", "<Name>2</Name>", "<Name>2</Name>"},
                {"<a>1<x/></a>", "<Size>2</Size>", "<Size>2</Size>"}});
}

TEST(MergeXmlNodes, CarriesTextOnlyBetweenLeadingTextNodes) {
  ExpectMerges({{"<r><a>x</a></r>", "<r><a/></r>", "<r><a/></r>"},
                {"<r><a>x</a></r>", "<r><a><b/>y</a></r>", "<r><a><b/>y</a></r>"},
                {"<r><a><!--c-->x</a></r>", "<r><a>y</a></r>", "<r><a>y</a></r>"},
                {"<r><a/></r>", "<r><a>y</a></r>", "<r><a>y</a></r>"},
                {"<r><a><![CDATA[x]]></a></r>", "<r><a>y</a></r>", "<r><a>y</a></r>"},
                {"<r><a>x</a></r>", "<r><a><![CDATA[y]]></a></r>", "<r><a><![CDATA[y]]></a></r>"},
                {"<r><a>x<b/></a></r>", "<r><a>y<c/>z</a></r>", "<r><a>x<c/>z<b/></a></r>"}});
}

TEST(MergeXmlNodes, AppendsElementsThatTheNewDocumentLacks) {
  ExpectMerges({{"<r><b k='1'>t<c/><!--n--></b></r>", "<r><a/></r>",
                 "<r><a/><b k=\"1\">t<c/><!--n--></b></r>"},
                {"<r><b/><a/></r>", "<r><a/></r>", "<r><a/><b/></r>"}});
}

TEST(MergeXmlNodes, MergesASecondNamesakeIntoTheAppendedCopy) {
  ExpectMerges({{"<r><a><x/></a><a><y/></a></r>", "<r/>", "<r><a><x/><y/></a></r>"},
                {"<r><a>1</a><a>2</a></r>", "<r/>", "<r><a>2</a></r>"}});
}

TEST(MergeXmlNodes, MergesIntoTheFirstOfSeveralNamesakes) {
  ExpectMerges({{"<r><a>o</a></r>", "<r><a>1</a><a>2</a></r>", "<r><a>o</a><a>2</a></r>"},
                {"<r><a>p</a><a>q</a></r>", "<r><a>1</a><a>2</a></r>", "<r><a>q</a><a>2</a></r>"}});
}

TEST(MergeXmlNodes, DoesNotCarryCommentsInstructionsOrLaterText) {
  ExpectMerges({{"<r><a/><!--c--><?p i?>text<![CDATA[d]]></r>", "<r><a/></r>", "<r><a/></r>"}});
}

TEST(MergeXmlNodes, NeitherComparesNorMergesAttributes) {
  ExpectMerges(
      {{"<r v='1'><a k='o'/></r>", "<r w='2'><a k='n'/></r>", "<r w=\"2\"><a k=\"n\"/></r>"}});
}

TEST(MergeXmlNodes, MergesRootsWhateverTheirNames) {
  ExpectMerges({{"<x><a/></x>", "<y/>", "<y><a/></y>"}});
}

TEST(MergeXmlNodes, MatchesNamesByCaseAndPrefix) {
  ExpectMerges({{"<r><A>o</A></r>", "<r><a>n</a></r>", "<r><a>n</a><A>o</A></r>"},
                {"<r xmlns:p='u'><p:a>o</p:a></r>", "<r xmlns:p='u'><a>n</a><p:a>n</p:a></r>",
                 "<r xmlns:p=\"u\"><a>n</a><p:a>o</p:a></r>"}});
}

TEST(MergeXmlNodes, NumbersAnUnmatchedPanelAndCountsIt) {
  ExpectMerges(
      {{"<EyeCustomRibbonCategory-1><ID>9</ID><EyeCustomRibbonPanel-1><ID>1</ID></"
        "EyeCustomRibbonPanel-1>"
        "<EyeCustomRibbonPanel-2 lost='1'><ID>7</ID><t>x</t></EyeCustomRibbonPanel-2>"
        "</EyeCustomRibbonCategory-1>",
        "<EyeCustomRibbonCategory-1><ID>9</ID><Size>3</Size>"
        "<EyeCustomRibbonPanel-1><ID>1</ID></EyeCustomRibbonPanel-1>"
        "<EyeCustomRibbonPanel-2><ID>2</ID></EyeCustomRibbonPanel-2>"
        "<EyeCustomRibbonPanel-3><ID>3</ID></EyeCustomRibbonPanel-3></EyeCustomRibbonCategory-1>",
        "<EyeCustomRibbonCategory-1><ID>9</ID><Size>4</Size>"
        "<EyeCustomRibbonPanel-1><ID>1</ID></EyeCustomRibbonPanel-1>"
        "<EyeCustomRibbonPanel-2><ID>2</ID></EyeCustomRibbonPanel-2>"
        "<EyeCustomRibbonPanel-3><ID>3</ID></EyeCustomRibbonPanel-3>"
        "<EyeCustomRibbonPanel-4><ID>7</ID><t>x</t></EyeCustomRibbonPanel-4>"
        "</EyeCustomRibbonCategory-1>"}});
}

TEST(MergeXmlNodes, NumbersSeveralUnmatchedContainersInARow) {
  ExpectMerges(
      {{"<EyeRibbonState><EyeCustomRibbonCategory-1><ID>5</ID></EyeCustomRibbonCategory-1>"
        "<EyeCustomRibbonPanel-1><ID>6</ID></EyeCustomRibbonPanel-1></EyeRibbonState>",
        "<EyeRibbonState><Size>1</Size>"
        "<EyeCustomRibbonCategory-9><ID>1</ID></EyeCustomRibbonCategory-9></EyeRibbonState>",
        "<EyeRibbonState><Size>3</Size>"
        "<EyeCustomRibbonCategory-9><ID>1</ID></EyeCustomRibbonCategory-9>"
        "<EyeCustomRibbonCategory-10><ID>5</ID></EyeCustomRibbonCategory-10>"
        "<EyeCustomRibbonPanel-11><ID>6</ID></EyeCustomRibbonPanel-11></EyeRibbonState>"}});
}

TEST(MergeXmlNodes, MatchesCategoriesByIdAndNotByName) {
  ExpectMerges(
      {{"<r><EyeCustomRibbonCategory-1><ID>2</ID><t>o</t></EyeCustomRibbonCategory-1></r>",
        "<r><EyeCustomRibbonCategory-1><ID>1</ID><t>n</t></EyeCustomRibbonCategory-1>"
        "<EyeCustomRibbonCategory-2><ID> 2</ID><t>n</t></EyeCustomRibbonCategory-2></r>",
        "<r><EyeCustomRibbonCategory-1><ID>1</ID><t>n</t></EyeCustomRibbonCategory-1>"
        "<EyeCustomRibbonCategory-2><ID> 2</ID><t>o</t></EyeCustomRibbonCategory-2></r>"}});
}

TEST(MergeXmlNodes, AppendsACategoryWithoutAReadableId) {
  ExpectMerges({{"<r><EyeCustomRibbonCategory-1><t>o</t></EyeCustomRibbonCategory-1></r>",
                 "<r><EyeCustomRibbonCategory-1><ID>1</ID></EyeCustomRibbonCategory-1></r>",
                 "<r><EyeCustomRibbonCategory-1><ID>1</ID></EyeCustomRibbonCategory-1>"
                 "<EyeCustomRibbonCategory-1><t>o</t></EyeCustomRibbonCategory-1></r>"},
                {"<r><EyeCustomRibbonPanel-1><ID>1 </ID></EyeCustomRibbonPanel-1></r>",
                 "<r><EyeCustomRibbonPanel-1><ID>1</ID></EyeCustomRibbonPanel-1></r>",
                 "<r><EyeCustomRibbonPanel-1><ID>1</ID></EyeCustomRibbonPanel-1>"
                 "<EyeCustomRibbonPanel-1><ID>1 </ID></EyeCustomRibbonPanel-1></r>"}});
}

TEST(MergeXmlNodes, MatchesStatesByIdOrByName) {
  ExpectMerges({{"<r><EyeRibbonState-1><ID>2</ID><t>o</t></EyeRibbonState-1></r>",
                 "<r><EyeRibbonState-5><ID>2</ID><t>n</t></EyeRibbonState-5>"
                 "<EyeRibbonState-1><ID>1</ID><t>n</t></EyeRibbonState-1></r>",
                 "<r><EyeRibbonState-5><ID>2</ID><t>o</t></EyeRibbonState-5>"
                 "<EyeRibbonState-1><ID>1</ID><t>n</t></EyeRibbonState-1></r>"},
                {"<r><EyeRibbonState-1><ID>2</ID><t>o</t></EyeRibbonState-1></r>",
                 "<r><EyeRibbonState-1><ID>1</ID><t>n</t></EyeRibbonState-1>"
                 "<EyeRibbonState-5><ID>2</ID><t>n</t></EyeRibbonState-5></r>",
                 "<r><EyeRibbonState-1><ID>1</ID><t>o</t></EyeRibbonState-1>"
                 "<EyeRibbonState-5><ID>2</ID><t>n</t></EyeRibbonState-5></r>"},
                {"<r><EyeRibbonState><t>o</t></EyeRibbonState></r>",
                 "<r><EyeRibbonState><t>n</t></EyeRibbonState></r>",
                 "<r><EyeRibbonState><t>o</t></EyeRibbonState></r>"}});
}

TEST(MergeXmlNodes, FindsAnIdThatAnEarlierMergeBroughtIn) {
  ExpectMerges(
      {{"<r><EyeRibbonState><ID>4</ID></EyeRibbonState>"
        "<EyeRibbonState-2><ID>4</ID><t>o</t></EyeRibbonState-2></r>",
        "<r><EyeRibbonState><u/></EyeRibbonState></r>",
        "<r><EyeRibbonState><u/><ID>4</ID><t>o</t></EyeRibbonState></r>"}});
}

TEST(MergeXmlNodes, LeavesTheMatchedPanelAsItIs) {
  ExpectMerges(
      {{"<r><EyeCustomRibbonPanel-1><ID>1</ID><t>o</t><RibbonElement-0>00</RibbonElement-0>"
        "</EyeCustomRibbonPanel-1></r>",
        "<r><EyeCustomRibbonPanel-8><ID>1</ID><t>n</t></EyeCustomRibbonPanel-8></r>",
        "<r><EyeCustomRibbonPanel-8><ID>1</ID><t>n</t></EyeCustomRibbonPanel-8></r>"}});
}

constexpr char kOldCategory[] =
    "<EyeCustomRibbonCategory-1><EyeCustomRibbonPanel-5 k='1'><ID>7</ID></EyeCustomRibbonPanel-5>"
    "</EyeCustomRibbonCategory-1>";

std::string CategoryWith(const std::string& content) {
  return "<EyeCustomRibbonCategory-1>" + content + "</EyeCustomRibbonCategory-1>";
}

TEST(MergeXmlNodes, AppendsPlainCopiesWhenTheSummaryIsInvalid) {
  const std::string panel = "<EyeCustomRibbonPanel-1><ID>1</ID></EyeCustomRibbonPanel-1>";
  const std::string copy = "<EyeCustomRibbonPanel-5 k=\"1\"><ID>7</ID></EyeCustomRibbonPanel-5>";
  const std::vector<std::string> contents = {
      "<Size>three</Size>" + panel,
      "<Size>3</Size><Size>x</Size>" + panel,
      "<Size/>" + panel,
      "<Size><!--3--></Size>" + panel,
      "<Size>1 </Size>" + panel,
      panel,
      "<Size>3</Size>",
      "<Size>3</Size><EyeCustomRibbonPanel-1/>",
      "<Size>3</Size><EyeCustomRibbonPanel><ID>1</ID></EyeCustomRibbonPanel>",
      "<Size>3</Size>" + panel + "<EyeCustomRibbonPanel-2><ID>x</ID></EyeCustomRibbonPanel-2>",
      "<Size>3</Size><EyeRibbonState-99999999999><ID>1</ID></EyeRibbonState-99999999999>",
  };
  for (const std::string& content : contents) {
    DomBench bench;
    EXPECT_EQ(bench.MergeXml(kOldCategory, CategoryWith(content)), CategoryWith(content + copy));
  }
}

TEST(MergeXmlNodes, PlainCopiesGoIntoElementsThatNumberNothing) {
  ExpectMerges(
      {{"<EyeCustomRibbonPanel-1><EyeRibbonState-2><ID>2</ID></EyeRibbonState-2></"
        "EyeCustomRibbonPanel-1>",
        "<EyeCustomRibbonPanel-1><Size>1</Size><EyeRibbonState-1><ID>1</ID></EyeRibbonState-1>"
        "</EyeCustomRibbonPanel-1>",
        "<EyeCustomRibbonPanel-1><Size>1</Size><EyeRibbonState-1><ID>1</ID></EyeRibbonState-1>"
        "<EyeRibbonState-2><ID>2</ID></EyeRibbonState-2></EyeCustomRibbonPanel-1>"}});
}

TEST(MergeXmlNodes, TakesTheLastSizeAndWritesTheFirst) {
  ExpectMerges({{kOldCategory,
                 "<EyeCustomRibbonCategory-1><Size/><Size>1</Size><Size>8</Size>"
                 "<EyeCustomRibbonPanel-1><ID>1</ID></EyeCustomRibbonPanel-1>"
                 "</EyeCustomRibbonCategory-1>",
                 "<EyeCustomRibbonCategory-1><Size/><Size>9</Size><Size>8</Size>"
                 "<EyeCustomRibbonPanel-1><ID>1</ID></EyeCustomRibbonPanel-1>"
                 "<EyeCustomRibbonPanel-2><ID>7</ID></EyeCustomRibbonPanel-2>"
                 "</EyeCustomRibbonCategory-1>"}});
}

TEST(MergeXmlNodes, ReusesTheNumberWhenTheSizeCannotBeWritten) {
  ExpectMerges(
      {{"<EyeCustomRibbonCategory-1><EyeCustomRibbonPanel-5><ID>7</ID></EyeCustomRibbonPanel-5>"
        "<EyeCustomRibbonPanel-6><ID>8</ID></EyeCustomRibbonPanel-6>"
        "</EyeCustomRibbonCategory-1>",
        "<EyeCustomRibbonCategory-1><Size><!--c--></Size><Size>1</Size>"
        "<EyeCustomRibbonPanel-1><ID>1</ID></EyeCustomRibbonPanel-1>"
        "</EyeCustomRibbonCategory-1>",
        "<EyeCustomRibbonCategory-1><Size><!--c--></Size><Size>1</Size>"
        "<EyeCustomRibbonPanel-1><ID>1</ID></EyeCustomRibbonPanel-1>"
        "<EyeCustomRibbonPanel-2><ID>7</ID></EyeCustomRibbonPanel-2>"
        "<EyeCustomRibbonPanel-2><ID>8</ID></EyeCustomRibbonPanel-2>"
        "</EyeCustomRibbonCategory-1>"}});
}

TEST(MergeXmlNodes, NumbersWrapAroundAtTheLargest) {
  ExpectMerges({{kOldCategory,
                 "<EyeCustomRibbonCategory-1><Size>2147483647</Size>"
                 "<EyeCustomRibbonPanel-2147483647><ID>1</ID></EyeCustomRibbonPanel-2147483647>"
                 "</EyeCustomRibbonCategory-1>",
                 "<EyeCustomRibbonCategory-1><Size>-2147483648</Size>"
                 "<EyeCustomRibbonPanel-2147483647><ID>1</ID></EyeCustomRibbonPanel-2147483647>"
                 "<EyeCustomRibbonPanel--2147483648><ID>7</ID></EyeCustomRibbonPanel--2147483648>"
                 "</EyeCustomRibbonCategory-1>"}});
}

TEST(MergeXmlNodes, MergesAMatchedContainerIntoTheAppendedOne) {
  ExpectMerges(
      {{"<EyeRibbonState><EyeCustomRibbonCategory-1><ID>7</ID><a/></EyeCustomRibbonCategory-1>"
        "<EyeCustomRibbonCategory-2><ID>7</ID><b/></EyeCustomRibbonCategory-2></EyeRibbonState>",
        "<EyeRibbonState><Size>1</Size><EyeCustomRibbonCategory-3><ID>1</ID>"
        "</EyeCustomRibbonCategory-3></EyeRibbonState>",
        "<EyeRibbonState><Size>2</Size><EyeCustomRibbonCategory-3><ID>1</ID>"
        "</EyeCustomRibbonCategory-3><EyeCustomRibbonCategory-4><ID>7</ID><a/><b/>"
        "</EyeCustomRibbonCategory-4></EyeRibbonState>"}});
}

TEST(MergeXmlNodes, DoesNothingWithoutBothElements) {
  DomBench bench;
  LoadedXml document(bench, "<r><a/></r>");
  MergeXmlNodes(XmlNode(), document.Root(), document.Document());
  MergeXmlNodes(document.Root(), XmlNode(), document.Document());
  EXPECT_EQ(document.Saved(), "<r><a/></r>");
}

TEST(MergeXmlNodes, LeavesOutAContainerThatTheDomDoesNotCreate) {
  DomBench bench;
  FaultyDom dom(*bench.dom);
  dom.createsElements = false;
  const std::string newXml =
      CategoryWith("<Size>1</Size><EyeCustomRibbonPanel-1><ID>1</ID></EyeCustomRibbonPanel-1>");
  bench.files.Put(L"C:\\d\\o.xml", CategoryWith("<EyeRibbonState><ID>2</ID></EyeRibbonState><t/>"));
  bench.files.Put(L"C:\\d\\n.xml", newXml);
  EXPECT_TRUE(MergeXmlFiles(L"C:\\d\\o.xml", L"C:\\d\\n.xml", L"C:\\d\\m.xml", dom, bench.log));
  EXPECT_EQ(OneLine(bench.files.Bytes(L"C:\\d\\m.xml")),
            CategoryWith("<Size>1</Size><EyeCustomRibbonPanel-1><ID>1</ID></EyeCustomRibbonPanel-1>"
                         "<t/>"));
}

TEST(MergeXmlNodes, ReadsAnIdFromAllOfItsElementsText) {
  for (const char* id :
       {"12", "1<!--c-->2", "1<?p i?>2", "1<![CDATA[2]]>", "1<x>2</x>", " 1<x/>2"}) {
    const std::string oldXml = "<r><EyeCustomRibbonCategory-1><ID>" + std::string(id) +
                               "</ID><a>old</a></EyeCustomRibbonCategory-1></r>";
    const std::string newXml =
        "<r><EyeCustomRibbonCategory-9><ID>12</ID><a>new</a></EyeCustomRibbonCategory-9></r>";
    DomBench bench;
    EXPECT_EQ(bench.MergeXml(oldXml, newXml),
              "<r><EyeCustomRibbonCategory-9><ID>12</ID><a>old</a></EyeCustomRibbonCategory-9></r>")
        << id;
  }
}

TEST(MergeXmlNodes, ReadsNoIdThatDoesNotBeginWithText) {
  for (const char* id : {"<!--c-->12", "<![CDATA[12]]>", "<x>1</x>2", "1<!--c-->2 ", "1<x>y</x>"}) {
    const std::string category =
        "<EyeCustomRibbonCategory-1><ID>" + std::string(id) + "</ID></EyeCustomRibbonCategory-1>";
    const std::string kept = "<EyeCustomRibbonCategory-9><ID>12</ID></EyeCustomRibbonCategory-9>";
    DomBench bench;
    EXPECT_EQ(bench.MergeXml("<r>" + category + "</r>", "<r>" + kept + "</r>"),
              "<r>" + kept + category + "</r>");
  }
}

TEST(MergeXmlNodes, ReadsASizeFromAllOfItsElementsText) {
  ExpectMerges(
      {{"<EyeRibbonState-1><EyeCustomRibbonPanel-1><ID>7</ID></EyeCustomRibbonPanel-1>"
        "</EyeRibbonState-1>",
        "<EyeRibbonState-1><Size>1<!--c-->0</Size>"
        "<EyeCustomRibbonPanel-4><ID>1</ID></EyeCustomRibbonPanel-4></EyeRibbonState-1>",
        "<EyeRibbonState-1><Size>11<!--c-->0</Size>"
        "<EyeCustomRibbonPanel-4><ID>1</ID></EyeCustomRibbonPanel-4>"
        "<EyeCustomRibbonPanel-5><ID>7</ID></EyeCustomRibbonPanel-5></EyeRibbonState-1>"}});
}

std::string State(const std::string& content) {
  return "<EyeRibbonState-1>" + content + "</EyeRibbonState-1>";
}

std::string Panel(int number, int id) {
  const std::string name = "EyeCustomRibbonPanel-" + std::to_string(number);
  return "<" + name + "><ID>" + std::to_string(id) + "</ID></" + name + ">";
}

// An element that is merged into again and again reads as if it were read afresh each time.
// The last of them is not the last child, because the last child is descended into for good.
TEST(MergeXmlNodes, CountsOnInAnElementThatSeveralOldOnesMatch) {
  const std::string oldXml =
      "<r>" + State(Panel(5, 7)) + State(Panel(5, 8)) + State(Panel(5, 9)) + "<z/></r>";
  const std::string added = Panel(2, 7) + Panel(3, 8) + Panel(4, 9);
  struct SizeRow {
    const char* before;
    const char* after;
  };
  const SizeRow rows[] = {
      {"<Size>1</Size>", "<Size>4</Size>"},
      {"<Size>1</Size><Size>5</Size>", "<Size>6</Size><Size>5</Size>"},
      {"<Size>1<!--c-->2</Size>", "<Size>1333<!--c-->2</Size>"},
      {"<Size><!--c-->3</Size><Size>5</Size>", "<Size><!--c-->3</Size><Size>5</Size>"},
  };
  for (const SizeRow& row : rows) {
    DomBench bench;
    EXPECT_EQ(bench.MergeXml(oldXml, "<r>" + State(row.before + Panel(1, 1)) + "</r>"),
              "<r>" + State(row.after + Panel(1, 1) + added) + "<z/></r>")
        << row.before;
  }
}

TEST(MergeXmlNodes, StopsNumberingOnceAWrittenSizeNoLongerReads) {
  const std::string oldXml =
      "<r>" + State("<b/>") + State(Panel(5, 7)) + State(Panel(5, 8)) + "<z/></r>";
  for (const std::string last : {"<Size>5</Size>", ""}) {
    const std::string behind = "<!--c-->000000005</Size>" + last + Panel(1, 1) + "<b/>";
    DomBench bench;
    EXPECT_EQ(bench.MergeXml(oldXml, "<r>" + State("<Size>0" + behind) + "</r>"),
              "<r>" + State("<Size>6" + behind + Panel(2, 7) + Panel(5, 8)) + "<z/></r>");
  }
}

TEST(MergeXmlNodes, LearnsOfAnIdThatAnElementGainsWhileItIsMerged) {
  const std::string newXml = "<r>" + State("<Size>1</Size><EyeRibbonState-2/>") + "</r>";
  const auto gaining = [](const std::string& id) {
    return "<EyeRibbonState-2><ID>" + id + "</ID></EyeRibbonState-2>";
  };
  const auto oldXml = [&](const std::string& id) {
    return "<r>" + State("<a/>") + State(gaining(id)) + State(Panel(8, 9)) + "<z/></r>";
  };
  DomBench bench;
  EXPECT_EQ(bench.MergeXml(oldXml("5"), newXml),
            "<r>" + State("<Size>2</Size>" + gaining("5") + "<a/>" + Panel(3, 9)) + "<z/></r>");
  EXPECT_EQ(bench.MergeXml(oldXml("x"), newXml),
            "<r>" + State("<Size>1</Size>" + gaining("x") + "<a/>" + Panel(8, 9)) + "<z/></r>");
  const std::string withPanel =
      "<r>" + State("<Size>1</Size>" + Panel(1, 1) + "<EyeRibbonState-2/>") + "</r>";
  EXPECT_EQ(bench.MergeXml(oldXml("x"), withPanel),
            "<r>" + State("<Size>1</Size>" + Panel(1, 1) + gaining("x") + "<a/>" + Panel(8, 9)) +
                "<z/></r>");
}

// So many that they are found by tables.
std::string Fillers() {
  std::string xml;
  for (int i = 0; i < 20; ++i) xml += "<f" + std::to_string(i) + "/>";
  return xml;
}

TEST(MergeXmlNodes, TakesTheFirstOfManyChildrenWithOneId) {
  const std::string first = "<EyeRibbonState-1><ID>7</ID></EyeRibbonState-1>";
  const std::string second = "<EyeRibbonState-2><ID>7</ID></EyeRibbonState-2>";
  const std::string merged = "<EyeRibbonState-1><ID>7</ID><q/></EyeRibbonState-1>";
  const std::string oldXml =
      "<r><z/><EyeCustomRibbonCategory-1><ID>7</ID><q/></EyeCustomRibbonCategory-1></r>";
  DomBench bench;
  EXPECT_EQ(bench.MergeXml(oldXml, "<r>" + Fillers() + first + second + "</r>"),
            "<r>" + Fillers() + merged + second + "<z/></r>");
  EXPECT_EQ(bench.MergeXml(oldXml, "<r>" + first + second + Fillers() + "</r>"),
            "<r>" + merged + second + Fillers() + "<z/></r>");
}

TEST(MergeXmlNodes, TakesAnEarlierChildOnceItHasTheId) {
  const std::string later = "<EyeRibbonState-7><ID>7</ID></EyeRibbonState-7>";
  for (const std::string& fillers : {std::string(), Fillers()}) {
    DomBench bench;
    EXPECT_EQ(bench.MergeXml(
                  "<r><z/>" + State("<ID>7</ID>") +
                      "<EyeCustomRibbonCategory-1><ID>7</ID><q/></EyeCustomRibbonCategory-1></r>",
                  "<r>" + State("") + fillers + later + "</r>"),
              "<r>" + State("<ID>7</ID><q/>") + fillers + later + "<z/></r>");
  }
}

}  // namespace
}  // namespace carrovan
