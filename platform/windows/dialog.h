#pragma once

#include <windows.h>

#include <optional>
#include <string>

#include "platform/windows/resource_module.h"

namespace carrovan {

// Dots per inch at which a window is drawn; 96 is 100 percent.
int DotsPerInch(HWND window);

// Pixels at 96 dots per inch in pixels of the window.
int ScaledPixels(HWND window, int pixels);

// True while the user has asked the system for its own colours of high contrast.
bool IsHighContrastOn();

// Puts a text on the clipboard in place of what is there. False when another program holds it.
bool CopyText(HWND owner, const std::wstring& text);

// Each returns when the box was answered. `owner` may be null.

// No caption, no icon, OK.
void ShowPlainMessageBox(HWND owner, const std::wstring& text);

// The program's name as caption, a warning icon, OK.
void ShowApplicationMessageBox(HWND owner, const std::wstring& text);

// A question icon, Yes and No; true for Yes.
bool AskInMessageBox(HWND owner, const std::wstring& question);

// A dialog made from a template: a window of its own that runs until it is ended, or a page inside
// another dialog. A derived class answers the messages it cares for; what it leaves goes to the
// system. The object must outlive its window.
class Dialog {
 public:
  Dialog() = default;
  virtual ~Dialog() = default;
  Dialog(const Dialog&) = delete;
  Dialog& operator=(const Dialog&) = delete;

  // Returns when the dialog was ended; false when there is no such template.
  bool RunModal(const ResourceModule& resources, int templateNumber, HWND owner);

  // Makes an invisible page; false when that fails. The parent destroys it.
  bool CreatePage(const ResourceModule& resources, int templateNumber, HWND parent);

  // Null while there is no window.
  HWND Window() const { return window_; }
  HWND Control(int number) const { return GetDlgItem(window_, number); }

  // Of a control; an unknown number changes nothing and has an empty text.
  void SetText(int control, const std::wstring& text) const;
  std::wstring TextOf(int control) const;

 protected:
  // True lets the system give the focus to the first control.
  virtual bool OnInitDialog() { return true; }

  // A control or a menu reports; `notification` is 0 for a menu. True when it was handled.
  virtual bool OnCommand(int control, int notification);

  // True when it was handled; the control gets 0 as the answer.
  virtual bool OnNotify(const NMHDR& header);

  // A key was pressed in a list box that asks for keys. True when it was handled.
  virtual bool OnListKey(int key);

  // The brush behind a control that is about to paint; null for the usual look.
  virtual HBRUSH OnControlColor(HDC context, HWND control);

  // Any other message. Nothing when the system shall handle it.
  virtual std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam);

 private:
  static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  INT_PTR Handle(UINT message, WPARAM wParam, LPARAM lParam);
  bool HandleCommand(WPARAM wParam, LPARAM lParam);
  INT_PTR HandleOther(UINT message, WPARAM wParam, LPARAM lParam);

  HWND window_ = nullptr;
};

}  // namespace carrovan
