#include "preview/overlay_tree.h"

#include <utility>

#include "platform/text.h"

namespace carrovan {
namespace {

const OverlayNode* Find(const OverlayNode::Nodes& nodes, const std::wstring& name) {
  const auto found = nodes.find(FoldedName(name));
  return found == nodes.end() ? nullptr : found->second.get();
}

std::wstring RealBelow(const std::wstring& folder, const std::wstring& name) {
  return folder.empty() ? std::wstring() : JoinNames(folder, name);
}

// One step down from what was seen.
Seen Below(const Seen& folder, const std::wstring& name) {
  Seen seen;
  if (folder.node != nullptr) seen.node = Find(folder.node->below, name);
  if (seen.node != nullptr) {
    seen.kind = seen.node->kind;
    seen.real = seen.node->real;
    seen.isLink = seen.node->isLink && !seen.node->isNew;
  } else if (folder.node == nullptr || folder.node->kind == SeenKind::kFolder) {
    seen.real = RealBelow(folder.real, name);
  }
  return seen;
}

}  // namespace

Seen OverlayTree::Look(const OverlayPath& path) const {
  Seen seen{SeenKind::kFolder, path.root, Find(roots_, path.root)};
  for (const std::wstring& name : path.names) seen = Below(seen, name);
  if (!seen.IsOfMachine()) return seen;
  seen.isLink = machine_.IsLink(seen.real);
  seen.kind = machine_.IsFolder(seen.real)                ? SeenKind::kFolder
              : seen.isLink || machine_.Exists(seen.real) ? SeenKind::kFile
                                                          : SeenKind::kMissing;
  return seen;
}

void OverlayTree::PutFile(const OverlayPath& path, const std::wstring& real) {
  const bool wasThere = Look(path).kind != SeenKind::kMissing;
  OverlayNode& node = Make(path);
  if (!wasThere) node.name = path.names.back();
  node.kind = SeenKind::kFile;
  node.real = real;
  node.isNew = true;
  node.below.clear();
}

void OverlayTree::PutNewFolder(const OverlayPath& path) {
  OverlayNode& node = Make(path);
  node.name = path.names.back();
  node.kind = SeenKind::kFolder;
  node.real.clear();
  node.isNew = true;
  node.below.clear();
}

void OverlayTree::Remove(const OverlayPath& path) {
  OverlayNode& node = Make(path);
  node.kind = SeenKind::kMissing;
  node.real.clear();
  node.name.clear();
  node.below.clear();
}

void OverlayTree::Hide(const OverlayPath& path) {
  Remove(path);
  Make(path).isHidden = true;
}

void OverlayTree::Move(const OverlayPath& source, const OverlayPath& target) {
  const Seen seen = Look(source);
  OverlayNode moved = std::exchange(Make(source), OverlayNode());
  Remove(source);
  moved.kind = seen.kind;
  moved.name = target.names.back();
  moved.isLink = seen.isLink;
  Make(target) = std::move(moved);
}

OverlayNode& OverlayTree::Make(const OverlayPath& path) {
  auto& root = roots_[FoldedName(path.root)];
  if (root == nullptr) {
    root = std::make_unique<OverlayNode>();
    root->real = path.root;
  }
  OverlayNode* node = root.get();
  for (const std::wstring& name : path.names) node = &Child(*node, name);
  return *node;
}

OverlayNode& OverlayTree::Child(OverlayNode& folder, const std::wstring& name) {
  auto& child = folder.below[FoldedName(name)];
  if (child == nullptr) {
    child = std::make_unique<OverlayNode>();
    child->real = RealBelow(folder.real, name);
    child->isLink = !child->real.empty() && machine_.IsLink(child->real);
  }
  return *child;
}

}  // namespace carrovan
