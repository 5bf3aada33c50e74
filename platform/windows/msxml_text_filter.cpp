#include "platform/windows/msxml_text_filter.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/blank_text_filter.h"
#include "platform/windows/com_handles.h"

namespace carrovan {
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
