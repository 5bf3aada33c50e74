#include "guard/run_lock.h"

#include <algorithm>
#include <chrono>

#include "platform/file_operations.h"
#include "restore/restore_point.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr int kAttempts = 10;
constexpr std::chrono::milliseconds kBetweenAttempts{50};

constexpr std::size_t kLongestOwner = 300;

std::wstring DescribeOwner(const ProcessFacts& process, std::wstring_view verb) {
  return process.program + L" " + std::wstring(verb) + L", process " + std::to_wstring(process.id);
}

// The file is one like any other: what is no name is not printed.
bool IsOwnersName(const std::wstring& text) {
  return !text.empty() && text.size() <= kLongestOwner &&
         std::ranges::none_of(text, [](wchar_t c) { return c < L' ' || c == L'\x7F'; });
}

// True for what another run leaves for a moment while it ends: a file whose removal is still
// pending, or a folder that has just been removed.
bool MayPass(SystemCode code) {
  return code == kSharingViolation || code == kAccessDenied || code == kFileNotFound ||
         code == kPathNotFound;
}

}  // namespace

OrReason<RunLock> RunLock::Take(const Machine& machine, std::wstring_view verb) {
  const auto root = RestoreRoot(*machine.folders);
  std::unique_ptr<RunLock> lock(new RunLock(*machine.files, RemoveFileSpec(root.value_or(L""))));
  if (!root) return {std::move(lock), {}};
  std::wstring other;
  SystemCode code = lock->TryHold();
  for (int attempt = 1; MayPass(code) && attempt < kAttempts; ++attempt) {
    // The owner's name is written after the lock is taken and removed before it is freed.
    other = code == kSharingViolation ? lock->ReadOwner() : std::wstring();
    if (!other.empty()) break;
    machine.clock->Pause(kBetweenAttempts);
    code = lock->TryHold();
  }
  if (code == kSharingViolation) return {nullptr, other.empty() ? L"an unknown program" : other};
  if (code == kSystemOk) lock->NoteOwner(DescribeOwner(machine.self->Facts(), verb));
  return {std::move(lock), {}};
}

RunLock::RunLock(FileSystem& files, std::wstring folder)
    : files_(files),
      folder_(std::move(folder)),
      lockPath_(folder_ + L"\\run.lock"),
      ownerPath_(folder_ + L"\\run.owner") {}

RunLock::~RunLock() {
  if (isHeld_) {
    static_cast<void>(files_.RemoveFile(ownerPath_));
    static_cast<void>(files_.RemoveFile(lockPath_));
  }
  if (madeFolder_) static_cast<void>(files_.RemoveFolder(folder_));
}

SystemCode RunLock::TryHold() {
  const bool isThere = files_.IsFolder(folder_);
  if (const SystemCode code = MakeFolderPath(files_, folder_); code != kSystemOk) return code;
  madeFolder_ = madeFolder_ || !isThere;
  const SystemCode code = files_.HoldFile(lockPath_, FileHold::kMake);
  isHeld_ = code == kSystemOk;
  return code;
}

std::wstring RunLock::ReadOwner() const {
  std::string bytes;
  if (files_.ReadBytes(ownerPath_, bytes) != kSystemOk) return {};
  const std::wstring owner = FromUtf8(bytes);
  return IsOwnersName(owner) ? owner : std::wstring();
}

// Without room for the name there is none; that of a killed owner must not stand for this one.
void RunLock::NoteOwner(const std::wstring& owner) {
  static_cast<void>(files_.RemoveFile(ownerPath_));
  static_cast<void>(files_.WriteBytes(ownerPath_, ToUtf8(owner)));
}

}  // namespace carrovan
