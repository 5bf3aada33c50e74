#pragma once

#include <libxml/parser.h>

#include "platform/blank_text_filter.h"

namespace carrovan {

// Stands between the parser and its tree builder and keeps text of nothing but white space out of
// the tree. Must outlive the parser context that it is attached to.
class ParserTextFilter {
 public:
  // Replaces the context's handlers, and refuses document type definitions.
  void AttachTo(xmlParserCtxt& context);

  bool SawTypeDefinition() const { return sawTypeDefinition_; }

 private:
  static ParserTextFilter& Of(void* context);
  static void OnStartElement(void* context, const xmlChar* name, const xmlChar* prefix,
                             const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                             int attributeCount, int defaultedCount, const xmlChar** attributes);
  static void OnEndElement(void* context, const xmlChar* name, const xmlChar* prefix,
                           const xmlChar* uri);
  static void OnCharacters(void* context, const xmlChar* text, int length);
  static void OnCdata(void* context, const xmlChar* text, int length);
  static void OnComment(void* context, const xmlChar* text);
  static void OnInstruction(void* context, const xmlChar* target, const xmlChar* data);
  static void OnTypeDefinition(void* context, const xmlChar* name, const xmlChar* externalId,
                               const xmlChar* systemId);

  BlankTextFilter<char> rule_;
  bool sawTypeDefinition_ = false;
};

}  // namespace carrovan
