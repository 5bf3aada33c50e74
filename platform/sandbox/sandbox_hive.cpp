#include "platform/sandbox/sandbox_hive.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/posix/host_access.h"
#include "platform/posix/host_file_system.h"
#include "platform/registry_file.h"
#include "platform/sandbox/registry_text_file.h"
#include "registry_text/registry_file_writer.h"
#include "text/text.h"

namespace carrovan {
namespace {

namespace fs = std::filesystem;

// A log that is longer than its hive, within these limits, goes into the file: that costs no more
// than the log did, and the log stays one that can be read.
constexpr std::size_t kShortLog = std::size_t{1} << 20;
constexpr std::size_t kLongLog = std::size_t{64} << 20;

// What is longer is not logged; writing the whole file costs little more.
constexpr std::size_t kLongestRecord = std::size_t{4} << 20;

// For another process to finish its changes.
constexpr std::chrono::seconds kLongestWait{30};
constexpr std::chrono::milliseconds kPause{5};

// A log goes into its file once in a while, and hardly ever while both are read.
constexpr int kMostReadings = 100;

fs::path FileOf(const fs::path& folder, RegistryHive hive, const wchar_t* extension) {
  return folder / HostPathFromText(RootName(hive) + extension);
}

std::wstring TextOf(const RegistryFileProblem& problem) {
  return L"line " + std::to_wstring(problem.line) + L": " + problem.text;
}

constexpr wchar_t kOtherRoot[] = L"keys of another root";

// What keeps a text from being about one hive and nothing else. Nothing has come of it then that
// counts; `take` gets the keys otherwise.
std::optional<std::wstring> ProblemOf(std::u16string_view text, RegistryHive hive,
                                      const TakeRegistryKey& take) {
  bool isOtherRoots = false;
  const auto problems = ParseRegistryKeys(text, [&](RegistryKeyChange key) {
    isOtherRoots = isOtherRoots || key.hive != hive;
    if (!isOtherRoots) take(std::move(key));
  });
  if (!problems) return L"not a registry file";
  if (!problems->empty()) return TextOf(problems->front());
  return isOtherRoots ? std::optional<std::wstring>(kOtherRoot) : std::nullopt;
}

// With a problem the key is not to be used any more.
std::optional<std::wstring> ApplyText(std::u16string_view text, RegistryHive hive,
                                      RegistryKey& root) {
  return ProblemOf(text, hive,
                   [&root](const RegistryKeyChange& key) { ApplyRegistryKey(key, root); });
}

bool StartsWith(std::span<const std::uint8_t> bytes, std::span<const std::uint8_t> start) {
  return bytes.size() >= start.size() && std::ranges::equal(bytes.first(start.size()), start);
}

std::span<const std::uint8_t> Content(const std::optional<std::vector<std::uint8_t>>& bytes) {
  if (!bytes) return {};
  return *bytes;
}

// Nothing on success, also for a missing file.
std::optional<std::wstring> ReadIfThere(const fs::path& path,
                                        std::optional<std::vector<std::uint8_t>>& bytes) {
  std::vector<std::uint8_t> content;
  const FileStatus status = ReadHostFile(path, content);
  bytes.reset();
  if (status == FileStatus::kDone) bytes = std::move(content);
  if (status == FileStatus::kDone || status == FileStatus::kMissing) return std::nullopt;
  return TextFromHostName(path.filename().native()) + L": the file cannot be read";
}

// False for a key that no registry can have, which would make the hive unreadable.
bool IsReadable(const std::wstring& changes, RegistryHive hive) {
  return !ProblemOf(ToUtf16(changes), hive, [](const RegistryKeyChange&) {});
}

// The same key by key, and without the data, which cannot be at fault.
bool HasReadableNames(const RegistryFile& file, RegistryHive hive) {
  RegistryFile one;
  for (const RegistryKeyChange& key : file.keys) {
    if (key.hive != hive) continue;
    one.keys.assign(1, {key.hive, key.keyPath, key.remove, {}});
    for (const RegistryValueChange& change : key.values) {
      one.keys[0].values.push_back({{change.value.name, kRegNone, {}}, change.remove});
    }
    if (!IsReadable(WriteRegistryChanges(one, hive), hive)) return false;
  }
  return true;
}

// A record of the changes is as long as this or longer.
std::size_t LeastRecordBytes(const RegistryFile& file, RegistryHive hive) {
  std::size_t bytes = 0;
  for (const RegistryKeyChange& key : file.keys) {
    if (key.hive != hive) continue;
    bytes += sizeof(char16_t) * key.keyPath.size();
    for (const RegistryValueChange& change : key.values) {
      bytes += sizeof(char16_t) * change.value.name.size() + change.value.data.size();
    }
  }
  return bytes;
}

// Nothing for changes that would make the hive unreadable.
std::optional<std::vector<std::uint8_t>> RecordOf(const RegistryFile& file, RegistryHive hive) {
  const std::wstring text = WriteRegistryChanges(file, hive);
  if (!IsReadable(text, hive)) return std::nullopt;
  return ChangeRecord(EncodeText({text, true}));
}

// A process that was killed while it put the log into the file may have done so.
std::size_t FirstUnsaved(const std::vector<LogRecord>& records, const FileImage& hiveFile) {
  for (std::size_t i = records.size(); i > 0; --i) {
    if (IsSavedAs(records[i - 1], hiveFile)) return i;
  }
  return 0;
}

}  // namespace

SandboxHive::SandboxHive(fs::path folder, RegistryHive hive)
    : folder_(std::move(folder)),
      hive_(hive),
      file_(FileOf(folder_, hive, L".reg")),
      log_(FileOf(folder_, hive, L".changes")) {}

SandboxHive::~SandboxHive() {
  try {
    Close();
  } catch (const std::exception&) {
    // Without memory the log stays, and the next process reads it.
  }
}

std::optional<std::wstring> SandboxHive::Load() {
  const bool isLeftOver = log_.Hold(false) == FileStatus::kDone;
  State state;
  auto problem = Read(state);
  if (problem || !Take(std::move(state))) {
    log_.LetGo();
  } else if (isLeftOver) {
    Close();
  }
  return problem;
}

SystemCode SandboxHive::Apply(const RegistryFile& file) {
  if (const SystemCode code = Begin(); code != kSystemOk) return code;
  const auto apply = [&](RegistryKey& root) { ApplyRegistryFile(file, hive_, root); };
  if (LeastRecordBytes(file, hive_) > kLongestRecord) {
    return HasReadableNames(file, hive_) ? SaveChange(apply) : kInvalidName;
  }
  const auto record = RecordOf(file, hive_);
  if (!record) return kInvalidName;
  if (record->size() > kLongestRecord) return SaveChange(apply);
  if (log_.Append(*record) != FileStatus::kDone) return kAccessDenied;
  apply(root_);
  // Where this fails the log goes on.
  if (log_.Bytes() > std::clamp(fileBytes_, kShortLog, kLongLog)) static_cast<void>(Save(root_));
  return kSystemOk;
}

SystemCode SandboxHive::Rewrite(const std::function<void(RegistryKey&)>& change) {
  const SystemCode code = Begin();
  return code == kSystemOk ? SaveChange(change) : code;
}

// No copy is kept of what was there: the disk has it. Where it cannot be read now, it is read
// before the next change.
SystemCode SandboxHive::SaveChange(const std::function<void(RegistryKey&)>& change) {
  change(root_);
  if (Save(root_)) return kSystemOk;
  if (!Reload()) stamp_ = Stamp();
  return kAccessDenied;
}

// The file's content was flushed before it took its name.
FileStatus SandboxHive::Flush() const {
  const fs::path paths[] = {log_.File(), folder_};
  return FlushPaths(paths);
}

std::optional<std::wstring> SandboxHive::Read(State& state) const {
  state.stamp = StampNow();
  Bytes file;
  Bytes log;
  if (auto problem = ReadBytes(file, log)) return problem;
  return PutTogether(std::move(file), std::move(log), state);
}

// Another process may put its log into the file meanwhile. While the log only grows, it has not.
std::optional<std::wstring> SandboxHive::ReadBytes(Bytes& file, Bytes& log) const {
  if (auto problem = ReadIfThere(log_.File(), log)) return problem;
  for (int i = 0; i < kMostReadings; ++i) {
    const Bytes before = std::move(log);
    if (auto problem = ReadIfThere(file_, file)) return problem;
    if (auto problem = ReadIfThere(log_.File(), log)) return problem;
    if (StartsWith(Content(log), Content(before))) return std::nullopt;
  }
  return TextFromHostName(file_.filename().native()) + L": another process keeps changing the file";
}

std::optional<std::wstring> SandboxHive::PutTogether(Bytes file, Bytes log, State& state) const {
  const auto apply = [&](const fs::path& path, std::u16string_view text) {
    auto problem = ApplyText(text, hive_, state.root);
    if (problem) problem = TextFromHostName(path.filename().native()) + L": " + *problem;
    return problem;
  };
  const FileImage image = ImageOfHive(Content(file));
  state.fileBytes = Content(file).size();
  if (file) {
    if (auto problem = apply(file_, RegistryTextOf(*std::exchange(file, std::nullopt)))) {
      return problem;
    }
  }
  const LogContent content = ReadLogRecords(Content(log));
  state.logBytes = content.wholeBytes;
  const std::size_t first = FirstUnsaved(content.records, image);
  for (const LogRecord& record : std::span(content.records).subspan(first)) {
    if (record.kind != LogRecordKind::kChange) continue;
    const std::vector<std::uint8_t> bytes(record.content.begin(), record.content.end());
    if (auto problem = apply(log_.File(), RegistryTextOf(bytes))) return problem;
  }
  return std::nullopt;
}

std::optional<SandboxHive::Stamp> SandboxHive::StampNow() const {
  std::error_code error;
  Stamp stamp;
  stamp.sizeBytes = fs::file_size(file_, error);
  if (error) return std::nullopt;
  stamp.modified = fs::last_write_time(file_, error);
  if (error) return std::nullopt;
  return stamp;
}

// False when the log cannot be held on to: what lies behind its last whole record, and would be in
// front of the next one, does not go.
bool SandboxHive::Take(State state) {
  root_ = std::move(state.root);
  stamp_ = state.stamp;
  fileBytes_ = state.fileBytes;
  if (!log_.IsHeld() || log_.Bytes() == state.logBytes) return true;
  return log_.EndAt(state.logBytes) == FileStatus::kDone;
}

// Makes sure that the log is this process's and that the hive is as file and log have it.
SystemCode SandboxHive::Begin() {
  if (!MayPutFile(file_)) return kAccessDenied;
  if (log_.IsHeld()) return StampNow() == stamp_ || Reload() ? kSystemOk : kAccessDenied;
  if (MakeFolders(folder_) != FileStatus::kDone) return kAccessDenied;
  const FileStatus held = HoldLog();
  if (held != FileStatus::kDone) {
    return held == FileStatus::kInUse ? kSharingViolation : kAccessDenied;
  }
  if (Reload()) return kSystemOk;
  LetGo();
  return kAccessDenied;
}

FileStatus SandboxHive::HoldLog() {
  const auto end = std::chrono::steady_clock::now() + kLongestWait;
  FileStatus status = log_.Hold(true);
  while (status == FileStatus::kInUse && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(kPause);
    status = log_.Hold(true);
  }
  return status;
}

bool SandboxHive::Reload() {
  State state;
  return !Read(state) && Take(std::move(state));
}

// The log says what is about to be saved before the file takes its name, and loses its records only
// when the name is safe.
bool SandboxHive::Save(const RegistryKey& root) {
  RegistryTextFile file(file_);
  WriteRegistryFile(hive_, L"", root, RegistryFileForm::kLossless,
                    [&file](std::u16string_view part) { file.Add(part); });
  if (file.Finish() != FileStatus::kDone) return false;
  if (log_.Append(SavedRecord(file.Image())) != FileStatus::kDone) return false;
  if (file.Complete() != FileStatus::kDone) return false;
  stamp_ = StampNow();
  fileBytes_ = static_cast<std::size_t>(file.Image().sizeBytes);
  if (FlushPath(folder_) == FileStatus::kDone) static_cast<void>(log_.EndAt(0));
  return true;
}

void SandboxHive::Close() {
  if (!log_.IsHeld()) return;
  const bool isCurrent = StampNow() == stamp_ || Reload();
  if (isCurrent && log_.Bytes() > 0) static_cast<void>(Save(root_));
  LetGo();
}

// A log that says nothing goes.
void SandboxHive::LetGo() {
  if (log_.Bytes() == 0) {
    log_.Remove();
  } else {
    log_.LetGo();
  }
}

}  // namespace carrovan
