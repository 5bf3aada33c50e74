#include "pages/tree_view.h"

#include <bit>

namespace carrovan {
namespace {

constexpr int kShownImage = 1;

HTREEITEM ToHandle(CategoryTree::Item item) { return std::bit_cast<HTREEITEM>(item); }

CategoryTree::Item ToItem(HTREEITEM handle) { return reinterpret_cast<CategoryTree::Item>(handle); }

// A check box is a state image: the first is the empty box, the second the ticked one.
UINT BoxState(bool checked) { return INDEXTOSTATEIMAGEMASK(checked ? 2U : 1U); }

}  // namespace

void TreeView::Attach(HWND control, ImageListHandle images) {
  window_ = control;
  // Check boxes that the template asks for would come too late for the control to prepare them.
  SetWindowLongPtrW(window_, GWL_STYLE, GetWindowLongPtrW(window_, GWL_STYLE) | TVS_CHECKBOXES);
  TreeView_SetImageList(window_, images.Get(), TVSIL_NORMAL);
  images_ = std::move(images);
}

TreeView::Hit TreeView::HitTest(POINT screenPoint) const {
  TVHITTESTINFO test{};
  test.pt = screenPoint;
  ScreenToClient(window_, &test.pt);
  if (TreeView_HitTest(window_, &test) == nullptr) return {};
  const bool onItem =
      (test.flags & (TVHT_ONITEMICON | TVHT_ONITEMLABEL | TVHT_ONITEMSTATEICON)) != 0;
  if (!onItem) return {};
  return {ToItem(test.hItem), (test.flags & TVHT_ONITEMSTATEICON) != 0};
}

CategoryTree::Item TreeView::Root() const { return Relative(kNoItem, TVGN_ROOT); }

CategoryTree::Item TreeView::FirstChild(Item item) const { return Relative(item, TVGN_CHILD); }

CategoryTree::Item TreeView::NextSibling(Item item) const { return Relative(item, TVGN_NEXT); }

CategoryTree::Item TreeView::Parent(Item item) const { return Relative(item, TVGN_PARENT); }

bool TreeView::IsChecked(Item item) const {
  const UINT state = TreeView_GetItemState(window_, ToHandle(item), TVIS_STATEIMAGEMASK);
  return (state & TVIS_STATEIMAGEMASK) == BoxState(true);
}

int TreeView::ItemData(Item item) const {
  TVITEMW content{};
  content.mask = TVIF_PARAM;
  content.hItem = ToHandle(item);
  SendMessageW(window_, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&content));
  return static_cast<int>(content.lParam);
}

void TreeView::Clear() { TreeView_DeleteAllItems(window_); }

CategoryTree::Item TreeView::Append(Item parent, const std::wstring& text, int itemData) {
  std::wstring label = text;
  TVINSERTSTRUCTW insertion{};
  insertion.hParent = parent == kNoItem ? TVI_ROOT : ToHandle(parent);
  insertion.hInsertAfter = TVI_LAST;
  insertion.item.mask = TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE | TVIF_PARAM;
  insertion.item.pszText = label.data();
  insertion.item.iImage = kShownImage;
  insertion.item.iSelectedImage = kShownImage;
  insertion.item.lParam = itemData;
  return static_cast<Item>(
      SendMessageW(window_, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insertion)));
}

void TreeView::SetChecked(Item item, bool checked) {
  TVITEMW content{};
  content.mask = TVIF_HANDLE | TVIF_STATE;
  content.hItem = ToHandle(item);
  content.stateMask = TVIS_STATEIMAGEMASK;
  content.state = BoxState(checked);
  SendMessageW(window_, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&content));
}

void TreeView::Expand(Item item) { TreeView_Expand(window_, ToHandle(item), TVE_EXPAND); }

void TreeView::Select(Item item) { TreeView_SelectItem(window_, ToHandle(item)); }

CategoryTree::Item TreeView::Relative(Item item, UINT relation) const {
  return ToItem(TreeView_GetNextItem(window_, ToHandle(item), relation));
}

}  // namespace carrovan
