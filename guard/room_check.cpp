#include "guard/room_check.h"

#include <optional>

#include "platform/file_operations.h"
#include "restore/restore_point.h"

namespace carrovan {
namespace {

// Lines of the journal and what a file system adds to a file.
constexpr std::uint64_t kBytesPerChange = 4096;

// The journal of a large run, with the values of the registry in it.
constexpr std::uint64_t kMostJournalBytes = std::uint64_t{64} << 20;

// A byte of a value takes up to four characters in the journal, and is there before and after.
constexpr std::uint64_t kJournalBytesPerByte = 8;

std::uint64_t BytesOfMakers(const Machine& machine) {
  std::uint64_t bytes = 0;
  for (const auto& half : {machine.folders->LocalAppData(), machine.folders->RoamingAppData()}) {
    if (!half) continue;
    for (const std::wstring_view maker : kMakerFolders) {
      bytes += TreeBytes(*machine.files, *half + L"\\" + std::wstring(maker));
    }
  }
  return bytes;
}

std::uint64_t BytesOf(const std::optional<RegistryValue>& value) {
  return value ? value->data.size() * kJournalBytesPerByte : 0;
}

std::uint64_t BytesNeeded(const MachineChanges& changes) {
  std::uint64_t bytes = 0;
  for (const auto* files : {&changes.files, &changes.rewrittenFiles}) {
    for (const FileChange& change : *files) bytes += change.before.sizeBytes + kBytesPerChange;
  }
  for (const auto* values : {&changes.values, &changes.rewrittenValues}) {
    for (const ValueChange& change : *values) {
      bytes += BytesOf(change.before) + BytesOf(change.after) + kBytesPerChange;
    }
  }
  return bytes + changes.keys.size() * kBytesPerChange;
}

std::optional<std::uint64_t> FreeBytes(const Machine& machine) {
  const auto local = machine.folders->LocalAppData();
  return local ? machine.files->FreeBytes(*local) : std::nullopt;
}

}  // namespace

bool HasPlentyOfRoom(const Machine& machine) {
  const auto free = FreeBytes(machine);
  if (!free) return true;
  // What most runs can tell without a look at the files.
  constexpr std::uint64_t kPlentyForAnybody = std::uint64_t{64} << 30;
  return *free >= kPlentyForAnybody || *free >= BytesOfMakers(machine) + kMostJournalBytes;
}

std::wstring RoomThatLacks(const Machine& machine, const MachineChanges& changes) {
  const auto free = FreeBytes(machine);
  const std::uint64_t needed = BytesNeeded(changes);
  if (!free || *free >= needed) return {};
  return L"The restore point needs " + std::to_wstring(needed) + L" bytes, and " +
         std::to_wstring(*free) + L" are free in " + *RestoreRoot(*machine.folders);
}

}  // namespace carrovan
