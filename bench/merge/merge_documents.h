#pragma once

#include <string>

namespace carrovan {

// A pair of documents that a benchmark merges.
struct DocumentPair {
  std::string oldXml;
  std::string newXml;
};

// Shapes: "wide" (all elements under one parent, each with a text, of a thousand names, every tenth
// name only in the old document), "numbered" (the same with a name for each element, which the
// parser's own dictionary of names is slow at), "names" (one name for all), "deep" (each element
// inside the one before), "panels" (numbered panels with IDs under one category, every tenth
// unmatched), "ribbon" (such panels with ribbon records), "tree" (elements of one name that branch
// in two, which all match one chain of such elements, its last with many children), "tree-swapped",
// "states" (states that all match one, which ends with as many comments).
DocumentPair MakePair(const std::string& shape, int elements);

// A pair of shortcut tables; every tenth old shortcut is to be added.
DocumentPair MakeShortcutPair(int entries);

}  // namespace carrovan
