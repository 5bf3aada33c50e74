#pragma once

#include <libxml/parser.h>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "text/xml_text.h"

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

template <auto kFree>
struct Freer {
  template <typename T>
  void operator()(T* object) const {
    kFree(object);
  }
};
using ParserOwner = std::unique_ptr<xmlParserCtxt, Freer<xmlFreeParserCtxt>>;

// The library's characters are unsigned; the bytes are the same.
inline const xmlChar* AsXmlText(const char* text) {
  return static_cast<const xmlChar*>(static_cast<const void*>(text));
}
inline const xmlChar* AsXmlText(const std::string& text) { return AsXmlText(text.c_str()); }
inline const char* AsChars(const xmlChar* text) {
  return static_cast<const char*>(static_cast<const void*>(text));
}
// Empty for no text.
inline std::string_view ViewOf(const xmlChar* text) {
  return text == nullptr ? std::string_view() : std::string_view(AsChars(text));
}
inline std::string_view ViewOf(const xmlChar* text, int length) {
  return {AsChars(text), static_cast<std::size_t>(length)};
}

// One of the attributes that the parser hands over with an element: name, prefix, namespace, and
// where its value begins and ends.
class ParsedAttribute {
 public:
  ParsedAttribute(const xmlChar** attributes, int index) : fields_(attributes + 5 * index) {}

  std::string_view Name() const { return ViewOf(fields_[0]); }
  std::string_view Prefix() const { return ViewOf(fields_[1]); }
  std::string_view Value() const {
    return ViewOf(fields_[3], static_cast<int>(fields_[4] - fields_[3]));
  }

 private:
  const xmlChar** fields_;
};

// Has a parser read a document; the result is null unless the parser's handlers build a tree. The
// parser knows whether the document is well formed.
xmlDoc* ReadDocument(xmlParserCtxt& parser, std::string_view document);

// Whether a document loads. No tree is built.
bool DocumentLoads(std::string_view document);

// A number that stands for what a document says, whatever its encoding and however its characters
// are written: the same for documents of the same nodes. Nothing for a document that does not load.
std::optional<std::uint64_t> DocumentFingerprint(std::string_view document);

}  // namespace carrovan
