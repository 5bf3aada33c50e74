#pragma once

#include <windows.h>

#include "platform/windows/unique_handle.h"

namespace carrovan {

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
