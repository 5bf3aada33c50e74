#include "platform/windows/tarvik_path.h"

#include "platform/path_text.h"
#include "platform/windows/module_loading.h"
#include "platform/windows/registry_key.h"
#include "platform/windows/windows_file_system.h"

namespace carrovan {
namespace {

constexpr wchar_t kSettingsKey[] = L"SOFTWARE\\Carrovan";
constexpr wchar_t kProductFolder[] = L"ProductFolder";
constexpr wchar_t kLibraryName[] = L"\\tarvik.dll";

// Empty when there is no such text.
std::wstring ReadText(const RegistryKeyHandle& key, const wchar_t* name) {
  DWORD sizeBytes = 0;
  if (RegGetValueW(key.Get(), nullptr, name, RRF_RT_REG_SZ, nullptr, nullptr, &sizeBytes) !=
      ERROR_SUCCESS) {
    return L"";
  }
  std::wstring text(sizeBytes / sizeof(wchar_t), L'\0');
  if (RegGetValueW(key.Get(), nullptr, name, RRF_RT_REG_SZ, nullptr, text.data(), &sizeBytes) !=
      ERROR_SUCCESS) {
    return L"";
  }
  return text.c_str();
}

}  // namespace

std::wstring FindTarvik(const TarvikPlaces& places) {
  const std::wstring besideProgram = places.programFolder + kLibraryName;
  if (WindowsFileSystem().Exists(besideProgram)) return besideProgram;
  const RegistryKeyHandle key =
      OpenRegistryKey(RegistryHive::kCurrentUser, places.settingsKey, KEY_QUERY_VALUE);
  if (!key) return besideProgram;
  const std::wstring folder = WithoutTrailingBackslashes(ReadText(key, kProductFolder));
  return folder.empty() ? besideProgram : folder + kLibraryName;
}

std::wstring TarvikPath() { return FindTarvik({RemoveFileSpec(ProgramPath()), kSettingsKey}); }

}  // namespace carrovan
