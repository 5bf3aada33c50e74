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
#include "registry_text/registry_file_writer.h"
#include "support/files/part_file.h"
#include "text/text.h"

namespace carrovan {
namespace {

namespace fs = std::filesystem;

constexpr RegistryHive kHives[] = {RegistryHive::kCurrentUser, RegistryHive::kLocalMachine};

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

// What keeps a text from being about one hive and nothing else.
std::optional<std::wstring> ProblemOf(const std::optional<RegistryFile>& file, RegistryHive hive) {
  if (!file) return L"not a registry file";
  if (!file->problems.empty()) {
    const RegistryFileProblem& first = file->problems.front();
    return L"line " + std::to_wstring(first.line) + L": " + first.text;
  }
  for (const RegistryHive other : kHives) {
    if (other != hive && Concerns(*file, other)) return L"keys of another root";
  }
  return std::nullopt;
}

std::optional<std::wstring> ApplyText(std::span<const std::uint8_t> bytes, RegistryHive hive,
                                      RegistryKey& root) {
  const auto file = ParseRegistryFile(DecodeText(bytes).text);
  if (auto problem = ProblemOf(file, hive)) return problem;
  ApplyRegistryFile(*file, hive, root);
  return std::nullopt;
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

// Nothing for a key that no registry can have, which would make the hive unreadable.
std::optional<std::vector<std::uint8_t>> RecordOf(const RegistryFile& file, RegistryHive hive) {
  const std::wstring text = WriteRegistryChanges(file, hive);
  if (ProblemOf(ParseRegistryFile(text), hive)) return std::nullopt;
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
  auto record = RecordOf(file, hive_);
  if (!record) return kInvalidName;
  const auto apply = [&](RegistryKey& root) { ApplyRegistryFile(file, hive_, root); };
  if (record->size() > kLongestRecord) {
    record.reset();
    return Rewrite(apply);
  }
  if (log_.Append(*record) != FileStatus::kDone) return kAccessDenied;
  apply(root_);
  // Where this fails the log goes on.
  if (log_.Bytes() > std::clamp(fileBytes_, kShortLog, kLongLog)) static_cast<void>(Save(root_));
  return kSystemOk;
}

SystemCode SandboxHive::Rewrite(const std::function<void(RegistryKey&)>& change) {
  if (const SystemCode code = Begin(); code != kSystemOk) return code;
  RegistryKey root;
  root.CopyFrom(root_);
  change(root);
  if (!Save(root)) return kAccessDenied;
  root_ = std::move(root);
  return kSystemOk;
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
  return PutTogether(file, log, state);
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

std::optional<std::wstring> SandboxHive::PutTogether(const Bytes& file, const Bytes& log,
                                                     State& state) const {
  const auto apply = [&](const fs::path& path, std::span<const std::uint8_t> bytes) {
    auto problem = ApplyText(bytes, hive_, state.root);
    if (problem) problem = TextFromHostName(path.filename().native()) + L": " + *problem;
    return problem;
  };
  state.fileBytes = Content(file).size();
  if (file) {
    if (auto problem = apply(file_, *file)) return problem;
  }
  const LogContent content = ReadLogRecords(Content(log));
  state.logBytes = content.wholeBytes;
  const std::size_t first = FirstUnsaved(content.records, ImageOfHive(Content(file)));
  for (const LogRecord& record : std::span(content.records).subspan(first)) {
    if (record.kind != LogRecordKind::kChange) continue;
    if (auto problem = apply(log_.File(), record.content)) return problem;
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
  if (!MayPutFile(file_)) return false;
  const auto content =
      EncodeText({WriteRegistryFile(hive_, L"", root, RegistryFileForm::kLossless), true});
  if (log_.Append(SavedRecord(ImageOfHive(content))) != FileStatus::kDone) return false;
  if (ReplaceHostFile(file_, content) != FileStatus::kDone) return false;
  stamp_ = StampNow();
  fileBytes_ = content.size();
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
