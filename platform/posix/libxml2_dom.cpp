#include <libxml/parser.h>

#include <libxml/tree.h>

#include <algorithm>
#include <limits>
#include <string_view>
#include <vector>

#include "platform/posix/iconv_encoder.h"
#include "platform/posix/libxml2_reading.h"
#include "platform/posix/xml_tree.h"
#include "platform/xml_dom.h"
#include "text/text.h"
#include "text/xml_text.h"

namespace carrovan {
namespace {

using DocOwner = std::unique_ptr<xmlDoc, Freer<xmlFreeDoc>>;

XmlTreeNode& AsNode(XmlNodeOperations::Handle handle) { return *static_cast<XmlTreeNode*>(handle); }

XmlNodeOperations::Handle AsHandle(XmlTreeNode* node) { return node; }

std::string TextBelow(const XmlTreeElement& top) {
  std::string text;
  for (const XmlTreeNode* node = NextBelow(top, &top); node != nullptr;
       node = NextBelow(top, node)) {
    const bool holdsText = node->kind == XmlTreeKind::kText || node->kind == XmlTreeKind::kCdata;
    if (holdsText) text.append(node->text);
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

XmlDeclaration DeclarationOf(const xmlDoc& document) {
  constexpr int kNoDeclaration = -1;
  XmlDeclaration declaration;
  declaration.present = document.standalone != kNoDeclaration;
  if (document.version != nullptr) declaration.version = AsChars(document.version);
  if (declaration.present) declaration.encoding = ViewOf(document.encoding);
  if (document.standalone >= 0) declaration.standalone = document.standalone == 1;
  return declaration;
}

// A document that was read.
struct ReadXml {
  explicit ReadXml(XmlNames& names) : tree(names) {}

  XmlTree tree;
  XmlDeclaration declaration;
  bool hasEncoding = false;
};

// Says what is wrong when there is no document.
std::unique_ptr<ReadXml> Parse(std::string_view bytes, XmlNames& names, std::wstring& problem) {
  problem = L"the document cannot be held in memory";
  if (bytes.size() > std::size_t{std::numeric_limits<int>::max()}) return nullptr;
  auto read = std::make_unique<ReadXml>(names);
  TreeBuilder builder(read->tree);
  const ParserOwner parser(xmlNewParserCtxt());
  if (parser == nullptr || !builder.AttachTo(*parser)) return nullptr;
  const DocOwner document(ReadDocument(*parser, bytes));
  const bool accepted = parser->wellFormed != 0 && parser->nsWellFormed != 0 &&
                        !builder.SawTypeDefinition() && document != nullptr;
  if (!accepted) {
    problem = ProblemOf(*parser, builder.SawTypeDefinition());
    return nullptr;
  }
  read->declaration = DeclarationOf(*document);
  read->hasEncoding = document->encoding != nullptr;
  return read;
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
  LibXml2Document(FileSystem& files, XmlNames& names) : files_(files), names_(names) {}

  bool Load(const std::wstring& path) override {
    std::string bytes;
    if (const SystemCode code = files_.ReadBytes(path, bytes); code != kSystemOk) {
      problem_ = DescribeSystemCode(code);
      return false;
    }
    document_ = Parse(bytes, names_, problem_);
    loadedBytes_ = bytes.size();
    return document_ != nullptr;
  }

  std::wstring LoadProblem() const override { return problem_; }

  XmlNode Root() override {
    return {*this, document_ == nullptr ? nullptr : AsHandle(document_->tree.Root())};
  }

  XmlNode CreateElement(std::string_view name) override {
    if (document_ == nullptr) return {};
    const std::string terminated(name);
    if (xmlValidateName(AsXmlText(terminated), 0) != 0) return {};
    return {*this, AsHandle(&document_->tree.NewElement(name))};
  }

  bool Save(const std::wstring& path) override {
    if (document_ == nullptr) return false;
    std::string body;
    // Growing step by step would copy it often; room that stays empty takes no memory.
    body.reserve(2 * loadedBytes_);
    AppendXml(document_->tree, !document_->hasEncoding, body);
    LibXml2Saving system;
    const std::optional<std::string> bytes =
        BytesToSave(document_->declaration, std::move(body), system);
    return bytes && files_.WriteBytes(path, *bytes) == kSystemOk;
  }

 private:
  void AddReference(Handle) const override {}
  void DropReference(Handle) const override {}

  XmlNodeKind Kind(Handle handle) const override {
    switch (AsNode(handle).kind) {
      case XmlTreeKind::kElement:
        return XmlNodeKind::kElement;
      case XmlTreeKind::kText:
        return XmlNodeKind::kText;
      default:
        return XmlNodeKind::kOther;
    }
  }

  std::string_view Name(Handle handle) const override {
    const XmlTreeNode& node = AsNode(handle);
    switch (node.kind) {
      case XmlTreeKind::kElement:
        return node.text;
      case XmlTreeKind::kText:
        return "#text";
      case XmlTreeKind::kCdata:
        return "#cdata-section";
      case XmlTreeKind::kComment:
        return "#comment";
      case XmlTreeKind::kInstruction:
        return static_cast<const XmlTreeInstruction&>(node).target;
    }
    return {};
  }

  Handle FirstChild(Handle handle) const override {
    const XmlTreeElement* const element = AsElement(&AsNode(handle));
    return element == nullptr ? nullptr : AsHandle(element->first);
  }

  Handle NextSibling(Handle handle) const override { return AsHandle(AsNode(handle).next); }

  std::wstring Text(Handle handle) const override {
    const XmlTreeNode& node = AsNode(handle);
    const XmlTreeElement* const element = AsElement(&node);
    return FromUtf8(element == nullptr ? std::string(node.text) : TextBelow(*element));
  }

  std::optional<std::wstring> Attribute(Handle handle, std::string_view name) const override {
    const XmlTreeElement* const element = AsElement(&AsNode(handle));
    const XmlTreeAttribute* attribute = element == nullptr ? nullptr : element->attributes;
    while (attribute != nullptr && attribute->name != name) attribute = attribute->next;
    return attribute == nullptr ? std::nullopt : std::optional(FromUtf8(attribute->value));
  }

  std::vector<XmlAttribute> Attributes(Handle handle) const override {
    std::vector<XmlAttribute> attributes;
    const XmlTreeElement* const element = AsElement(&AsNode(handle));
    const XmlTreeAttribute* attribute = element == nullptr ? nullptr : element->attributes;
    for (; attribute != nullptr; attribute = attribute->next) {
      attributes.push_back({FromUtf8(attribute->name), FromUtf8(attribute->value)});
    }
    return attributes;
  }

  bool SetText(Handle handle, std::wstring_view text) const override {
    XmlTreeNode& node = AsNode(handle);
    const std::string utf8 = ToUtf8(text);
    XmlTree& tree = document_->tree;
    XmlTreeElement* const element = AsElement(&node);
    if (element == nullptr) {
      tree.SetText(node, utf8);
      return true;
    }
    while (element->first != nullptr) XmlTree::TakeOut(*element->first);
    XmlTree::Append(*element, tree.NewNode(XmlTreeKind::kText, utf8));
    return true;
  }

  bool CopyText(Handle target, Handle source) const override {
    XmlTreeNode& to = AsNode(target);
    const std::string_view text = AsNode(source).text;
    if (to.text != text) document_->tree.SetText(to, text);
    return true;
  }

  bool AppendChild(Handle parent, Handle child) const override {
    XmlTreeElement* const element = AsElement(&AsNode(parent));
    if (element != nullptr) XmlTree::Append(*element, AsNode(child));
    return element != nullptr;
  }

  bool AppendCopy(Handle parent, Handle source) const override {
    XmlTreeElement* const element = AsElement(&AsNode(parent));
    if (element != nullptr) document_->tree.AppendCopy(*element, AsNode(source));
    return element != nullptr;
  }

  bool RemoveChild(Handle parent, Handle child) const override {
    if (AsNode(child).parent != &AsNode(parent)) return false;
    XmlTree::TakeOut(AsNode(child));
    return true;
  }

  FileSystem& files_;
  XmlNames& names_;
  std::size_t loadedBytes_ = 0;
  std::wstring problem_;
  std::unique_ptr<ReadXml> document_;
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
  explicit LibXml2Session(FileSystem& files) : files_(files) {}

  bool Started() const override { return true; }

  std::unique_ptr<XmlDocument> NewDocument() override {
    return std::make_unique<LibXml2Document>(files_, names_);
  }

 private:
  SilentErrors silentErrors_;
  FileSystem& files_;
  XmlNames names_;  // of all documents, so that each name is there once
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
