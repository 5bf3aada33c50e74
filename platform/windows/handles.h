#pragma once

#include <windows.h>

#include <utility>

namespace carrovan {

// Owns one handle of the system. `Traits` names its type (Handle), the value that stands for none
// (Invalid) and how it is closed (Close, never called with the invalid value).
template <typename Traits>
class UniqueHandle {
 public:
  using Handle = typename Traits::Handle;

  UniqueHandle() = default;
  explicit UniqueHandle(Handle handle) : handle_(handle) {}
  UniqueHandle(UniqueHandle&& other) noexcept : handle_(other.Release()) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    if (this != &other) Reset(other.Release());
    return *this;
  }
  ~UniqueHandle() { Reset(); }

  explicit operator bool() const { return handle_ != Traits::Invalid(); }
  Handle Get() const { return handle_; }

  // Gives the handle to the caller, who closes it.
  [[nodiscard]] Handle Release() { return std::exchange(handle_, Traits::Invalid()); }

  // Closes what is held and takes another.
  void Reset(Handle handle = Traits::Invalid()) {
    const Handle old = std::exchange(handle_, handle);
    if (old != Traits::Invalid()) Traits::Close(old);
  }

  // Closes what is held; the place where the system writes a new handle.
  Handle* Receive() {
    Reset();
    return &handle_;
  }

 private:
  Handle handle_ = Traits::Invalid();
};

struct FileHandleTraits {
  using Handle = HANDLE;
  static Handle Invalid() { return INVALID_HANDLE_VALUE; }
  static void Close(Handle handle) { CloseHandle(handle); }
};
using FileHandle = UniqueHandle<FileHandleTraits>;

struct FindHandleTraits {
  using Handle = HANDLE;
  static Handle Invalid() { return INVALID_HANDLE_VALUE; }
  static void Close(Handle handle) { FindClose(handle); }
};
using FindHandle = UniqueHandle<FindHandleTraits>;

struct KernelObjectTraits {
  using Handle = HANDLE;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle handle) { CloseHandle(handle); }
};
using KernelObject = UniqueHandle<KernelObjectTraits>;

struct ModuleHandleTraits {
  using Handle = HMODULE;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle handle) { FreeLibrary(handle); }
};
using ModuleHandle = UniqueHandle<ModuleHandleTraits>;

struct RegistryKeyTraits {
  using Handle = HKEY;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle handle) { RegCloseKey(handle); }
};
using RegistryKeyHandle = UniqueHandle<RegistryKeyTraits>;

}  // namespace carrovan
