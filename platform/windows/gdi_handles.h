#pragma once

#include <windows.h>

#include <commctrl.h>

#include "platform/windows/handles.h"

namespace carrovan {

template <typename Object>
struct GdiObjectTraits {
  using Handle = Object;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle handle) { DeleteObject(handle); }
};
using FontHandle = UniqueHandle<GdiObjectTraits<HFONT>>;
using BitmapHandle = UniqueHandle<GdiObjectTraits<HBITMAP>>;

struct MemoryContextTraits {
  using Handle = HDC;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle handle) { DeleteDC(handle); }
};
using MemoryContext = UniqueHandle<MemoryContextTraits>;

struct ImageListTraits {
  using Handle = HIMAGELIST;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle handle) { ImageList_Destroy(handle); }
};
using ImageListHandle = UniqueHandle<ImageListTraits>;

struct IconTraits {
  using Handle = HICON;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle handle) { DestroyIcon(handle); }
};
using IconHandle = UniqueHandle<IconTraits>;

// A window's picture while it answers WM_PAINT.
class PaintContext {
 public:
  explicit PaintContext(HWND window) : window_(window), context_(BeginPaint(window, &paint_)) {}
  ~PaintContext() { EndPaint(window_, &paint_); }
  PaintContext(const PaintContext&) = delete;
  PaintContext& operator=(const PaintContext&) = delete;

  HDC Get() const { return context_; }

 private:
  HWND window_;
  PAINTSTRUCT paint_{};
  HDC context_;
};

// A window's device context for measuring.
class DeviceContext {
 public:
  explicit DeviceContext(HWND window) : window_(window), context_(GetDC(window)) {}
  ~DeviceContext() { ReleaseDC(window_, context_); }
  DeviceContext(const DeviceContext&) = delete;
  DeviceContext& operator=(const DeviceContext&) = delete;

  HDC Get() const { return context_; }

 private:
  HWND window_;
  HDC context_;
};

// Puts an object into a device context as long as it lives.
class SelectedObject {
 public:
  SelectedObject(HDC context, HGDIOBJ object)
      : context_(context), former_(SelectObject(context, object)) {}
  ~SelectedObject() { SelectObject(context_, former_); }
  SelectedObject(const SelectedObject&) = delete;
  SelectedObject& operator=(const SelectedObject&) = delete;

 private:
  HDC context_;
  HGDIOBJ former_;
};

}  // namespace carrovan
