#include "platform/archive_library.h"

namespace carrovan {

std::wstring DescribeArchiveResult(ArchiveResult result) {
  switch (result) {
    case ArchiveResult::kDone:
      return L"done";
    case ArchiveResult::kNoSuchItem:
      return L"the archive has no such item";
    case ArchiveResult::kSourceMissing:
      return L"the file is gone";
    case ArchiveResult::kSourceUnreadable:
      return L"the file cannot be read";
    case ArchiveResult::kNameRefused:
      return L"the stored name is not allowed";
    case ArchiveResult::kDamaged:
      return L"the data is damaged";
    case ArchiveResult::kEncrypted:
      return L"the data is encrypted";
    case ArchiveResult::kMethodUnsupported:
      return L"the compression method is not supported";
    case ArchiveResult::kTargetNotWritable:
      return L"the file cannot be written";
    case ArchiveResult::kDiskFull:
      return L"the disk is full";
    case ArchiveResult::kOutOfMemory:
      return L"there is not enough memory";
  }
  return L"unknown archive failure " + std::to_wstring(static_cast<std::uint32_t>(result));
}

}  // namespace carrovan
