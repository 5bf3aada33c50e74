#include "bench/merge/merge_documents.h"

#include <utility>

#include "merge/ribbon_codec.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr int kOnlyOldEvery = 10;

std::string Element(const std::string& name, const std::string& content) {
  return "<" + name + ">" + content + "</" + name + ">\n";
}

DocumentPair Wide(int elements, int names) {
  DocumentPair pair{"<r>", "<r>"};
  for (int i = 0; i < elements; ++i) {
    const std::string name = "Element" + std::to_string(i % names);
    pair.oldXml += Element(name, "old text");
    if (i % kOnlyOldEvery != 0) pair.newXml += Element(name, "new text");
  }
  return {pair.oldXml + "</r>", pair.newXml + "</r>"};
}

DocumentPair SameName(int elements) {
  DocumentPair pair{"<r>", "<r>"};
  for (int i = 0; i < elements; ++i) {
    pair.oldXml += Element("item", "<t" + std::to_string(i) + "/>");
    pair.newXml += Element("item", "new text");
  }
  return {pair.oldXml + "</r>", pair.newXml + "</r>"};
}

// Four elements a panel, itself included.
DocumentPair Panels(int elements, const std::string& content) {
  const int panels = elements / 4;
  DocumentPair pair{"<EyeCustomRibbonCategory-1>",
                    "<EyeCustomRibbonCategory-1><Size>" + std::to_string(panels) + "</Size>"};
  for (int i = 1; i <= panels; ++i) {
    const std::string name = "EyeCustomRibbonPanel-" + std::to_string(i);
    const std::string id = Element("ID", std::to_string(i)) + Element("Name", "Panel");
    pair.oldXml += Element(name, id + content);
    if (i % kOnlyOldEvery != 0) pair.newXml += Element(name, id + content);
  }
  return {pair.oldXml + "</EyeCustomRibbonCategory-1>",
          pair.newXml + "</EyeCustomRibbonCategory-1>"};
}

DocumentPair Deep(int elements) {
  DocumentPair pair;
  for (int i = 0; i < elements; ++i) {
    pair.oldXml += "<level>";
    pair.newXml += "<level>";
  }
  for (int i = 0; i < elements; ++i) {
    pair.oldXml += "</level>";
    pair.newXml += "</level>";
  }
  return pair;
}

// Half of the elements are the new document's last ones.
DocumentPair Tree(int elements) {
  std::string tree = "<a><b/></a>";
  std::string chain = "<a>";
  for (int i = 0; i < elements / 2; ++i) chain += "<c" + std::to_string(i) + "/>";
  chain += "</a>";
  for (int i = 8; i <= elements; i *= 2) {
    tree = "<a>" + tree + tree + "</a>";
    chain = "<a>" + chain + "</a>";
  }
  return {tree, chain};
}

DocumentPair Swapped(DocumentPair pair) {
  std::swap(pair.oldXml, pair.newXml);
  return pair;
}

DocumentPair States(int elements) {
  DocumentPair pair{"<r>", "<r><EyeRibbonState-1><a/>"};
  for (int i = 0; i < elements; ++i) {
    pair.oldXml += Element("EyeRibbonState-1", "<a/>");
    pair.newXml += "<!--comment-->";
  }
  return {pair.oldXml + "</r>", pair.newXml + "</EyeRibbonState-1></r>"};
}

std::string RibbonContent() {
  sRibbonElement record;
  record.id = 1234;
  record.text1 = L"Extrude";
  record.text2 = L"Extrude a sketch";
  record.children.resize(2);
  return Element("RibbonElement-0", ToUtf8(RibbonElementToText(record)));
}

}  // namespace

DocumentPair MakePair(const std::string& shape, int elements) {
  if (shape == "wide") return Wide(elements, 1000);
  if (shape == "numbered") return Wide(elements, elements);
  if (shape == "names") return SameName(elements);
  if (shape == "panels") return Panels(elements, Element("Caption", "text"));
  if (shape == "ribbon") return Panels(elements, RibbonContent());
  if (shape == "tree") return Tree(elements);
  if (shape == "tree-swapped") return Swapped(Tree(elements));
  if (shape == "states") return States(elements);
  return Deep(elements);
}

DocumentPair MakeShortcutPair(int entries) {
  DocumentPair pair;
  for (std::string* xml : {&pair.oldXml, &pair.newXml}) {
    *xml = "<T><Count>" + std::to_string(entries) + "</Count>\n";
    for (int i = 0; i < entries; ++i) {
      const bool differs = xml == &pair.oldXml && i % kOnlyOldEvery == 0;
      const std::string key = std::to_string(differs ? entries + i : i);
      *xml +=
          Element("Accels-" + std::to_string(i), Element("Command", std::to_string(i + 1)) +
                                                     Element("Ctrl", "8") + Element("Key", key));
    }
    *xml += "</T>";
  }
  return pair;
}

}  // namespace carrovan
