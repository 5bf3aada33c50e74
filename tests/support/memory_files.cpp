#include "tests/support/memory_files.h"

#include <algorithm>

#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

std::wstring Folded(const std::wstring& path) {
  std::wstring folded;
  folded.reserve(path.size());
  bool isAscii = true;
  wchar_t last = 0;
  for (const wchar_t c : path) {
    const bool separator = c == L'\\' || c == L'/';
    if (separator && last == L'\\') continue;
    last = separator ? L'\\' : c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - 32) : c;
    isAscii = isAscii && static_cast<char32_t>(c) < 0x80;
    folded.push_back(last);
  }
  if (last == L'\\') folded.pop_back();
  return isAscii ? folded : FromUtf16(FoldedName(folded));
}

std::wstring ParentOf(const std::wstring& folded) {
  const std::size_t separator = folded.rfind(L'\\');
  return separator == std::wstring::npos ? std::wstring() : folded.substr(0, separator);
}

}  // namespace

SystemCode MemoryFiles::Fault(const std::string& operation, const std::wstring& path) const {
  return fault ? fault(operation, path) : kSystemOk;
}

SystemCode MemoryFiles::MissingCode(const std::wstring& path) const {
  return IsFolder(ParentOf(Folded(path))) ? kFileNotFound : kPathNotFound;
}

const MemoryFiles::Entry* MemoryFiles::Find(const std::wstring& path) const {
  const auto found = entries_.find(Folded(path));
  return found == entries_.end() ? nullptr : &found->second;
}

MemoryFiles::Entry& MemoryFiles::Add(const std::wstring& path) {
  const auto [place, added] = entries_.try_emplace(Folded(path));
  if (added) {
    std::wstring trimmed = path;
    while (EndsInSeparator(trimmed)) trimmed.pop_back();
    place->second.name = FileNameOf(trimmed);
    place->second.order = made_++;
  }
  return place->second;
}

SystemCode MemoryFiles::Done(const std::string& operation, const std::wstring& path) {
  changes.push_back(FromUtf8(operation) + L" " + path);
  return kSystemOk;
}

void MemoryFiles::PutFolder(const std::wstring& path) {
  const std::wstring folded = Folded(path);
  if (folded.empty()) return;
  if (const std::wstring parent = ParentOf(folded); !parent.empty()) {
    PutFolder(path.substr(0, parent.size()));
  }
  Add(path).isFolder = true;
}

void MemoryFiles::Put(const std::wstring& path, const std::string& bytes) {
  PutFolder(path.substr(0, ParentOf(Folded(path)).size()));
  Add(path).bytes = bytes;
}

void MemoryFiles::MakeReadOnly(const std::wstring& path) {
  entries_.at(Folded(path)).readOnly = true;
}

bool MemoryFiles::Has(const std::wstring& path) const { return Find(path) != nullptr; }

std::string MemoryFiles::Bytes(const std::wstring& path) const {
  const Entry* const entry = Find(path);
  return entry == nullptr || entry->isFolder ? "<missing>" : entry->bytes;
}

std::vector<std::wstring> MemoryFiles::Names(const std::wstring& folder) const {
  std::vector<std::wstring> names;
  for (const FolderEntry& entry : EntriesOf(folder)) names.push_back(entry.name);
  std::sort(names.begin(), names.end());
  return names;
}

bool MemoryFiles::Exists(const std::wstring& path) const { return Find(path) != nullptr; }

bool MemoryFiles::IsFolder(const std::wstring& path) const {
  const Entry* const entry = Find(path);
  return entry != nullptr && entry->isFolder;
}

bool MemoryFiles::IsReadOnly(const std::wstring& path) const {
  const Entry* const entry = Find(path);
  return entry != nullptr && entry->readOnly;
}

std::vector<FolderEntry> MemoryFiles::EntriesOf(const std::wstring& folder) const {
  const std::wstring parent = Folded(folder);
  std::vector<const Entry*> found;
  const std::wstring front = parent.empty() ? parent : parent + L'\\';
  for (auto at = entries_.lower_bound(front); at != entries_.end() && at->first.starts_with(front);
       ++at) {
    if (at->first.find(L'\\', front.size()) == std::wstring::npos) found.push_back(&at->second);
  }
  std::sort(found.begin(), found.end(), [this](const Entry* a, const Entry* b) {
    return listsByName ? CompareNames(a->name, b->name) < 0 : a->order < b->order;
  });
  std::vector<FolderEntry> listed;
  for (const Entry* const entry : found) {
    FolderEntry& added = listed.emplace_back();
    added.name = entry->name;
    added.isFolder = entry->isFolder;
  }
  return listed;
}

SystemCode MemoryFiles::ReadFolder(const std::wstring& folder,
                                   std::vector<FolderEntry>& entries) const {
  if (const SystemCode code = Fault("list", folder); code != kSystemOk) return code;
  if (!IsFolder(folder)) return Exists(folder) ? kNotAFolder : kPathNotFound;
  entries = EntriesOf(folder);
  return kSystemOk;
}

SystemCode MemoryFiles::ReadBytes(const std::wstring& path, std::string& bytes) const {
  if (const SystemCode code = Fault("read", path); code != kSystemOk) return code;
  const Entry* const entry = Find(path);
  if (entry == nullptr) return MissingCode(path);
  if (entry->isFolder) return kAccessDenied;
  bytes = entry->bytes;
  return kSystemOk;
}

SystemCode MemoryFiles::ReadInParts(const std::wstring& path, const TakePart& take) const {
  std::string bytes;
  if (const SystemCode code = ReadBytes(path, bytes); code != kSystemOk) return code;
  for (std::string_view rest = bytes; !rest.empty();) {
    if (!take(rest.substr(0, partBytes), bytes.size())) break;
    rest.remove_prefix(std::min(partBytes, rest.size()));
  }
  return kSystemOk;
}

std::uint64_t MemoryFiles::FileBytes(const std::wstring& path) const {
  const Entry* const entry = Find(path);
  return entry == nullptr ? 0 : entry->bytes.size();
}

SystemCode MemoryFiles::MayStore(const std::wstring& path) const {
  const Entry* const there = Find(path);
  if (there != nullptr && (there->isFolder || there->readOnly)) return kAccessDenied;
  const std::wstring parent = ParentOf(Folded(path));
  return parent.empty() || IsFolder(parent) ? kSystemOk : kPathNotFound;
}

SystemCode MemoryFiles::Store(const std::wstring& path, std::string bytes) {
  const SystemCode code = MayStore(path);
  if (code == kSystemOk) Add(path).bytes = std::move(bytes);
  return code;
}

SystemCode MemoryFiles::CreateFolder(const std::wstring& path) {
  if (const SystemCode code = Fault("create folder", path); code != kSystemOk) return code;
  if (Exists(path)) return kAlreadyExists;
  const std::wstring parent = ParentOf(Folded(path));
  if (!parent.empty() && !IsFolder(parent)) return kPathNotFound;
  Add(path).isFolder = true;
  return Done("create folder", path);
}

SystemCode MemoryFiles::CreateEmptyFile(const std::wstring& path) { return WriteBytes(path, ""); }

SystemCode MemoryFiles::RemoveFile(const std::wstring& path) {
  if (const SystemCode code = Fault("remove", path); code != kSystemOk) return code;
  const Entry* const entry = Find(path);
  if (entry == nullptr) return MissingCode(path);
  if (entry->isFolder || entry->readOnly) return kAccessDenied;
  if (IsAppendedTo(path)) return kSharingViolation;
  entries_.erase(Folded(path));
  std::erase(held, Folded(path));
  return Done("remove", path);
}

SystemCode MemoryFiles::RemoveFolder(const std::wstring& path) {
  if (const SystemCode code = Fault("remove folder", path); code != kSystemOk) return code;
  if (!Exists(path)) return MissingCode(path);
  if (!IsFolder(path)) return kNotAFolder;
  if (!EntriesOf(path).empty()) return kFolderNotEmpty;
  entries_.erase(Folded(path));
  return Done("remove folder", path);
}

SystemCode MemoryFiles::WriteBytes(const std::wstring& path, std::string_view bytes) {
  if (const SystemCode code = Fault("write", path); code != kSystemOk) return code;
  const SystemCode code = Store(path, std::string(bytes));
  return code == kSystemOk ? Done("write", path) : code;
}

class MemoryFiles::Replacement : public FileReplacement {
 public:
  Replacement(MemoryFiles& files, const std::wstring& path) : files_(files), path_(path) {}

  SystemCode Append(std::string_view part) override {
    const SystemCode code = files_.Fault("write part", path_);
    if (code == kSystemOk) bytes_ += part;
    return code;
  }
  SystemCode Complete() override { return files_.WriteBytes(path_, bytes_); }

 private:
  MemoryFiles& files_;
  std::wstring path_;
  std::string bytes_;
};

SystemCode MemoryFiles::BeginReplacement(const std::wstring& path, std::uint64_t /*expectedBytes*/,
                                         std::unique_ptr<FileReplacement>& replacement) {
  if (const SystemCode code = Fault("begin", path); code != kSystemOk) return code;
  if (const SystemCode code = MayStore(path); code != kSystemOk) return code;
  replacement = std::make_unique<Replacement>(*this, path);
  return kSystemOk;
}

class MemoryFiles::Appender : public FileAppender {
 public:
  Appender(MemoryFiles& files, const std::wstring& path) : files_(files), path_(path) {
    place_ = files_.appendedTo_.paths.insert(Folded(path));
  }
  ~Appender() override { files_.appendedTo_.paths.erase(place_); }
  Appender(const Appender&) = delete;
  Appender& operator=(const Appender&) = delete;

  SystemCode Append(std::string_view bytes) override {
    if (const SystemCode code = files_.Fault("append", path_); code != kSystemOk) return code;
    const SystemCode code = files_.Store(path_, files_.Find(path_)->bytes + std::string(bytes));
    return code == kSystemOk ? files_.Done("append", path_) : code;
  }
  SystemCode FlushToDisk() override { return files_.Fault("flush", path_); }

 private:
  MemoryFiles& files_;
  std::wstring path_;
  std::multiset<std::wstring>::iterator place_;
};

SystemCode MemoryFiles::OpenToAppend(const std::wstring& path,
                                     std::unique_ptr<FileAppender>& appender) {
  if (const SystemCode code = Fault("open to append", path); code != kSystemOk) return code;
  const SystemCode code = Exists(path) ? MayStore(path) : Store(path, "");
  if (code == kSystemOk) appender = std::make_unique<Appender>(*this, path);
  return code;
}

// The file itself, or one somewhere below a folder.
bool MemoryFiles::IsAppendedTo(const std::wstring& path) const {
  const std::wstring folded = Folded(path);
  return std::ranges::any_of(appendedTo_.paths, [&folded](const std::wstring& file) {
    return file == folded || file.starts_with(folded + L'\\');
  });
}

SystemCode MemoryFiles::HoldFile(const std::wstring& path, FileHold hold) {
  if (const SystemCode code = Fault("hold", path); code != kSystemOk) return code;
  if (std::ranges::find(held, Folded(path)) != held.end()) return kSharingViolation;
  const bool made = !Exists(path);
  if (made && hold == FileHold::kTake) return MissingCode(path);
  if (made) {
    if (const SystemCode code = Store(path, ""); code != kSystemOk) return code;
  }
  held.push_back(Folded(path));
  return made ? Done("hold", path) : kSystemOk;
}

SystemCode MemoryFiles::CopyOver(const std::wstring& source, const std::wstring& target) {
  if (const SystemCode code = Fault("copy", source); code != kSystemOk) return code;
  const Entry* const entry = Find(source);
  if (entry == nullptr) return MissingCode(source);
  if (entry->isFolder) return kAccessDenied;
  const SystemCode code = Store(target, entry->bytes);
  return code == kSystemOk ? Done("copy", target) : code;
}

SystemCode MemoryFiles::MoveFolder(const std::wstring& source, const std::wstring& target) {
  if (!IsFolder(ParentOf(Folded(target)))) return kPathNotFound;
  if (Folded(target).starts_with(Folded(source) + L'\\')) return kInvalidName;
  std::vector<std::pair<std::wstring, Entry>> inside;
  const std::wstring front = Folded(source) + L'\\';
  for (auto at = entries_.lower_bound(front);
       at != entries_.end() && at->first.starts_with(front);) {
    inside.emplace_back(Folded(target) + L'\\' + at->first.substr(front.size()), at->second);
    at = entries_.erase(at);
  }
  entries_.erase(Folded(source));
  Add(target).isFolder = true;
  entries_.insert(inside.begin(), inside.end());
  return Done("move", target);
}

SystemCode MemoryFiles::MoveFile(const std::wstring& source, const std::wstring& target) {
  if (!IsFolder(ParentOf(Folded(target)))) return kPathNotFound;
  const Entry moved = *Find(source);
  entries_.erase(Folded(source));
  Entry& added = Add(target);
  added.bytes = moved.bytes;
  added.readOnly = moved.readOnly;
  return Done("move", target);
}

SystemCode MemoryFiles::Flush(std::span<const std::wstring> paths) {
  return paths.empty() ? kSystemOk : Fault("flush", paths[0]);
}

SystemCode MemoryFiles::MoveTo(const std::wstring& source, const std::wstring& target) {
  if (const SystemCode code = Fault("move", source); code != kSystemOk) return code;
  const Entry* const entry = Find(source);
  if (entry == nullptr) return MissingCode(source);
  if (Folded(source) != Folded(target) && Exists(target)) return kAlreadyExists;
  if (IsAppendedTo(source)) return entry->isFolder ? kAccessDenied : kSharingViolation;
  return entry->isFolder ? MoveFolder(source, target) : MoveFile(source, target);
}

}  // namespace carrovan
