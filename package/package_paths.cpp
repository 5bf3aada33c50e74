#include "package/package_paths.h"

#include <algorithm>
#include <set>
#include <utility>

#include "package/package_writer.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

// Every file below a folder that holds paths. Links are passed over.
void CollectWalkedFiles(const FileReader& files, const std::wstring& folder,
                        std::vector<std::wstring>& found) {
  for (const FolderEntry& entry : ListFolder(files, folder)) {
    const std::wstring path = WithTrailingBackslash(folder) + entry.name;
    if (entry.isLink) continue;
    if (entry.isFolder) {
      CollectWalkedFiles(files, path, found);
    } else if (IsContentFile(entry) && IsWalkedFile(path)) {
      found.push_back(path);
    }
  }
}

std::vector<std::wstring> WalkedFilesBelow(const FileReader& files, const std::wstring& folder) {
  std::vector<std::wstring> found;
  CollectWalkedFiles(files, folder, found);
  return found;
}

bool IsNetworkPath(const std::wstring& path) { return path.starts_with(L"\\\\"); }

// "\\server\share"
std::wstring ShareOf(const std::wstring& path) {
  const std::size_t share = path.find(L'\\', 2);
  return share == std::wstring::npos ? path : path.substr(0, path.find(L'\\', share + 1));
}

std::wstring ReasonOf(const WalkedPath& walked) {
  return walked.outcome == PathOutcome::kTooLong
             ? L"what it would be mapped to is longer than it can be"
             : L"the file's encoding lacks a character of \"" + walked.becomes + L"\"";
}

std::wstring PlaceText(const PathPlace& place) {
  if (place.key.empty()) return L"line " + std::to_wstring(place.line);
  return place.key + L" " + (place.name.empty() ? L"(default)" : place.name);
}

std::wstring CutShort(const std::wstring& path) {
  constexpr std::size_t kShown = 200;
  return path.size() <= kShown ? path : path.substr(0, kShown) + L"...";
}

}  // namespace

PathState PathLookup::StateOf(const std::wstring& path) {
  if (path.find(L'%') != std::wstring::npos && VariableLength(ToUtf16(path)) > 0) {
    return PathState::kVariable;
  }
  const auto [at, isNew] = states_.try_emplace(path, PathState::kThere);
  if (!isNew) return at->second;
  if (!files_.Exists(path)) {
    at->second =
        IsNetworkPath(path) && !Answers(ShareOf(path)) ? PathState::kNoAnswer : PathState::kGone;
  }
  return at->second;
}

bool PathLookup::Answers(const std::wstring& share) {
  const auto [at, isNew] = shares_.try_emplace(share, false);
  if (!isNew) return at->second;
  std::vector<FolderEntry> entries;
  at->second = files_.ReadFolder(share, entries) == kSystemOk;
  return at->second;
}

std::vector<std::wstring> PackagePaths::NewBeginnings() const {
  std::vector<std::wstring> beginnings;
  for (const PathMapping& mapping : rules_.map.Mappings()) beginnings.push_back(mapping.to);
  return beginnings;
}

std::vector<std::u16string> PackagePaths::WordsThatStay(const RewriteInputs& inputs) const {
  std::set<std::u16string> words;
  for (const PathMapping& mapping : rules_.map.Mappings()) {
    const bool changes =
        RewrittenInRegistryFile(mapping.to + L"\\", inputs, *machine_.user) != mapping.to + L"\\" ||
        RewrittenInDocument(mapping.to, inputs) != mapping.to;
    if (!changes) continue;
    for (const wchar_t* separator : {L"\\\\", L"\\", L"/"}) {
      words.insert(ToUtf16(ReplaceAll(mapping.to, L"\\", separator)));
    }
    words.insert(ToUtf16(ReplaceAll(ReplaceAll(mapping.to, L"&", L"&amp;"), L"'", L"&apos;")));
  }
  return {words.begin(), words.end()};
}

void PackagePaths::MapBelow(const std::wstring& folder, RunReport& report) {
  for (const std::wstring& file : WalkedFilesBelow(*machine_.files, folder)) MapFile(file, report);
}

void PackagePaths::MapFile(const std::wstring& file, RunReport& report) {
  if (rules_.map.IsEmpty()) return;
  std::vector<WalkedPath> mapped;
  const SystemCode code = MapPaths(
      file, *machine_.files, *machine_.codePage, rules_.map, [&](const WalkedPath& walked) {
        if (walked.outcome == PathOutcome::kMapped) mapped.push_back(walked);
        if (walked.outcome != PathOutcome::kTooLong && walked.outcome != PathOutcome::kUnspelled) {
          return;
        }
        report.problems.push_back(L"Not mapped: " + file + L": " + PlaceText(walked.place) + L": " +
                                  CutShort(walked.path) + L": " + ReasonOf(walked));
      });
  if (code != kSystemOk) {
    report.problems.push_back(L"Not mapped: " + file + L": " + DescribeSystemCode(code));
    return;
  }
  for (const WalkedPath& walked : mapped) mapped_.emplace(walked.becomes, walked.path);
}

// What mapped paths are after the rewriting, to what they were in the package.
struct PackagePaths::Names {
  std::map<std::wstring, std::wstring, NameLess> was;

  void Describe(ImportedPath& path) const {
    const auto at = was.find(path.path);
    if (at == was.end()) return;
    path.was = at->second;
    if (path.fate == PathFate::kKept) path.fate = PathFate::kMapped;
  }
};

PackagePaths::Names PackagePaths::MappedNames(const RewriteInputs* inputs) const {
  Names names{mapped_};
  if (inputs == nullptr) return names;
  for (const auto& [becomes, was] : mapped_) {
    names.was.emplace(RewrittenInRegistryFile(becomes, *inputs, *machine_.user), was);
    names.was.emplace(RewrittenInDocument(becomes, *inputs), was);
  }
  return names;
}

void PackagePaths::ReportBelow(const std::wstring& folder, const RewriteInputs* inputs,
                               RunReport& report) {
  if (!rules_.listsPaths) return;
  const Names names = MappedNames(inputs);
  PathLookup lookup(*machine_.files);
  const PathMap none;
  for (const std::wstring& file : WalkedFilesBelow(*machine_.files, folder)) {
    const SystemCode code =
        WalkPaths(file, *machine_.files, *machine_.codePage, none, [&](const WalkedPath& walked) {
          ImportedPath path{PathFate::kKept,
                            walked.path,
                            {},
                            file.substr(folder.size()),
                            walked.place.key,
                            walked.place.name,
                            walked.place.line,
                            lookup.StateOf(walked.path)};
          names.Describe(path);
          report.paths.push_back(std::move(path));
        });
    // A file that cannot be read is a problem of the steps that need it.
    static_cast<void>(code);
  }
  for (ImportedPath& path : report.paths) {
    if (path.fate == PathFate::kDropped) names.Describe(path);
  }
}

namespace {

class PackageLister {
 public:
  PackageLister(ArchiveExaminer& archive, const CodePage& codePage, const PathTarget* target)
      : archive_(archive), files_(archive), codePage_(codePage), target_(target) {
    if (target_ != nullptr) lookup_.emplace(*target_->machine.files);
  }

  PathListing List() {
    std::size_t index = 0;
    for (auto item = archive_.Item(index); item; item = archive_.Item(++index)) {
      if (!item->name.ends_with(L'\\') && IsWalkedFile(item->name)) Walk(item->name);
    }
    for (auto& [name, listed] : paths_) {
      for (auto& [becomes, path] : listed) listing_.paths.push_back(std::move(path));
    }
    return std::move(listing_);
  }

 private:
  void Walk(const std::wstring& file) {
    const SystemCode code =
        WalkPaths(file, files_, codePage_, PathMap(), [&](const WalkedPath& walked) {
          const std::wstring becomes = target_ == nullptr ? L"" : Rewritten(walked, file);
          ListedPath& listed = paths_[walked.path][becomes];
          if (listed.uses.empty()) {
            listed.path = walked.path;
            listed.becomes = becomes;
            if (target_ != nullptr) listed.state = lookup_->StateOf(becomes);
          }
          listed.uses.push_back({file, walked.place});
        });
    if (code == kSystemOk) return;
    listing_.problems.push_back(file + L": " + DescribeSystemCode(code));
  }

  std::wstring Rewritten(const WalkedPath& walked, const std::wstring& file) const {
    if (!target_->inputs || walked.place.asBytes) return walked.path;
    return EndsWithIgnoringAsciiCase(file, L".reg")
               ? RewrittenInRegistryFile(walked.path, *target_->inputs, *target_->machine.user)
               : RewrittenInDocument(walked.path, *target_->inputs);
  }

  ArchiveExaminer& archive_;
  ArchiveFiles files_;
  const CodePage& codePage_;
  const PathTarget* target_;
  std::optional<PathLookup> lookup_;
  using ByBecoming = std::map<std::wstring, ListedPath, NameLess>;
  std::map<std::wstring, ByBecoming, NameLess> paths_;
  PathListing listing_;
};

}  // namespace

PathListing ListPackagePaths(ArchiveExaminer& archive, const CodePage& codePage,
                             const PathTarget* target) {
  return PackageLister(archive, codePage, target).List();
}

}  // namespace carrovan
