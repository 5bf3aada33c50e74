#include "tests/merge/counting_dom.h"

#include <utility>
#include <vector>

namespace carrovan {
namespace {

std::size_t NodesOf(const XmlNode& top) {
  std::size_t nodes = 1;
  if (!top.IsElement()) return nodes;
  for (XmlNode child = top.FirstChild(); child; child = child.NextSibling()) {
    nodes += NodesOf(child);
  }
  return nodes;
}

// A handle is one of these.
struct CountedNode {
  XmlNode node;
  int references = 1;
};

CountedNode& Of(XmlNodeOperations::Handle handle) { return *static_cast<CountedNode*>(handle); }

class CountingOperations : public XmlNodeOperations {
 public:
  explicit CountingOperations(std::size_t& steps) : steps_(steps) {}

  XmlNode Wrapped(XmlNode node) const { return {*this, HandleOf(std::move(node))}; }

  void AddReference(Handle handle) const override { ++Of(handle).references; }
  void DropReference(Handle handle) const override {
    if (--Of(handle).references == 0) delete &Of(handle);
  }
  XmlNodeKind Kind(Handle handle) const override {
    const XmlNode& node = Counted(handle);
    return node.IsElement() ? XmlNodeKind::kElement
           : node.IsText()  ? XmlNodeKind::kText
                            : XmlNodeKind::kOther;
  }
  std::string_view Name(Handle handle) const override {
    const std::string_view name = Counted(handle).Name();
    steps_ += name.size();
    return name;
  }
  Handle FirstChild(Handle handle) const override { return HandleOf(Counted(handle).FirstChild()); }
  Handle NextSibling(Handle handle) const override {
    return HandleOf(Counted(handle).NextSibling());
  }
  std::wstring Text(Handle handle) const override {
    const XmlNode& node = Counted(handle);
    std::wstring text = node.Text();
    steps_ += NodesOf(node) + text.size();
    return text;
  }
  std::optional<std::wstring> Attribute(Handle handle, std::string_view name) const override {
    return Counted(handle).Attribute(name);
  }
  std::vector<XmlAttribute> Attributes(Handle handle) const override {
    return Counted(handle).Attributes();
  }
  bool SetText(Handle handle, std::wstring_view text) const override {
    steps_ += text.size();
    return Counted(handle).SetText(text);
  }
  bool CopyText(Handle target, Handle source) const override {
    steps_ += Of(source).node.Text().size();
    return Counted(target).CopyTextFrom(Of(source).node);
  }
  bool AppendChild(Handle parent, Handle child) const override {
    return Counted(parent).AppendChild(Of(child).node);
  }
  bool AppendCopy(Handle parent, Handle source) const override {
    steps_ += NodesOf(Of(source).node);
    return Counted(parent).AppendCopy(Of(source).node);
  }
  bool RemoveChild(Handle parent, Handle child) const override {
    return Counted(parent).RemoveChild(Of(child).node);
  }

 private:
  static Handle HandleOf(XmlNode node) { return node ? new CountedNode{std::move(node)} : nullptr; }
  const XmlNode& Counted(Handle handle) const {
    ++steps_;
    return Of(handle).node;
  }

  std::size_t& steps_;
};

class CountingDocument : public XmlDocument {
 public:
  CountingDocument(const CountingOperations& operations, std::unique_ptr<XmlDocument> document)
      : operations_(operations), document_(std::move(document)) {}

  bool Load(const std::wstring& path) override { return document_->Load(path); }
  std::wstring LoadProblem() const override { return document_->LoadProblem(); }
  XmlNode Root() override { return operations_.Wrapped(document_->Root()); }
  XmlNode CreateElement(std::string_view name) override {
    return operations_.Wrapped(document_->CreateElement(name));
  }
  bool Save(const std::wstring& path) override { return document_->Save(path); }

 private:
  const CountingOperations& operations_;
  std::unique_ptr<XmlDocument> document_;
};

class CountingSession : public XmlSession {
 public:
  CountingSession(std::size_t& steps, std::unique_ptr<XmlSession> session)
      : operations_(steps), session_(std::move(session)) {}

  bool Started() const override { return session_->Started(); }
  std::unique_ptr<XmlDocument> NewDocument() override {
    std::unique_ptr<XmlDocument> document = session_->NewDocument();
    if (document == nullptr) return nullptr;
    return std::make_unique<CountingDocument>(operations_, std::move(document));
  }

 private:
  CountingOperations operations_;
  std::unique_ptr<XmlSession> session_;
};

}  // namespace

std::unique_ptr<XmlSession> CountingDom::Begin() {
  return std::make_unique<CountingSession>(steps_, dom_.Begin());
}

}  // namespace carrovan
