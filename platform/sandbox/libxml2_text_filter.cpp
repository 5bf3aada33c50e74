#include "platform/sandbox/libxml2_text_filter.h"

#include <libxml/SAX2.h>

#include <algorithm>

namespace carrovan {
namespace {

bool IsBlank(xmlChar c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool PreservesSpace(const xmlParserCtxt& context) {
  return context.space != nullptr && *context.space == 1;
}

}  // namespace

void BlankTextFilter::AttachTo(xmlParserCtxt& context) {
  context._private = this;
  context.sax->characters = OnCharacters;
  context.sax->ignorableWhitespace = OnCharacters;
  context.sax->internalSubset = OnTypeDefinition;
}

void BlankTextFilter::OnCharacters(void* context, const xmlChar* text, int length) {
  auto& parser = *static_cast<xmlParserCtxt*>(context);
  static_cast<BlankTextFilter*>(parser._private)->Take(parser, text, length);
}

void BlankTextFilter::OnTypeDefinition(void* context, const xmlChar*, const xmlChar*,
                                       const xmlChar*) {
  auto& parser = *static_cast<xmlParserCtxt*>(context);
  static_cast<BlankTextFilter*>(parser._private)->sawTypeDefinition_ = true;
  xmlStopParser(&parser);
}

void BlankTextFilter::Take(xmlParserCtxt& context, const xmlChar* text, int length) {
  const xmlNode* last = context.node == nullptr ? nullptr : context.node->last;
  const bool continuesText = last != nullptr && last->type == XML_TEXT_NODE;
  const bool blank = std::all_of(text, text + length, IsBlank);
  const bool continuesHeld =
      !heldBack_.empty() && heldParent_ == context.node && heldAfter_ == last;
  if (!continuesHeld) heldBack_.clear();

  if (blank && !continuesText && !PreservesSpace(context)) {
    heldBack_.append(text, static_cast<std::size_t>(length));
    heldParent_ = context.node;
    heldAfter_ = last;
    return;
  }
  if (!heldBack_.empty()) {
    xmlSAX2Characters(&context, heldBack_.data(), static_cast<int>(heldBack_.size()));
    heldBack_.clear();
  }
  xmlSAX2Characters(&context, text, length);
}

}  // namespace carrovan
