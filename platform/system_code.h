#pragma once

#include <cstdint>
#include <string>

namespace carrovan {

// The operating system's own error numbers, as Windows counts them. The sandbox reports the same
// numbers, so that a rule that names one ("the folder already exists") holds on both systems.
using SystemCode = std::uint32_t;

inline constexpr SystemCode kSystemOk = 0;
inline constexpr SystemCode kFileNotFound = 2;
inline constexpr SystemCode kPathNotFound = 3;
inline constexpr SystemCode kAccessDenied = 5;
inline constexpr SystemCode kInvalidData = 13;
inline constexpr SystemCode kSharingViolation = 32;
inline constexpr SystemCode kFileExists = 80;
inline constexpr SystemCode kSystemDiskFull = 112;
inline constexpr SystemCode kInvalidName = 123;
inline constexpr SystemCode kFolderNotEmpty = 145;
inline constexpr SystemCode kAlreadyExists = 183;
inline constexpr SystemCode kNameTooLong = 206;
inline constexpr SystemCode kNotAFolder = 267;
inline constexpr SystemCode kGeneralFailure = 31;
inline constexpr SystemCode kCopySkipped = 1235;  // ERROR_REQUEST_ABORTED

// One readable phrase with the number behind it, for example "access denied (error 5)".
std::wstring DescribeSystemCode(SystemCode code);

}  // namespace carrovan
