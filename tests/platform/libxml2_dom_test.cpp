#include <gtest/gtest.h>

#include "platform/posix/iconv_encoder.h"
#include "platform/xml_dom.h"
#include "tests/support/generated_xml.h"
#include "tests/support/memory_files.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kPath[] = L"C:\\d\\a.xml";
constexpr wchar_t kSaved[] = L"C:\\d\\saved.xml";

class LibXml2Dom : public testing::Test {
 protected:
  LibXml2Dom() { files_.PutFolder(L"C:\\d"); }

  std::unique_ptr<XmlDocument> Load(const std::string& bytes) {
    files_.Put(kPath, bytes);
    auto document = session_->NewDocument();
    return document->Load(kPath) ? std::move(document) : nullptr;
  }

  MemoryFiles files_;
  std::unique_ptr<XmlDom> dom_ = OpenXmlDom(files_);
  std::unique_ptr<XmlSession> session_ = dom_->Begin();
};

TEST_F(LibXml2Dom, RefusesPrefixesThatAreNotDeclared) {
  for (const char* xml : {"<p:r/>", "<r p:k='1'/>", "<r><a xmlns:p='u'/><p:b/></r>"}) {
    EXPECT_EQ(Load(xml), nullptr) << xml;
  }
  EXPECT_NE(Load("<r xmlns:p='u'><p:b p:k='1'/></r>"), nullptr);
}

TEST_F(LibXml2Dom, KeepsTheFormerFileWhenADocumentWouldNotLoadAgain) {
  const auto document = Load("<r/>");
  ASSERT_NE(document, nullptr);
  files_.Put(kSaved, "former");
  ASSERT_TRUE(document->Root().SetText(L"\x01"));
  EXPECT_FALSE(document->Save(kSaved));
  EXPECT_EQ(files_.Bytes(kSaved), "former");
}

// Some of them hold no markup, some lose characters on the way, some end in a state of their own.
TEST_F(LibXml2Dom, SavesNothingThatDoesNotComeBackWhateverTheEncoding) {
  const std::string body =
      "<R A=\"~\\ \xC3\xA5\xE4\xB8\xAD\">~\\^_`{|}#$@[] \xC2\xA5 \xE2\x80\xBE \xC3\xA9\xC3\x9F "
      "\xCE\xA9\xD0\x96 \xE3\x81\x82\xEF\xBD\xB1 \xE4\xB8\xAD\xE5\x85\xA8 \xED\x95\x9C"
      "\xEA\xB0\x81 \xE2\x82\xAC \xE2\x80\x93 \xEF\xBD\x9E \xEF\xBC\x8D \xF0\x9F\x98\x80"
      "<b>+x- ~{ x ~} </b><C/></R>";
  const auto original = Load(body);
  ASSERT_NE(original, nullptr);
  const std::string tree = DumpOf(original->Root());
  for (const std::string encoding :
       {"US-ASCII",    "ISO-8859-1",  "ISO-8859-15", "windows-1252", "KOI8-R",
        "IBM850",      "GB2312",      "GBK",         "GB18030",      "Big5",
        "Shift_JIS",   "x-sjis",      "CP932",       "IBM932",       "IBM943",
        "EUC-JP",      "EUC-KR",      "UHC",         "JOHAB",        "ks_c_5601-1987",
        "ISO-2022-JP", "ISO-2022-KR", "ISO-2022-CN", "HZ",           "HZ-GB-2312",
        "UTF-7",       "KOI-7",       "GREEK7",      "UTF-16",       "UTF-32",
        "UCS-4",       "UCS-2",       "IBM037",      "EBCDIC-US",    "TSCII",
        "VISCII",      "ARMSCII-8",   "no-such"}) {
    XmlDeclaration declaration;
    declaration.encoding = encoding;
    const std::unique_ptr<DocumentEncoder> encoder = OpenIconvEncoder(encoding);
    // A document to be saved under that name: one of few characters, encoded as far as they go.
    std::string bytes;
    const std::string start = DeclarationText(declaration) + "<R/>";
    if (encoder != nullptr) {
      encoder->Append(start, bytes);
      encoder->Finish(bytes);
    }
    std::unique_ptr<XmlDocument> document = Load(bytes);
    if (document == nullptr) document = Load(start);
    if (document == nullptr) continue;
    ASSERT_TRUE(document->Root().AppendCopy(original->Root()));
    ASSERT_TRUE(document->Save(kSaved)) << encoding;
    const auto again = session_->NewDocument();
    ASSERT_TRUE(again->Load(kSaved)) << encoding << "\n" << files_.Bytes(kSaved);
    const std::string root(document->Root().Name());
    EXPECT_EQ(DumpOf(again->Root()), "<" + root + " " + tree + ">") << encoding;
  }
}

TEST_F(LibXml2Dom, RefersToCharactersOfAttributesWhenNoEncodingIsNamed) {
  const auto document = Load("<r k='\xC3\xA9&lt;\xF0\x9F\x98\x80&#10;'>\xC3\xA9</r>");
  ASSERT_NE(document, nullptr);
  ASSERT_TRUE(document->Save(kSaved));
  EXPECT_EQ(files_.Bytes(kSaved), "<r k=\"&#xE9;&lt;&#x1F600;&#10;\">\xC3\xA9</r>\n");
}

// What is looked for below an element that was put into the tree is found around it.
TEST_F(LibXml2Dom, DeclaresNoNamespaceThatIsKnownAroundAnAppendedElement) {
  const auto source = Load("<s xmlns:p='u' xmlns:q='w'><p:a/><q:b/><x/></s>");
  files_.Put(kPath, "<r xmlns:p='u'/>");
  const auto target = session_->NewDocument();
  ASSERT_TRUE(source != nullptr && target->Load(kPath));
  const XmlNode known = source->Root().FirstChild();
  const XmlNode unknown = known.NextSibling();
  const XmlNode created = target->CreateElement("c");
  ASSERT_TRUE(created.AppendCopy(known));
  ASSERT_TRUE(created.AppendCopy(unknown.NextSibling()));
  ASSERT_TRUE(target->Root().AppendChild(created));
  const XmlNode inner = created.FirstChild().NextSibling();
  ASSERT_TRUE(inner.AppendCopy(known));
  ASSERT_TRUE(inner.AppendCopy(unknown));
  ASSERT_TRUE(target->Save(kSaved));
  EXPECT_EQ(files_.Bytes(kSaved),
            "<r xmlns:p=\"u\"><c><p:a xmlns:p=\"u\"/><x><p:a/><q:b xmlns:q=\"w\"/></x></c></r>\n");
}

}  // namespace
}  // namespace carrovan
