#include "platform/windows/msxml_nodes.h"

#include <windows.h>

#include <msxml2.h>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/windows/com_handles.h"
#include "text/text.h"
#include "text/xml_text.h"

namespace carrovan {
namespace {

using NodePointer = ComPointer<IXMLDOMNode>;

IXMLDOMNode* AsNode(XmlNodeOperations::Handle handle) { return static_cast<IXMLDOMNode*>(handle); }

DOMNodeType TypeOf(IXMLDOMNode* node) {
  DOMNodeType type = NODE_INVALID;
  return SUCCEEDED(node->get_nodeType(&type)) ? type : NODE_INVALID;
}

NodePointer FirstChildOf(IXMLDOMNode* node) {
  NodePointer child;
  node->get_firstChild(child.Receive());
  return child;
}

NodePointer NextSiblingOf(IXMLDOMNode* node) {
  NodePointer sibling;
  node->get_nextSibling(sibling.Receive());
  return sibling;
}

// The value and not the text, which comes trimmed.
void AppendValue(IXMLDOMNode* node, std::wstring& text) {
  Variant value;
  if (FAILED(node->get_nodeValue(value.Receive())) || value.Get().vt != VT_BSTR) return;
  text.append(ViewOf(value.Get().bstrVal));
}

void AppendTextBelow(IXMLDOMNode* top, std::wstring& text) {
  std::vector<NodePointer> pending;  // the next node of each level
  pending.push_back(FirstChildOf(top));
  while (!pending.empty()) {
    const NodePointer node = std::move(pending.back());
    pending.pop_back();
    if (!node) continue;
    pending.push_back(NextSiblingOf(node.Get()));
    const DOMNodeType type = TypeOf(node.Get());
    if (type == NODE_TEXT || type == NODE_CDATA_SECTION) AppendValue(node.Get(), text);
    if (type == NODE_ELEMENT) pending.push_back(FirstChildOf(node.Get()));
  }
}

}  // namespace

void MsXmlNodeOperations::AddReference(Handle node) const { AsNode(node)->AddRef(); }

void MsXmlNodeOperations::DropReference(Handle node) const { AsNode(node)->Release(); }

XmlNodeKind MsXmlNodeOperations::Kind(Handle node) const {
  const DOMNodeType type = TypeOf(AsNode(node));
  if (type == NODE_ELEMENT) return XmlNodeKind::kElement;
  return type == NODE_TEXT ? XmlNodeKind::kText : XmlNodeKind::kOther;
}

std::string_view MsXmlNodeOperations::Name(Handle node) const {
  Bstr name;
  AsNode(node)->get_nodeName(name.Receive());
  const std::wstring_view view = ViewOf(name.Get());
  auto known = names_.find(view);
  if (known == names_.end()) known = names_.emplace(view, ToUtf8(view)).first;
  return known->second;
}

XmlNodeOperations::Handle MsXmlNodeOperations::FirstChild(Handle node) const {
  return FirstChildOf(AsNode(node)).Release();
}

XmlNodeOperations::Handle MsXmlNodeOperations::NextSibling(Handle node) const {
  return NextSiblingOf(AsNode(node)).Release();
}

std::wstring MsXmlNodeOperations::Text(Handle node) const {
  std::wstring text;
  if (TypeOf(AsNode(node)) == NODE_ELEMENT) {
    AppendTextBelow(AsNode(node), text);
  } else {
    AppendValue(AsNode(node), text);
  }
  return text;
}

std::optional<std::wstring> MsXmlNodeOperations::Attribute(Handle node,
                                                           std::string_view name) const {
  ComPointer<IXMLDOMNamedNodeMap> attributes;
  if (AsNode(node)->get_attributes(attributes.Receive()) != S_OK) return std::nullopt;
  const Bstr text = NewBstr(FromUtf8(name));
  NodePointer attribute;
  if (attributes.Get()->getNamedItem(text.Get(), attribute.Receive()) != S_OK) return std::nullopt;
  std::wstring value;
  AppendValue(attribute.Get(), value);
  return value;
}

std::vector<XmlAttribute> MsXmlNodeOperations::Attributes(Handle node) const {
  std::vector<XmlAttribute> attributes;
  ComPointer<IXMLDOMNamedNodeMap> map;
  if (AsNode(node)->get_attributes(map.Receive()) != S_OK) return attributes;
  for (;;) {
    NodePointer attribute;
    if (map.Get()->nextNode(attribute.Receive()) != S_OK || !attribute) return attributes;
    Bstr name;
    attribute.Get()->get_nodeName(name.Receive());
    const std::wstring_view view = ViewOf(name.Get());
    // This DOM counts declarations of namespaces among the attributes.
    if (view == L"xmlns" || view.starts_with(L"xmlns:")) continue;
    std::wstring value;
    AppendValue(attribute.Get(), value);
    attributes.push_back({std::wstring(view), std::move(value)});
  }
}

bool MsXmlNodeOperations::SetText(Handle node, std::wstring_view text) const {
  Variant value;
  value.Edit().bstrVal = NewBstr(text).Release();
  value.Edit().vt = VT_BSTR;
  if (TypeOf(AsNode(node)) == NODE_ELEMENT) {
    return SUCCEEDED(AsNode(node)->put_text(value.Get().bstrVal));
  }
  return SUCCEEDED(AsNode(node)->put_nodeValue(value.Get()));
}

bool MsXmlNodeOperations::CopyText(Handle target, Handle source) const {
  Variant value;
  return SUCCEEDED(AsNode(source)->get_nodeValue(value.Receive())) &&
         SUCCEEDED(AsNode(target)->put_nodeValue(value.Get()));
}

bool MsXmlNodeOperations::AppendChild(Handle parent, Handle child) const {
  NodePointer appended;
  return AsNode(parent)->appendChild(AsNode(child), appended.Receive()) == S_OK;
}

bool MsXmlNodeOperations::AppendCopy(Handle parent, Handle source) const {
  NodePointer copy;
  return AsNode(source)->cloneNode(VARIANT_TRUE, copy.Receive()) == S_OK && copy &&
         AppendChild(parent, copy.Get());
}

bool MsXmlNodeOperations::RemoveChild(Handle parent, Handle child) const {
  NodePointer removed;
  return AsNode(parent)->removeChild(AsNode(child), removed.Receive()) == S_OK;
}

namespace {

using NodePointer = ComPointer<IXMLDOMNode>;

void ReadValue(IXMLDOMNode* node, std::wstring& value) {
  Variant stored;
  if (FAILED(node->get_nodeValue(stored.Receive())) || stored.Get().vt != VT_BSTR) return;
  value = ViewOf(stored.Get().bstrVal);
}

// The value of the element's xml:space, when it has one.
std::optional<std::wstring> SpaceOf(IXMLDOMNode* element) {
  ComPointer<IXMLDOMNamedNodeMap> attributes;
  if (element->get_attributes(attributes.Receive()) != S_OK) return std::nullopt;
  LONG count = 0;
  if (FAILED(attributes.Get()->get_length(&count)) || count == 0) return std::nullopt;
  const Bstr name = NewBstr(L"xml:space");
  NodePointer attribute;
  if (attributes.Get()->getNamedItem(name.Get(), attribute.Receive()) != S_OK) return std::nullopt;
  std::wstring value;
  ReadValue(attribute.Get(), value);
  return value;
}

class FilterWalk {
 public:
  void Run(IXMLDOMNode* document) {
    Descend(document);
    while (!levels_.empty()) {
      if (NodePointer node = std::move(levels_.back())) {
        node.Get()->get_nextSibling(levels_.back().Receive());
        Visit(node);
      } else {
        levels_.pop_back();
        if (!levels_.empty()) rule_.LeaveElement();
        keptText_ = {};
      }
    }
  }

 private:
  void Descend(IXMLDOMNode* parent) {
    NodePointer& first = levels_.emplace_back();
    parent->get_firstChild(first.Receive());
  }

  void Visit(NodePointer& node) {
    DOMNodeType type = NODE_INVALID;
    node.Get()->get_nodeType(&type);
    if (type == NODE_TEXT) return VisitText(node);
    keptText_ = {};
    if (type != NODE_ELEMENT) return rule_.EndText();
    const std::optional<std::wstring> space = SpaceOf(node.Get());
    rule_.EnterElement(space ? std::optional<std::wstring_view>(*space) : std::nullopt);
    Descend(node.Get());
  }

  // Of the pieces of one text the first that is kept takes up all others.
  void VisitText(NodePointer& node) {
    std::wstring value;
    ReadValue(node.Get(), value);
    const std::wstring_view kept = rule_.Take(value);
    if (keptText_) {
      keptValue_ += kept;
      PutKeptValue();
    } else if (!kept.empty()) {
      keptValue_ = kept;
      keptText_ = std::move(node);
      if (keptValue_ != value) PutKeptValue();
      return;
    }
    NodePointer parent;
    NodePointer removed;
    if (node.Get()->get_parentNode(parent.Receive()) != S_OK) return;
    parent.Get()->removeChild(node.Get(), removed.Receive());
  }

  void PutKeptValue() {
    Variant value;
    value.Edit().bstrVal = NewBstr(keptValue_).Release();
    value.Edit().vt = VT_BSTR;
    keptText_.Get()->put_nodeValue(value.Get());
  }

  BlankTextFilter<wchar_t> rule_;
  std::vector<NodePointer> levels_;  // of each open level the node to visit next
  NodePointer keptText_;             // of the text that is being read
  std::wstring keptValue_;
};

}  // namespace

void FilterBlankText(IXMLDOMNode* document) { FilterWalk().Run(document); }

}  // namespace carrovan
