#include "rewrite/package_tree.h"

#include <utility>

#include "platform/path_text.h"
#include "platform/text.h"
#include "rewrite/folder_names.h"
#include "rewrite/legacy_version.h"
#include "rewrite/registry_rewrite.h"
#include "rewrite/xml_rewrite.h"

namespace carrovan {
namespace {

bool HasExtension(const std::wstring& path, std::wstring_view extension) {
  return path.size() >= extension.size() &&
         EqualsIgnoringAsciiCase(path.substr(path.size() - extension.size()), extension);
}

bool IsOfDraftingProduct(const std::wstring& path) { return Contains(path, L"ORMA CAD TVRN-INT"); }

class TreeRewriter {
 public:
  TreeRewriter(const RewriteInputs& inputs, const RewritePorts& ports)
      : inputs_(inputs), ports_(ports) {}

  std::vector<RewriteFailure> Run(const std::wstring& folder) {
    if (ports_.files.IsLink(WithoutTrailingBackslashes(folder))) {
      Note(folder, kNotAFolder);
      return std::move(failures_);
    }
    Enter(folder);
    while (!levels_.empty()) {
      Level& level = levels_.back();
      if (level.next == level.entries.size()) {
        levels_.pop_back();
        continue;
      }
      const FolderEntry& entry = level.entries[level.next++];
      const std::wstring path = level.folder + entry.name;
      if (entry.isLink) continue;
      if (entry.isFolder) {
        Enter(Renamed(path));
      } else if (IsContentFile(entry)) {
        RewriteFile(path);
      }
    }
    return std::move(failures_);
  }

 private:
  struct Level {
    std::wstring folder;  // with a trailing separator
    std::vector<FolderEntry> entries;
    std::size_t next = 0;
  };

  void Enter(const std::wstring& folder) {
    Level level{WithTrailingBackslash(folder), {}};
    Note(folder, ports_.files.ReadFolder(folder, level.entries));
    levels_.push_back(std::move(level));
  }

  std::wstring Renamed(std::wstring path) {
    if (IsOfDraftingProduct(path)) {
      RenameDraftingFolder(path);
    } else {
      Rename(path, inputs_.packageInternalVersion, inputs_.targetInternalVersion);
    }
    return path;
  }

  void RenameDraftingFolder(std::wstring& path) {
    const std::wstring oldVersion = VersionComponentOf(path);
    const std::wstring newVersion = VersionComponentOf(inputs_.firstDraftingFolder);
    if (!newVersion.empty()) Rename(path, oldVersion, newVersion);
    Rename(path, inputs_.packageReleaseVersion, inputs_.targetReleaseYear);
    if (Contains(path, L"VANTRIC 2024") && inputs_.targetReleaseYear != L"2025") {
      Rename(path, L"2024", inputs_.targetReleaseYear);
    }
  }

  void Rename(std::wstring& path, std::wstring_view oldText, std::wstring_view newText) {
    Note(path, RenameFolderPart(path, oldText, newText, ports_.files));
  }

  void RewriteFile(const std::wstring& path) {
    if (IsOfDraftingProduct(path)) return;
    if (HasExtension(path, L".xml")) RewriteXml(path);
    if (HasExtension(path, L".reg")) RewriteReg(path);
  }

  void RewriteXml(const std::wstring& path) {
    const SystemCode code =
        ReplaceInXmlLines(path, inputs_.packageReleaseVersion, inputs_.targetReleaseYear,
                          ports_.files, ports_.codePage);
    Note(path, code);
    if (code != kSystemOk) return;
    Note(path, RetargetLegacyVersion(path, ReplaceAll(inputs_.productName, L" ", L""),
                                     inputs_.targetInternalVersion, ports_.files, ports_.codePage));
  }

  void RewriteReg(const std::wstring& path) {
    const RewriteInputs& in = inputs_;
    const std::vector<Replacement> replacements = {
        {in.productName + L" " + in.packageInternalVersion,
         in.productName + L" " + in.targetInternalVersion},
        {in.packageInternalVersion + L"\\", in.targetInternalVersion + L"\\"},
        {in.packageReleaseVersion, in.targetReleaseYear},
    };
    Note(path, RewriteRegFile(path, replacements, ports_));
  }

  void Note(const std::wstring& path, SystemCode code) {
    if (code != kSystemOk) failures_.push_back({path, code});
  }

  const RewriteInputs& inputs_;
  const RewritePorts& ports_;
  std::vector<Level> levels_;  // the folder at hand and those above it
  std::vector<RewriteFailure> failures_;
};

}  // namespace

std::vector<RewriteFailure> RewritePackageTree(const std::wstring& folder,
                                               const RewriteInputs& inputs,
                                               const RewritePorts& ports) {
  return TreeRewriter(inputs, ports).Run(folder);
}

}  // namespace carrovan
