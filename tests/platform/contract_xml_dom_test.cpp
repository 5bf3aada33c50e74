#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/xml_dom.h"
#include "tests/support/memory_files.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kPath[] = L"C:\\d\\a.xml";

// Line breaks are where the DOMs differ when they save.
std::string OneLine(std::string xml) {
  std::erase_if(xml, [](char c) { return c == '\r' || c == '\n'; });
  return xml;
}

std::string Utf16(const std::string& utf8, bool bigEndian) {
  std::string bytes = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
  for (const char16_t unit : ToUtf16(FromUtf8(utf8))) {
    const char low = static_cast<char>(unit & 0xFF);
    const char high = static_cast<char>(unit >> 8);
    bytes += bigEndian ? std::string{high, low} : std::string{low, high};
  }
  return bytes;
}

class XmlDomContract : public testing::Test {
 protected:
  XmlDomContract() { files.PutFolder(L"C:\\d"); }

  std::unique_ptr<XmlDocument> Load(const std::string& bytes) {
    files.Put(kPath, bytes);
    std::unique_ptr<XmlDocument> document = session->NewDocument();
    if (!document->Load(kPath)) return nullptr;
    return document;
  }

  std::string Saved(XmlDocument& document) {
    EXPECT_TRUE(document.Save(L"C:\\d\\saved.xml"));
    return OneLine(files.Bytes(L"C:\\d\\saved.xml"));
  }

  // What a document comes back as when it is loaded and saved; "refused" when it does not load.
  std::string RoundTrip(const std::string& bytes) {
    const std::unique_ptr<XmlDocument> document = Load(bytes);
    return document == nullptr ? "refused" : Saved(*document);
  }

  MemoryFiles files;
  std::unique_ptr<XmlDom> dom = OpenXmlDom(files);
  std::unique_ptr<XmlSession> session = dom->Begin();
};

TEST_F(XmlDomContract, Starts) { EXPECT_TRUE(session->Started()); }

TEST_F(XmlDomContract, HasNoRootBeforeLoadingOrAfterAFailure) {
  const std::unique_ptr<XmlDocument> document = session->NewDocument();
  EXPECT_FALSE(document->Root());
  files.Put(kPath, "<r>");
  EXPECT_FALSE(document->Load(kPath));
  EXPECT_FALSE(document->Root());
}

TEST_F(XmlDomContract, KeepsPrologCommentsInstructionsAndCdata) {
  const std::string xml =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?><!--a--><?p q r?><r><!--b--><?s t?>"
      "<![CDATA[<x>]]>text<e k=\"v\"/></r><!--z-->";
  EXPECT_EQ(RoundTrip(xml), xml);
}

TEST_F(XmlDomContract, DropsTextOfNothingButWhiteSpace) {
  EXPECT_EQ(RoundTrip("<r>\n  <a> \t</a>\r\n <b>x</b> </r>\n"), "<r><a/><b>x</b></r>");
  EXPECT_EQ(RoundTrip("<r> <!--c--> <?p i?> <![CDATA[ ]]> </r>"),
            "<r><!--c--><?p i?><![CDATA[ ]]></r>");
}

TEST_F(XmlDomContract, KeepsWhiteSpaceAroundOtherText) {
  EXPECT_EQ(RoundTrip("<r>  x  </r>"), "<r>  x  </r>");
  EXPECT_EQ(RoundTrip("<r>a &lt; b</r>"), "<r>a &lt; b</r>");
}

TEST_F(XmlDomContract, KeepsWhiteSpaceWhereItIsPreserved) {
  const std::string xml =
      "<r xml:space=\"preserve\"> <a/> <b xml:space=\"default\"> <c/> </b><d> </d></r>";
  EXPECT_EQ(RoundTrip(xml),
            "<r xml:space=\"preserve\"> <a/> <b xml:space=\"default\"><c/></b><d> </d></r>");
}

TEST_F(XmlDomContract, TakesBlanksBesideAReferenceForPartOfTheText) {
  EXPECT_EQ(RoundTrip("<r><a> &amp;</a><b>&lt; </b><c> &#32;\t</c><d> &#x41; </d></r>"),
            "<r><a> &amp;</a><b>&lt; </b><c/><d> A </d></r>");
}

TEST_F(XmlDomContract, ReadsEveryLineEndAsOne) {
  for (const std::string end : {"\n", "\r\n", "\r"}) {
    const auto document = Load("<r>" + end + "<ID>7" + end + "</ID>" + end + " x" + end + end +
                               "<!--" + end + "--></r>" + end);
    ASSERT_NE(document, nullptr);
    const XmlNode id = document->Root().FirstChild();
    EXPECT_EQ(id.Name(), "ID");
    EXPECT_EQ(id.Text(), L"7\n");
    EXPECT_EQ(id.NextSibling().Text(), L"\n x\n\n");
    EXPECT_EQ(id.NextSibling().NextSibling().Text(), L"\n");
  }
}

TEST_F(XmlDomContract, KeepsACarriageReturnThatIsAReference) {
  const auto document = Load("<r k='&#13;'>a&#13;</r>");
  ASSERT_NE(document, nullptr);
  const auto again = Load(Saved(*document));
  ASSERT_NE(again, nullptr);
  EXPECT_EQ(again->Root().Text(), L"a\r");
  EXPECT_EQ(again->Root().Attribute("k"), L"\r");
}

TEST_F(XmlDomContract, KeepsWhatTheDeclarationSaysOfOtherEntities) {
  for (const std::string xml : {"<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><r/>",
                                "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?><r/>",
                                "<?xml version=\"1.0\" standalone=\"yes\"?><r/>"}) {
    EXPECT_EQ(RoundTrip(xml), xml);
  }
}

TEST_F(XmlDomContract, RefusesWhatIsNotWellFormed) {
  for (const std::string xml : {"",
                                "   ",
                                "x",
                                "<r>",
                                "<r></s>",
                                "<r/><r/>",
                                "<r a='1' a='2'/>",
                                "<r>&nbsp;</r>",
                                "<r>&</r>",
                                "<r a=1/>",
                                "<1/>",
                                "<r><a></r></a>",
                                "<?xml version=\"1.0\"?>",
                                "<r/>x",
                                "<r><![CDATA[</r>",
                                "<r><!-- -- --></r>",
                                "\xEF\xBB\xBF",
                                "\xFF\xFE",
                                "<r>\xFF</r>",
                                "<r>\x01</r>",
                                "<?xml version=\"1.0\" encoding=\"unknown-1\"?><r/>"}) {
    EXPECT_EQ(RoundTrip(xml), "refused") << xml;
  }
}

TEST_F(XmlDomContract, RefusesADocumentTypeDefinition) {
  for (const std::string xml :
       {"<!DOCTYPE r><r/>", "<!DOCTYPE r SYSTEM \"C:\\d\\a.xml\"><r/>",
        "<!DOCTYPE r [<!ENTITY a \"x\">]><r>&a;</r>",
        "<!DOCTYPE r [<!ENTITY a \"1234567890\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">"
        "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;\">"
        "]><r>&d;</r>"}) {
    EXPECT_EQ(RoundTrip(xml), "refused") << xml;
  }
}

TEST_F(XmlDomContract, RefusesAMissingFile) {
  EXPECT_FALSE(session->NewDocument()->Load(L"C:\\d\\none.xml"));
}

TEST_F(XmlDomContract, LoadsUtf8AndUtf16WithAMark) {
  const std::string xml = "<r>\xE4\xB8\xAD\xF0\x9F\x98\x80</r>";
  for (const std::string& bytes :
       {xml, "\xEF\xBB\xBF" + xml, Utf16(xml, false), Utf16(xml, true)}) {
    const std::unique_ptr<XmlDocument> document = Load(bytes);
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(document->Root().Text(), FromUtf8("\xE4\xB8\xAD\xF0\x9F\x98\x80"));
  }
}

TEST_F(XmlDomContract, SavesInTheEncodingThatTheDeclarationNames) {
  const std::string latin = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r>\xE9</r>";
  EXPECT_EQ(RoundTrip(latin), latin);
  const std::string utf16 =
      Utf16("<?xml version=\"1.0\" encoding=\"UTF-16\"?><r>\xE4\xB8\xAD</r>", false);
  const std::unique_ptr<XmlDocument> document = Load(utf16);
  ASSERT_NE(document, nullptr);
  ASSERT_TRUE(document->Save(L"C:\\d\\saved.xml"));
  EXPECT_EQ(files.Bytes(L"C:\\d\\saved.xml").substr(0, 2), "\xFF\xFE");
  const std::unique_ptr<XmlDocument> again = session->NewDocument();
  ASSERT_TRUE(again->Load(L"C:\\d\\saved.xml"));
  EXPECT_EQ(again->Root().Text(), FromUtf8("\xE4\xB8\xAD"));
}

constexpr char kLatinDeclaration[] = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>";

TEST_F(XmlDomContract, SavesInUtf8WhatTheNamedEncodingCannotHold) {
  const std::string keys = "\xE5\xBF\xAB\xE6\x8D\xB7\xE9\x94\xAE";
  for (const std::string& content :
       {"<" + keys + "/>", "<a " + keys + "=\"1\"/>", "<![CDATA[" + keys + "]]>",
        "<!--" + keys + "-->", "<?p " + keys + "?>"}) {
    const auto source = Load("<s>" + content + "</s>");
    const auto target = session->NewDocument();
    files.Put(L"C:\\d\\target.xml", std::string(kLatinDeclaration) + "<r>\xE9</r>");
    ASSERT_TRUE(source != nullptr && target->Load(L"C:\\d\\target.xml"));
    ASSERT_TRUE(target->Root().AppendCopy(source->Root().FirstChild()));
    EXPECT_EQ(Saved(*target),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?><r>\xC3\xA9" + content + "</r>");
    EXPECT_NE(Load(files.Bytes(L"C:\\d\\saved.xml")), nullptr);
  }
}

TEST_F(XmlDomContract, RefersToCharactersThatTheNamedEncodingLacks) {
  const std::string xml =
      std::string(kLatinDeclaration) + "<r k=\"&#20013;\xE9\">&#20840;\xE9<!--\xE9--></r>";
  EXPECT_EQ(RoundTrip(xml), xml);
}

TEST_F(XmlDomContract, SavesChineseTextThatLooksLikeUtf8AsItWas) {
  for (const std::string text : {"\xC8\xAB\xCD\xBC", "\xC4\xAC"}) {
    const std::string xml = "<?xml version=\"1.0\" encoding=\"GBK\"?><r>" + text + "</r>";
    EXPECT_EQ(RoundTrip(xml), xml);
  }
  const std::string latin = "<?xml version=\"1.0\" encoding=\"windows-1252\"?><r>\xC2\xB0</r>";
  EXPECT_EQ(RoundTrip(latin), latin);
}

TEST_F(XmlDomContract, SavesInUtf8WhenNoEncodingIsNamed) {
  const std::string text = "\xC3\xA9\xE4\xB8\xAD";
  EXPECT_EQ(RoundTrip("<r>" + text + "</r>"), "<r>" + text + "</r>");
  EXPECT_EQ(RoundTrip("<?xml version=\"1.0\"?><r>" + text + "</r>"),
            "<?xml version=\"1.0\"?><r>" + text + "</r>");
  EXPECT_EQ(RoundTrip(Utf16("<r>" + text + "</r>", false)), "<r>" + text + "</r>");
}

TEST_F(XmlDomContract, ReportsASaveThatDidNotHappen) {
  const std::unique_ptr<XmlDocument> document = Load("<r/>");
  EXPECT_FALSE(document->Save(L"C:\\none\\saved.xml"));
}

TEST_F(XmlDomContract, WalksChildrenOfEveryKind) {
  const auto document = Load("<r>t<a/><!--c--><?p i?><![CDATA[d]]></r>");
  ASSERT_NE(document, nullptr);
  std::vector<std::string> names;
  std::vector<int> kinds;
  for (XmlNode node = document->Root().FirstChild(); node; node = node.NextSibling()) {
    names.emplace_back(node.Name());
    kinds.push_back(node.IsElement() ? 1 : node.IsText() ? 3 : 0);
  }
  EXPECT_EQ(names, (std::vector<std::string>{"#text", "a", "#comment", "p", "#cdata-section"}));
  EXPECT_EQ(kinds, (std::vector<int>{3, 1, 0, 0, 0}));
  EXPECT_FALSE(document->Root().NextSibling());
  EXPECT_FALSE(document->Root().FirstChild().FirstChild());
}

TEST_F(XmlDomContract, GivesNamesWithTheirPrefix) {
  const auto document = Load("<p:r xmlns:p=\"u\" xmlns=\"v\"><p:a/><b/><\xE4\xB8\xAD-1/></p:r>");
  ASSERT_NE(document, nullptr);
  const XmlNode root = document->Root();
  const XmlNode first = root.FirstChild();
  EXPECT_EQ(root.Name(), "p:r");
  EXPECT_EQ(first.Name(), "p:a");
  EXPECT_EQ(first.NextSibling().Name(), "b");
  EXPECT_EQ(first.NextSibling().NextSibling().Name(), "\xE4\xB8\xAD-1");
}

TEST_F(XmlDomContract, GivesTextAsStored) {
  const auto document = Load("<r>  a<x> b</x><!--c--><![CDATA[ <d> ]]><y><z>e\n</z></y></r>");
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->Root().Text(), L"  a b <d> e\n");
  EXPECT_EQ(document->Root().FirstChild().Text(), L"  a");
  const auto empty = Load("<r/>");
  EXPECT_EQ(empty->Root().Text(), L"");
}

TEST_F(XmlDomContract, ListsAttributesWithoutDeclarationsOfNamespaces) {
  const auto document = Load("<a xmlns='u:d' xmlns:p='u:p' p:b='1' c='&lt;\xE4\xB8\xAD'>t</a>");
  ASSERT_TRUE(document);
  std::map<std::wstring, std::wstring> found;
  for (const XmlAttribute& attribute : document->Root().Attributes()) {
    found.emplace(attribute.name, attribute.value);
  }
  EXPECT_EQ(found, (std::map<std::wstring, std::wstring>{{L"p:b", L"1"}, {L"c", L"<\x4E2D"}}));
  EXPECT_TRUE(document->Root().FirstChild().Attributes().empty());
}

TEST_F(XmlDomContract, GivesAttributesByTheirName) {
  const auto document =
      Load("<r a='1' b='' value='&lt;&#x4E2D; x' p:value='2' xmlns:p='u'>t<e p:value='3'/></r>");
  ASSERT_NE(document, nullptr);
  const XmlNode root = document->Root();
  EXPECT_EQ(root.Attribute("a"), L"1");
  EXPECT_EQ(root.Attribute("b"), L"");
  EXPECT_EQ(root.Attribute("value"), L"<\x4E2D x");
  EXPECT_EQ(root.Attribute("A"), std::nullopt);
  EXPECT_EQ(root.Attribute("none"), std::nullopt);
  EXPECT_EQ(root.FirstChild().Attribute("a"), std::nullopt);
  EXPECT_EQ(root.FirstChild().NextSibling().Attribute("value"), std::nullopt);
}

TEST_F(XmlDomContract, SaysWhyADocumentDidNotLoad) {
  for (const char* xml : {"", "<r>", "<r>\n<a></b></r>", "<!DOCTYPE r><r/>", "<r/>x"}) {
    const auto document = session->NewDocument();
    files.Put(kPath, xml);
    EXPECT_FALSE(document->Load(kPath)) << xml;
    EXPECT_FALSE(document->LoadProblem().empty()) << xml;
    EXPECT_EQ(document->LoadProblem().find_first_of(L"\r\n"), std::wstring::npos) << xml;
  }
  const auto document = session->NewDocument();
  EXPECT_FALSE(document->Load(L"C:\\d\\none.xml"));
  EXPECT_EQ(document->LoadProblem(), DescribeSystemCode(kFileNotFound));
}

TEST_F(XmlDomContract, SetsAndCopiesText) {
  const auto document = Load("<r><a>x</a><b><c/>y</b></r>");
  const auto other = session->NewDocument();
  files.Put(L"C:\\d\\other.xml", "<s> z &amp;amp; </s>");
  ASSERT_TRUE(document != nullptr && other->Load(L"C:\\d\\other.xml"));
  const XmlNode a = document->Root().FirstChild();
  EXPECT_TRUE(a.FirstChild().CopyTextFrom(other->Root().FirstChild()));
  EXPECT_TRUE(a.NextSibling().SetText(L"<&\x4E2D"));
  EXPECT_EQ(Saved(*document), "<r><a> z &amp;amp; </a><b>&lt;&amp;\xE4\xB8\xAD</b></r>");
  EXPECT_TRUE(a.FirstChild().SetText(L"&lt;"));
  EXPECT_EQ(a.Text(), L"&lt;");
}

TEST_F(XmlDomContract, CreatesAppendsAndRemovesElements) {
  const auto document = Load("<r><a/></r>");
  ASSERT_NE(document, nullptr);
  const XmlNode root = document->Root();
  const XmlNode created = document->CreateElement("b-1");
  ASSERT_TRUE(created && created.IsElement());
  EXPECT_EQ(created.Name(), "b-1");
  EXPECT_TRUE(created.SetText(L"t"));
  EXPECT_EQ(Saved(*document), "<r><a/></r>");
  EXPECT_TRUE(root.AppendChild(created));
  EXPECT_TRUE(root.AppendChild(created));
  EXPECT_EQ(Saved(*document), "<r><a/><b-1>t</b-1></r>");
  const XmlNode a = root.FirstChild();
  EXPECT_TRUE(root.RemoveChild(a));
  EXPECT_FALSE(root.RemoveChild(a));
  EXPECT_EQ(a.Name(), "a");
  EXPECT_EQ(Saved(*document), "<r><b-1>t</b-1></r>");
  EXPECT_TRUE(root.AppendChild(a));
  EXPECT_EQ(Saved(*document), "<r><b-1>t</b-1><a/></r>");
}

TEST_F(XmlDomContract, KeepsEachElementNameOnce) {
  const std::string xml = "<a xmlns:p='u'><p:a/><a/><a/></a>";
  const auto first = Load(xml);
  const auto second = Load(xml);
  ASSERT_TRUE(first != nullptr && second != nullptr);
  const char* const name = first->Root().Name().data();
  const XmlNode prefixed = first->Root().FirstChild();
  EXPECT_EQ(prefixed.NextSibling().Name().data(), name);
  EXPECT_EQ(prefixed.NextSibling().NextSibling().Name().data(), name);
  EXPECT_EQ(second->Root().Name().data(), name);
  EXPECT_EQ(first->CreateElement("a").Name().data(), name);
  EXPECT_NE(prefixed.Name().data(), name);
  EXPECT_EQ(second->Root().FirstChild().Name().data(), prefixed.Name().data());
}

TEST_F(XmlDomContract, AppendsDeepCopiesAcrossDocuments) {
  const auto source =
      Load("<s><a k=\"v\" l=\"\"> t<b><c/></b><!--n--><?p i?><![CDATA[d]]></a><z/></s>");
  const auto target = session->NewDocument();
  files.Put(L"C:\\d\\target.xml", "<r>x</r>");
  ASSERT_TRUE(source != nullptr && target->Load(L"C:\\d\\target.xml"));
  const XmlNode a = source->Root().FirstChild();
  ASSERT_TRUE(target->Root().AppendCopy(a));
  EXPECT_EQ(target->Root().FirstChild().NextSibling().Name().data(), a.Name().data());
  EXPECT_TRUE(target->Root().AppendCopy(a.FirstChild()));
  EXPECT_EQ(Saved(*target),
            "<r>x<a k=\"v\" l=\"\"> t<b><c/></b><!--n--><?p i?><![CDATA[d]]></a> t</r>");
  EXPECT_EQ(Saved(*source),
            "<s><a k=\"v\" l=\"\"> t<b><c/></b><!--n--><?p i?><![CDATA[d]]></a><z/></s>");
}

TEST_F(XmlDomContract, CopiesKeepTheirNamespaces) {
  const auto source = Load("<s xmlns:p=\"u\" xmlns:q=\"w\"><p:a q:k=\"v\"><p:b/></p:a></s>");
  const auto target = session->NewDocument();
  files.Put(L"C:\\d\\target.xml", "<r xmlns:p=\"u\"/>");
  ASSERT_TRUE(source != nullptr && target->Load(L"C:\\d\\target.xml"));
  ASSERT_TRUE(target->Root().AppendCopy(source->Root().FirstChild()));
  const std::string saved = Saved(*target);
  const auto again = Load(saved);
  ASSERT_NE(again, nullptr) << saved;
  EXPECT_EQ(again->Root().FirstChild().Name(), "p:a");
  EXPECT_NE(saved.find("q:k=\"v\""), std::string::npos) << saved;
  EXPECT_NE(saved.find("\"w\""), std::string::npos) << saved;
}

}  // namespace
}  // namespace carrovan
