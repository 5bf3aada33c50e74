#pragma once

#include <string>

namespace carrovan {

// A pair of documents that a benchmark merges.
struct DocumentPair {
  std::string oldXml;
  std::string newXml;
};

// Shapes: "wide" (all elements under one parent, each with a text, every tenth only in the old
// one), "panels" (numbered panels with IDs under one category, every tenth unmatched), "names" (one
// name for all), "deep" (each element inside the one before), "ribbon" (panels of ribbon records).
DocumentPair MakePair(const std::string& shape, int elements);

// A pair of shortcut tables; every tenth old shortcut is to be added.
DocumentPair MakeShortcutPair(int entries);

}  // namespace carrovan
