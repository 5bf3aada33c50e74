#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "bench/merge/merge_documents.h"
#include "merge/container.h"
#include "merge/xml_merge.h"
#include "tests/merge/counting_dom.h"
#include "tests/merge/merge_support.h"
#include "text/scattered_hash.h"

namespace carrovan {
namespace {

// What a merge asks of its documents may grow with them, and not faster. Counted, because a time
// says something else on every machine.

std::size_t StepsOf(const DocumentPair& pair) {
  DomBench bench;
  CountingDom dom(*bench.dom);
  bench.files.Put(L"C:\\d\\o.xml", pair.oldXml);
  bench.files.Put(L"C:\\d\\n.xml", pair.newXml);
  EXPECT_TRUE(MergeXmlFiles(L"C:\\d\\o.xml", L"C:\\d\\n.xml", L"C:\\d\\m.xml", dom, bench.log));
  return dom.Steps();
}

using MakeOfSize = std::function<DocumentPair(int size)>;

void ExpectLinear(const char* what, const MakeOfSize& make, int size) {
  const std::size_t once = StepsOf(make(size));
  const std::size_t twice = StepsOf(make(2 * size));
  EXPECT_GT(once, static_cast<std::size_t>(size)) << what;
  EXPECT_LT(twice * 10, once * 23) << what << ": " << once << " steps, then " << twice;
}

std::string Repeated(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

std::string Numbered(const std::string& name, int count) {
  std::string xml;
  for (int i = 0; i < count; ++i) xml += "<" + name + std::to_string(i) + "/>";
  return xml;
}

std::string State(const std::string& content) {
  return "<EyeRibbonState-1>" + content + "</EyeRibbonState-1>";
}

std::string Panel(int id) {
  return "<EyeCustomRibbonPanel-1><ID>" + std::to_string(id) + "</ID></EyeCustomRibbonPanel-1>";
}

// Many old elements that match one new element.
DocumentPair ManyInto(const std::string& oldElement, int times, const std::string& newElement) {
  return {"<r>" + Repeated(oldElement, times) + "<z/></r>", "<r>" + newElement + "<y/></r>"};
}

TEST(MergeSteps, GrowWithTheDocumentsOfEveryMeasuredShape) {
  for (const std::string shape :
       {"wide", "numbered", "names", "panels", "ribbon", "tree", "tree-swapped", "states"}) {
    ExpectLinear(
        shape.c_str(), [&](int size) { return MakePair(shape, size); }, 512);
  }
  // One of the DOMs takes no more than 256 levels.
  ExpectLinear(
      "deep", [](int size) { return MakePair("deep", size); }, 120);
}

TEST(MergeSteps, GrowWithTheDocumentsWhereOneElementIsMetAgainAndAgain) {
  struct Row {
    const char* what;
    MakeOfSize make;
  };
  const Row rows[] = {
      {"many children",
       [](int size) {
         return ManyInto("<a><x/></a>", size, "<a>" + Numbered("c", size) + "</a>");
       }},
      {"many children of its child",
       [](int size) {
         return ManyInto("<a><b><x/></b></a>", size, "<a><b>" + Numbered("c", size) + "</b></a>");
       }},
      {"many comments in front",
       [](int size) {
         return ManyInto("<a><x/></a>", size, "<a>" + Repeated("<!--c-->", size) + "<x/></a>");
       }},
      {"a child of a long name",
       [](int size) {
         const std::string name(static_cast<std::size_t>(size), 'c');
         return ManyInto("<a><x/></a>", size, "<a><" + name + "/></a>");
       }},
      {"a container with its ID behind many",
       [](int size) {
         return ManyInto("<a><x/></a>", size,
                         "<a>" + State(Numbered("c", size) + "<ID>7</ID>") + "</a>");
       }},
      {"a container without an ID",
       [](int size) {
         return ManyInto("<a><x/></a>", size, "<a>" + State(Numbered("c", size)) + "</a>");
       }},
      {"an ID that is no number",
       [](int size) {
         const std::string id = "<ID>x" + Repeated("<!--c-->", size) + "</ID>";
         return ManyInto(State("<x/>"), size, State(id));
       }},
      {"an ID that is gained and is no number",
       [](int size) {
         const std::string id = "<ID>x" + Repeated("<!--c-->", size) + "</ID>";
         return DocumentPair{"<r>" + State(id) + Repeated(State("<x/>"), size) + "<z/></r>",
                             "<r>" + State("") + "</r>"};
       }},
  };
  for (const Row& row : rows) ExpectLinear(row.what, row.make, 600);
}

TEST(MergeSteps, GrowWithTheDocumentsWhereASizeIsWrittenAgainAndAgain) {
  const auto numbering = [](int size, const std::string& content) {
    DocumentPair pair{"<r>", "<r>" + State(content + Panel(0)) + "</r>"};
    for (int id = 1; id <= size; ++id) pair.oldXml += State(Panel(id));
    pair.oldXml += "<z/></r>";
    return pair;
  };
  ExpectLinear(
      "comments behind the number",
      [&](int size) { return numbering(size, "<Size>1" + Repeated("<!--c-->", size) + "</Size>"); },
      600);
  ExpectLinear(
      "a long text behind the number",
      [&](int size) {
        const std::string text(static_cast<std::size_t>(size), '0');
        return numbering(size, "<Size>-<!--c-->" + text + "1</Size>");
      },
      600);
}

TEST(PositionTable, FindsInFewLooksWhateverTheNumbersHaveInCommon) {
  constexpr std::uint32_t kNumbers = 20'000;
  for (const std::uint64_t step :
       {std::uint64_t{1}, std::uint64_t{16}, std::uint64_t{1} << 16, std::uint64_t{1} << 32,
        std::uint64_t{62'233}, std::uint64_t{0xF1DE83E19937733D}}) {
    PositionTable table;
    std::size_t looks = 0;
    const auto is = [&](std::uint64_t number) {
      return [&looks, number](std::uint32_t other) {
        ++looks;
        return other == number;
      };
    };
    const auto hash = [&](std::uint32_t position) { return ScatteredNumber()(position * step); };
    for (std::uint32_t i = 0; i < kNumbers; ++i) table.Put(hash(i), i, is(i), hash);
    for (std::uint32_t i = 0; i < kNumbers; ++i) ASSERT_EQ(table.Find(hash(i), is(i)), i);
    EXPECT_LT(looks, 20 * kNumbers) << step;
  }
}

}  // namespace
}  // namespace carrovan
