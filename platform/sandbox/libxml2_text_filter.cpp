#include "platform/sandbox/libxml2_text_filter.h"

#include <libxml/SAX2.h>

#include <optional>
#include <string_view>

#include "platform/sandbox/libxml2_reading.h"

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

}  // namespace carrovan
