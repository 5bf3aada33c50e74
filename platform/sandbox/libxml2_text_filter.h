#pragma once

#include <libxml/parser.h>

#include <string>

namespace carrovan {

// Stands between the parser and its tree builder and keeps text of nothing but white space out of
// the tree. The parser may deliver one text in pieces, so white space is held back until it is
// known what follows. Must outlive the parser context that it is attached to.
class BlankTextFilter {
 public:
  // Replaces the context's handlers for text, and refuses document type definitions.
  void AttachTo(xmlParserCtxt& context);

  bool SawTypeDefinition() const { return sawTypeDefinition_; }

 private:
  static void OnCharacters(void* context, const xmlChar* text, int length);
  static void OnTypeDefinition(void* context, const xmlChar* name, const xmlChar* externalId,
                               const xmlChar* systemId);
  void Take(xmlParserCtxt& context, const xmlChar* text, int length);

  std::basic_string<xmlChar> heldBack_;
  const xmlNode* heldParent_ = nullptr;  // where it was met: the place tells whether
  const xmlNode* heldAfter_ = nullptr;   // later text continues it
  bool sawTypeDefinition_ = false;
};

}  // namespace carrovan
