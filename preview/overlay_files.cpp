#include "preview/overlay_files.h"

#include <algorithm>

#include "package/staging_folder.h"
#include "text/text.h"

namespace carrovan {
namespace {

FolderEntry EntryOf(const OverlayNode& node, const std::wstring& name) {
  return {name, node.kind == SeenKind::kFolder, node.isLink && !node.isNew};
}

bool ListedBefore(const FolderEntry& a, const FolderEntry& b) {
  const int order = CompareNames(a.name, b.name);
  return order != 0 ? order < 0 : a.name < b.name;
}

bool IsBelow(const OverlayPath& path, const OverlayPath& folder) {
  if (!IsSamePath(path.root, folder.root) || path.names.size() < folder.names.size()) return false;
  return std::equal(folder.names.begin(), folder.names.end(), path.names.begin(), IsSamePath);
}

bool IsSame(const OverlayPath& a, const OverlayPath& b) {
  return a.names.size() == b.names.size() && IsBelow(a, b);
}

}  // namespace

OrReason<OverlayFiles> OverlayFiles::Open(const Machine& machine) {
  const auto spool = NewRunFolderPath(machine);
  if (!spool) {
    return {nullptr, L"no folder for the preview: the system tells no temporary path or no GUID"};
  }
  if (const SystemCode code = machine.files->CreateFolder(*spool); code != kSystemOk) {
    return {nullptr, L"no folder for the preview: " + *spool + L": " + DescribeSystemCode(code)};
  }
  MarkRunFolder(*machine.files, *spool);
  return {std::unique_ptr<OverlayFiles>(new OverlayFiles(*machine.files, *spool)), {}};
}

OverlayFiles::OverlayFiles(FileSystem& machine, std::wstring spool)
    : machine_(machine), spool_(std::move(spool)), tree_(machine) {
  if (const auto path = ParseOverlayPath(spool_)) tree_.Hide(*path);
}

OverlayFiles::~OverlayFiles() { static_cast<void>(WipeRunFolder(machine_, spool_)); }

std::wstring OverlayFiles::Locate(const std::wstring& path) const {
  const Seen seen = Look(path);
  return seen.kind == SeenKind::kFile ? seen.real : JoinNames(spool_, L"none");
}

std::wstring OverlayFiles::NewSpoolFile() { return JoinNames(spool_, std::to_wstring(++spooled_)); }

SystemCode OverlayFiles::Adopt(const std::wstring& spoolFile, const std::wstring& path) {
  if (const SystemCode code = CodeOfWriting(path); code != kSystemOk) return code;
  tree_.PutFile(*ParseOverlayPath(path), spoolFile);
  return kSystemOk;
}

Seen OverlayFiles::Look(const std::wstring& path) const {
  const auto parsed = ParseOverlayPath(path);
  return parsed ? tree_.Look(*parsed) : Seen();
}

bool OverlayFiles::IsReadOnly(const Seen& seen) const {
  const bool isMade = seen.node != nullptr && seen.node->isNew;
  return seen.kind == SeenKind::kFile && !isMade && machine_.IsReadOnly(seen.real);
}

SystemCode OverlayFiles::MissingCode(const OverlayPath& path) const {
  return tree_.Look(path.Parent()).kind == SeenKind::kFolder ? kFileNotFound : kPathNotFound;
}

SystemCode OverlayFiles::CodeOfWriting(const std::wstring& path) const {
  const auto parsed = ParseOverlayPath(path);
  if (!parsed || !parsed->mayBeMade) return kInvalidName;
  const Seen seen = tree_.Look(*parsed);
  if (seen.kind == SeenKind::kFolder || IsReadOnly(seen)) return kAccessDenied;
  return tree_.Look(parsed->Parent()).kind == SeenKind::kFolder ? kSystemOk : kPathNotFound;
}

SystemCode OverlayFiles::CodeOfReading(const std::wstring& path, Seen& seen) const {
  const auto parsed = ParseOverlayPath(path);
  if (!parsed) return kInvalidName;
  seen = tree_.Look(*parsed);
  if (seen.kind == SeenKind::kMissing) return MissingCode(*parsed);
  return seen.kind == SeenKind::kFolder ? kAccessDenied : kSystemOk;
}

bool OverlayFiles::Exists(const std::wstring& path) const {
  const Seen seen = Look(path);
  return seen.IsOfMachine() ? machine_.Exists(seen.real) : seen.kind != SeenKind::kMissing;
}

bool OverlayFiles::IsFolder(const std::wstring& path) const {
  return Look(path).kind == SeenKind::kFolder;
}

bool OverlayFiles::IsLink(const std::wstring& path) const { return Look(path).isLink; }

bool OverlayFiles::IsReadOnly(const std::wstring& path) const { return IsReadOnly(Look(path)); }

SystemCode OverlayFiles::ReadFolder(const std::wstring& folder,
                                    std::vector<FolderEntry>& entries) const {
  const Seen seen = Look(folder);
  if (seen.IsOfMachine()) return machine_.ReadFolder(seen.real, entries);
  if (seen.kind != SeenKind::kFolder) {
    return seen.kind == SeenKind::kFile ? kNotAFolder : kPathNotFound;
  }
  std::vector<FolderEntry> machine;
  if (!seen.real.empty()) {
    const SystemCode code = machine_.ReadFolder(seen.real, machine);
    if (code != kSystemOk) return code;
  }
  entries = Merged(*seen.node, machine);
  return kSystemOk;
}

std::vector<FolderEntry> OverlayFiles::Merged(const OverlayNode& folder,
                                              const std::vector<FolderEntry>& machine) const {
  std::vector<FolderEntry> merged;
  for (const FolderEntry& entry : machine) {
    const auto node = folder.below.find(FoldedName(entry.name));
    if (node == folder.below.end()) {
      merged.push_back(entry);
    } else if (node->second->kind != SeenKind::kMissing && node->second->name.empty()) {
      merged.push_back(EntryOf(*node->second, entry.name));
    }
  }
  for (const auto& [folded, node] : folder.below) {
    if (node->kind != SeenKind::kMissing && !node->name.empty()) {
      merged.push_back(EntryOf(*node, node->name));
    }
  }
  std::sort(merged.begin(), merged.end(), ListedBefore);
  return merged;
}

SystemCode OverlayFiles::ReadBytes(const std::wstring& path, std::string& bytes) const {
  Seen seen;
  const SystemCode code = CodeOfReading(path, seen);
  return code == kSystemOk ? machine_.ReadBytes(seen.real, bytes) : code;
}

SystemCode OverlayFiles::ReadInParts(const std::wstring& path, const TakePart& take) const {
  Seen seen;
  const SystemCode code = CodeOfReading(path, seen);
  return code == kSystemOk ? machine_.ReadInParts(seen.real, take) : code;
}

std::uint64_t OverlayFiles::FileBytes(const std::wstring& path) const {
  Seen seen;
  return CodeOfReading(path, seen) == kSystemOk ? machine_.FileBytes(seen.real) : 0;
}

std::optional<std::uint64_t> OverlayFiles::FreeBytes(const std::wstring& folder) const {
  return machine_.FreeBytes(folder);
}

SystemCode OverlayFiles::CreateFolder(const std::wstring& path) {
  const auto parsed = ParseOverlayPath(path);
  if (!parsed || !parsed->mayBeMade) return kInvalidName;
  if (tree_.Look(*parsed).kind != SeenKind::kMissing) return kAlreadyExists;
  if (tree_.Look(parsed->Parent()).kind != SeenKind::kFolder) return kPathNotFound;
  tree_.PutNewFolder(*parsed);
  return kSystemOk;
}

SystemCode OverlayFiles::CreateEmptyFile(const std::wstring& path) { return WriteBytes(path, {}); }

SystemCode OverlayFiles::RemoveFile(const std::wstring& path) {
  Seen seen;
  if (const SystemCode code = CodeOfReading(path, seen); code != kSystemOk) return code;
  if (!seen.isLink && IsReadOnly(seen)) return kAccessDenied;
  tree_.Remove(*ParseOverlayPath(path));
  return kSystemOk;
}

SystemCode OverlayFiles::RemoveFolder(const std::wstring& path) {
  const auto parsed = ParseOverlayPath(path);
  if (!parsed) return kInvalidName;
  const Seen seen = tree_.Look(*parsed);
  if (seen.kind == SeenKind::kMissing) return MissingCode(*parsed);
  if (seen.kind == SeenKind::kFile) return kNotAFolder;
  std::vector<FolderEntry> entries;
  if (!seen.isLink) {
    const SystemCode code = ReadFolder(path, entries);
    if (code != kSystemOk) return code;
  }
  if (!entries.empty()) return kFolderNotEmpty;
  tree_.Remove(*parsed);
  return kSystemOk;
}

SystemCode OverlayFiles::WriteBytes(const std::wstring& path, std::string_view bytes) {
  if (const SystemCode code = CodeOfWriting(path); code != kSystemOk) return code;
  const std::wstring spoolFile = NewSpoolFile();
  if (const SystemCode code = machine_.WriteBytes(spoolFile, bytes); code != kSystemOk) return code;
  return Adopt(spoolFile, path);
}

class OverlayFiles::Replacement : public FileReplacement {
 public:
  Replacement(OverlayFiles& overlay, std::wstring path)
      : overlay_(overlay), path_(std::move(path)) {}

  SystemCode Begin(std::uint64_t expectedBytes) {
    spoolFile_ = overlay_.NewSpoolFile();
    return overlay_.machine_.BeginReplacement(spoolFile_, expectedBytes, file_);
  }
  SystemCode Append(std::string_view part) override { return file_->Append(part); }
  SystemCode Complete() override {
    const SystemCode code = file_->Complete();
    return code == kSystemOk ? overlay_.Adopt(spoolFile_, path_) : code;
  }

 private:
  OverlayFiles& overlay_;
  std::wstring path_;
  std::wstring spoolFile_;
  std::unique_ptr<FileReplacement> file_;
};

SystemCode OverlayFiles::BeginReplacement(const std::wstring& path, std::uint64_t expectedBytes,
                                          std::unique_ptr<FileReplacement>& replacement) {
  if (const SystemCode code = CodeOfWriting(path); code != kSystemOk) return code;
  auto begun = std::make_unique<Replacement>(*this, path);
  if (const SystemCode code = begun->Begin(expectedBytes); code != kSystemOk) return code;
  replacement = std::move(begun);
  return kSystemOk;
}

// A file in the spool never changes, so that each time makes another.
class OverlayFiles::Appender : public FileAppender {
 public:
  Appender(OverlayFiles& overlay, std::wstring path) : overlay_(overlay), path_(std::move(path)) {}

  SystemCode Append(std::string_view bytes) override {
    std::string content;
    const SystemCode code = overlay_.ReadBytes(path_, content);
    return code == kSystemOk ? overlay_.WriteBytes(path_, content.append(bytes)) : code;
  }
  SystemCode FlushToDisk() override { return kSystemOk; }

 private:
  OverlayFiles& overlay_;
  std::wstring path_;
};

SystemCode OverlayFiles::OpenToAppend(const std::wstring& path,
                                      std::unique_ptr<FileAppender>& appender) {
  SystemCode code = CodeOfWriting(path);
  if (code == kSystemOk && Look(path).kind == SeenKind::kMissing) code = WriteBytes(path, {});
  if (code == kSystemOk) appender = std::make_unique<Appender>(*this, path);
  return code;
}

// Nobody else sees what an overlay shows, so that a file in it needs no holding.
SystemCode OverlayFiles::HoldFile(const std::wstring& path, FileHold hold) {
  Seen seen;
  const SystemCode code = CodeOfReading(path, seen);
  return code == kFileNotFound && hold == FileHold::kMake ? WriteBytes(path, "") : code;
}

// The machine's file is read to its end, as copying would: one that cannot be read is not copied.
SystemCode OverlayFiles::CopyOver(const std::wstring& source, const std::wstring& target) {
  Seen seen;
  if (const SystemCode code = CodeOfReading(source, seen); code != kSystemOk) return code;
  if (seen.IsOfMachine()) {
    const auto look = [](std::string_view, std::uint64_t) { return true; };
    const SystemCode code = machine_.ReadInParts(seen.real, look);
    if (code != kSystemOk) return code;
  }
  return Adopt(seen.real, target);
}

SystemCode OverlayFiles::MoveTo(const std::wstring& source, const std::wstring& target) {
  const auto from = ParseOverlayPath(source);
  const auto to = ParseOverlayPath(target);
  if (!from || !to || !to->mayBeMade) return kInvalidName;
  const SeenKind kind = tree_.Look(*from).kind;
  if (kind == SeenKind::kMissing) return MissingCode(*from);
  if (!IsSame(*to, *from)) {
    if (tree_.Look(*to).kind != SeenKind::kMissing) return kAlreadyExists;
    if (tree_.Look(to->Parent()).kind != SeenKind::kFolder) return kPathNotFound;
    if (IsBelow(*to, *from)) return kInvalidName;
  }
  tree_.Move(*from, *to);
  return kSystemOk;
}

}  // namespace carrovan
