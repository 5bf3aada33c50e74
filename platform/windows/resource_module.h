#pragma once

#include <string>

#include "platform/windows/gdi_handles.h"
#include "platform/windows/handles.h"

namespace carrovan {

// Where dialogs, texts and pictures come from: a library of resources in the user's language, and
// the program itself for whatever the library lacks. Resources go by number.
class ResourceModule {
 public:
  // The program's own resources only.
  ResourceModule() = default;

  // An empty handle stands for no library.
  explicit ResourceModule(ModuleHandle library) : library_(std::move(library)) {}

  // Empty when there is no text of that number.
  std::wstring Text(int number) const;

  // The module to create the dialog from.
  HMODULE DialogOwner(int number) const;

  // As it is stored, with its transparency; empty when there is none of that number.
  BitmapHandle Bitmap(int number) const;

  // The icon in the size that serves `pixels` best; empty when there is none of that number.
  IconHandle Icon(int number, int pixels) const;

 private:
  HMODULE Owner(const wchar_t* type, int number) const;

  ModuleHandle library_;
};

// The running program's version by its version resource ("1.2.3"); empty when it has none.
std::wstring ProgramVersion();

}  // namespace carrovan
