#include "tests/merge/literal_merge.h"

#include <gtest/gtest.h>

#include <random>

#include "merge/shortcut_merge.h"
#include "merge/xml_merge.h"
#include "tests/merge/merge_support.h"

namespace carrovan {
namespace {

// Few names and few numbers, so that every kind of match, clash and spoiled number comes up often.
class RandomXml {
 public:
  explicit RandomXml(unsigned seed) : random_(seed) {}

  std::string Document() {
    std::string xml;
    AddElement(xml, Pick(kRoots), 0);
    return xml;
  }

 private:
  using Names = std::vector<std::string>;

  int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
  const std::string& Pick(const Names& names) {
    return names[static_cast<std::size_t>(Below(static_cast<int>(names.size())))];
  }

  std::string ElementName() {
    std::string name = Pick(kNames);
    if (name.starts_with("Eye") && Below(5) > 0) name += "-" + Pick(kSuffixes);
    return name;
  }

  void AddElement(std::string& xml, const std::string& name, int depth) {
    xml += "<" + name + (Below(8) == 0 ? " k='" + std::to_string(Below(9)) + "'>" : ">");
    if (name == "ID" || name == "Size") {
      xml += Pick(kNumbers);
    } else {
      AddContent(xml, depth);
    }
    xml += "</" + name + ">";
  }

  void AddContent(std::string& xml, int depth) {
    if (Below(3) == 0) xml += Pick(kTexts);
    if (depth > 2) return;
    if (Below(3) > 0) AddElement(xml, "Size", depth + 1);
    if (Below(40) == 0) AddFillers(xml);
    if (depth < 2 && Below(depth == 0 ? 5 : 30) == 0) AddRun(xml, depth + 1);
    const int many = Below(12) == 0 ? 40 : 6;
    for (int i = Below(depth == 0 ? many + 2 : many - depth); i > 0; --i) {
      if (Below(10) == 0) xml += Pick(kTexts);
      AddElement(xml, ElementName(), depth + 1);
    }
  }

  // More different children than a parent's are looked through one by one.
  void AddFillers(std::string& xml) {
    for (int i = Below(24); i >= 0; --i) xml += "<f" + std::to_string(i) + "/>";
  }

  // Elements that all match one, most often a state, whose ID may come late and differ.
  void AddRun(std::string& xml, int depth) {
    const std::string& name = Pick(kRunNames);
    for (int i = 4 + Below(5); i > 0; --i) {
      AddElement(xml, name, depth);
      if (Below(6) == 0) AddElement(xml, ElementName(), depth);
    }
  }

  const Names kRoots = {"r", "EyeRibbonState", "EyeCustomRibbonCategory-1",
                        "EyeCustomRibbonPanel-1"};
  const Names kNames = {"EyeRibbonState",
                        "EyeRibbonState",
                        "EyeCustomRibbonCategory",
                        "EyeCustomRibbonCategory",
                        "EyeCustomRibbonPanel",
                        "EyeCustomRibbonPanel",
                        "ID",
                        "ID",
                        "Size",
                        "Name",
                        "a",
                        "b",
                        "c",
                        "RibbonElement-1"};
  const Names kRunNames = {"EyeRibbonState-1", "EyeRibbonState-2", "EyeRibbonState", "a"};
  const Names kSuffixes = {"1", "2", "3", "4", "7", "x", "12", "1-2"};
  const Names kNumbers = {"1",
                          "2",
                          "3",
                          "4",
                          "5",
                          "6",
                          " 7",
                          "8 ",
                          "x",
                          "<!--c-->9",
                          "-1",
                          "+2",
                          "1<!--c-->2",
                          "<![CDATA[1]]>",
                          "",
                          "1<?p i?>",
                          "4<x>5</x>",
                          "1<![CDATA[2]]>",
                          "0<!--c-->000000005",
                          "-<?p i?>1"};
  const Names kTexts = {"t", "u v", "<!--c-->", "<?p i?>", "<![CDATA[d]]>", "&amp;"};
  std::mt19937 random_;
};

std::string MergedLiterally(DomBench& bench) {
  const auto session = bench.dom->Begin();
  const auto oldDocument = session->NewDocument();
  const auto newDocument = session->NewDocument();
  EXPECT_TRUE(oldDocument->Load(L"C:\\d\\old.xml"));
  EXPECT_TRUE(newDocument->Load(L"C:\\d\\new.xml"));
  LiterallyMergeXmlNodes(oldDocument->Root(), newDocument->Root(), *newDocument);
  EXPECT_TRUE(newDocument->Save(L"C:\\d\\literal.xml"));
  return OneLine(bench.files.Bytes(L"C:\\d\\literal.xml"));
}

TEST(LiteralMerge, AgreesWithTheXmlMergeOnRandomPairs) {
  for (unsigned pair = 0; pair < CARROVAN_RANDOM_PAIRS; ++pair) {
    RandomXml random(pair);
    const std::string oldXml = random.Document();
    const std::string newXml = random.Document();
    DomBench bench;
    const std::optional<std::string> merged = bench.MergeXml(oldXml, newXml);
    ASSERT_EQ(merged, MergedLiterally(bench)) << "old " << oldXml << "\nnew " << newXml;
  }
}

AcceleratorTable RandomTable(std::mt19937& random) {
  AcceleratorTable table;
  const auto commands = 1 + random() % 8;
  for (auto count = random() % 12; count > 0; --count) {
    const AcceleratorRecord record{static_cast<int>(1 + random() % commands),
                                   static_cast<int>(random() % 3), static_cast<int>(random() % 5)};
    table.emplace(record.command, record);
  }
  return table;
}

TEST(LiteralMerge, AgreesWithTheShortcutMergeOnRandomPairs) {
  for (unsigned pair = 0; pair < CARROVAN_RANDOM_PAIRS; ++pair) {
    std::mt19937 random(pair);
    const AcceleratorTable oldTable = RandomTable(random);
    const AcceleratorTable newTable = RandomTable(random);
    ASSERT_EQ(RecordsToAdd(oldTable, newTable), LiteralRecordsToAdd(oldTable, newTable))
        << "seed " << pair;
  }
}

}  // namespace
}  // namespace carrovan
