#pragma once

#include <libxml/parser.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/posix/xml_tree.h"
#include "text/xml_text.h"

namespace carrovan {

template <auto kFree>
struct Freer {
  template <typename T>
  void operator()(T* object) const {
    kFree(object);
  }
};
using ParserOwner = std::unique_ptr<xmlParserCtxt, Freer<xmlFreeParserCtxt>>;
using DictOwner = std::unique_ptr<xmlDict, Freer<xmlDictFree>>;

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
  ParsedAttribute(const xmlChar** attributes, int index)
      : fields_(attributes + std::ptrdiff_t{5} * index) {}

  std::string_view Name() const { return ViewOf(fields_[0]); }
  std::string_view Prefix() const { return ViewOf(fields_[1]); }
  std::string_view Value() const {
    return ViewOf(fields_[3], static_cast<int>(fields_[4] - fields_[3]));
  }

 private:
  const xmlChar** fields_;
};

// Keeps the parser's own dictionary of names short: its table has some thousand places and does not
// grow, so that the hundred thousandth name would cost a walk along hundreds. Once it is full, the
// parser gets an empty one. What the parser compares by address is kept for good: the prefixes and
// namespaces that are open. It compares the name of an end tag by its characters when the whole tag
// has been read; of a longer one it may not have, so that no new dictionary begins inside of such.
class ShortDictionary {
 public:
  // False when there is no memory. Must live as long as the parser.
  [[nodiscard]] bool AttachTo(xmlParserCtxt& parser);

  // To be called by the handlers of elements, as their last action, and of instructions.
  void EnterElement(const xmlChar* name, const xmlChar* prefix);
  void LeaveElement(const xmlChar* name, const xmlChar* prefix);
  void RenewWhenFull();

  static constexpr std::size_t kMostNames = 8000;

 private:
  void Renew();
  bool KeepOpenNamespaces();

  xmlParserCtxt* parser_ = nullptr;
  DictOwner lasting_;              // looked into behind each of the others
  std::vector<DictOwner> former_;  // open elements still refer to them
  std::size_t longNamesOpen_ = 0;
};

// Builds a tree from what a parser reads, and keeps text of nothing but white space out of it. Must
// live as long as the parser.
class TreeBuilder {
 public:
  explicit TreeBuilder(XmlTree& tree) : tree_(tree), place_(&tree.Top()) {}

  // Replaces the parser's handlers, and refuses document type definitions. False when there is no
  // memory.
  [[nodiscard]] bool AttachTo(xmlParserCtxt& parser);

  bool SawTypeDefinition() const { return sawTypeDefinition_; }

 private:
  static TreeBuilder& Of(void* context);
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

  std::string_view FullName(std::string_view prefix, std::string_view name);
  void AddNamespaces(XmlTreeElement& element, const xmlChar** namespaces, int count);
  void AddAttributes(XmlTreeElement& element, const xmlChar** attributes, int count);
  void AddNode(XmlTreeNode& node);
  void EndText();  // a text comes in pieces

  XmlTree& tree_;
  XmlTreeElement* place_;
  ShortDictionary dictionary_;
  BlankTextFilter<char> rule_;
  std::string text_;
  std::string fullName_;
  std::string value_;
  bool sawTypeDefinition_ = false;
};

// Has a parser read a document. The result says what its declaration said and has no nodes; it is
// null when the parser's handlers make none. The parser knows whether the document is well formed.
xmlDoc* ReadDocument(xmlParserCtxt& parser, std::string_view document);

// Whether a document loads. No tree is built.
bool DocumentLoads(std::string_view document);

// A number that stands for what a document says, whatever its encoding and however its characters
// are written: the same for documents of the same nodes. Nothing for a document that does not load.
std::optional<std::uint64_t> DocumentFingerprint(std::string_view document);

}  // namespace carrovan
