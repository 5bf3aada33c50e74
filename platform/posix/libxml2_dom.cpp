#include <libxml/parser.h>

#include <libxml/dict.h>
#include <libxml/xmlsave.h>

#include <algorithm>
#include <limits>
#include <new>
#include <string_view>

#include "platform/posix/iconv_encoder.h"
#include "platform/posix/libxml2_reading.h"
#include "platform/posix/libxml2_writing.h"
#include "platform/xml_dom.h"
#include "text/text.h"
#include "text/xml_text.h"

namespace carrovan {
namespace {

constexpr xmlChar kNoText[] = "";
constexpr xmlChar kDetachedName[] = "detached";

using DictOwner = std::unique_ptr<xmlDict, Freer<xmlDictFree>>;
using DocOwner = std::unique_ptr<xmlDoc, Freer<xmlFreeDoc>>;
using NodeOwner = std::unique_ptr<xmlNode, Freer<xmlFreeNode>>;
struct TextFreer {
  void operator()(xmlChar* text) const { xmlFree(text); }
};
using TextOwner = std::unique_ptr<xmlChar, TextFreer>;

xmlNode* AsNode(XmlNodeOperations::Handle handle) { return static_cast<xmlNode*>(handle); }

const xmlChar* ContentOf(const xmlNode& text) {
  return text.content == nullptr ? kNoText : text.content;
}

bool HoldsText(const xmlNode& node) {
  return node.type == XML_TEXT_NODE || node.type == XML_CDATA_SECTION_NODE;
}

// The next node of the tree below `top` in document order; null after the last.
const xmlNode* NextBelow(const xmlNode& top, const xmlNode* node) {
  if (node->type == XML_ELEMENT_NODE && node->children != nullptr) return node->children;
  while (node != &top && node->next == nullptr) node = node->parent;
  return node == &top ? nullptr : node->next;
}

std::string TextBelow(const xmlNode& top) {
  std::string text;
  for (const xmlNode* node = NextBelow(top, &top); node != nullptr; node = NextBelow(top, node)) {
    if (HoldsText(*node)) text.append(AsChars(ContentOf(*node)));
  }
  return text;
}

std::wstring ProblemOf(xmlParserCtxt& parser, bool hasTypeDefinition) {
  if (hasTypeDefinition) return L"the document has a type definition";
  const xmlError* const error = xmlCtxtGetLastError(&parser);
  if (error == nullptr || error->message == nullptr) return L"the document is not well formed";
  std::wstring text = FromUtf8(error->message);
  while (!text.empty() && text.back() == L'\n') text.pop_back();
  std::ranges::replace(text, L'\n', L' ');
  return L"line " + std::to_wstring(error->line) + L": " + text;
}

// A parser that keeps its names in the given dictionary; null when there is no memory.
ParserOwner NewParser(xmlDict& names) {
  ParserOwner parser(xmlNewParserCtxt());
  if (parser == nullptr) return nullptr;
  xmlDictFree(parser->dict);
  parser->dict = &names;
  xmlDictReference(&names);
  return parser;
}

// Says what is wrong when there is no document.
DocOwner Parse(std::string_view bytes, xmlDict& names, std::wstring& problem) {
  problem = L"the document cannot be held in memory";
  if (bytes.size() > std::size_t{std::numeric_limits<int>::max()}) return nullptr;
  const ParserOwner parser = NewParser(names);
  if (parser == nullptr) return nullptr;
  ParserTextFilter filter;
  filter.AttachTo(*parser);
  DocOwner document(ReadDocument(*parser, bytes));
  const bool accepted = parser->wellFormed != 0 && parser->nsWellFormed != 0 &&
                        !filter.SawTypeDefinition() && document != nullptr;
  if (accepted) return document;
  problem = ProblemOf(*parser, filter.SawTypeDefinition());
  return nullptr;
}

XmlDeclaration DeclarationOf(const xmlDoc& document) {
  constexpr int kNoDeclaration = -1;
  XmlDeclaration declaration;
  declaration.present = document.standalone != kNoDeclaration;
  if (document.version != nullptr) declaration.version = AsChars(document.version);
  if (declaration.present) declaration.encoding = ViewOf(document.encoding);
  if (document.standalone >= 0) declaration.standalone = document.standalone == 1;
  return declaration;
}

int AppendToString(void* target, const char* bytes, int length) {
  static_cast<std::string*>(target)->append(bytes, static_cast<std::size_t>(length));
  return length;
}

// Appends the document without its declaration, as UTF-8.
bool AppendBody(xmlDoc& document, std::string& text) {
  xmlOutputBuffer* const out = xmlOutputBufferCreateIO(AppendToString, nullptr, &text, nullptr);
  if (out == nullptr) return false;
  for (xmlNode* node = document.children; node != nullptr; node = node->next) {
    xmlNodeDumpOutput(out, &document, node, 0, 0, "UTF-8");
    xmlOutputBufferWriteString(out, "\n");
  }
  const int error = out->error;
  return xmlOutputBufferClose(out) >= 0 && error == 0;
}

class LibXml2Saving : public SavingSystem {
 public:
  std::unique_ptr<DocumentEncoder> NewEncoder(const std::string& encoding) override {
    return OpenIconvEncoder(encoding);
  }
  bool Loads(std::string_view document) override { return DocumentLoads(document); }
  bool LoadAlike(std::string_view document, std::string_view other) override {
    const std::optional<std::uint64_t> print = DocumentFingerprint(document);
    return print && print == DocumentFingerprint(other);
  }
};

class LibXml2Document : private XmlNodeOperations, public XmlDocument {
 public:
  LibXml2Document(FileSystem& files, xmlDict& names) : files_(files), names_(names) {}

  bool Load(const std::wstring& path) override {
    std::string bytes;
    if (const SystemCode code = files_.ReadBytes(path, bytes); code != kSystemOk) {
      problem_ = DescribeSystemCode(code);
      return false;
    }
    detached_.reset();
    document_ = Parse(bytes, names_, problem_);
    loadedBytes_ = bytes.size();
    if (document_ == nullptr) return false;
    detached_.reset(NewElement(*document_, kDetachedName));
    return detached_ != nullptr;
  }

  std::wstring LoadProblem() const override { return problem_; }

  XmlNode Root() override {
    return {*this, document_ == nullptr ? nullptr : xmlDocGetRootElement(document_.get())};
  }

  XmlNode CreateElement(std::string_view name) override {
    if (document_ == nullptr) return {};
    const std::string terminated(name);
    if (xmlValidateName(AsXmlText(terminated), 0) != 0) return {};
    xmlNode* const element = NewElement(*document_, AsXmlText(terminated));
    if (element != nullptr) LinkAsLastChild(*detached_, *element);
    return {*this, element};
  }

  bool Save(const std::wstring& path) override {
    std::string body;
    // Growing step by step would copy it often; room that stays empty takes no memory.
    body.reserve(2 * loadedBytes_);
    if (document_ == nullptr || !AppendBody(*document_, body)) return false;
    LibXml2Saving system;
    const std::optional<std::string> bytes =
        BytesToSave(DeclarationOf(*document_), std::move(body), system);
    return bytes && files_.WriteBytes(path, *bytes) == kSystemOk;
  }

 private:
  void AddReference(Handle) const override {}
  void DropReference(Handle) const override {}

  XmlNodeKind Kind(Handle handle) const override {
    switch (AsNode(handle)->type) {
      case XML_ELEMENT_NODE:
        return XmlNodeKind::kElement;
      case XML_TEXT_NODE:
        return XmlNodeKind::kText;
      default:
        return XmlNodeKind::kOther;
    }
  }

  std::string_view Name(Handle handle) const override {
    const xmlNode& node = *AsNode(handle);
    if (node.type == XML_TEXT_NODE) return "#text";
    if (node.type == XML_COMMENT_NODE) return "#comment";
    if (node.type == XML_CDATA_SECTION_NODE) return "#cdata-section";
    if (node.type != XML_ELEMENT_NODE || node.ns == nullptr || node.ns->prefix == nullptr) {
      return AsChars(node.name);
    }
    const std::string name = std::string(AsChars(node.ns->prefix)) + ":" + AsChars(node.name);
    const xmlChar* const kept = xmlDictLookup(&names_, AsXmlText(name), -1);
    if (kept == nullptr) throw std::bad_alloc();
    return AsChars(kept);
  }

  Handle FirstChild(Handle handle) const override {
    const xmlNode& node = *AsNode(handle);
    return node.type == XML_ELEMENT_NODE ? node.children : nullptr;
  }

  Handle NextSibling(Handle handle) const override { return AsNode(handle)->next; }

  std::wstring Text(Handle handle) const override {
    const xmlNode& node = *AsNode(handle);
    return node.type == XML_ELEMENT_NODE ? FromUtf8(TextBelow(node))
                                         : FromUtf8(AsChars(ContentOf(node)));
  }

  std::optional<std::wstring> Attribute(Handle handle, std::string_view name) const override {
    const std::string terminated(name);
    const TextOwner value(xmlGetNoNsProp(AsNode(handle), AsXmlText(terminated)));
    if (value == nullptr) return std::nullopt;
    return FromUtf8(AsChars(value.get()));
  }

  bool SetText(Handle handle, std::wstring_view text) const override {
    xmlNode& node = *AsNode(handle);
    const std::string utf8 = ToUtf8(text);
    if (node.type != XML_ELEMENT_NODE) {
      xmlNodeSetContent(&node, AsXmlText(utf8));
      return true;
    }
    xmlNode* const content = xmlNewDocText(node.doc, AsXmlText(utf8));
    if (content == nullptr) return false;
    MoveChildrenOut(node);
    LinkAsLastChild(node, *content);
    return true;
  }

  bool CopyText(Handle target, Handle source) const override {
    xmlNode& to = *AsNode(target);
    const xmlChar* const text = ContentOf(*AsNode(source));
    if (!xmlStrEqual(ContentOf(to), text)) xmlNodeSetContent(&to, text);
    return true;
  }

  bool AppendChild(Handle parent, Handle child) const override {
    xmlUnlinkNode(AsNode(child));
    LinkAsLastChild(*AsNode(parent), *AsNode(child));
    return true;
  }

  bool AppendCopy(Handle parent, Handle source) const override {
    return AppendDeepCopy(*AsNode(parent), *AsNode(source)) != nullptr;
  }

  bool RemoveChild(Handle parent, Handle child) const override {
    if (AsNode(child)->parent != AsNode(parent)) return false;
    return AppendChild(detached_.get(), child);
  }

  // Nodes that somebody may still refer to stay alive with the document.
  void MoveChildrenOut(xmlNode& element) const {
    while (element.children != nullptr) AppendChild(detached_.get(), element.children);
  }

  FileSystem& files_;
  xmlDict& names_;
  std::size_t loadedBytes_ = 0;
  std::wstring problem_;
  DocOwner document_;
  NodeOwner detached_;  // parent of the elements that are in no tree; freed before the document
};

// libxml2 prints what is wrong with an encoding even when it is asked to be silent. While this
// exists, nothing on this thread is printed; what is wrong is still known to the parser.
class SilentErrors {
 public:
  SilentErrors() : formerHandler_(xmlStructuredError), formerContext_(xmlStructuredErrorContext) {
    xmlSetStructuredErrorFunc(nullptr, [](void*, auto*) {});
  }
  ~SilentErrors() { xmlSetStructuredErrorFunc(formerContext_, formerHandler_); }
  SilentErrors(const SilentErrors&) = delete;
  SilentErrors& operator=(const SilentErrors&) = delete;

 private:
  xmlStructuredErrorFunc formerHandler_;
  void* formerContext_;
};

class LibXml2Session : public XmlSession {
 public:
  explicit LibXml2Session(FileSystem& files) : files_(files), names_(xmlDictCreate()) {}

  bool Started() const override { return names_ != nullptr; }

  std::unique_ptr<XmlDocument> NewDocument() override {
    return Started() ? std::make_unique<LibXml2Document>(files_, *names_) : nullptr;
  }

 private:
  SilentErrors silentErrors_;
  FileSystem& files_;
  DictOwner names_;  // of all documents, so that each name is there once
};

class LibXml2Dom : public XmlDom {
 public:
  explicit LibXml2Dom(FileSystem& files) : files_(files) {}

  std::unique_ptr<XmlSession> Begin() override { return std::make_unique<LibXml2Session>(files_); }

 private:
  FileSystem& files_;
};

}  // namespace

std::unique_ptr<XmlDom> OpenXmlDom(FileSystem& files) {
  return std::make_unique<LibXml2Dom>(files);
}

}  // namespace carrovan
