#include <gtest/gtest.h>

#include "platform/xml_dom.h"
#include "tests/support/generated_xml.h"
#include "tests/support/memory_files.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kPath[] = L"C:\\d\\a.xml";
constexpr wchar_t kSaved[] = L"C:\\d\\saved.xml";

// The generator knows the tree, so that every DOM is held to the same one.
class GeneratedDocuments : public testing::Test {
 protected:
  GeneratedDocuments() { files_.PutFolder(L"C:\\d"); }

  std::string Loaded(XmlDocument& document, const wchar_t* path) {
    if (!document.Load(path)) return "not loaded: " + ToUtf8(document.LoadProblem());
    return DumpOf(document.Root());
  }

  MemoryFiles files_;
  std::unique_ptr<XmlDom> dom_ = OpenXmlDom(files_);
};

TEST_F(GeneratedDocuments, AreReadAsTheirTreeAndSavedAsTheSame) {
  const std::unique_ptr<XmlSession> session = dom_->Begin();
  for (unsigned seed = 0; seed < CARROVAN_GENERATED_DOCUMENTS; ++seed) {
    const GeneratedXml xml = GenerateXml(seed);
    files_.Put(kPath, xml.bytes);
    const auto document = session->NewDocument();
    ASSERT_EQ(Loaded(*document, kPath), xml.tree) << "seed " << seed << "\n" << xml.bytes;
    ASSERT_TRUE(document->Save(kSaved)) << "seed " << seed << "\n" << xml.bytes;
    const std::string saved = InUtf8(files_.Bytes(kSaved));
    const std::string declaration = saved.substr(0, saved.find('>'));
    EXPECT_EQ(declaration.find("encoding=\"" + xml.encoding + "\"") != saved.npos,
              !xml.encoding.empty())
        << "seed " << seed << "\n"
        << saved;
    EXPECT_EQ(saved.find("&#2"), saved.npos) << "seed " << seed << "\n" << saved;
    ASSERT_EQ(Loaded(*session->NewDocument(), kSaved), xml.tree) << "seed " << seed << "\n"
                                                                 << saved;
  }
}

}  // namespace
}  // namespace carrovan
