#include "platform/posix/host_access.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "text/text.h"

namespace carrovan {
namespace {

constexpr char32_t kByteBase = 0xDC00;

// Length of the well-formed character at the front, or 0.
std::size_t CharacterLength(std::string_view bytes) {
  const std::size_t longest = std::min<std::size_t>(bytes.size(), 4);
  for (std::size_t length = 1; length <= longest; ++length) {
    if (IsUtf8(bytes.substr(0, length))) return length;
  }
  return 0;
}

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }
bool StandsForByte(char32_t unit) { return unit >= kByteBase + 0x80 && unit <= kByteBase + 0xFF; }

}  // namespace

std::wstring FromLosslessUtf8(std::string_view bytes) {
  if (IsUtf8(bytes)) return FromUtf8(bytes);
  std::wstring text;
  while (!bytes.empty()) {
    const std::size_t length = CharacterLength(bytes);
    if (length > 0) {
      text += FromUtf8(bytes.substr(0, length));
    } else {
      text.push_back(static_cast<wchar_t>(kByteBase + static_cast<std::uint8_t>(bytes.front())));
    }
    bytes.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return text;
}

std::string ToLosslessUtf8(std::wstring_view text) {
  const auto isSurrogate = [](wchar_t c) {
    return IsHighSurrogate(static_cast<char32_t>(c)) || IsLowSurrogate(static_cast<char32_t>(c));
  };
  if (std::ranges::none_of(text, isSurrogate)) return ToUtf8(text);
  std::string bytes;
  while (!text.empty()) {
    const auto unit = static_cast<char32_t>(text.front());
    const bool pair =
        IsHighSurrogate(unit) && text.size() > 1 && IsLowSurrogate(static_cast<char32_t>(text[1]));
    if (StandsForByte(unit)) {
      bytes.push_back(static_cast<char>(unit - kByteBase));
    } else {
      bytes += ToUtf8(text.substr(0, pair ? 2 : 1));
    }
    text.remove_prefix(pair ? 2 : 1);
  }
  return bytes;
}

namespace {

namespace fs = std::filesystem;

bool HasPermission(const fs::file_status& status, fs::perms permission) {
  if (!fs::exists(status) || status.permissions() == fs::perms::unknown) return true;
  return (status.permissions() & permission) != fs::perms::none;
}

fs::file_status StatusOf(const fs::path& path) {
  std::error_code error;
  return fs::status(path, error);
}

constexpr std::pair<std::errc, SystemCode> kCodes[] = {
    {std::errc::no_such_file_or_directory, kFileNotFound},
    {std::errc::not_a_directory, kPathNotFound},
    {std::errc::too_many_symbolic_link_levels, kPathNotFound},
    {std::errc::permission_denied, kAccessDenied},
    {std::errc::operation_not_permitted, kAccessDenied},
    {std::errc::read_only_file_system, kAccessDenied},
    {std::errc::is_a_directory, kAccessDenied},
    {std::errc::file_exists, kAlreadyExists},
    {std::errc::directory_not_empty, kFolderNotEmpty},
    {std::errc::no_space_on_device, kSystemDiskFull},
    {std::errc::file_too_large, kSystemDiskFull},
    {std::errc::filename_too_long, kNameTooLong},
    {std::errc::device_or_resource_busy, kSharingViolation},
    {std::errc::text_file_busy, kSharingViolation},
    {std::errc::invalid_argument, kInvalidName},
    {std::errc::illegal_byte_sequence, kInvalidName},
};

}  // namespace

bool OwnerMayRead(const fs::path& path) {
  return HasPermission(StatusOf(path), fs::perms::owner_read);
}

bool OwnerMayWrite(const fs::path& path) { return OwnerMayWrite(StatusOf(path)); }

bool OwnerMayWrite(const fs::file_status& status) {
  return HasPermission(status, fs::perms::owner_write);
}

bool MayPutFile(const fs::path& path) {
  return OwnerMayWrite(path) && OwnerMayWrite(path.parent_path());
}

bool LeadsToFolder(const fs::path& path) {
  std::error_code error;
  return fs::is_directory(path, error);
}

SystemCode MissingCode(const fs::path& path) {
  const fs::path parent = path.parent_path();
  return parent.empty() || LeadsToFolder(parent) ? kFileNotFound : kPathNotFound;
}

SystemCode CodeOfParent(const fs::path& path) {
  const fs::path parent = path.parent_path();
  if (parent.empty()) return kSystemOk;
  const fs::file_status status = StatusOf(parent);
  if (!fs::is_directory(status)) return kPathNotFound;
  return OwnerMayWrite(status) ? kSystemOk : kAccessDenied;
}

SystemCode SystemCodeOf(const std::error_code& error) {
  if (!error) return kSystemOk;
  for (const auto& [condition, code] : kCodes) {
    if (error == condition) return code;
  }
  return kGeneralFailure;
}

}  // namespace carrovan
