#include "merge/child_index.h"

#include <functional>
#include <utility>

#include "merge/element_names.h"

namespace carrovan {
namespace {

constexpr std::size_t kFewChildren = 16;

std::size_t HashOfName(std::string_view name) { return std::hash<std::string_view>()(name); }

std::size_t HashOfId(std::int32_t id) {
  // Identifiers come in runs and in multiples; the multiplication spreads both.
  return static_cast<std::size_t>((static_cast<std::uint32_t>(id) * 0x9E3779B97F4A7C15ULL) >> 32);
}

}  // namespace

ChildIndex::ChildIndex(const XmlNode& element)
    : numbersContainers_(HoldsNumberedContainers(element.Name())) {
  children_.reserve(element.CountChildren());
  for (XmlNode child = ThisOrNextElement(element.FirstChild()); child;) {
    XmlNode next = ThisOrNextElement(child.NextSibling());
    Add(std::move(child));
    child = std::move(next);
  }
}

ChildIndex::Position ChildIndex::FirstNamed(std::string_view name) const {
  const auto isNamed = [&](Position position) { return children_[position].name == name; };
  if (tables_ != nullptr) return tables_->byName.Find(HashOfName(name), isNamed);
  for (Position position = 0; position < children_.size(); ++position) {
    if (isNamed(position)) return position;
  }
  return kNone;
}

ChildIndex::Position ChildIndex::FirstWithId(std::int32_t id) const {
  const auto hasId = [&](Position position) { return children_[position].id == id; };
  if (tables_ != nullptr) return tables_->byId.Find(HashOfId(id), hasId);
  for (Position position = 0; position < children_.size(); ++position) {
    if (hasId(position)) return position;
  }
  return kNone;
}

std::optional<ContainerSummary> ChildIndex::Summary() const {
  return numbersContainers_ ? summary_.Result() : std::nullopt;
}

void ChildIndex::Append(const XmlNode& child) { Add(child); }

void ChildIndex::Add(XmlNode child) {
  const std::string_view name = child.Name();
  const ElementIdReading id = ReadIdText(child);
  if (numbersContainers_) summary_.Take(child, id);
  children_.push_back({std::move(child), name, id.id, false, nullptr});
  if (tables_ != nullptr) {
    const Position added = static_cast<Position>(children_.size() - 1);
    EnterName(added);
    EnterId(added);
  } else if (children_.size() > kFewChildren) {
    tables_ = std::make_unique<Tables>();
    for (Position position = 0; position < children_.size(); ++position) {
      EnterName(position);
      EnterId(position);
    }
  }
}

void ChildIndex::EnterName(Position position) {
  const std::string_view name = children_[position].name;
  if (FirstNamed(name) != kNone) return;
  tables_->byName.Put(
      HashOfName(name), position, [&](Position other) { return children_[other].name == name; },
      [&](Position other) { return HashOfName(children_[other].name); });
}

void ChildIndex::EnterId(Position position) {
  const std::optional<std::int32_t> id = children_[position].id;
  if (!id || FirstWithId(*id) < position) return;
  tables_->byId.Put(
      HashOfId(*id), position, [&](Position other) { return children_[other].id == id; },
      [&](Position other) { return HashOfId(*children_[other].id); });
}

void ChildIndex::ReadIdAgain(Position position) {
  Child& child = children_[position];
  if (child.id || ContainerKindOf(child.name) == ContainerKind::kNone) return;
  // A kept index finds the "ID" child of a child that is matched again and again without a walk.
  const ElementIdReading reading =
      child.kept == nullptr ? ReadIdText(child.node) : ReadIdChild(child.kept->FirstElement("ID"));
  if (numbersContainers_) summary_.TakeLateId(reading);
  child.id = reading.id;
  if (tables_ != nullptr) EnterId(position);
}

XmlNode ChildIndex::FirstElement(std::string_view name) const {
  const Position position = FirstNamed(name);
  return position == kNone ? XmlNode() : Node(position);
}

ChildIndex* ChildIndex::KeptIndexOf(Position position) {
  Child& child = children_[position];
  if (!std::exchange(child.askedBefore, true)) return nullptr;
  if (child.kept == nullptr) child.kept = std::make_unique<ChildIndex>(child.node);
  return child.kept.get();
}

}  // namespace carrovan
