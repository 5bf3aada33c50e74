#include "platform/posix/libxml2_reading.h"

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

// The parser has an end tag of fewer bytes in its buffer when it compares the name.
constexpr std::size_t kLongName = 200;

bool IsLong(const xmlChar* name, const xmlChar* prefix) {
  return ViewOf(name).size() + ViewOf(prefix).size() >= kLongName;
}

// The value of an attribute. The parser leaves each "&" in it as a reference, so that there is no
// other "&".
std::string_view WithoutReferences(std::string_view value, std::string& room) {
  constexpr std::string_view kReference = "&#38;";
  std::size_t at = value.find('&');
  if (at == value.npos) return value;
  room.clear();
  for (; at != value.npos; at = value.find('&')) {
    room.append(value, 0, at + 1);
    value.remove_prefix(at + kReference.size());
  }
  return room.append(value);
}

}  // namespace

bool ShortDictionary::AttachTo(xmlParserCtxt& parser) {
  parser_ = &parser;
  lasting_.reset(parser.dict);
  parser.dict = xmlDictCreateSub(lasting_.get());
  // These too are compared by address.
  return parser.dict != nullptr && xmlDictLookup(lasting_.get(), AsXmlText("xml"), -1) != nullptr &&
         xmlDictLookup(lasting_.get(), AsXmlText("xmlns"), -1) != nullptr &&
         xmlDictLookup(lasting_.get(), XML_XML_NAMESPACE, -1) != nullptr;
}

void ShortDictionary::EnterElement(const xmlChar* name, const xmlChar* prefix) {
  if (IsLong(name, prefix)) ++longNamesOpen_;
  RenewWhenFull();
}

void ShortDictionary::LeaveElement(const xmlChar* name, const xmlChar* prefix) {
  if (IsLong(name, prefix)) --longNamesOpen_;
}

void ShortDictionary::RenewWhenFull() {
  const auto names = static_cast<std::size_t>(xmlDictSize(parser_->dict));
  const auto lasting = static_cast<std::size_t>(xmlDictSize(lasting_.get()));
  if (names - lasting >= kMostNames && longNamesOpen_ == 0) Renew();
}

void ShortDictionary::Renew() {
  DictOwner renewed(xmlDictCreateSub(lasting_.get()));
  if (renewed == nullptr || !KeepOpenNamespaces()) return;  // it is slower with the former one
  former_.emplace_back(parser_->dict);
  parser_->dict = renewed.release();
}

bool ShortDictionary::KeepOpenNamespaces() {
  for (int i = 0; i < parser_->nsNr; ++i) {
    const xmlChar*& text = parser_->nsTab[i];
    if (text == nullptr) continue;
    const xmlChar* const kept = xmlDictLookup(lasting_.get(), text, -1);
    if (kept == nullptr) return false;
    text = kept;
  }
  return true;
}

bool TreeBuilder::AttachTo(xmlParserCtxt& parser) {
  parser._private = this;
  xmlSAXHandler& handlers = *parser.sax;
  handlers.startElementNs = OnStartElement;
  handlers.endElementNs = OnEndElement;
  handlers.characters = OnCharacters;
  handlers.ignorableWhitespace = OnCharacters;
  handlers.cdataBlock = OnCdata;
  handlers.comment = OnComment;
  handlers.processingInstruction = OnInstruction;
  handlers.internalSubset = OnTypeDefinition;
  return dictionary_.AttachTo(parser);
}

TreeBuilder& TreeBuilder::Of(void* context) {
  return *static_cast<TreeBuilder*>(static_cast<xmlParserCtxt*>(context)->_private);
}

void TreeBuilder::OnStartElement(void* context, const xmlChar* name, const xmlChar* prefix,
                                 const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                                 int attributeCount, int, const xmlChar** attributes) {
  TreeBuilder& builder = Of(context);
  builder.rule_.EnterElement(SpaceAmong(attributes, attributeCount));
  builder.EndText();
  XmlTreeElement& element =
      builder.tree_.NewElement(builder.FullName(ViewOf(prefix), ViewOf(name)));
  builder.AddNode(element);
  builder.AddNamespaces(element, namespaces, namespaceCount);
  if (uri != nullptr) element.space = XmlTree::FindNamespace(element, ViewOf(prefix));
  builder.AddAttributes(element, attributes, attributeCount);
  builder.place_ = &element;
  builder.dictionary_.EnterElement(name, prefix);
}

void TreeBuilder::OnEndElement(void* context, const xmlChar* name, const xmlChar* prefix,
                               const xmlChar*) {
  TreeBuilder& builder = Of(context);
  builder.rule_.LeaveElement();
  builder.EndText();
  builder.place_ = builder.place_->parent;
  builder.dictionary_.LeaveElement(name, prefix);
}

void TreeBuilder::OnCharacters(void* context, const xmlChar* text, int length) {
  Of(context).text_ += Of(context).rule_.Take(ViewOf(text, length));
}

void TreeBuilder::OnCdata(void* context, const xmlChar* text, int length) {
  TreeBuilder& builder = Of(context);
  builder.rule_.EndText();
  builder.EndText();
  builder.AddNode(builder.tree_.NewNode(XmlTreeKind::kCdata, ViewOf(text, length)));
}

void TreeBuilder::OnComment(void* context, const xmlChar* text) {
  TreeBuilder& builder = Of(context);
  builder.rule_.EndText();
  builder.EndText();
  builder.AddNode(builder.tree_.NewNode(XmlTreeKind::kComment, ViewOf(text)));
}

void TreeBuilder::OnInstruction(void* context, const xmlChar* target, const xmlChar* data) {
  TreeBuilder& builder = Of(context);
  builder.rule_.EndText();
  builder.EndText();
  builder.AddNode(builder.tree_.NewInstruction(ViewOf(target), ViewOf(data), data != nullptr));
  builder.dictionary_.RenewWhenFull();
}

void TreeBuilder::OnTypeDefinition(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
  Of(context).sawTypeDefinition_ = true;
  xmlStopParser(static_cast<xmlParserCtxt*>(context));
}

std::string_view TreeBuilder::FullName(std::string_view prefix, std::string_view name) {
  if (prefix.empty()) return name;
  fullName_.assign(prefix).append(":").append(name);
  return fullName_;
}

void TreeBuilder::AddNamespaces(XmlTreeElement& element, const xmlChar** namespaces, int count) {
  XmlNamespace* last = nullptr;
  for (const xmlChar** name = namespaces; count > 0; --count, name += 2) {
    tree_.AddNamespace(element, last, ViewOf(name[0]), ViewOf(name[1]));
  }
}

void TreeBuilder::AddAttributes(XmlTreeElement& element, const xmlChar** attributes, int count) {
  XmlTreeAttribute* last = nullptr;
  for (int i = 0; i < count; ++i) {
    const ParsedAttribute attribute(attributes, i);
    const XmlNamespace* const space =
        attribute.Prefix().empty() ? nullptr : XmlTree::FindNamespace(element, attribute.Prefix());
    tree_.AddAttribute(element, last, FullName(attribute.Prefix(), attribute.Name()),
                       WithoutReferences(attribute.Value(), value_), space);
  }
}

void TreeBuilder::AddNode(XmlTreeNode& node) { XmlTree::Append(*place_, node); }

void TreeBuilder::EndText() {
  if (text_.empty()) return;
  AddNode(tree_.NewNode(XmlTreeKind::kText, text_));
  text_.clear();
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

// Does nothing with what the parser reports.
class Reading {
 public:
  [[nodiscard]] bool AttachTo(xmlParserCtxt& parser) {
    parser._private = this;
    RemoveHandlers(*parser.sax);
    parser.sax->startElementNs = OnStartElement;
    parser.sax->endElementNs = OnEndElement;
    parser.sax->processingInstruction = OnInstruction;
    return dictionary_.AttachTo(parser);
  }

 private:
  static ShortDictionary& DictionaryOf(void* context) {
    return static_cast<Reading*>(static_cast<xmlParserCtxt*>(context)->_private)->dictionary_;
  }
  static void OnStartElement(void* context, const xmlChar* name, const xmlChar* prefix,
                             const xmlChar*, int, const xmlChar**, int, int, const xmlChar**) {
    DictionaryOf(context).EnterElement(name, prefix);
  }
  static void OnEndElement(void* context, const xmlChar* name, const xmlChar* prefix,
                           const xmlChar*) {
    DictionaryOf(context).LeaveElement(name, prefix);
  }
  static void OnInstruction(void* context, const xmlChar*, const xmlChar*) {
    DictionaryOf(context).RenewWhenFull();
  }

  ShortDictionary dictionary_;
};

// Sums up what the parser reports.
class Fingerprint {
 public:
  [[nodiscard]] bool AttachTo(xmlParserCtxt& parser) {
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
    return dictionary_.AttachTo(parser);
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
    print.dictionary_.EnterElement(name, prefix);
  }

  static void OnEndElement(void* context, const xmlChar* name, const xmlChar* prefix,
                           const xmlChar*) {
    Of(context).Begin('>');
    Of(context).dictionary_.LeaveElement(name, prefix);
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
    Of(context).dictionary_.RenewWhenFull();
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

  ShortDictionary dictionary_;
  std::uint64_t sum_ = 0xCBF29CE484222325;
  char last_ = '\0';  // kind of the node that came last
};

}  // namespace

xmlDoc* ReadDocument(xmlParserCtxt& parser, std::string_view document) {
  return xmlCtxtReadIO(&parser, ReadOn, nullptr, &document, nullptr, nullptr, kParseOptions);
}

// The handlers are there until the parser is gone.
bool DocumentLoads(std::string_view document) {
  Reading reading;
  const ParserOwner parser(xmlNewParserCtxt());
  return parser != nullptr && reading.AttachTo(*parser) && ReadsWell(*parser, document);
}

std::optional<std::uint64_t> DocumentFingerprint(std::string_view document) {
  Fingerprint print;
  const ParserOwner parser(xmlNewParserCtxt());
  if (parser == nullptr || !print.AttachTo(*parser) || !ReadsWell(*parser, document)) {
    return std::nullopt;
  }
  return print.Sum();
}

}  // namespace carrovan
