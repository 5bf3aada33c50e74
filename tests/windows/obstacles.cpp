#include "tests/windows/obstacles.h"

#include <windows.h>

#include <aclapi.h>

#include "platform/windows/windows_file_system.h"
#include "platform/windows/windows_registry.h"

namespace carrovan {
namespace {

struct LocalMemoryTraits {
  using Handle = void*;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle memory) { LocalFree(memory); }
};
using LocalMemory = UniqueHandle<LocalMemoryTraits>;

// Stands as long as a handle is open.
template <typename Handle>
class Held : public Obstacle {
 public:
  explicit Held(Handle handle) : handle_(std::move(handle)) {}

 private:
  Handle handle_;
};

// Takes rights from everybody by an entry in the access list of an open object, and puts the old
// list back at the end. `Handle` is the type that owns the object; it must be open for reading and
// changing the list.
template <typename Handle>
class DeniedRights : public Obstacle {
 public:
  DeniedRights(Handle object, SE_OBJECT_TYPE type) : object_(std::move(object)), type_(type) {}
  DeniedRights(const DeniedRights&) = delete;
  DeniedRights& operator=(const DeniedRights&) = delete;
  ~DeniedRights() override {
    if (denied_) SetAccessList(oldList_);
  }

  bool Deny(DWORD rights) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD read = GetSecurityInfo(object_.Get(), type_, DACL_SECURITY_INFORMATION, nullptr,
                                       nullptr, &oldList_, nullptr, &descriptor);
    descriptor_.Reset(descriptor);
    if (read != ERROR_SUCCESS) return false;
    const LocalMemory newList = ListWithout(rights);
    denied_ = newList && SetAccessList(static_cast<PACL>(newList.Get()));
    return denied_;
  }

 private:
  LocalMemory ListWithout(DWORD rights) {
    std::byte everyone[SECURITY_MAX_SID_SIZE] = {};
    DWORD size = sizeof(everyone);
    if (CreateWellKnownSid(WinWorldSid, nullptr, everyone, &size) == FALSE) return LocalMemory();
    EXPLICIT_ACCESSW entry = {};
    entry.grfAccessPermissions = rights;
    entry.grfAccessMode = DENY_ACCESS;
    entry.grfInheritance = NO_INHERITANCE;
    BuildTrusteeWithSidW(&entry.Trustee, everyone);
    PACL list = nullptr;
    SetEntriesInAclW(1, &entry, oldList_, &list);
    return LocalMemory(list);
  }

  bool SetAccessList(PACL list) {
    return SetSecurityInfo(object_.Get(), type_, DACL_SECURITY_INFORMATION, nullptr, nullptr, list,
                           nullptr) == ERROR_SUCCESS;
  }

  Handle object_;
  SE_OBJECT_TYPE type_;
  LocalMemory descriptor_;  // holds the old list
  PACL oldList_ = nullptr;
  bool denied_ = false;
};

template <typename Handle>
std::unique_ptr<Obstacle> Deny(Handle object, SE_OBJECT_TYPE type, DWORD rights) {
  if (!object) return nullptr;
  auto denied = std::make_unique<DeniedRights<Handle>>(std::move(object), type);
  if (!denied->Deny(rights)) return nullptr;
  return denied;
}

}  // namespace

std::unique_ptr<Obstacle> LockFileForOthers(const std::wstring& path) {
  FileHandle file(CreateFileW(SystemPath(path).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return nullptr;
  return std::make_unique<Held<FileHandle>>(std::move(file));
}

std::unique_ptr<Obstacle> DenyCreatingIn(const std::wstring& folder) {
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  FileHandle object(CreateFileW(SystemPath(folder).c_str(), READ_CONTROL | WRITE_DAC, kShareAll,
                                nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  return Deny(std::move(object), SE_FILE_OBJECT,
              FILE_ADD_FILE | FILE_ADD_SUBDIRECTORY | FILE_DELETE_CHILD);
}

std::unique_ptr<Obstacle> DenyReadingKey(RegistryHive hive, const std::wstring& keyPath) {
  return Deny(OpenRegistryKey(hive, keyPath, READ_CONTROL | WRITE_DAC), SE_REGISTRY_KEY, KEY_READ);
}

bool SetReadOnly(const std::wstring& path, bool readOnly) {
  const std::wstring systemPath = SystemPath(path);
  const DWORD attributes = GetFileAttributesW(systemPath.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return false;
  constexpr DWORD kReadOnly = FILE_ATTRIBUTE_READONLY;
  const DWORD changed = readOnly ? attributes | kReadOnly : attributes & ~kReadOnly;
  return SetFileAttributesW(systemPath.c_str(), changed) != FALSE;
}

bool MakeFolderLink(const std::wstring& path, const std::wstring& target) {
  constexpr DWORD kAlsoWithoutRights = 2;
  const DWORD flags = SYMBOLIC_LINK_FLAG_DIRECTORY | kAlsoWithoutRights;
  return CreateSymbolicLinkW(SystemPath(path).c_str(), SystemPath(target).c_str(), flags) != FALSE;
}

std::unique_ptr<Obstacle> ClaimName(const std::wstring& name) {
  KernelObject mutex(CreateMutexW(nullptr, FALSE, name.c_str()));
  if (!mutex || GetLastError() == ERROR_ALREADY_EXISTS) return nullptr;
  return std::make_unique<Held<KernelObject>>(std::move(mutex));
}

unsigned long OwnProcessId() { return GetCurrentProcessId(); }

bool RunsUnderWine() {
  const HMODULE system = GetModuleHandleW(L"ntdll.dll");
  return system != nullptr && GetProcAddress(system, "wine_get_version") != nullptr;
}

}  // namespace carrovan
