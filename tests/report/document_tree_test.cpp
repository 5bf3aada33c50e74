#include "report/document_tree.h"

#include <gtest/gtest.h>

#include "tests/support/memory_files.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kPath[] = L"C:\\d\\a.xml";

// One line for each node, with what marks it in front: "+" new, "-" removed, "*" changed, "~"
// touched, " " the same.
std::string Drawn(const DocumentNode& node, std::size_t depth = 0) {
  constexpr char kMarks[] = {' ', '~', '*', '+', '-'};
  std::string text(1, kMarks[static_cast<std::size_t>(node.mark)]);
  text += std::string(depth, '.') + ToUtf8(node.name);
  if (node.mark == NodeMark::kChanged) text += " " + ToUtf8(node.before) + " ->";
  if (!node.text.empty()) text += " " + ToUtf8(node.text);
  text += "\n";
  for (const DocumentNode& child : node.below) text += Drawn(child, depth + 1);
  if (node.hidden > 0) {
    text += " " + std::string(depth + 1, '.') + "(" + std::to_string(node.hidden) + " hidden, " +
            std::to_string(node.hiddenMarks) + " marked)\n";
  }
  return text;
}

class DocumentTreeTest : public testing::Test {
 protected:
  DocumentTree Compare(const std::string& before, const std::string& after,
                       const TreeLimits& limits = {}) {
    before_.PutFolder(L"C:\\d");
    after_.PutFolder(L"C:\\d");
    before_.Put(kPath, before);
    after_.Put(kPath, after);
    return CompareDocuments(kPath, before_, after_, limits);
  }

  MemoryFiles before_;
  MemoryFiles after_;
};

TEST_F(DocumentTreeTest, MarksWhatIsNewChangedAndRemoved) {
  const DocumentTree tree = Compare("<r><a>1</a><b><c>2</c></b><g>9</g></r>",
                                    "<r><a>1</a><b><c>3</c></b><d><e>4</e></d></r>");
  EXPECT_EQ(Drawn(tree.root),
            "~r\n"
            " .a 1\n"
            "~.b\n"
            "*..c 2 -> 3\n"
            "+.d\n"
            "+..e 4\n"
            "-.g 9\n");
  EXPECT_EQ(tree.added, 2u);
  EXPECT_EQ(tree.changed, 1u);
  EXPECT_EQ(tree.removed, 1u);
}

TEST_F(DocumentTreeTest, EqualElementWithAnotherNumberIsTheSame) {
  const DocumentTree tree =
      Compare("<r><a-0><x>1</x></a-0></r>", "<r><a-0><x>2</x></a-0><a-1><x>1</x></a-1></r>");
  EXPECT_EQ(Drawn(tree.root), "~r\n+.a-0\n+..x 2\n .a-1\n ..x 1\n");
}

TEST_F(DocumentTreeTest, ElementIsKnownByItsIdWhereverItStands) {
  const DocumentTree tree =
      Compare("<r><a-0><ID>7</ID><x>1</x></a-0><a-1><ID>8</ID><x>1</x></a-1></r>",
              "<r><a-0><ID>8</ID><x>2</x></a-0><a-1><ID>7</ID><x>1</x></a-1></r>");
  EXPECT_EQ(tree.added, 0u);
  EXPECT_EQ(tree.removed, 0u);
  EXPECT_EQ(tree.changed, 1u);
}

TEST_F(DocumentTreeTest, NameForPeopleStandsBesideAnElement) {
  const DocumentTree tree = Compare("<r/>", "<r><a><Name>Part</Name></a></r>");
  EXPECT_EQ(tree.root.below.at(0).text, L"Part");
}

TEST_F(DocumentTreeTest, UnchangedElementsAreCutAndChangesAreNot) {
  std::string many;
  for (int i = 0; i < 20; ++i) many += "<s>" + std::to_string(i) + "</s>";
  const DocumentTree tree =
      Compare("<r>" + many + "</r>", "<r>" + many + "<n>1</n></r>", {.unchanged = 2});
  EXPECT_EQ(Drawn(tree.root), "~r\n .s 0\n .s 1\n+.n 1\n .(18 hidden, 0 marked)\n");
}

TEST_F(DocumentTreeTest, TooManyChangesAreCutAndCounted) {
  std::string many;
  for (int i = 0; i < 20; ++i) many += "<s><t>" + std::to_string(i) + "</t></s>";
  const DocumentTree tree = Compare("<r/>", "<r>" + many + "</r>", {.nodes = 3});
  EXPECT_EQ(tree.added, 40u);
  EXPECT_EQ(tree.root.below.size(), 3u);
  EXPECT_EQ(tree.root.hidden, 34u);
  EXPECT_EQ(tree.root.hiddenMarks, 34u);
  EXPECT_EQ(tree.root.below[0].hiddenMarks, 1u);
}

TEST_F(DocumentTreeTest, DeepTreeIsCut) {
  std::string open;
  std::string close;
  for (int i = 0; i < 240; ++i) {
    open += "<a>";
    close += "</a>";
  }
  const DocumentTree tree = Compare("<r/>", "<r>" + open + close + "</r>", {.depth = 3});
  EXPECT_EQ(Drawn(tree.root), "~r\n+.a\n+..a\n+...a\n ....(197 hidden, 197 marked)\n");
}

TEST_F(DocumentTreeTest, LargeTextInADeepDocumentIsReadOnce) {
  std::string open;
  std::string close;
  for (int i = 0; i < 190; ++i) {
    open += "<a>";
    close += "</a>";
  }
  const std::string text(3 << 20, 'x');
  const std::string document = "<r>" + open + text + close + "</r>";
  EXPECT_EQ(Compare(document, document).root.mark, NodeMark::kSame);
}

TEST_F(DocumentTreeTest, ReasonStandsForATreeThatCannotBe) {
  EXPECT_TRUE(Compare("<r>", "<r/>").failure.starts_with(L"The document cannot be read"));
  EXPECT_TRUE(Compare("<r/>", "<r>").failure.starts_with(L"The document cannot be read"));
  EXPECT_TRUE(Compare("<r/>", "<r/>", {.bytes = 3}).failure.starts_with(L"The document is too"));
}

}  // namespace
}  // namespace carrovan
