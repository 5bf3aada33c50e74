#include <array>
#include <charconv>
#include <cstdint>

#include "platform/posix/xml_tree.h"
#include "text/xml_text.h"

namespace carrovan {
namespace {

// What stands for a character of a text; empty for one that stands for itself.
std::string_view WrittenInText(char c) {
  switch (c) {
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '&':
      return "&amp;";
    case '\r':
      return "&#13;";
    default:
      return {};
  }
}

std::string_view WrittenInValue(char c) {
  switch (c) {
    case '"':
      return "&quot;";
    case '\n':
      return "&#10;";
    case '\t':
      return "&#9;";
    default:
      return WrittenInText(c);
  }
}

template <typename Rule>
void AppendWritten(std::string_view plain, Rule written, std::string& text) {
  std::size_t done = 0;
  for (std::size_t i = 0; i < plain.size(); ++i) {
    const std::string_view instead = written(plain[i]);
    if (instead.empty()) continue;
    text.append(plain, done, i - done).append(instead);
    done = i + 1;
  }
  text.append(plain, done);
}

bool IsAscii(char c) { return static_cast<std::uint8_t>(c) < 0x80; }

std::uint32_t CodeOf(std::string_view character) {
  const auto bits = [&](std::size_t i) { return static_cast<std::uint8_t>(character[i]); };
  const auto kept = static_cast<std::uint32_t>(0x7F >> character.size());
  std::uint32_t code = bits(0) & kept;
  for (std::size_t i = 1; i < character.size(); ++i) code = code << 6 | (bits(i) & 0x3F);
  return code;
}

void AppendReference(std::string_view character, std::string& text) {
  std::array<char, 8> digits = {};
  char* const end =
      std::to_chars(digits.data(), digits.data() + digits.size(), CodeOf(character), 16).ptr;
  text += "&#x";
  for (const char* digit = digits.data(); digit != end; ++digit) {
    text += *digit >= 'a' ? static_cast<char>(*digit - 'a' + 'A') : *digit;
  }
  text += ';';
}

void AppendValueInAscii(std::string_view value, std::string& text) {
  while (!value.empty()) {
    const std::size_t size = std::min(Utf8LengthOf(value.front()), value.size());
    if (IsAscii(value.front())) {
      AppendWritten(value.substr(0, 1), WrittenInValue, text);
    } else {
      AppendReference(value.substr(0, size), text);
    }
    value.remove_prefix(size);
  }
}

// The parser takes nothing but a URI, and leaves references to "&" in it as they were: no character
// of it has to be written otherwise.
void AppendNamespace(const XmlNamespace& space, std::string& text) {
  text += " xmlns";
  if (!space.prefix.empty()) text.append(":").append(space.prefix);
  text.append("=\"").append(space.uri).append("\"");
}

// A section ends where its text says so, and another goes on.
void AppendCdata(std::string_view content, std::string& text) {
  constexpr std::string_view kEnd = "]]>";
  for (std::size_t end = content.find(kEnd); end != content.npos; end = content.find(kEnd)) {
    text.append("<![CDATA[").append(content, 0, end + 2).append(kEnd);
    content.remove_prefix(end + 2);  // and so there is always a rest
  }
  text.append("<![CDATA[").append(content).append(kEnd);
}

class TreeWriter {
 public:
  TreeWriter(bool refersInAttributes, std::string& text)
      : refersInAttributes_(refersInAttributes), text_(text) {}

  // The node and all below it.
  void Write(const XmlTreeNode& top) {
    Begin(top);
    const XmlTreeNode* node = &top;
    while (true) {
      const XmlTreeElement* const element = AsElement(node);
      if (element != nullptr && element->first != nullptr) {
        node = element->first;
      } else {
        for (; node != &top && node->next == nullptr; node = node->parent) End(*node->parent);
        if (node == &top) return;
        node = node->next;
      }
      Begin(*node);
    }
  }

 private:
  void Begin(const XmlTreeNode& node) {
    switch (node.kind) {
      case XmlTreeKind::kElement:
        return BeginElement(static_cast<const XmlTreeElement&>(node));
      case XmlTreeKind::kText:
        return AppendWritten(node.text, WrittenInText, text_);
      case XmlTreeKind::kCdata:
        return AppendCdata(node.text, text_);
      case XmlTreeKind::kComment:
        text_.append("<!--").append(node.text).append("-->");
        return;
      case XmlTreeKind::kInstruction:
        return WriteInstruction(static_cast<const XmlTreeInstruction&>(node));
    }
  }

  void BeginElement(const XmlTreeElement& element) {
    text_.append("<").append(element.text);
    for (const XmlNamespace* space = element.declared; space != nullptr; space = space->next) {
      AppendNamespace(*space, text_);
    }
    for (const XmlTreeAttribute* attribute = element.attributes; attribute != nullptr;
         attribute = attribute->next) {
      text_.append(" ").append(attribute->name).append("=\"");
      AppendValue(attribute->value);
      text_ += '"';
    }
    text_ += element.first == nullptr ? "/>" : ">";
  }

  void End(const XmlTreeElement& element) { text_.append("</").append(element.text).append(">"); }

  void AppendValue(std::string_view value) {
    if (refersInAttributes_) {
      AppendValueInAscii(value, text_);
    } else {
      AppendWritten(value, WrittenInValue, text_);
    }
  }

  void WriteInstruction(const XmlTreeInstruction& instruction) {
    text_.append("<?").append(instruction.target);
    if (instruction.hasContent) text_.append(" ").append(instruction.text);
    text_ += "?>";
  }

  bool refersInAttributes_;
  std::string& text_;
};

}  // namespace

void AppendXml(const XmlTree& tree, bool refersInAttributes, std::string& text) {
  TreeWriter writer(refersInAttributes, text);
  for (const XmlTreeNode* node = tree.Top().first; node != nullptr; node = node->next) {
    writer.Write(*node);
    text += '\n';
  }
}

}  // namespace carrovan
