#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "merge/container_summary.h"
#include "merge/position_table.h"
#include "platform/xml_node.h"

namespace carrovan {

// The child elements of one element of the new document, found by name and by ID without walking
// them again, and what they say about their container. Stays right as long as every appended child
// and every ID gained by a child is told.
class ChildIndex {
 public:
  using Position = std::uint32_t;  // in document order
  static constexpr Position kNone = PositionTable::kNone;

  explicit ChildIndex(const XmlNode& element);

  Position FirstNamed(std::string_view name) const;
  Position FirstWithId(std::int32_t id) const;

  const XmlNode& Node(Position position) const { return children_[position].node; }
  std::optional<ContainerSummary> Summary() const;

  void Append(const XmlNode& child);
  void NoteSizeWritten(std::int32_t size) { summary_.NoteSizeWritten(size); }
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
    bool askedBefore = false;
    std::unique_ptr<ChildIndex> kept;
  };
  struct Tables {
    PositionTable byName;
    PositionTable byId;
  };

  XmlNode FirstElement(std::string_view name) const;  // none when there is none
  void Add(XmlNode child);
  void EnterName(Position position);
  void EnterId(Position position);

  bool numbersContainers_;
  SummaryReader summary_;
  std::vector<Child> children_;
  std::unique_ptr<Tables> tables_;  // null while the children are few enough to look at each
};

}  // namespace carrovan
