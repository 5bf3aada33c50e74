#include "platform/posix/libxml2_reading.h"

#include <libxml/SAX2.h>
#include <limits>
#include <optional>
#include <string_view>

namespace carrovan {
namespace {

// The value of xml:space among an element's attributes, as the parser gives them.
std::optional<std::string_view> SpaceAmong(const xmlChar** attributes, int count) {
  for (int i = 0; i < count; ++i) {
    const ParsedAttribute attribute(attributes, i);
    if (attribute.Name() == "space" && attribute.Prefix() == "xml") return attribute.Value();
  }
  return std::nullopt;
}

}  // namespace

void ParserTextFilter::AttachTo(xmlParserCtxt& context) {
  context._private = this;
  context.sax->startElementNs = OnStartElement;
  context.sax->endElementNs = OnEndElement;
  context.sax->characters = OnCharacters;
  context.sax->ignorableWhitespace = OnCharacters;
  context.sax->cdataBlock = OnCdata;
  context.sax->comment = OnComment;
  context.sax->processingInstruction = OnInstruction;
  context.sax->internalSubset = OnTypeDefinition;
}

ParserTextFilter& ParserTextFilter::Of(void* context) {
  return *static_cast<ParserTextFilter*>(static_cast<xmlParserCtxt*>(context)->_private);
}

void ParserTextFilter::OnStartElement(void* context, const xmlChar* name, const xmlChar* prefix,
                                      const xmlChar* uri, int namespaceCount,
                                      const xmlChar** namespaces, int attributeCount,
                                      int defaultedCount, const xmlChar** attributes) {
  Of(context).rule_.EnterElement(SpaceAmong(attributes, attributeCount));
  xmlSAX2StartElementNs(context, name, prefix, uri, namespaceCount, namespaces, attributeCount,
                        defaultedCount, attributes);
}

void ParserTextFilter::OnEndElement(void* context, const xmlChar* name, const xmlChar* prefix,
                                    const xmlChar* uri) {
  Of(context).rule_.LeaveElement();
  xmlSAX2EndElementNs(context, name, prefix, uri);
}

void ParserTextFilter::OnCharacters(void* context, const xmlChar* text, int length) {
  const std::string_view kept = Of(context).rule_.Take(ViewOf(text, length));
  if (!kept.empty()) {
    xmlSAX2Characters(context, AsXmlText(kept.data()), static_cast<int>(kept.size()));
  }
}

// The library's own handler would join two sections when what lay between them was left out.
void ParserTextFilter::OnCdata(void* context, const xmlChar* text, int length) {
  Of(context).rule_.EndText();
  auto& parser = *static_cast<xmlParserCtxt*>(context);
  xmlNode* const section = xmlNewCDataBlock(parser.myDoc, text, length);
  if (section != nullptr && xmlAddChild(parser.node, section) != nullptr) return;
  xmlFreeNode(section);
  parser.wellFormed = 0;
  xmlStopParser(&parser);
}

void ParserTextFilter::OnComment(void* context, const xmlChar* text) {
  Of(context).rule_.EndText();
  xmlSAX2Comment(context, text);
}

void ParserTextFilter::OnInstruction(void* context, const xmlChar* target, const xmlChar* data) {
  Of(context).rule_.EndText();
  xmlSAX2ProcessingInstruction(context, target, data);
}

void ParserTextFilter::OnTypeDefinition(void* context, const xmlChar*, const xmlChar*,
                                        const xmlChar*) {
  Of(context).sawTypeDefinition_ = true;
  xmlStopParser(static_cast<xmlParserCtxt*>(context));
}

namespace {

// The parser's own limits on depth and length are lifted: the merge and this adapter work without
// recursion. Nothing is fetched from a network.
constexpr int kParseOptions =
    XML_PARSE_NONET | XML_PARSE_HUGE | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

// Gives the parser what it asks for; `source` is the text that it has not read yet. Given all at
// once, the text would be copied as a whole.
int ReadOn(void* source, char* buffer, int length) {
  auto& unread = *static_cast<std::string_view*>(source);
  const std::size_t count = unread.copy(buffer, static_cast<std::size_t>(length));
  unread.remove_prefix(count);
  return static_cast<int>(count);
}

void OnTypeDefinition(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
  auto& parser = *static_cast<xmlParserCtxt*>(context);
  parser.wellFormed = 0;
  xmlStopParser(&parser);
}

// Reads a document with the handlers that the parser has by now.
bool ReadsWell(xmlParserCtxt& parser, std::string_view document) {
  if (document.size() > std::size_t{std::numeric_limits<int>::max()}) return false;
  ReadDocument(parser, document);
  return parser.wellFormed != 0 && parser.nsWellFormed != 0;
}

void RemoveHandlers(xmlSAXHandler& handlers) {
  handlers = {};
  handlers.initialized = XML_SAX2_MAGIC;
  handlers.internalSubset = OnTypeDefinition;
}

// Sums up what the parser reports.
class Fingerprint {
 public:
  void AttachTo(xmlParserCtxt& parser) {
    parser._private = this;
    xmlSAXHandler& handlers = *parser.sax;
    RemoveHandlers(handlers);
    handlers.startElementNs = OnStartElement;
    handlers.endElementNs = OnEndElement;
    handlers.characters = OnCharacters;
    handlers.ignorableWhitespace = OnCharacters;
    handlers.cdataBlock = OnCdata;
    handlers.comment = OnComment;
    handlers.processingInstruction = OnInstruction;
  }

  std::uint64_t Sum() const { return sum_; }

 private:
  static Fingerprint& Of(void* context) {
    return *static_cast<Fingerprint*>(static_cast<xmlParserCtxt*>(context)->_private);
  }

  static void OnStartElement(void* context, const xmlChar* name, const xmlChar* prefix,
                             const xmlChar*, int namespaceCount, const xmlChar** namespaces,
                             int attributeCount, int, const xmlChar** attributes) {
    Fingerprint& print = Of(context);
    print.Begin('<');
    print.AddField(ViewOf(prefix));
    print.AddField(ViewOf(name));
    for (int i = 0; i < 2 * namespaceCount; ++i) print.AddField(ViewOf(namespaces[i]));
    for (int i = 0; i < attributeCount; ++i) {
      const ParsedAttribute attribute(attributes, i);
      print.AddField(attribute.Prefix());
      print.AddField(attribute.Name());
      print.AddField(attribute.Value());
    }
  }

  static void OnEndElement(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
    Of(context).Begin('>');
  }

  // One text may come in pieces.
  static void OnCharacters(void* context, const xmlChar* text, int length) {
    Fingerprint& print = Of(context);
    if (print.last_ != 't') print.Begin('t');
    print.Add(ViewOf(text, length));
  }

  static void OnCdata(void* context, const xmlChar* text, int length) {
    Of(context).Begin('c');
    Of(context).AddField(ViewOf(text, length));
  }

  static void OnComment(void* context, const xmlChar* text) {
    Of(context).Begin('!');
    Of(context).AddField(ViewOf(text));
  }

  static void OnInstruction(void* context, const xmlChar* target, const xmlChar* data) {
    Of(context).Begin('?');
    Of(context).AddField(ViewOf(target));
    Of(context).AddField(ViewOf(data));
  }

  // No text holds the characters that end a field and begin a node.
  void Begin(char kind) {
    last_ = kind;
    AddByte('\x01');
    AddByte(kind);
  }
  void AddField(std::string_view text) {
    Add(text);
    AddByte('\x02');
  }
  void Add(std::string_view text) {
    for (const char c : text) AddByte(c);
  }
  void AddByte(char c) {
    sum_ = (sum_ ^ static_cast<std::uint8_t>(c)) * std::uint64_t{0x100000001B3};
  }

  std::uint64_t sum_ = 0xCBF29CE484222325;
  char last_ = '\0';  // kind of the node that came last
};

}  // namespace

xmlDoc* ReadDocument(xmlParserCtxt& parser, std::string_view document) {
  return xmlCtxtReadIO(&parser, ReadOn, nullptr, &document, nullptr, nullptr, kParseOptions);
}

bool DocumentLoads(std::string_view document) {
  const ParserOwner parser(xmlNewParserCtxt());
  if (parser == nullptr) return false;
  RemoveHandlers(*parser->sax);
  return ReadsWell(*parser, document);
}

std::optional<std::uint64_t> DocumentFingerprint(std::string_view document) {
  const ParserOwner parser(xmlNewParserCtxt());
  if (parser == nullptr) return std::nullopt;
  Fingerprint print;
  print.AttachTo(*parser);
  return ReadsWell(*parser, document) ? std::optional(print.Sum()) : std::nullopt;
}

}  // namespace carrovan
