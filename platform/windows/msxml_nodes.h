#pragma once

#include <windows.h>

#include <msxml2.h>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/xml_dom.h"

namespace carrovan {

// Nodes are IXMLDOMNode objects, and a handle is one reference to one. Keeps every name that it
// gave out, once; the documents of a session share it.
class MsXmlNodeOperations : public XmlNodeOperations {
 public:
  void AddReference(Handle node) const override;
  void DropReference(Handle node) const override;
  XmlNodeKind Kind(Handle node) const override;
  std::string_view Name(Handle node) const override;
  Handle FirstChild(Handle node) const override;
  Handle NextSibling(Handle node) const override;
  std::wstring Text(Handle node) const override;
  std::optional<std::wstring> Attribute(Handle node, std::string_view name) const override;
  std::vector<XmlAttribute> Attributes(Handle node) const override;
  [[nodiscard]] bool SetText(Handle node, std::wstring_view text) const override;
  [[nodiscard]] bool CopyText(Handle target, Handle source) const override;
  [[nodiscard]] bool AppendChild(Handle parent, Handle child) const override;
  [[nodiscard]] bool AppendCopy(Handle parent, Handle source) const override;
  [[nodiscard]] bool RemoveChild(Handle parent, Handle child) const override;

 private:
  struct ViewHash {
    using is_transparent = void;
    std::size_t operator()(std::wstring_view text) const {
      return std::hash<std::wstring_view>()(text);
    }
  };

  mutable std::unordered_map<std::wstring, std::string, ViewHash, std::equal_to<>> names_;
};

// Takes text of nothing but white space out of a document that was loaded with all of its white
// space, and makes one node of texts that are neighbours.
void FilterBlankText(IXMLDOMNode* document);

}  // namespace carrovan
