#include "platform/system_code.h"

namespace carrovan {
namespace {

const wchar_t* Phrase(SystemCode code) {
  switch (code) {
    case kSystemOk:
      return L"no error";
    case kFileNotFound:
      return L"file not found";
    case kPathNotFound:
      return L"path not found";
    case kAccessDenied:
      return L"access denied";
    case kInvalidData:
      return L"invalid data";
    case kSharingViolation:
      return L"in use by another program";
    case kFileExists:
    case kAlreadyExists:
      return L"already exists";
    case kSystemDiskFull:
      return L"the disk is full";
    case kInvalidName:
      return L"invalid name";
    case kFolderNotEmpty:
      return L"the folder is not empty";
    case kNotAFolder:
      return L"not a folder";
    case kNameTooLong:
      return L"the name is too long";
    case kCopySkipped:
      return L"the system left the copy undone";
    default:
      return L"the system reports a failure";
  }
}

}  // namespace

std::wstring DescribeSystemCode(SystemCode code) {
  return std::wstring(Phrase(code)) + L" (error " + std::to_wstring(code) + L")";
}

}  // namespace carrovan
