#include <gtest/gtest.h>

#include "merge/xml_merge.h"
#include "tests/merge/merge_support.h"

namespace carrovan {
namespace {

constexpr wchar_t kOld[] = L"C:\\d\\old.xml";
constexpr wchar_t kNew[] = L"C:\\d\\new.xml";
constexpr wchar_t kOut[] = L"C:\\d\\out.xml";

class MergeXmlFilesTest : public testing::Test {
 protected:
  MergeXmlFilesTest() {
    bench.files.Put(kOld, "<r><a>old</a></r>");
    bench.files.Put(kNew, "<r><a>new</a></r>");
  }

  void ExpectFailure(XmlDom& dom, const std::wstring& line) {
    EXPECT_FALSE(MergeXmlFiles(kOld, kNew, kOut, dom, bench.log));
    EXPECT_EQ(bench.log.lines, std::vector<std::wstring>{line});
    EXPECT_FALSE(bench.files.Has(kOut));
  }

  DomBench bench;
  FaultyDom faulty{*bench.dom};
};

TEST_F(MergeXmlFilesTest, SavesTheMergedDocumentAndSaysNothing) {
  EXPECT_TRUE(MergeXmlFiles(kOld, kNew, kOut, *bench.dom, bench.log));
  EXPECT_EQ(OneLine(bench.files.Bytes(kOut)), "<r><a>old</a></r>");
  EXPECT_EQ(bench.files.Bytes(kNew), "<r><a>new</a></r>");
  EXPECT_TRUE(bench.log.lines.empty());
}

TEST_F(MergeXmlFilesTest, MayWriteOverEitherInput) {
  EXPECT_TRUE(MergeXmlFiles(kOld, kNew, kNew, *bench.dom, bench.log));
  EXPECT_EQ(OneLine(bench.files.Bytes(kNew)), "<r><a>old</a></r>");
}

TEST_F(MergeXmlFilesTest, MergesADocumentWithItself) {
  bench.files.Put(kOld, "<r><a>1</a><a>2</a><b/></r>");
  EXPECT_TRUE(MergeXmlFiles(kOld, kOld, kOut, *bench.dom, bench.log));
  EXPECT_EQ(OneLine(bench.files.Bytes(kOut)), "<r><a>2</a><a>2</a><b/></r>");
}

TEST_F(MergeXmlFilesTest, SaysThatTheDomDidNotStart) {
  faulty.starts = false;
  ExpectFailure(faulty, L"Failed to initialize COM");
}

TEST_F(MergeXmlFilesTest, SaysThatTheOldDocumentWasNotCreated) {
  faulty.documentsUntilFailure = 0;
  ExpectFailure(faulty, L"Failed to create old XML document object");
}

TEST_F(MergeXmlFilesTest, SaysThatTheNewDocumentWasNotCreated) {
  faulty.documentsUntilFailure = 1;
  ExpectFailure(faulty, L"Failed to create new XML document object");
}

TEST_F(MergeXmlFilesTest, SaysThatTheOldDocumentHasNoRoot) {
  faulty.rootsUntilMissing = 0;
  ExpectFailure(faulty, L"Failed to get old document root element");
}

TEST_F(MergeXmlFilesTest, SaysThatTheNewDocumentHasNoRoot) {
  faulty.rootsUntilMissing = 1;
  ExpectFailure(faulty, L"Failed to get new document root element");
}

TEST_F(MergeXmlFilesTest, SaysWhichFileDidNotLoad) {
  bench.files.Put(kNew, "<r>");
  ExpectFailure(*bench.dom, L"Failed to load new XML file: C:\\d\\new.xml");
  bench.log.lines.clear();
  bench.files.Put(kOld, "not XML");
  ExpectFailure(*bench.dom, L"Failed to load old XML file: C:\\d\\old.xml");
}

TEST_F(MergeXmlFilesTest, RefusesWhatIsNoDocument) {
  const std::vector<std::string> broken = {
      "",
      " ",
      "<r><a></r>",
      "<r/><r/>",
      "text",
      "\xEF\xBB\xBF",
      "\xFF\xFE",
      "\xFE\xFF",
      "<?xml version=\"1.0\" encoding=\"no-such-encoding\"?><r/>",
      "<?xml version=\"1.0\" encoding=\"UTF-16\"?><r/>",
      "<r>\xFF</r>",
      std::string("<r>\0</r>", 8),
      "<r>&undefined;</r>",
      "<r a='1' a='2'/>",
      "<!DOCTYPE r><r/>",
      "<!DOCTYPE r [<!ENTITY a 'x'><!ENTITY b '&a;&a;&a;&a;'>]><r>&b;</r>",
      "<!DOCTYPE r SYSTEM 'file:///C:/d/new.xml'><r/>"};
  for (const std::string& xml : broken) {
    bench.log.lines.clear();
    bench.files.Put(kOld, xml);
    SCOPED_TRACE(xml);
    ExpectFailure(*bench.dom, L"Failed to load old XML file: C:\\d\\old.xml");
  }
}

TEST_F(MergeXmlFilesTest, RefusesAMissingFileAndAFolder) {
  ASSERT_EQ(bench.files.RemoveFile(kOld), kSystemOk);
  ExpectFailure(*bench.dom, L"Failed to load old XML file: C:\\d\\old.xml");
  bench.log.lines.clear();
  bench.files.PutFolder(kOld);
  ExpectFailure(*bench.dom, L"Failed to load old XML file: C:\\d\\old.xml");
}

TEST_F(MergeXmlFilesTest, SaysThatTheResultWasNotSaved) {
  EXPECT_FALSE(MergeXmlFiles(kOld, kNew, L"C:\\none\\out.xml", *bench.dom, bench.log));
  bench.files.Put(kOut, "kept");
  bench.files.MakeReadOnly(kOut);
  EXPECT_FALSE(MergeXmlFiles(kOld, kNew, kOut, *bench.dom, bench.log));
  EXPECT_EQ(bench.files.Bytes(kOut), "kept");
  const std::vector<std::wstring> expected = {L"Failed to save merged XML file: C:\\none\\out.xml",
                                              L"Failed to save merged XML file: C:\\d\\out.xml"};
  EXPECT_EQ(bench.log.lines, expected);
}

// A DOM may refuse such a document as one that fails to load.
TEST_F(MergeXmlFilesTest, SurvivesAHugeAttribute) {
  const std::string huge(20'000'000, 'x');
  bench.files.Put(kOld, "<r><b k='" + huge + "'/></r>");
  if (MergeXmlFiles(kOld, kNew, kOut, *bench.dom, bench.log)) {
    EXPECT_TRUE(OneLine(bench.files.Bytes(kOut)) == "<r><a>new</a><b k=\"" + huge + "\"/></r>");
  } else {
    EXPECT_TRUE(bench.log.lines.back().starts_with(L"Failed to load old XML file"));
  }
}

std::string Nested(int depth, const std::string& core) {
  std::string xml;
  for (int i = 0; i < depth; ++i) xml += "<n>";
  xml += core;
  for (int i = 0; i < depth; ++i) xml += "</n>";
  return xml;
}

// A DOM may refuse such a document as one that fails to load.
TEST_F(MergeXmlFilesTest, SurvivesAnyDepth) {
  constexpr int kDepth = 100'000;
  for (const bool oldIsDeeper : {false, true}) {
    bench.files.Put(kOld, Nested(kDepth, oldIsDeeper ? "<d>o</d>" : "<e>o</e>"));
    bench.files.Put(kNew, oldIsDeeper ? "<n/>" : Nested(kDepth, "<e>n</e>"));
    if (MergeXmlFiles(kOld, kNew, kOut, *bench.dom, bench.log)) {
      EXPECT_EQ(OneLine(bench.files.Bytes(kOut)), OneLine(bench.files.Bytes(kOld)));
    } else {
      EXPECT_TRUE(bench.log.lines.back().starts_with(L"Failed to load old XML file"));
    }
  }
}

// Every level has more children behind the one that is descended into.
TEST_F(MergeXmlFilesTest, SurvivesDepthThatMustBeReturnedFrom) {
  constexpr int kDepth = 100'000;
  std::string xml;
  for (int i = 0; i < kDepth; ++i) xml += "<n>";
  for (int i = 0; i < kDepth; ++i) xml += "<t/></n>";
  bench.files.Put(kOld, xml);
  bench.files.Put(kNew, xml);
  if (MergeXmlFiles(kOld, kNew, kOut, *bench.dom, bench.log)) {
    EXPECT_EQ(OneLine(bench.files.Bytes(kOut)), xml);
  } else {
    EXPECT_TRUE(bench.log.lines.back().starts_with(L"Failed to load old XML file"));
  }
}

TEST_F(MergeXmlFilesTest, KeepsTheNewDocumentsProlog) {
  bench.files.Put(
      kNew, "<?xml version=\"1.0\" encoding=\"utf-8\"?><!--c--><?p i?><r><a>n</a></r><!--e-->");
  EXPECT_TRUE(MergeXmlFiles(kOld, kNew, kOut, *bench.dom, bench.log));
  EXPECT_EQ(OneLine(bench.files.Bytes(kOut)),
            "<?xml version=\"1.0\" encoding=\"utf-8\"?><!--c--><?p i?><r><a>old</a></r><!--e-->");
}

}  // namespace
}  // namespace carrovan
