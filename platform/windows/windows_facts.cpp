#include "platform/windows/windows_facts.h"

#include <windows.h>

#include <objbase.h>
#include <shlobj.h>
#include <tlhelp32.h>
#include <array>

#include "platform/windows/handles.h"
#include "platform/windows/module_loading.h"
#include "platform/windows/windows_file_system.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {

void WindowsClock::Pause(std::chrono::milliseconds duration) {
  Sleep(static_cast<DWORD>(duration.count()));
}

std::optional<std::wstring> WindowsGuidSource::NewGuid() {
  GUID guid = {};
  if (CoCreateGuid(&guid) != S_OK) return std::nullopt;
  std::array<wchar_t, 39> text = {};
  if (StringFromGUID2(guid, text.data(), static_cast<int>(text.size())) == 0) return std::nullopt;
  return text.data();
}

namespace {

std::optional<std::wstring> ShellFolder(int folder) {
  std::array<wchar_t, kFixedPathBuffer> path = {};
  const HRESULT result =
      SHGetFolderPathW(nullptr, folder, nullptr, SHGFP_TYPE_CURRENT, path.data());
  if (result != S_OK) return std::nullopt;
  return path.data();
}

}  // namespace

std::optional<std::wstring> WindowsKnownFolders::RoamingAppData() const {
  return ShellFolder(CSIDL_APPDATA);
}

std::optional<std::wstring> WindowsKnownFolders::LocalAppData() const {
  return ShellFolder(CSIDL_LOCAL_APPDATA);
}

std::optional<std::wstring> WindowsKnownFolders::TempPath() const {
  std::array<wchar_t, kFixedPathBuffer> path = {};
  const DWORD length = GetTempPathW(static_cast<DWORD>(path.size()), path.data());
  // A path that does not fit is reported by its length and not written.
  if (length == 0 || length >= path.size()) return std::nullopt;
  return std::wstring(path.data(), length);
}

std::vector<std::wstring> WindowsProcessList::ExecutableNames() const {
  const FileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  std::vector<std::wstring> names;
  if (!snapshot) return names;
  PROCESSENTRY32W process{};
  process.dwSize = sizeof(process);
  BOOL found = Process32FirstW(snapshot.Get(), &process);
  for (; found != FALSE; found = Process32NextW(snapshot.Get(), &process)) {
    names.emplace_back(process.szExeFile);
  }
  return names;
}

ProcessFacts WindowsProcess::Facts() const {
  constexpr std::wstring_view kEnding = L".exe";
  std::wstring name(FileNameOf(ProgramPath()));
  if (EndsWithIgnoringAsciiCase(name, kEnding)) name.resize(name.size() - kEnding.size());
  return {name, GetCurrentProcessId()};
}

std::unique_ptr<OwnProcess> OpenHostProcess() { return std::make_unique<WindowsProcess>(); }

std::optional<std::wstring> WindowsUserIdentity::UserName() const {
  std::array<wchar_t, 256> name = {};
  auto size = static_cast<DWORD>(name.size());
  if (GetUserNameW(name.data(), &size) == FALSE) return std::nullopt;
  return name.data();
}

std::optional<std::wstring> WindowsUserIdentity::ProfileFolder() const {
  std::array<wchar_t, kFixedPathBuffer> folder = {};
  const DWORD length =
      GetEnvironmentVariableW(L"USERPROFILE", folder.data(), static_cast<DWORD>(folder.size()));
  // A value that does not fit is reported by its length and not written.
  if (length == 0 || length >= folder.size()) return std::nullopt;
  return std::wstring(folder.data(), length);
}

std::unique_ptr<UserIdentity> OpenHostUser() { return std::make_unique<WindowsUserIdentity>(); }

namespace {

// Wine's profile functions take no path beyond the fixed buffers, marked or not, so a long folder
// is named by its short alias. Where the disk keeps no aliases the marked path has to do.
std::wstring ProfilePath(const std::wstring& path) {
  if (path.size() <= kLongestPlainPath) return path;
  std::wstring full = SystemPath(path);
  std::array<wchar_t, kFixedPathBuffer> alias = {};
  const DWORD length = GetShortPathNameW(RemoveFileSpec(full).c_str(), alias.data(),
                                         static_cast<DWORD>(alias.size()));
  if (length == 0 || length >= alias.size()) return full;
  return WithTrailingBackslash(alias.data()) + FileNameOf(full);
}

}  // namespace

std::wstring WindowsProfileFile::ReadValue(const std::wstring& section, const std::wstring& key,
                                           const std::wstring& filePath) const {
  std::array<wchar_t, 256> value = {};
  const DWORD length =
      GetPrivateProfileStringW(section.c_str(), key.c_str(), L"", value.data(),
                               static_cast<DWORD>(value.size()), ProfilePath(filePath).c_str());
  return std::wstring(value.data(), length);
}

bool WindowsProfileFile::WriteValue(const std::wstring& section, const std::wstring& key,
                                    const std::wstring& value, const std::wstring& filePath) {
  return WritePrivateProfileStringW(section.c_str(), key.c_str(), value.c_str(),
                                    ProfilePath(filePath).c_str()) != FALSE;
}

}  // namespace carrovan
