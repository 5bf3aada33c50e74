#include "rewrite/package_tree.h"

#include <algorithm>
#include <utility>

#include "rewrite/registry_rewrite.h"
#include "rewrite/user_paths.h"
#include "rewrite/xml_rewrite.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

bool IsVersion(std::wstring_view component) {
  return component.size() >= 3 && IsDigit(component.front()) && IsDigit(component.back()) &&
         std::ranges::count(component, L'.') == 1 &&
         std::ranges::all_of(component, [](wchar_t c) { return IsDigit(c) || c == L'.'; });
}

}  // namespace

std::wstring VersionComponentOf(std::wstring_view path) {
  while (!path.empty()) {
    const std::size_t end = std::min(path.find(L'\\'), path.size());
    if (IsVersion(path.substr(0, end))) return std::wstring(path.substr(0, end));
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return {};
}

SystemCode RenameFolderPart(std::wstring& path, std::wstring_view oldText,
                            std::wstring_view newText, FileSystem& files) {
  // The drafting product of 2025 keeps its settings in the folder of 2024.
  constexpr std::wstring_view kDrafting2025 = L"ORMA CAD TVRN-INT-VANTRIC 2025 (x64)";
  constexpr std::wstring_view kDrafting2024 = L"ORMA CAD TVRN-INT-VANTRIC 2024 (x64)";
  const std::size_t nameAt = path.rfind(L'\\') + 1;
  const std::wstring name = path.substr(nameAt);
  if (!Contains(name, oldText)) return kSystemOk;
  std::wstring renamed = path.substr(0, nameAt) + ReplaceAll(name, oldText, newText);
  renamed = ReplaceAll(renamed, kDrafting2025, kDrafting2024);
  if (renamed == path) return kSystemOk;
  const SystemCode code = files.MoveTo(path, renamed);
  if (code == kSystemOk) path = renamed;
  return code;
}

namespace {

std::vector<Replacement> RegistryReplacements(const RewriteInputs& in) {
  return {{in.productName + L" " + in.packageInternalVersion,
           in.productName + L" " + in.targetInternalVersion},
          {in.packageInternalVersion + L"\\", in.targetInternalVersion + L"\\"},
          {in.packageReleaseVersion, in.targetReleaseYear}};
}

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
                          ports_.files, ports_.codePage, ports_.stay);
    Note(path, code);
    if (code != kSystemOk) return;
    Note(path, RetargetLegacyVersion(path, ReplaceAll(inputs_.productName, L" ", L""),
                                     inputs_.targetInternalVersion, ports_.files, ports_.codePage,
                                     ports_.stay));
  }

  void RewriteReg(const std::wstring& path) {
    Note(path, RewriteRegistryFile(path, RegistryReplacements(inputs_), ports_));
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

std::wstring RewrittenInRegistryFile(const std::wstring& path, const RewriteInputs& inputs,
                                     const UserIdentity& user) {
  std::u16string text = ToUtf16(ReplaceAll(path, L"\\", L"\\\\"));
  for (const Replacement& each : RegistryReplacements(inputs)) {
    ReplaceUnits(text, ToUtf16(each.search), ToUtf16(each.replacement));
  }
  if (const auto known = RegUserOf(user)) {
    ReplaceUserNames(text, known->rule);
    if (!known->profile.empty()) ReplaceUnits(text, u"%USERPROFILE%", known->profile);
  }
  return ReplaceAll(FromUtf16(text), L"\\\\", L"\\");
}

std::wstring RewrittenInDocument(const std::wstring& path, const RewriteInputs& inputs) {
  return ReplaceAll(path, inputs.packageReleaseVersion, inputs.targetReleaseYear);
}

std::vector<RewriteFailure> RewritePackageTree(const std::wstring& folder,
                                               const RewriteInputs& inputs,
                                               const RewritePorts& ports) {
  return TreeRewriter(inputs, ports).Run(folder);
}

}  // namespace carrovan
