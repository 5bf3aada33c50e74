#include "merge/child_index.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "merge/names_and_numbers.h"

namespace carrovan {
namespace {

constexpr std::size_t kFewChildren = 16;

// Numbers and addresses come in runs and in multiples; the multiplication spreads both.
std::size_t Spread(std::uint64_t key) {
  return static_cast<std::size_t>((key * 0x9E3779B97F4A7C15ULL) >> 32);
}

// The DOM keeps every name once.
bool IsSameName(std::string_view a, std::string_view b) { return a.data() == b.data(); }

std::size_t HashOfName(std::string_view name) {
  return Spread(std::hash<const void*>()(name.data()));
}

std::size_t HashOfId(std::int32_t id) { return Spread(static_cast<std::uint32_t>(id)); }

}  // namespace

ChildIndex::ChildIndex(const XmlNode& element, std::string_view name)
    : element_(element), numbersContainers_(HoldsNumberedContainers(name)) {}

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

bool ChildIndex::VisitNext() {
  XmlNode child =
      ThisOrNextElement(lastVisited_ ? lastVisited_.NextSibling() : element_.FirstChild());
  if (!child) return false;
  lastVisited_ = child;
  const std::string_view name = child.Name();
  const ElementIdReading id = ReadIdText(child, name);
  if (numbersContainers_) summary_.Take(child, name, id);
  if (!idElement_ && name == kIdElementName) idElement_ = child;
  const bool canBeFound = FirstNamed(name) == kNone || (id.id && FirstWithId(*id.id) == kNone);
  if (canBeFound) Add({std::move(child), name, id.id});
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

XmlNode ChildIndex::IdElement() {
  while (!idElement_ && VisitNext()) {
  }
  return idElement_;
}

std::optional<ContainerSummary> ChildIndex::Summary() {
  if (!numbersContainers_) return std::nullopt;
  while (VisitNext()) {
  }
  return summary_.Result();
}

void ChildIndex::ReadIdAgain(Position position) {
  Child& child = children_[position];
  if (child.id || ContainerKindOf(child.name) == ContainerKind::kNone) return;
  // A kept index finds the ID of a child that is matched again and again without a walk.
  const auto kept = kept_.find(position);
  const ElementIdReading reading = kept == kept_.end() ? ReadIdText(child.node, child.name)
                                                       : ReadIdChild(kept->second->IdElement());
  if (numbersContainers_) summary_.TakeLateId(reading);
  child.id = reading.id;
  if (tables_ != nullptr) EnterId(position);
}

ChildIndex* ChildIndex::KeptIndexOf(Position position) {
  if (askedBefore_.size() <= position) askedBefore_.resize(children_.size());
  if (!askedBefore_[position]) {
    askedBefore_[position] = true;
    return nullptr;
  }
  std::unique_ptr<ChildIndex>& kept = kept_[position];
  if (kept == nullptr) kept = std::make_unique<ChildIndex>(Node(position), Name(position));
  return kept.get();
}

}  // namespace carrovan
