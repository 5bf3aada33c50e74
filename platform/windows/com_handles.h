#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string_view>

#include "platform/windows/handles.h"

namespace carrovan {

template <typename Interface>
struct ComTraits {
  using Handle = Interface*;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle object) { object->Release(); }
};
// One reference to a COM object.
template <typename Interface>
using ComPointer = UniqueHandle<ComTraits<Interface>>;

struct BstrTraits {
  using Handle = BSTR;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle text) { SysFreeString(text); }
};
using Bstr = UniqueHandle<BstrTraits>;

inline Bstr NewBstr(std::wstring_view text) {
  return Bstr(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
}

inline std::wstring_view ViewOf(BSTR text) { return {text, SysStringLen(text)}; }

// A variant and what it owns.
class Variant {
 public:
  Variant() { VariantInit(&value_); }
  ~Variant() { VariantClear(&value_); }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;

  const VARIANT& Get() const { return value_; }
  VARIANT& Edit() { return value_; }
  VARIANT* Receive() {
    VariantClear(&value_);
    return &value_;
  }

 private:
  VARIANT value_;
};

// Enters the thread into a single-threaded apartment and leaves it.
class ComApartment {
 public:
  ComApartment() : entered_(SUCCEEDED(CoInitialize(nullptr))) {}
  ~ComApartment() {
    if (entered_) CoUninitialize();
  }
  ComApartment(const ComApartment&) = delete;
  ComApartment& operator=(const ComApartment&) = delete;

  bool Entered() const { return entered_; }

 private:
  bool entered_;
};

}  // namespace carrovan
