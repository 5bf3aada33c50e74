#include "text/xml_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <vector>

#include "text/text.h"

namespace carrovan {
namespace {

// Chinese characters whose bytes in the simplified Chinese code page are UTF-8 of something else.
struct ChineseCharacter {
  std::string_view utf8;
  std::string_view bytes;
};
constexpr ChineseCharacter kCharacters[] = {{"\xE5\x85\xA8", "\xC8\xAB"},   // 全
                                            {"\xE5\x9B\xBE", "\xCD\xBC"},   // 图
                                            {"\xE9\xBB\x98", "\xC4\xAC"}};  // 默
constexpr char kFullPicture[] = "\xE5\x85\xA8\xE5\x9B\xBE";
constexpr char kEAcute[] = "\xC3\xA9";

// ASCII, the three characters, and nothing else.
class ChineseEncoder : public DocumentEncoder {
 public:
  std::size_t Append(std::string_view utf8, std::string& bytes) override {
    std::size_t taken = 0;
    while (taken < utf8.size()) {
      const std::size_t length = Utf8LengthOf(utf8[taken]);
      const std::string_view character = utf8.substr(taken, length);
      const auto* const known = std::ranges::find(kCharacters, character, &ChineseCharacter::utf8);
      if (length > 1 && known == std::end(kCharacters)) break;
      bytes += length == 1 ? character : known->bytes;
      taken += length;
    }
    return taken;
  }
  void Finish(std::string& bytes) override { bytes += end; }

  std::string end;
};

// A tree of which a DOM makes bytes. It holds a root with text.
class StandInTree : public WritableTree {
 public:
  std::string encoding = "GBK";
  std::string rootText = kFullPicture;
  bool declares = true;

  bool Declare(std::string_view text) override {
    encoding = ReadXmlDeclaration(text).encoding;
    return declares;
  }

 protected:
  std::string Declaration() const {
    return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>";
  }
};

// Encodes as the declaration says and ends lines as the system does.
class SelfEncodingTree : public StandInTree {
 public:
  std::optional<std::string> Write() override {
    std::string text;
    if (encoding == "UTF-8") {
      text = rootText;
    } else {
      ChineseEncoder().Append(rootText, text);
    }
    return Declaration() + "\r\n<r>" + text + "</r>\r\n";
  }
};

// Writes UTF-8, whatever the declaration says.
class Utf8WritingTree : public StandInTree {
 public:
  std::optional<std::string> Write() override {
    return Declaration() + "\n<r>" + rootText + "</r>\n";
  }
};

TEST(BodyOf, IsTheSameWhetherTheDomEncodesItselfOrNot) {
  for (const ChineseCharacter& character : kCharacters) {
    SelfEncodingTree encoding;
    Utf8WritingTree notEncoding;
    for (StandInTree* tree : std::vector<StandInTree*>{&encoding, &notEncoding}) {
      tree->rootText = std::string(character.utf8) + "x";
      const std::optional<std::string> body = BodyOf(*tree);
      ASSERT_TRUE(body.has_value());
      EXPECT_EQ(body->substr(0, body->find_first_of("\r\n")), "<r>" + tree->rootText + "</r>");
    }
  }
}

class FixedTree : public WritableTree {
 public:
  explicit FixedTree(std::optional<std::string> bytes) : bytes_(std::move(bytes)) {}
  bool Declare(std::string_view) override { return true; }
  std::optional<std::string> Write() override { return bytes_; }

 private:
  std::optional<std::string> bytes_;
};

TEST(BodyOf, LeavesTheDeclarationAndTheMarkAway) {
  for (const char* bytes : {"<r/>", "\xEF\xBB\xBF<r/>", "<?xml version=\"1.0\"?><r/>",
                            "<?xml version=\"1.0\"?>\r\n<r/>",
                            "\xEF\xBB\xBF<?xml version=\"1.0\" encoding='utf-8'?>\n<r/>"}) {
    FixedTree tree{std::string(bytes)};
    EXPECT_EQ(BodyOf(tree), "<r/>") << bytes;
  }
  FixedTree instruction{"<?xml-stylesheet href=\"a\"?><r/>"};
  EXPECT_EQ(BodyOf(instruction), "<?xml-stylesheet href=\"a\"?><r/>");
}

TEST(BodyOf, IsNothingWhenTheDomDidNotDoAsTold) {
  FixedTree none{std::nullopt};
  EXPECT_EQ(BodyOf(none), std::nullopt);
  FixedTree other{"<?xml version=\"1.0\" encoding=\"GBK\"?><r>\xC8\xAB</r>"};
  EXPECT_EQ(BodyOf(other), std::nullopt);
  FixedTree bytes{"<?xml version=\"1.0\" encoding=\"UTF-8\"?><r>\xE9</r>"};
  EXPECT_EQ(BodyOf(bytes), std::nullopt);
  Utf8WritingTree refusing;
  refusing.declares = false;
  EXPECT_EQ(BodyOf(refusing), std::nullopt);
}

TEST(XmlDeclaration, IsReadFromItsText) {
  struct Row {
    const char* text;
    const char* version;
    const char* encoding;
    std::optional<bool> standalone;
  };
  const Row rows[] = {
      {"version=\"1.0\"", "1.0", "", std::nullopt},
      {"version = '1.1' encoding\n=\t'GBK'", "1.1", "GBK", std::nullopt},
      {"version=\"1.0\" encoding=\"UTF-16\" standalone=\"yes\"", "1.0", "UTF-16", true},
      {"version=\"1.0\" standalone='no' ", "1.0", "", false},
      {"", "1.0", "", std::nullopt},
  };
  for (const Row& row : rows) {
    const XmlDeclaration declaration = ReadXmlDeclaration(row.text);
    EXPECT_EQ(declaration.version, row.version) << row.text;
    EXPECT_EQ(declaration.encoding, row.encoding) << row.text;
    EXPECT_EQ(declaration.standalone, row.standalone) << row.text;
  }
}

TEST(XmlDeclaration, IsWrittenWithWhatItSays) {
  EXPECT_EQ(DeclarationText({true, "1.0", "", std::nullopt}), "<?xml version=\"1.0\"?>\n");
  EXPECT_EQ(DeclarationText({true, "1.0", "GBK", false}),
            "<?xml version=\"1.0\" encoding=\"GBK\" standalone=\"no\"?>\n");
  EXPECT_EQ(DeclarationText({true, "1.0", "", true}),
            "<?xml version=\"1.0\" standalone=\"yes\"?>\n");
  EXPECT_EQ(DeclarationText({false, "1.0", "", std::nullopt}), "");
}

class StandInSystem : public SavingSystem {
 public:
  bool knowsTheEncoding = true;
  bool encodedLoadsAlike = true;
  bool utf8Loads = true;
  std::string end;
  std::vector<std::string> compared;

  std::unique_ptr<DocumentEncoder> NewEncoder(const std::string&) override {
    if (!knowsTheEncoding) return nullptr;
    auto encoder = std::make_unique<ChineseEncoder>();
    encoder->end = end;
    return encoder;
  }
  bool Loads(std::string_view) override { return utf8Loads; }
  bool LoadAlike(std::string_view document, std::string_view other) override {
    compared = {std::string(document), std::string(other)};
    return encodedLoadsAlike;
  }
};

constexpr char kInGbk[] = "<?xml version=\"1.0\" encoding=\"GBK\"?>\n";
constexpr char kInUtf8[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

std::optional<std::string> SavedAs(const char* encoding, const std::string& body,
                                   StandInSystem& system) {
  XmlDeclaration declaration;
  declaration.encoding = encoding;
  return BytesToSave(declaration, body, system);
}

TEST(BytesToSave, AreInTheDeclaredEncoding) {
  StandInSystem system;
  EXPECT_EQ(SavedAs("GBK", std::string("<r>") + kFullPicture + "</r>", system),
            std::string(kInGbk) + "<r>\xC8\xAB\xCD\xBC</r>");
  EXPECT_EQ(system.compared[0], std::string(kInUtf8) + "<r>" + kFullPicture + "</r>");
  EXPECT_EQ(system.compared[1], std::string(kInGbk) + "<r>\xC8\xAB\xCD\xBC</r>");
}

TEST(BytesToSave, KeepTheSpellingOfUtf8AndNeedNoEncoder) {
  StandInSystem system;
  system.knowsTheEncoding = false;
  system.encodedLoadsAlike = false;
  for (const std::string name : {"UTF-8", "utf-8", "utf8", "Utf8"}) {
    EXPECT_EQ(SavedAs(name.c_str(), "<r>\xC3\xA9</r>", system),
              "<?xml version=\"1.0\" encoding=\"" + name + "\"?>\n<r>\xC3\xA9</r>");
  }
  EXPECT_EQ(SavedAs("", "<r>\xC3\xA9</r>", system), "<?xml version=\"1.0\"?>\n<r>\xC3\xA9</r>");
}

TEST(BytesToSave, HaveAMarkInSixteenBits) {
  StandInSystem system;
  const std::string little = SavedAs("UTF-16", "<\xF0\x9F\x98\x80/>", system).value_or("");
  EXPECT_EQ(little.substr(0, 4), std::string("\xFF\xFE<\0", 4));
  EXPECT_EQ(little.substr(little.size() - 10), std::string("<\0=\xD8\0\xDE/\0>\0", 10));
  EXPECT_EQ(SavedAs("utf-16le", "<r/>", system).value_or("").substr(0, 4),
            std::string("\xFF\xFE<\0", 4));
  EXPECT_EQ(SavedAs("UTF-16BE", "<r/>", system).value_or("").substr(0, 4),
            std::string("\xFE\xFF\0<", 4));
}

TEST(BytesToSave, HoldReferencesInTextsAndValuesOnly) {
  StandInSystem system;
  const std::string body = std::string("<r k=\"") + kEAcute + "'>\" l='\"" + kEAcute + "'>" +
                           kEAcute + "\xF0\x9F\x98\x80 > <a/>" + kFullPicture + "</r>";
  EXPECT_EQ(SavedAs("GBK", body, system),
            std::string(kInGbk) +
                "<r k=\"&#233;'>\" l='\"&#233;'>&#233;&#128512; > <a/>\xC8\xAB\xCD\xBC</r>");
}

TEST(BytesToSave, AreUtf8WhenTheEncodingCannotHoldTheMarkup) {
  const std::string e = kEAcute;
  for (const std::string& body :
       {"<" + e + "/>", "<r " + e + "=\"1\"/>", "<r><" + e + ">x</" + e + "></r>",
        "<r><!--'" + e + "--></r>", "<r><![CDATA[<a>" + e + "]]></r>", "<r><?p " + e + "?></r>",
        "<r k=\"'\"><!-- \" " + e + "--></r>", "<!--" + e + "--><r/>"}) {
    StandInSystem system;
    EXPECT_EQ(SavedAs("GBK", body, system), kInUtf8 + body);
  }
}

TEST(BytesToSave, AreUtf8WhenTheEncodedDocumentDoesNotLoadAlike) {
  StandInSystem system;
  system.encodedLoadsAlike = false;
  EXPECT_EQ(SavedAs("GBK", "<r/>", system), std::string(kInUtf8) + "<r/>");
  system.encodedLoadsAlike = true;
  system.knowsTheEncoding = false;
  EXPECT_EQ(SavedAs("x-other", "<r/>", system), std::string(kInUtf8) + "<r/>");
}

TEST(BytesToSave, AreNoneWhenWhatIsWrittenDoesNotLoad) {
  StandInSystem system;
  system.utf8Loads = false;
  EXPECT_EQ(SavedAs("UTF-8", "<r/>", system), std::nullopt);
  EXPECT_EQ(SavedAs("", "<r/>", system), std::nullopt);
  system.encodedLoadsAlike = false;
  EXPECT_EQ(SavedAs("GBK", "<r/>", system), std::nullopt);
}

TEST(BytesToSave, EndAsTheEncodingDemands) {
  StandInSystem system;
  system.end = "\x1B(B";
  EXPECT_EQ(SavedAs("GBK", "<r/>", system), std::string(kInGbk) + "<r/>\x1B(B");
}

TEST(BytesToSave, KeepTheRestOfTheDeclaration) {
  StandInSystem system;
  XmlDeclaration declaration{true, "1.1", "GBK", true};
  EXPECT_EQ(BytesToSave(declaration, std::string("<") + kEAcute + "/>", system),
            std::string("<?xml version=\"1.1\" encoding=\"UTF-8\" standalone=\"yes\"?>\n<") +
                kEAcute + "/>");
  EXPECT_EQ(BytesToSave({false, "1.0", "", std::nullopt}, "<r/>", system), "<r/>");
}

}  // namespace
}  // namespace carrovan
