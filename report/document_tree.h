#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/file_system.h"
#include "platform/xml_dom.h"

namespace carrovan {

// A document of which there is an earlier one, as a tree that shows what is new in it.

enum class NodeMark {
  kSame,     // with all that is below
  kTouched,  // itself the same, but not all that is below
  kChanged,  // has another text
  kNew,      // was not there
  kRemoved,  // is not there any more
};

struct DocumentNode {
  std::wstring name;
  std::wstring text;    // of an element without elements below; of another, that of its <Name>
  std::wstring before;  // the text that it had, when it is changed
  NodeMark mark = NodeMark::kSame;
  std::vector<DocumentNode> below;

  // Elements below that the tree leaves out, at any depth; of these, new, changed or removed ones.
  std::size_t hidden = 0;
  std::size_t hiddenMarks = 0;
};

struct DocumentTree {
  DocumentNode root;
  std::size_t added = 0;  // elements
  std::size_t changed = 0;
  std::size_t removed = 0;
  std::wstring failure;  // why there is no tree; empty when there is one
};

// How much of a tree is shown.
struct TreeLimits {
  std::size_t nodes = 800;        // of one tree
  std::size_t depth = 24;         // below the root; deeper ones are compared, too
  std::size_t unchanged = 8;      // elements side by side without a change: the first ones
  std::size_t text = 160;         // characters of a text
  std::uint64_t bytes = 4 << 20;  // of a document
};

// An element was there before when an equal one was, whatever its number; else when one of its name
// and its <ID> or <Command> was, or, of those that have none, the next one of its name. `before`
// and `after` read the two machines, on which the document has the same path.
DocumentTree CompareDocuments(const std::wstring& path, FileSystem& before, FileSystem& after,
                              const TreeLimits& limits = {});

// The same for two elements, of documents that are loaded.
DocumentTree CompareElements(const XmlNode& before, const XmlNode& after,
                             const TreeLimits& limits = {});

}  // namespace carrovan
