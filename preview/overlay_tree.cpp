#include "preview/overlay_tree.h"

#include <algorithm>
#include <utility>

#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr std::wstring_view kSeparators = L"\\/";
constexpr std::size_t kLongestName = 255;  // in 16-bit units

bool IsSeparator(wchar_t c) { return c == L'\\' || c == L'/'; }

bool IsForbidden(wchar_t c) {
  constexpr std::wstring_view kForbidden = L"<>:\"|?*";
  return static_cast<char32_t>(c) < 32 || kForbidden.find(c) != std::wstring_view::npos;
}

std::wstring_view WithoutTrailing(std::wstring_view text, std::wstring_view characters) {
  return text.substr(0, text.find_last_not_of(characters) + 1);
}

std::wstring TakeRoot(std::wstring_view& path) {
  if (path.size() >= 2 && path[1] == L':') {
    std::wstring root(path.substr(0, 2));
    path.remove_prefix(2);
    return root + L"\\";
  }
  if (path.size() >= 2 && IsSeparator(path[0]) && IsSeparator(path[1])) return L"\\\\";
  return IsSeparator(path[0]) ? L"\\" : L".\\";
}

void TakeName(std::wstring_view name, OverlayPath& path) {
  if (WithoutTrailing(name, L" ") == L"..") {
    if (!path.names.empty()) path.names.pop_back();
    return;
  }
  name = WithoutTrailing(name, L" .");
  if (!name.empty()) path.names.emplace_back(name);
}

bool MayBeMade(const std::wstring& name) {
  return std::none_of(name.begin(), name.end(), IsForbidden) &&
         ToUtf16(name).size() <= kLongestName;
}

}  // namespace

OverlayPath OverlayPath::Parent() const {
  OverlayPath parent = *this;
  if (!parent.names.empty()) parent.names.pop_back();
  return parent;
}

std::optional<OverlayPath> ParseOverlayPath(std::wstring_view path) {
  if (path.empty() || path.find(L'\0') != std::wstring_view::npos) return std::nullopt;
  OverlayPath parsed;
  parsed.root = TakeRoot(path);
  while (!path.empty()) {
    const std::size_t end = std::min(path.find_first_of(kSeparators), path.size());
    TakeName(path.substr(0, end), parsed);
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  parsed.mayBeMade = std::all_of(parsed.names.begin(), parsed.names.end(), MayBeMade);
  return parsed;
}

std::wstring JoinNames(const std::wstring& folder, const std::wstring& name) {
  return WithTrailingBackslash(folder) + name;
}

bool IsSamePath(const std::wstring& a, const std::wstring& b) { return CompareNames(a, b) == 0; }

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
