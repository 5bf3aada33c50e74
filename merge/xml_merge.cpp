#include "merge/xml_merge.h"

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "merge/child_index.h"
#include "merge/container.h"
#include "merge/names_and_numbers.h"
#include "merge/ribbon_merge.h"

namespace carrovan {
namespace {

void CarryText(const XmlNode& oldText, const XmlNode& newElement) {
  const XmlNode newText = LeadingText(newElement);
  // A text that the DOM refuses to change stays as it is, and the merge goes on.
  if (newText) static_cast<void>(newText.CopyTextFrom(oldText));
}

// A pair of elements whose children are being merged.
struct Level {
  XmlNode oldChild;  // the next one to merge; none when the pair is done
  XmlNode newElement;
  ChildIndex::Position position = ChildIndex::kNone;  // of the new element, in the pair above
  std::size_t oldChildren = 0;                        // merged so far
  ChildIndex* newChildren = nullptr;
  std::optional<ChildIndex> ownedChildren;  // none when it was kept from an earlier pair
  std::optional<ContainerSummary> summary;  // as it was at the start, counted on by this pair
};

// The pairs above the one being merged wait on a stack of the merge's own, because documents may be
// nested deeper than the program's stack. No new element is met again behind the last child of the
// lowest pair, which then gives its place away: a chain of any depth needs one place. An element
// that several old ones match is met as often; where it is dear to walk, its index is kept, and
// those of all elements above it, by which it is found again.
class NodeMerge {
 public:
  explicit NodeMerge(XmlDocument& newDocument) : newDocument_(newDocument) {}

  void Run(const XmlNode& oldElement, const XmlNode& newElement) {
    const std::string_view name = newElement.Name();
    XmlNode oldChild = MergeOwnValue(oldElement, newElement, name);
    if (oldChild) Start(levels_.emplace_back(), std::move(oldChild), newElement, name, nullptr);
    while (!levels_.empty()) MergeNextChild();
  }

 private:
  // The old element's first child to be merged, when there is one.
  static XmlNode MergeOwnValue(const XmlNode& oldElement, const XmlNode& newElement,
                               std::string_view newName);
  static void Start(Level& level, XmlNode oldChild, const XmlNode& newElement,
                    std::string_view newName, ChildIndex* keptChildren);
  void MergeNextChild();
  void Finish();
  void MergeChild(Level& level, const XmlNode& oldChild);
  void Descend(Level& level, const XmlNode& oldElement, ChildIndex::Position match);
  void AppendNumbered(Level& level, const XmlNode& oldChild, std::string_view oldName);
  static ChildKey KeyOf(const XmlNode& oldChild, std::string_view name, ContainerKind kind);

  XmlDocument& newDocument_;
  std::deque<Level> levels_;
  std::deque<ChildIndex> kept_;
};

XmlNode NodeMerge::MergeOwnValue(const XmlNode& oldElement, const XmlNode& newElement,
                                 std::string_view newName) {
  if (IsValueElementName(newName)) return {};
  XmlNode first = oldElement.FirstChild();
  if (first && first.IsText()) CarryText(first, newElement);
  return ThisOrNextElement(std::move(first));
}

void NodeMerge::Start(Level& level, XmlNode oldChild, const XmlNode& newElement,
                      std::string_view newName, ChildIndex* keptChildren) {
  level.oldChild = std::move(oldChild);
  level.newElement = newElement;
  level.oldChildren = 0;
  level.ownedChildren.reset();
  level.newChildren =
      keptChildren == nullptr ? &level.ownedChildren.emplace(newElement, newName) : keptChildren;
  level.summary = level.newChildren->Summary();
}

void NodeMerge::MergeNextChild() {
  Level& level = levels_.back();
  if (!level.oldChild) return Finish();
  XmlNode next = ThisOrNextElement(level.oldChild.NextSibling());
  const XmlNode oldChild = std::exchange(level.oldChild, std::move(next));
  ++level.oldChildren;
  MergeChild(level, oldChild);
}

void NodeMerge::Finish() {
  Level& level = levels_.back();
  if (levels_.size() > 1) {
    ChildIndex& above = *levels_[levels_.size() - 2].newChildren;
    above.LearnId(level.position, *level.newChildren);
    std::optional<ChildIndex>& owned = level.ownedChildren;
    if (owned && owned->IsWorthKeeping(level.oldChildren)) {
      above.NoteKeptIndexOf(level.position, &kept_.emplace_back(*std::move(owned)));
    }
  }
  levels_.pop_back();
}

void NodeMerge::MergeChild(Level& level, const XmlNode& oldChild) {
  const std::string_view name = oldChild.Name();
  const ContainerKind kind = ContainerKindOf(name);
  const ChildIndex::Position match = level.newChildren->First(KeyOf(oldChild, name, kind));
  if (match != ChildIndex::kNone && kind == ContainerKind::kPanel) {
    MergeRibbonPanel(oldChild, level.newChildren->Node(match), newDocument_);
  } else if (match != ChildIndex::kNone) {
    Descend(level, oldChild, match);
  } else if (kind != ContainerKind::kNone && level.summary) {
    AppendNumbered(level, oldChild, name);
  } else {
    // A child that cannot be copied is left out.
    static_cast<void>(level.newElement.AppendCopy(oldChild));
  }
}

ChildKey NodeMerge::KeyOf(const XmlNode& oldChild, std::string_view name, ContainerKind kind) {
  if (kind == ContainerKind::kNone) return {name, std::nullopt};
  const std::optional<std::int32_t> id = ReadIdChild(FirstIdChild(oldChild, name)).id;
  return {kind == ContainerKind::kState ? name : std::string_view(), id};
}

void NodeMerge::Descend(Level& level, const XmlNode& oldElement, ChildIndex::Position match) {
  const XmlNode newElement = level.newChildren->Node(match);
  const std::string_view name = level.newChildren->Name(match);
  XmlNode oldChild = MergeOwnValue(oldElement, newElement, name);
  if (!oldChild) return;
  ChildIndex* const kept = level.newChildren->KeptIndexOf(match);
  const bool isMetForTheLastTime = levels_.size() == 1 && !level.oldChild;
  Level& next = isMetForTheLastTime ? level : levels_.emplace_back();
  next.position = match;
  Start(next, std::move(oldChild), newElement, name, kept);
}

void NodeMerge::AppendNumbered(Level& level, const XmlNode& oldChild, std::string_view oldName) {
  ContainerSummary& summary = *level.summary;
  const std::int32_t suffix = WrappingSum(summary.highestSuffix, 1);
  const std::int32_t size = WrappingSum(summary.size, 1);
  const std::string name = std::string(ElementBaseName(oldName)) + "-" + std::to_string(suffix);
  const XmlNode created = newDocument_.CreateElement(name);
  if (!created) return;
  CopyChildNodes(oldChild, created);
  if (!level.newElement.AppendChild(created)) return;
  // Without a place for the size the number stays free, and the next container takes it too.
  if (!summary.sizeText || !summary.sizeText.SetText(std::to_wstring(size))) return;
  level.newChildren->NoteSizeWritten(size);
  summary.highestSuffix = suffix;
  summary.size = size;
}

bool Fail(LineLog& log, const std::wstring& line) {
  log.WriteLine(line);
  return false;
}

bool MergeDocuments(XmlDocument& oldDocument, XmlDocument& newDocument, LineLog& log) {
  const XmlNode oldRoot = oldDocument.Root();
  if (!oldRoot) return Fail(log, L"Failed to get old document root element");
  const XmlNode newRoot = newDocument.Root();
  if (!newRoot) return Fail(log, L"Failed to get new document root element");
  MergeXmlNodes(oldRoot, newRoot, newDocument);
  return true;
}

}  // namespace

void MergeXmlNodes(const XmlNode& oldElement, const XmlNode& newElement, XmlDocument& newDocument) {
  if (oldElement && newElement) NodeMerge(newDocument).Run(oldElement, newElement);
}

bool MergeXmlFiles(const std::wstring& oldPath, const std::wstring& newPath,
                   const std::wstring& outputPath, XmlDom& dom, LineLog& log) {
  const std::unique_ptr<XmlSession> session = dom.Begin();
  if (!session->Started()) return Fail(log, L"Failed to initialize COM");
  std::unique_ptr<XmlDocument> oldDocument = session->NewDocument();
  if (oldDocument == nullptr) return Fail(log, L"Failed to create old XML document object");
  const std::unique_ptr<XmlDocument> newDocument = session->NewDocument();
  if (newDocument == nullptr) return Fail(log, L"Failed to create new XML document object");
  if (!oldDocument->Load(oldPath)) return Fail(log, L"Failed to load old XML file: " + oldPath);
  if (!newDocument->Load(newPath)) return Fail(log, L"Failed to load new XML file: " + newPath);
  if (!MergeDocuments(*oldDocument, *newDocument, log)) return false;
  oldDocument.reset();  // saving needs room for the whole output
  if (newDocument->Save(outputPath)) return true;
  return Fail(log, L"Failed to save merged XML file: " + outputPath);
}

}  // namespace carrovan
