#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"

namespace carrovan {

// A path, taken apart as the file systems do it: either separator, "." and ".." resolved and never
// above the root, blanks and dots at the end of a name dropped.
struct OverlayPath {
  std::wstring root;  // ends in a separator: "C:\", "\", "\\", ".\" for a relative path
  std::vector<std::wstring> names;  // empty for the root itself
  bool mayBeMade = true;            // false: no new file or folder can have this path

  // The folder around it; the root's own is the root.
  OverlayPath Parent() const;
};

// Nothing for a text that is no path: an empty one, or one with a zero in it.
std::optional<OverlayPath> ParseOverlayPath(std::wstring_view path);

std::wstring JoinNames(const std::wstring& folder, const std::wstring& name);

bool IsSamePath(const std::wstring& a, const std::wstring& b);

enum class SeenKind { kMissing, kFile, kFolder };

// What was done to one path of a machine that itself stays as it is.
struct OverlayNode {
  using Nodes = std::map<std::u16string, std::unique_ptr<OverlayNode>>;  // by folded name

  SeenKind kind = SeenKind::kFolder;  // kMissing: what the machine has here is removed
  std::wstring name;      // as it was made; empty where the machine's own entry keeps its name
  std::wstring real;      // a file's content, or the folder that shows through; empty for none
  bool isNew = false;     // made by the run: not read-only and no link, whatever its content's is
  bool isLink = false;    // the machine's own link
  bool isHidden = false;  // the overlay's own folder, which is never reported
  Nodes below;
};

// What is at a path: the overlay's node or, where it has none, the machine's entry.
struct Seen {
  SeenKind kind = SeenKind::kMissing;
  std::wstring real;  // as in a node
  const OverlayNode* node = nullptr;
  bool isLink = false;

  bool IsOfMachine() const { return node == nullptr && !real.empty(); }
};

// Which paths differ from the machine's and what they show instead. A folder that was moved takes
// along the folder that shows through it. Decides nothing: whether an operation is allowed is asked
// elsewhere.
class OverlayTree {
 public:
  explicit OverlayTree(const FileReader& machine) : machine_(machine) {}

  Seen Look(const OverlayPath& path) const;

  // A file with the content of another, in place of what is there.
  void PutFile(const OverlayPath& path, const std::wstring& real);
  void PutNewFolder(const OverlayPath& path);
  void Remove(const OverlayPath& path);
  void Hide(const OverlayPath& path);
  // Nothing is at the target.
  void Move(const OverlayPath& source, const OverlayPath& target);

  const OverlayNode::Nodes& Roots() const { return roots_; }

 private:
  OverlayNode& Make(const OverlayPath& path);
  OverlayNode& Child(OverlayNode& folder, const std::wstring& name);

  const FileReader& machine_;
  OverlayNode::Nodes roots_;
};

}  // namespace carrovan
