#include <windows.h>

#include <msxml2.h>

#include <algorithm>
#include <limits>

#include "platform/windows/com_handles.h"
#include "platform/windows/msxml_nodes.h"
#include "platform/windows/windows_code_page.h"
#include "platform/windows/windows_file_system.h"
#include "platform/xml_dom.h"
#include "text/text.h"
#include "text/xml_text.h"

namespace carrovan {
namespace {

// DOMDocument60 and its IXMLDOMDocument, which the compiler's import libraries do not name.
constexpr CLSID kDomDocument60 = {
    0x88d96a05, 0xf192, 0x11d4, {0xa6, 0x5f, 0x00, 0x40, 0x96, 0x32, 0x51, 0xe5}};
constexpr IID kXmlDomDocument = {
    0x2933bf81, 0x7b36, 0x11d2, {0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60}};

// The bytes of a file as the DOM takes them. An empty variant when there is no memory.
void PutBytes(const std::string& bytes, Variant& variant) {
  SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
  if (array == nullptr) return;
  variant.Edit().vt = VT_ARRAY | VT_UI1;
  variant.Edit().parray = array;
  void* data = nullptr;
  if (FAILED(SafeArrayAccessData(array, &data))) return;
  std::copy(bytes.begin(), bytes.end(), static_cast<char*>(data));
  SafeArrayUnaccessData(array);
}

// A file of the system's temporary folder, gone at the end.
class TemporaryFile {
 public:
  TemporaryFile() {
    wchar_t folder[MAX_PATH + 1] = {};
    wchar_t path[MAX_PATH + 1] = {};
    if (GetTempPathW(MAX_PATH, folder) == 0) return;
    if (GetTempFileNameW(folder, L"xml", 0, path) != 0) path_ = path;
  }
  ~TemporaryFile() {
    if (!path_.empty()) DeleteFileW(path_.c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::wstring& Path() const { return path_; }  // empty when none could be made

 private:
  std::wstring path_;
};

using DocumentPointer = ComPointer<IXMLDOMDocument>;
using NodePointer = ComPointer<IXMLDOMNode>;

// Null when the DOM cannot make one. White space is kept, to be filtered by the one rule.
DocumentPointer NewDomDocument() {
  void* object = nullptr;
  if (FAILED(CoCreateInstance(kDomDocument60, nullptr, CLSCTX_INPROC_SERVER, kXmlDomDocument,
                              &object))) {
    return {};
  }
  DocumentPointer document(static_cast<IXMLDOMDocument*>(object));
  document.Get()->put_async(VARIANT_FALSE);
  document.Get()->put_resolveExternals(VARIANT_FALSE);
  document.Get()->put_validateOnParse(VARIANT_FALSE);
  document.Get()->put_preserveWhiteSpace(VARIANT_TRUE);
  return document;
}

bool LoadBytes(IXMLDOMDocument* document, const std::string& bytes) {
  if (bytes.empty() || bytes.size() > std::size_t{std::numeric_limits<LONG>::max()}) return false;
  Variant source;
  PutBytes(bytes, source);
  VARIANT_BOOL success = VARIANT_FALSE;
  return document->load(source.Get(), &success) == S_OK && success == VARIANT_TRUE;
}

// Takes the declaration out of the tree.
XmlDeclaration TakeDeclaration(IXMLDOMDocument* document) {
  XmlDeclaration declaration;
  declaration.present = false;
  NodePointer first;
  DOMNodeType type = NODE_INVALID;
  Bstr name;
  if (document->get_firstChild(first.Receive()) != S_OK ||
      FAILED(first.Get()->get_nodeType(&type)) || type != NODE_PROCESSING_INSTRUCTION ||
      FAILED(first.Get()->get_nodeName(name.Receive())) || ViewOf(name.Get()) != L"xml") {
    return declaration;
  }
  Variant text;
  NodePointer removed;
  if (SUCCEEDED(first.Get()->get_nodeValue(text.Receive())) && text.Get().vt == VT_BSTR) {
    declaration = ReadXmlDeclaration(ToUtf8(ViewOf(text.Get().bstrVal)));
  }
  document->removeChild(first.Get(), removed.Receive());
  return declaration;
}

// The tree of a document, written by way of a file of its own.
class MsXmlTree : public WritableTree {
 public:
  explicit MsXmlTree(IXMLDOMDocument* document) : document_(document) {}

  bool Declare(std::string_view text) override {
    TakeDeclaration(document_);
    const Bstr target = NewBstr(L"xml");
    const Bstr data = NewBstr(FromUtf8(text));
    ComPointer<IXMLDOMProcessingInstruction> declaration;
    NodePointer first;
    NodePointer inserted;
    if (document_->createProcessingInstruction(target.Get(), data.Get(), declaration.Receive()) !=
            S_OK ||
        document_->get_firstChild(first.Receive()) != S_OK) {
      return false;
    }
    Variant reference;
    reference.Edit().pdispVal = first.Release();
    reference.Edit().vt = VT_DISPATCH;
    return document_->insertBefore(declaration.Get(), reference.Get(), inserted.Receive()) == S_OK;
  }

  std::optional<std::string> Write() override {
    const TemporaryFile file;
    if (file.Path().empty()) return std::nullopt;
    Variant target;
    target.Edit().bstrVal = NewBstr(file.Path()).Release();
    target.Edit().vt = VT_BSTR;
    std::string bytes;
    const bool written = document_->save(target.Get()) == S_OK &&
                         WindowsFileSystem().ReadBytes(file.Path(), bytes) == kSystemOk;
    return written ? std::optional(std::move(bytes)) : std::nullopt;
  }

 private:
  IXMLDOMDocument* document_;
};

class MsXmlSaving : public SavingSystem {
 public:
  std::unique_ptr<DocumentEncoder> NewEncoder(const std::string& encoding) override {
    return OpenCodePageEncoder(encoding);
  }
  bool Loads(std::string_view document) override {
    const DocumentPointer loaded = NewDomDocument();
    return loaded && LoadBytes(loaded.Get(), std::string(document));
  }
  bool LoadAlike(std::string_view document, std::string_view other) override {
    const std::optional<std::string> body = BodyOfLoaded(document);
    return body && body == BodyOfLoaded(other);
  }

 private:
  static std::optional<std::string> BodyOfLoaded(std::string_view document) {
    const DocumentPointer loaded = NewDomDocument();
    if (!loaded || !LoadBytes(loaded.Get(), std::string(document))) return std::nullopt;
    MsXmlTree tree(loaded.Get());
    return BodyOf(tree);
  }
};

class MsXmlDocument : public XmlDocument {
 public:
  MsXmlDocument(FileSystem& files, const MsXmlNodeOperations& nodes, DocumentPointer document)
      : files_(files), nodes_(nodes), document_(std::move(document)) {}

  bool Load(const std::wstring& path) override {
    loaded_ = false;
    problem_ = L"the document is not well formed";
    std::string bytes;
    if (const SystemCode code = files_.ReadBytes(path, bytes); code != kSystemOk) {
      problem_ = DescribeSystemCode(code);
      return false;
    }
    const bool parsed = LoadBytes(document_.Get(), bytes);
    if (!parsed) NoteParseError();
    if (parsed && HasTypeDefinition()) problem_ = L"the document has a type definition";
    loaded_ = parsed && !HasTypeDefinition();
    if (!loaded_) return false;
    declaration_ = TakeDeclaration(document_.Get());
    FilterBlankText(document_.Get());
    return true;
  }

  std::wstring LoadProblem() const override { return problem_; }

  XmlNode Root() override {
    ComPointer<IXMLDOMElement> root;
    if (!loaded_ || document_.Get()->get_documentElement(root.Receive()) != S_OK) return {};
    return {nodes_, static_cast<IXMLDOMNode*>(root.Release())};
  }

  XmlNode CreateElement(std::string_view name) override {
    ComPointer<IXMLDOMElement> element;
    const Bstr text = NewBstr(FromUtf8(name));
    if (document_.Get()->createElement(text.Get(), element.Receive()) != S_OK) return {};
    return {nodes_, static_cast<IXMLDOMNode*>(element.Release())};
  }

  bool Save(const std::wstring& path) override {
    if (!loaded_) return false;
    MsXmlTree tree(document_.Get());
    std::optional<std::string> body = BodyOf(tree);
    if (!body) return false;
    MsXmlSaving system;
    const std::optional<std::string> bytes = BytesToSave(declaration_, *std::move(body), system);
    return bytes && files_.WriteBytes(path, *bytes) == kSystemOk;
  }

 private:
  void NoteParseError() {
    ComPointer<IXMLDOMParseError> error;
    Bstr reason;
    if (document_.Get()->get_parseError(error.Receive()) != S_OK ||
        error.Get()->get_reason(reason.Receive()) != S_OK || !reason) {
      return;
    }
    LONG line = 0;
    error.Get()->get_line(&line);
    std::wstring text(ViewOf(reason.Get()));
    while (text.ends_with(L'\n') || text.ends_with(L'\r')) text.pop_back();
    std::ranges::replace_if(
        text, [](wchar_t c) { return c == L'\n' || c == L'\r'; }, L' ');
    if (!text.empty()) problem_ = L"line " + std::to_wstring(line) + L": " + text;
  }

  bool HasTypeDefinition() const {
    ComPointer<IXMLDOMDocumentType> definition;
    return document_.Get()->get_doctype(definition.Receive()) == S_OK && definition;
  }

  FileSystem& files_;
  const MsXmlNodeOperations& nodes_;
  DocumentPointer document_;
  XmlDeclaration declaration_;  // the loaded document's; the tree has none
  std::wstring problem_;
  bool loaded_ = false;
};

class MsXmlSession : public XmlSession {
 public:
  explicit MsXmlSession(FileSystem& files) : files_(files) {}

  bool Started() const override { return apartment_.Entered(); }

  std::unique_ptr<XmlDocument> NewDocument() override {
    DocumentPointer document = NewDomDocument();
    if (!document) return nullptr;
    return std::make_unique<MsXmlDocument>(files_, nodes_, std::move(document));
  }

 private:
  FileSystem& files_;
  ComApartment apartment_;
  MsXmlNodeOperations nodes_;
};

class MsXmlDom : public XmlDom {
 public:
  explicit MsXmlDom(FileSystem& files) : files_(files) {}

  std::unique_ptr<XmlSession> Begin() override { return std::make_unique<MsXmlSession>(files_); }

 private:
  FileSystem& files_;
};

}  // namespace

std::unique_ptr<XmlDom> OpenXmlDom(FileSystem& files) { return std::make_unique<MsXmlDom>(files); }

}  // namespace carrovan
