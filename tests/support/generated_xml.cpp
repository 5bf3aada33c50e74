#include "tests/support/generated_xml.h"

#include <algorithm>
#include <iterator>
#include <random>
#include <string_view>
#include <vector>

#include "text/text.h"

namespace carrovan {
namespace {

// Chinese characters; what stands for them in the Chinese code page are also characters of UTF-8 or
// parts of such.
struct Character {
  std::string_view utf8;
  std::string_view gbk;
};
constexpr Character kCharacters[] = {{"\xE5\x85\xA8", "\xC8\xAB"},
                                     {"\xE5\x9B\xBE", "\xCD\xBC"},
                                     {"\xE9\xBB\x98", "\xC4\xAC"},
                                     {"\xE8\xAE\xA4", "\xC8\xCF"},
                                     {"\xE4\xB8\xAD", "\xD6\xD0"}};

enum class Form { kEightBit, kMarkedUtf8, kLittleEndian, kBigEndian, kGbk };
struct Encoding {
  std::string_view name;  // in the declaration; empty for no declaration
  Form form;
};
constexpr Encoding kEncodings[] = {
    {"", Form::kEightBit},
    {"", Form::kMarkedUtf8},
    {"UTF-8", Form::kEightBit},
    {"utf-8", Form::kMarkedUtf8},
    {"utf8", Form::kEightBit},
    {"UTF-16", Form::kLittleEndian},
    {"UTF-16", Form::kBigEndian},
    {"UTF-16LE", Form::kLittleEndian},
    {"UTF-16BE", Form::kBigEndian},
    {"GBK", Form::kGbk},
    {"gbk", Form::kGbk},
};
constexpr std::string_view kLineEnds[] = {"\n", "\r\n", "\r"};

std::string Replaced(std::string_view text, std::string_view what, std::string_view by) {
  std::string result;
  for (std::size_t hit = text.find(what); hit != text.npos; hit = text.find(what)) {
    result.append(text.substr(0, hit)).append(by);
    text.remove_prefix(hit + what.size());
  }
  return result.append(text);
}

std::string SixteenBit(const std::string& utf8, bool bigEndian) {
  std::string bytes;
  for (const char16_t unit : u"\xFEFF" + ToUtf16(FromUtf8(utf8))) {
    const char low = static_cast<char>(unit & 0xFF);
    const char high = static_cast<char>(unit >> 8);
    bytes += bigEndian ? std::string{high, low} : std::string{low, high};
  }
  return bytes;
}

std::string Gbk(std::string text) {
  for (const Character& character : kCharacters) {
    text = Replaced(text, character.utf8, character.gbk);
  }
  return text;
}

std::string Encoded(const std::string& utf8, Form form) {
  switch (form) {
    case Form::kMarkedUtf8:
      return "\xEF\xBB\xBF" + utf8;
    case Form::kLittleEndian:
    case Form::kBigEndian:
      return SixteenBit(utf8, form == Form::kBigEndian);
    case Form::kGbk:
      return Gbk(utf8);
    case Form::kEightBit:
      break;
  }
  return utf8;
}

// Control characters as numbers, so that a dump is one line and shows them.
std::string Shown(std::string_view text) {
  std::string shown;
  for (const char c : text) {
    if (c >= 0 && c < 0x20) {
      shown += "[" + std::to_string(c) + "]";
    } else {
      shown += c;
    }
  }
  return shown;
}

// Writes a document and the dump of what it must be read as side by side. A line end in the text of
// the document is "\n" until the document is whole.
class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  GeneratedXml Generate() {
    const Encoding& encoding = Pick(kEncodings);
    if (!encoding.name.empty()) {
      xml_ = "<?xml version=\"1.0\" encoding=\"" + std::string(encoding.name) + "\"?>\n";
    }
    AddElement(0, false);
    const std::string document = Replaced(xml_, "\n", Pick(kLineEnds));
    return {Encoded(document, encoding.form), std::string(encoding.name), tree_};
  }

 private:
  int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
  template <typename Row, std::size_t kSize>
  const Row& Pick(const Row (&rows)[kSize]) {
    return rows[Below(static_cast<int>(kSize))];
  }

  void AddElement(int depth, bool preserved) {
    static constexpr std::string_view kNames[] = {"a", "b", "ID", "Size", "p:c", "\xE4\xB8\xAD-1"};
    const std::string name(depth == 0 ? "r" : Pick(kNames));
    xml_ += "<" + name;
    tree_ += "<" + name;
    if (depth == 0) xml_ += " xmlns:p='u'";
    if (Below(4) == 0) AddAttribute();
    if (Below(5) == 0) {
      preserved = Below(2) == 0;
      xml_ += preserved ? "\nxml:space='preserve'" : " xml:space=\"default\"";
    }
    xml_ += ">";
    tree_ += " ";
    for (int i = Below(depth > 3 ? 3 : 6); i > 0; --i) AddNode(depth, preserved);
    EndText(preserved);
    xml_ += "</" + name + ">";
    tree_ += ">";
  }

  // A line end in a value is a blank; a reference to one is not.
  void AddAttribute() {
    struct Part {
      std::string_view written;
      std::string_view meant;
    };
    static constexpr Part kParts[] = {{"v", "v"},
                                      {"\n", " "},
                                      {"&#10;", "\n"},
                                      {"&#xD;", "\r"},
                                      {"\t", " "},
                                      {"&amp;", "&"},
                                      {"\xE9\xBB\x98", "\xE9\xBB\x98"}};
    std::string meant;
    xml_ += " k=\"";
    for (int i = Below(4); i > 0; --i) {
      const Part& part = Pick(kParts);
      xml_ += part.written;
      meant += part.meant;
    }
    xml_ += "\"";
    tree_ += "[" + Shown(meant) + "]";
  }

  void AddNode(int depth, bool preserved) {
    const int kind = Below(10);
    if (kind < 6) return AddTextPiece();
    EndText(preserved);
    if (kind < 8 && depth < 5) return AddElement(depth + 1, preserved);
    AddOtherNode();
  }

  // Two CDATA sections side by side are one for some DOMs.
  void AddOtherNode() {
    const int kind = Below(xml_.ends_with("]]>") ? 2 : 3);
    if (kind == 0) {
      xml_ += "<!-- c\n\xE5\x85\xA8 -->";
      tree_ += "(#comment " + Shown(" c\n\xE5\x85\xA8 ") + ")";
    } else if (kind == 1) {
      xml_ += "<?t d\nd?>";
      tree_ += "(t " + Shown("d\nd") + ")";
    } else {
      xml_ += "<![CDATA[ \n<&]]>";
      tree_ += "(#cdata-section " + Shown(" \n<&") + ")";
    }
  }

  void AddTextPiece() {
    struct Piece {
      std::string_view written;
      std::string_view meant;
    };
    static constexpr Piece kPieces[] = {
        {" ", " "},       {"\n", "\n"},
        {"\n  ", "\n  "}, {"\t", "\t"},
        {"7", "7"},       {"&amp;", "&"},
        {"&lt;", "<"},    {"&#32;", " "},
        {"&#xA;", "\n"},  {"&#13;", "\r"},
        {"x\ny", "x\ny"}, {"&#x4E2D;", "\xE4\xB8\xAD"},
        {">", ">"},       {"\xE5\x85\xA8\xE5\x9B\xBE", "\xE5\x85\xA8\xE5\x9B\xBE"}};
    const Piece& piece = Pick(kPieces);
    xml_ += piece.written;
    text_ += piece.meant;
  }

  void EndText(bool preserved) {
    const bool isBlank = text_.find_first_not_of(" \t\r\n") == text_.npos;
    if (!text_.empty() && (preserved || !isBlank)) tree_ += "(#text " + Shown(text_) + ")";
    text_.clear();
  }

  std::mt19937 random_;
  std::string xml_;
  std::string tree_;
  std::string text_;  // that the node which comes next ends
};

}  // namespace

GeneratedXml GenerateXml(unsigned seed) { return Generator(seed).Generate(); }

std::string DumpOf(const XmlNode& root) {
  std::string dump = "<" + std::string(root.Name());
  if (const auto value = root.Attribute("k")) dump += "[" + Shown(ToUtf8(*value)) + "]";
  dump += " ";
  for (XmlNode node = root.FirstChild(); node; node = node.NextSibling()) {
    if (node.IsElement()) {
      dump += DumpOf(node);
    } else {
      dump += "(" + std::string(node.Name()) + " " + Shown(ToUtf8(node.Text())) + ")";
    }
  }
  return dump + ">";
}

std::string InUtf8(const std::string& bytes) {
  if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
    const bool bigEndian = bytes.starts_with("\xFE\xFF");
    std::u16string units;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
      const auto first = static_cast<unsigned char>(bytes[i]);
      const auto second = static_cast<unsigned char>(bytes[i + 1]);
      units.push_back(static_cast<char16_t>(bigEndian ? first << 8 | second : second << 8 | first));
    }
    return ToUtf8(FromUtf16(units));
  }
  if (bytes.find("encoding=\"GBK\"") == bytes.npos &&
      bytes.find("encoding=\"gbk\"") == bytes.npos) {
    return bytes;
  }
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto* const known =
        std::ranges::find(kCharacters, std::string_view(bytes).substr(i, 2), &Character::gbk);
    if (known == std::end(kCharacters)) {
      text += bytes[i];
    } else {
      text += known->utf8;
      ++i;
    }
  }
  return text;
}

}  // namespace carrovan
