#include "package/unpacking_room.h"

#include <cstdint>

namespace carrovan {
namespace {

std::uint64_t UnpackedBytes(const ArchiveReader& archive) {
  std::uint64_t bytes = 0;
  for (std::size_t index = 0; const auto item = archive.Item(index); ++index) {
    const std::uint64_t sum = bytes + item->sizeBytes;
    bytes = sum < bytes ? UINT64_MAX : sum;
  }
  return bytes;
}

}  // namespace

std::optional<std::wstring> RoomThatLacksToUnpack(const Machine& machine,
                                                  const std::wstring& packagePath) {
  const auto temp = machine.folders->TempPath();
  const auto archive = machine.archives->Open(packagePath);
  if (!temp || !archive) return std::nullopt;
  const auto free = machine.files->FreeBytes(*temp);
  if (!free) return std::nullopt;
  const std::uint64_t unpacked = UnpackedBytes(*archive);
  if (unpacked <= *free / 2) return std::nullopt;
  return L"The import needs twice the " + std::to_wstring(unpacked) +
         L" bytes of the unpacked package, and " + std::to_wstring(*free) + L" are free in " +
         *temp;
}

}  // namespace carrovan
