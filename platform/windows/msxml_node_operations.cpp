#include "platform/windows/msxml_node_operations.h"

#include <windows.h>

#include <msxml2.h>

#include <vector>

#include "platform/text.h"
#include "platform/windows/com_handles.h"

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

}  // namespace carrovan
