#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "merge/container.h"
#include "platform/xml_dom.h"

namespace carrovan {

// What a child is looked for by: either is enough.
struct ChildKey {
  std::string_view name;  // as the DOM keeps it; empty when names do not count
  std::optional<std::int32_t> id;
};

// The child elements of one element of the new document, found by name and by ID. The children are
// walked once, no further than the searches need; appended ones are met in their turn. Of children
// with the same name and ID only the first is kept, because no search finds another. Stays right as
// long as every ID gained by a child is reported.
class ChildIndex {
 public:
  using Position = std::uint32_t;  // ascends in document order
  static constexpr Position kNone = PositionTable::kNone;

  ChildIndex(const XmlNode& element, std::string_view name);

  // The first child in document order that has the name or the ID.
  Position First(const ChildKey& key);

  const XmlNode& Node(Position position) const { return children_[position].node; }
  std::string_view Name(Position position) const { return children_[position].name; }

  // Of the element, its appended children included.
  std::optional<ContainerSummary> Summary();
  void NoteSizeWritten() { summary_.NoteSizeWritten(); }

  // To be called when a child's own children may have changed.
  void ReadIdAgain(Position position);

  // The index of a child's own children, kept here from the second time on that it is asked for;
  // null the first time. Children that are merged into once, as nearly all are, cost no memory.
  ChildIndex* KeptIndexOf(Position position);

 private:
  struct Child {
    XmlNode node;
    std::string_view name;
    std::optional<std::int32_t> id;
  };
  struct Tables {
    PositionTable byName;
    PositionTable byId;
  };

  bool VisitNext();     // false behind the last child
  XmlNode IdElement();  // the first child named "ID"; none when there is none
  Position FirstNamed(std::string_view name) const;
  Position FirstWithId(std::int32_t id) const;
  void Add(Child child);
  void EnterName(Position position);
  void EnterId(Position position);

  XmlNode element_;
  XmlNode lastVisited_;
  XmlNode idElement_;  // none until it is visited
  bool numbersContainers_;
  SummaryReader summary_;
  std::vector<Child> children_;     // of those visited, the ones that can be found
  std::unique_ptr<Tables> tables_;  // null while the children are few enough to look at each
  std::vector<bool> askedBefore_;   // by position; a child behind the end was not
  std::unordered_map<Position, std::unique_ptr<ChildIndex>> kept_;
};

}  // namespace carrovan
