#include <gtest/gtest.h>

#include <functional>

#include "platform/posix/libxml2_reading.h"
#include "platform/posix/xml_tree.h"

namespace carrovan {
namespace {

constexpr int kMany = 3 * static_cast<int>(ShortDictionary::kMostNames);

// What the parser's dictionary holds in the end, and the document as it is written.
struct Outcome {
  bool accepted = false;
  std::size_t names = 0;
  std::string written;
};

Outcome Read(const std::string& xml) {
  XmlNames names;
  XmlTree tree(names);
  TreeBuilder builder(tree);
  const ParserOwner parser(xmlNewParserCtxt());
  EXPECT_TRUE(parser != nullptr && builder.AttachTo(*parser));
  const std::unique_ptr<xmlDoc, Freer<xmlFreeDoc>> document(ReadDocument(*parser, xml));
  Outcome outcome;
  outcome.accepted = parser->wellFormed != 0 && parser->nsWellFormed != 0;
  outcome.names = static_cast<std::size_t>(xmlDictSize(parser->dict));
  AppendXml(tree, true, outcome.written);
  return outcome;
}

std::string ManyOf(const std::function<std::string(const std::string& number)>& part) {
  std::string xml;
  for (int i = 0; i < kMany; ++i) xml += part(std::to_string(i));
  return xml;
}

std::string Elements(const std::string& number) { return "<e" + number + "/>"; }

void ExpectReadWithAShortDictionary(const std::string& xml) {
  const Outcome outcome = Read(xml);
  const std::string shown = xml.substr(0, 100);
  EXPECT_TRUE(outcome.accepted) << shown;
  EXPECT_LT(outcome.names, 2 * ShortDictionary::kMostNames) << shown;
  EXPECT_TRUE(outcome.written == xml + "\n") << shown;
  EXPECT_TRUE(DocumentLoads(xml)) << shown;
  EXPECT_TRUE(DocumentFingerprint(xml)) << shown;
}

TEST(ParserNames, TakeAShortDictionaryHoweverManyThereAre) {
  ExpectReadWithAShortDictionary("<r>" + ManyOf(Elements) + "</r>");
  ExpectReadWithAShortDictionary(
      "<r>" + ManyOf([](const std::string& n) { return "<e k" + n + "=\"v\"/>"; }) + "</r>");
  ExpectReadWithAShortDictionary(
      "<r>" + ManyOf([](const std::string& n) { return "<?p" + n + "?>"; }) + "</r>");
  ExpectReadWithAShortDictionary(ManyOf([](const std::string& n) { return "<e" + n + ">"; }) + "t" +
                                 [] {
                                   std::string ends;
                                   for (int i = kMany - 1; i >= 0; --i)
                                     ends += "</e" + std::to_string(i) + ">";
                                   return ends;
                                 }());
}

TEST(ParserNames, AreKnownBehindANewDictionary) {
  ExpectReadWithAShortDictionary("<p:r xmlns:p=\"u\" xmlns=\"d\" p:k=\"v\" xml:lang=\"en\">" +
                                 ManyOf(Elements) +
                                 "<p:a xmlns:q=\"w\" p:k=\"v\" q:k=\"v\" xml:lang=\"en\"><q:b/>" +
                                 ManyOf(Elements) + "<q:b/></p:a></p:r>");
}

TEST(ParserNames, AreComparedBehindANewDictionary) {
  const std::string many = ManyOf(Elements);
  for (const std::string& xml :
       {"<r>" + many + "</s>", "<r>" + many + "<a k='1' k='2'/></r>",
        "<r xmlns:p='u'>" + many + "<a xmlns:q='u' p:k='1' q:k='2'/></r>",
        "<r>" + many + "<p:a/></r>", "<r>" + many + "<a xmlns:xmlns='u'/></r>"}) {
    EXPECT_FALSE(Read(xml).accepted);
    EXPECT_FALSE(DocumentLoads(xml));
  }
}

// The end tag of a long name may lie across the end of the parser's buffer, wherever that is.
TEST(ParserNames, MayBeLongerThanTheParserReadsAtOnce) {
  for (const std::size_t size : {199, 200, 5000}) {
    const std::string name(size, 'n');
    for (const std::string& tag : {name, "p:" + name}) {
      const std::string xml = "<" + tag + " xmlns:p=\"u\">" + ManyOf(Elements) + "</" + tag + ">";
      const Outcome outcome = Read("<r>" + xml + ManyOf(Elements) + "</r>");
      EXPECT_TRUE(outcome.accepted) << size;
      EXPECT_LT(outcome.names, 2 * ShortDictionary::kMostNames + kMany) << size;
      for (int shift = 0; shift < 4000; shift += 1000) {
        const std::string shifted = "<r>" + std::string(static_cast<std::size_t>(shift), 't');
        EXPECT_TRUE(DocumentLoads(shifted + xml + "</r>")) << size << " " << shift;
      }
    }
  }
}

TEST(XmlNames, AreKeptOnceEach) {
  XmlNames names;
  std::vector<std::string_view> kept;
  for (int i = 0; i < kMany; ++i) kept.push_back(names.Keep("n" + std::to_string(i)));
  for (int i = 0; i < kMany; ++i) {
    const std::string_view again = names.Keep("n" + std::to_string(i));
    ASSERT_EQ(again, "n" + std::to_string(i));
    ASSERT_EQ(again.data(), kept[static_cast<std::size_t>(i)].data());
  }
  EXPECT_TRUE(names.Keep("").empty());
}

}  // namespace
}  // namespace carrovan
