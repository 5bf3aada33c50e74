#include "platform/sandbox/sandbox_facts.h"

#include <cstdint>
#include <vector>

#include "platform/posix/host_access.h"
#include "platform/posix/host_file_system.h"
#include "text/path_text.h"
#include "text/profile_text.h"
#include "text/text.h"

namespace carrovan {

std::optional<std::wstring> SandboxFolders::TempPath() const {
  std::wstring path = appData_ + L"Local\\Temp\\";
  if (ToUtf16(path).size() > kFixedPathBuffer) return std::nullopt;
  return path;
}

std::wstring SandboxProduct::Fact(std::wstring_view key) const {
  return ProfileValue(iniText_, L"Product", key);
}

namespace {

constexpr std::size_t kUserNameBuffer = 256;

}  // namespace

std::optional<std::wstring> SandboxUser::UserName() const {
  if (name_.empty() || ToUtf16(name_).size() >= kUserNameBuffer) return std::nullopt;
  return name_;
}

std::optional<std::wstring> SandboxUser::ProfileFolder() const {
  std::wstring folder = L"C:\\Users\\" + name_;
  if (ToUtf16(folder).size() >= kFixedPathBuffer) return std::nullopt;
  return folder;
}

namespace {

using Bytes = std::vector<std::uint8_t>;

// What the system's reading buffer holds beside its terminating zero, in 16-bit units.
constexpr std::size_t kLongestValue = 255;

constexpr std::wstring_view kUtf8Mark = L"\xFEFF";

Bytes WithValue(const Bytes& content, const std::wstring& section, const std::wstring& key,
                const std::wstring& value) {
  const DecodedText decoded = DecodeText(content);
  if (decoded.isUtf16) {
    return EncodeText({WithProfileValue(decoded.text, section, key, value), true});
  }
  std::wstring text = FromLosslessUtf8(std::string(content.begin(), content.end()));
  const bool marked = text.starts_with(kUtf8Mark);
  if (marked) text.erase(0, kUtf8Mark.size());
  text = WithProfileValue(text, section, key, value);
  if (marked) text.insert(0, kUtf8Mark);
  const std::string bytes = ToLosslessUtf8(text);
  return {bytes.begin(), bytes.end()};
}

}  // namespace

std::wstring SandboxProfileFile::ReadValue(const std::wstring& section, const std::wstring& key,
                                           const std::wstring& filePath) const {
  const auto file = paths_.ToHost(filePath);
  Bytes content;
  if (!file || ReadHostFile(*file, content) != FileStatus::kDone) return {};
  const std::wstring value = ProfileValue(DecodeText(content).text, section, key);
  return FromUtf16(ToUtf16(value).substr(0, kLongestValue));
}

bool SandboxProfileFile::WriteValue(const std::wstring& section, const std::wstring& key,
                                    const std::wstring& value, const std::wstring& filePath) {
  const auto file = paths_.ToHost(filePath);
  if (!file || !paths_.MayBeMade(filePath)) return false;
  Bytes content;
  const FileStatus status = ReadHostFile(*file, content);
  if (status != FileStatus::kDone && status != FileStatus::kMissing) return false;
  const Bytes changed = WithValue(content, section, key, value);
  if (status == FileStatus::kDone && changed == content) return true;
  return ReplaceHostFile(*file, changed) == FileStatus::kDone;
}

}  // namespace carrovan
