#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
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
// long as LearnId is called for every child that may have gained an ID.
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
  void NoteSizeWritten(std::int32_t size) { summary_->NoteSizeWritten(size); }

  // To be called, with the index of a child's own children, when these may have become more.
  void LearnId(Position position, ChildIndex& childrenOfChild);

  // An element may be merged into as often as there are old elements, and then must not be walked
  // each time. False when a walk costs no more than the old children that it was done for are
  // worth, so that the few indexes kept are those that many visits would pay for.
  bool IsWorthKeeping(std::size_t oldChildren) const;

  // The index of a child's own children, kept elsewhere; null when there is none.
  ChildIndex* KeptIndexOf(Position position) const { return children_[position].kept; }
  void NoteKeptIndexOf(Position position, ChildIndex* index);

 private:
  struct Child {
    XmlNode node;
    std::string_view name;
    std::optional<std::int32_t> id;
    bool idIsSettled = false;  // by the first "ID" child, whatever it says
    ChildIndex* kept = nullptr;
  };
  struct Tables {
    PositionTable byName;
    PositionTable byId;
  };

  bool VisitNext();  // false behind the last child
  XmlNode NextElement();
  XmlNode IdChild();  // the first child named "ID"; none when there is none
  Position FirstNamed(std::string_view name) const;
  Position FirstWithId(std::int32_t id) const;
  void Add(Child child);
  void EnterName(Position position);
  void EnterId(Position position);

  XmlNode element_;
  XmlNode lastVisited_;    // of any kind
  XmlNode idChild_;        // none until it is visited
  std::size_t steps_ = 0;  // what visiting took
  bool holdsContainers_ = false;
  bool keepsIndexes_ = false;
  std::unique_ptr<SummaryReader> summary_;  // null for an element that numbers no containers
  std::vector<Child> children_;             // of those visited, the ones that can be found
  std::unique_ptr<Tables> tables_;  // null while the children are few enough to look at each
};

}  // namespace carrovan
