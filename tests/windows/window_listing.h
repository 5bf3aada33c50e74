#pragma once

#include <string>
#include <vector>

namespace carrovan {

// What another program's windows show, for the tests that operate them from outside.

struct ScreenArea {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
};

struct TreeItemFacts {
  std::wstring text;
  int depth = 0;  // 0 for an item without a parent
  bool checked = false;
  bool expanded = false;
  bool hasCaret = false;
  ScreenArea label;
  ScreenArea box;  // of the check box; empty when the item is scrolled out of view
};

struct WindowFacts {
  std::wstring className;
  std::wstring text;
  std::wstring name;  // what a screen reader calls a visible control
  int number = 0;     // of a control; 0 for a window of its own
  int depth = 0;      // 0 for a window of its own, 1 for its controls and so on
  bool enabled = false;
  bool visible = false;
  bool focused = false;
  bool checked = false;  // of a radio button or check box
  ScreenArea area;
  std::vector<std::wstring> entries;  // of a list, dropped down or not
  std::vector<TreeItemFacts> items;   // of a tree
};

// The visible windows of every process of this executable ("carrovan.exe"), each followed by its
// controls. A window that does not answer in time has no text and no items.
std::vector<WindowFacts> ListWindows(const std::wstring& executableName);

// The items of these windows' system menus, but for separators. The program is made to tell them.
std::vector<std::wstring> ListSystemMenus(const std::wstring& executableName);

}  // namespace carrovan
