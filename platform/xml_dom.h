#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/file_system.h"

namespace carrovan {

// Its name comes with its prefix.
struct XmlAttribute {
  std::wstring name;
  std::wstring value;
};

enum class XmlNodeKind { kElement, kText, kOther };

// What a DOM does with its nodes. Engine rooms use XmlNode, which calls this. Handles that are
// returned carry a reference that the caller drops; null stands for no node.
class XmlNodeOperations {
 public:
  using Handle = void*;
  virtual ~XmlNodeOperations() = default;

  virtual void AddReference(Handle node) const = 0;
  virtual void DropReference(Handle node) const = 0;
  virtual XmlNodeKind Kind(Handle node) const = 0;
  virtual std::string_view Name(Handle node) const = 0;
  virtual Handle FirstChild(Handle node) const = 0;
  virtual Handle NextSibling(Handle node) const = 0;
  virtual std::wstring Text(Handle node) const = 0;
  virtual std::optional<std::wstring> Attribute(Handle node, std::string_view name) const = 0;
  virtual std::vector<XmlAttribute> Attributes(Handle node) const = 0;
  [[nodiscard]] virtual bool SetText(Handle node, std::wstring_view text) const = 0;
  [[nodiscard]] virtual bool CopyText(Handle target, Handle source) const = 0;
  [[nodiscard]] virtual bool AppendChild(Handle parent, Handle child) const = 0;
  [[nodiscard]] virtual bool AppendCopy(Handle parent, Handle source) const = 0;
  [[nodiscard]] virtual bool RemoveChild(Handle parent, Handle child) const = 0;
};

// A counted reference to one node, or to none. It must not outlive its document.
class XmlNode {
 public:
  using Handle = XmlNodeOperations::Handle;

  XmlNode() = default;
  // Takes over the handle's reference.
  XmlNode(const XmlNodeOperations& operations, Handle handle)
      : operations_(&operations), handle_(handle) {}
  XmlNode(const XmlNode& other) : operations_(other.operations_), handle_(other.handle_) {
    if (handle_ != nullptr) operations_->AddReference(handle_);
  }
  XmlNode(XmlNode&& other) noexcept
      : operations_(other.operations_), handle_(std::exchange(other.handle_, nullptr)) {}
  XmlNode& operator=(XmlNode other) noexcept {
    std::swap(operations_, other.operations_);
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~XmlNode() {
    if (handle_ != nullptr) operations_->DropReference(handle_);
  }
  explicit operator bool() const { return handle_ != nullptr; }

  bool IsElement() const { return operations_->Kind(handle_) == XmlNodeKind::kElement; }
  // A CDATA section is not a text node.
  bool IsText() const { return operations_->Kind(handle_) == XmlNodeKind::kText; }

  // The node's name with its prefix, as UTF-8 because every comparison of a merge asks for it.
  // Other nodes than elements answer "#text", "#comment" or an instruction's target. The view holds
  // as long as the node's document. A session keeps each element name once: elements of the same
  // name, in whichever of its documents, answer the same address.
  std::string_view Name() const { return operations_->Name(handle_); }

  XmlNode FirstChild() const { return {*operations_, operations_->FirstChild(handle_)}; }
  XmlNode NextSibling() const { return {*operations_, operations_->NextSibling(handle_)}; }

  // The text of the node, or of all text and CDATA below it, as stored: nothing is trimmed.
  std::wstring Text() const { return operations_->Text(handle_); }

  // The value of an element's attribute; nothing when it has none of that name. The name is one
  // without a prefix.
  std::optional<std::wstring> Attribute(std::string_view name) const {
    return operations_->Attribute(handle_, name);
  }

  // All attributes of an element, without the declarations of namespaces. Their order is that of
  // the document as far as the DOM keeps it.
  std::vector<XmlAttribute> Attributes() const { return operations_->Attributes(handle_); }

  // Replaces the content of a text node, or all children of an element.
  [[nodiscard]] bool SetText(std::wstring_view text) const {
    return operations_->SetText(handle_, text);
  }
  // Both are text nodes; the other may belong to another document of the same session.
  [[nodiscard]] bool CopyTextFrom(const XmlNode& source) const {
    return operations_->CopyText(handle_, source.handle_);
  }
  // Makes a created or removed node of the same document the last child.
  [[nodiscard]] bool AppendChild(const XmlNode& child) const {
    return operations_->AppendChild(handle_, child.handle_);
  }
  // Makes a deep copy, attributes included, the last child. The source may belong to another
  // document of the same session. Nothing is appended on failure.
  [[nodiscard]] bool AppendCopy(const XmlNode& source) const {
    return operations_->AppendCopy(handle_, source.handle_);
  }
  [[nodiscard]] bool RemoveChild(const XmlNode& child) const {
    return operations_->RemoveChild(handle_, child.handle_);
  }

 private:
  const XmlNodeOperations* operations_ = nullptr;
  Handle handle_ = nullptr;
};

class XmlDocument {
 public:
  virtual ~XmlDocument() = default;

  // Drops text of nothing but white space, unless xml:space="preserve" holds; keeps comments,
  // instructions, CDATA and the declaration.
  // False for a file that is missing, not well formed, or has a document type definition.
  [[nodiscard]] virtual bool Load(const std::wstring& path) = 0;
  // Why the last Load gave false, in the parser's own words; one line.
  virtual std::wstring LoadProblem() const = 0;
  // No node when nothing was loaded.
  virtual XmlNode Root() = 0;
  // An element outside the tree; no node when the DOM refuses.
  virtual XmlNode CreateElement(std::string_view name) = 0;
  // Writes the encoding that the document's declaration names, UTF-8 when it names none or when
  // that encoding cannot hold the document; the written declaration says so. What is written loads
  // again. False, and the file is as it was, when that is not so or the file cannot be written.
  [[nodiscard]] virtual bool Save(const std::wstring& path) = 0;
};

// The time during which documents are used; they must be gone before it ends.
class XmlSession {
 public:
  virtual ~XmlSession() = default;

  // False when the DOM could not be started on this thread. Documents may be asked for even so.
  virtual bool Started() const = 0;
  // Null when the DOM cannot make one.
  virtual std::unique_ptr<XmlDocument> NewDocument() = 0;
};

class XmlDom {
 public:
  virtual ~XmlDom() = default;
  virtual std::unique_ptr<XmlSession> Begin() = 0;
};

// The DOM of this system, its documents read and written through the given files.
std::unique_ptr<XmlDom> OpenXmlDom(FileSystem& files);

}  // namespace carrovan
