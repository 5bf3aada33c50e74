#pragma once

#include <windows.h>

#include <commctrl.h>

#include "platform/windows/gdi_handles.h"
#include "wizard/category_tree.h"

namespace carrovan {

// A tree of check boxes in a tree-view control. Before a control is attached the tree is empty.
class TreeView : public CategoryTree {
 public:
  // Takes an empty control, gives it check boxes and the pictures, of which every item shows the
  // second one.
  void Attach(HWND control, ImageListHandle images);

  HWND Window() const { return window_; }

  struct Hit {
    Item item = kNoItem;  // kNoItem for a point on no item's picture, text or check box
    bool onCheckBox = false;
  };
  // What lies under a point of the screen.
  Hit HitTest(POINT screenPoint) const;

  Item Root() const override;
  Item FirstChild(Item item) const override;
  Item NextSibling(Item item) const override;
  bool IsChecked(Item item) const override;
  int ItemData(Item item) const override;

  void Clear() override;
  Item Append(Item parent, const std::wstring& text, int itemData) override;
  Item Parent(Item item) const override;
  void SetChecked(Item item, bool checked) override;
  void Expand(Item item) override;
  void Select(Item item) override;

 private:
  Item Relative(Item item, UINT relation) const;

  HWND window_ = nullptr;
  ImageListHandle images_;
};

}  // namespace carrovan
