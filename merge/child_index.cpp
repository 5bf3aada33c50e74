#include "merge/child_index.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "merge/names_and_numbers.h"
#include "text/scattered_hash.h"

namespace carrovan {
namespace {

constexpr std::size_t kFewChildren = 16;

// The steps of a visit that one old child is worth. A name takes as many as it has bytes.
constexpr std::size_t kStepsOfOldChild = 64;

// The DOM keeps every name once.
bool IsSameName(std::string_view a, std::string_view b) { return a.data() == b.data(); }

std::size_t HashOfName(std::string_view name) {
  return static_cast<std::size_t>(ScatteredHash(std::bit_cast<std::uintptr_t>(name.data())));
}

std::size_t HashOfId(std::int32_t id) {
  return static_cast<std::size_t>(ScatteredHash(static_cast<std::uint32_t>(id)));
}

}  // namespace

ChildIndex::ChildIndex(const XmlNode& element, std::string_view name)
    : element_(element),
      summary_(HoldsNumberedContainers(name) ? std::make_unique<SummaryReader>() : nullptr) {}

ChildIndex::Position ChildIndex::First(const ChildKey& key) {
  const auto matches = [&](const Child& child) {
    return IsSameName(child.name, key.name) || (key.id && child.id == key.id);
  };
  Position found = std::min(FirstNamed(key.name), key.id ? FirstWithId(*key.id) : kNone);
  while (found == kNone && VisitNext()) {
    if (matches(children_.back())) found = static_cast<Position>(children_.size() - 1);
  }
  return found;
}

XmlNode ChildIndex::NextElement() {
  while (true) {
    XmlNode node = lastVisited_ ? lastVisited_.NextSibling() : element_.FirstChild();
    if (!node) return node;
    lastVisited_ = node;
    ++steps_;
    if (node.IsElement()) return node;
  }
}

bool ChildIndex::VisitNext() {
  XmlNode child = NextElement();
  if (!child) return false;
  const std::string_view name = child.Name();
  steps_ += name.size();
  const XmlNode idOfChild = FirstIdChild(child, name);
  const ElementIdReading id = ReadIdChild(idOfChild);
  if (summary_ != nullptr) summary_->Take(child, name, id);
  if (!idChild_ && name == kIdElementName) idChild_ = child;
  if (ContainerKindOf(name) != ContainerKind::kNone) holdsContainers_ = true;
  const bool canBeFound = FirstNamed(name) == kNone || (id.id && FirstWithId(*id.id) == kNone);
  if (canBeFound) Add({std::move(child), name, id.id, static_cast<bool>(idOfChild)});
  return true;
}

ChildIndex::Position ChildIndex::FirstNamed(std::string_view name) const {
  const auto isNamed = [&](Position position) {
    return IsSameName(children_[position].name, name);
  };
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

void ChildIndex::Add(Child child) {
  children_.push_back(std::move(child));
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
      HashOfName(name), position,
      [&](Position other) { return IsSameName(children_[other].name, name); },
      [&](Position other) { return HashOfName(children_[other].name); });
}

void ChildIndex::EnterId(Position position) {
  const std::optional<std::int32_t> id = children_[position].id;
  if (!id || FirstWithId(*id) < position) return;
  tables_->byId.Put(
      HashOfId(*id), position, [&](Position other) { return children_[other].id == id; },
      [&](Position other) { return HashOfId(*children_[other].id); });
}

XmlNode ChildIndex::IdChild() {
  while (!idChild_ && VisitNext()) {
  }
  return idChild_;
}

std::optional<ContainerSummary> ChildIndex::Summary() {
  if (summary_ == nullptr) return std::nullopt;
  while (VisitNext()) {
  }
  return summary_->Result();
}

void ChildIndex::LearnId(Position position, ChildIndex& childrenOfChild) {
  Child& child = children_[position];
  if (child.idIsSettled || ContainerKindOf(child.name) == ContainerKind::kNone) return;
  const XmlNode idChild = childrenOfChild.IdChild();
  if (!idChild) return;
  const ElementIdReading reading = ReadIdChild(idChild);
  if (summary_ != nullptr) summary_->TakeLateId(reading);
  child.idIsSettled = true;
  child.id = reading.id;
  if (tables_ != nullptr) EnterId(position);
}

// What a walk takes at containers and sizes is not bounded by their number: their texts may be
// long, and an ID may stand behind any number of others.
bool ChildIndex::IsWorthKeeping(std::size_t oldChildren) const {
  return keepsIndexes_ || holdsContainers_ || summary_ != nullptr ||
         steps_ > kStepsOfOldChild * oldChildren;
}

void ChildIndex::NoteKeptIndexOf(Position position, ChildIndex* index) {
  children_[position].kept = index;
  keepsIndexes_ = true;
}

}  // namespace carrovan
