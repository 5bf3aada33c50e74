#include "pages/category_pages.h"

#include "resources/resource.h"
#include "wizard/category_tree.h"

namespace carrovan {
namespace {

constexpr ControlLook kLooks[] = {
    {IDC_CATEGORIES_TITLE, PageFont::kTitle, ControlBackground::kTransparent},
    {IDC_CATEGORIES_QUESTION, PageFont::kHeading, ControlBackground::kTransparent},
    {IDC_CATEGORIES_LEAD_IN, PageFont::kText, ControlBackground::kTransparent},
    {IDC_CATEGORIES_DESCRIPTION, PageFont::kText, ControlBackground::kTransparent},
    {IDC_CATEGORIES_TREE, PageFont::kText, ControlBackground::kNone},
    {IDC_SHOW_CHANGES, PageFont::kText, ControlBackground::kUsual},       // not on the export page
    {IDC_BACKUP_TEXT, PageFont::kText, ControlBackground::kTransparent},  // on the reset page only
    {IDC_RESET_BACKUP, PageFont::kHeading, ControlBackground::kUsual},    // the same
};

constexpr int kImageSize = 16;

ImageListHandle CategoryImages(const ResourceModule& resources) {
  ImageListHandle images(ImageList_Create(kImageSize, kImageSize, ILC_COLOR32 | ILC_MASK, 0, 1));
  const BitmapHandle strip = resources.Bitmap(IDB_CATEGORIES);
  if (images && strip) ImageList_Add(images.Get(), strip.Get(), nullptr);
  return images;
}

POINT PointOfCurrentMessage() {
  const DWORD position = GetMessagePos();
  return {static_cast<short>(LOWORD(position)), static_cast<short>(HIWORD(position))};
}

}  // namespace

std::span<const ControlLook> CategoryPageDialog::Looks() const { return kLooks; }

void CategoryPageDialog::FillControls() {
  const Texts texts = PageTexts();
  SetText(IDC_CATEGORIES_TITLE, texts.title);
  SetText(IDC_CATEGORIES_QUESTION, texts.question);
  SetText(IDC_CATEGORIES_LEAD_IN, texts.leadIn);
  SetText(IDC_CATEGORIES_DESCRIPTION, StringId::kAllSettings);
  tree_.Attach(Control(IDC_CATEGORIES_TREE), CategoryImages(Resources()));
}

bool CategoryPageDialog::OnNotify(const NMHDR& header) {
  if (header.idFrom != IDC_CATEGORIES_TREE) return false;
  // The second of two quick clicks on a box toggles it like any other.
  const bool isClick = header.code == NM_CLICK || (header.code == NM_DBLCLK && IsOnCheckBox());
  if (isClick) HandleClick();
  return isClick;
}

void CategoryPageDialog::HandleClick() {
  const TreeView::Hit hit = tree_.HitTest(PointOfCurrentMessage());
  if (hit.item == CategoryTree::kNoItem) return;
  if (const auto description = ClickCategory(tree_, hit.item, hit.onCheckBox)) {
    ShowDescription(Resources().Text(static_cast<int>(*description)));
  }
}

bool CategoryPageDialog::IsOnCheckBox() const {
  return tree_.HitTest(PointOfCurrentMessage()).onCheckBox;
}

void CategoryPageDialog::ShowDescription(const std::wstring& text) const {
  SetText(IDC_CATEGORIES_DESCRIPTION, text);
  Repaint(IDC_CATEGORIES_DESCRIPTION);
}

int CDialogExport1::TemplateNumber() const { return IDD_EXPORT_CATEGORIES; }

CategoryPageDialog::Texts CDialogExport1::PageTexts() const {
  return {StringId::kSelectExportedSettings, StringId::kWhichToExport, StringId::kExportLeadIn};
}

int CDialogImport::TemplateNumber() const { return IDD_IMPORT_CATEGORIES; }

CategoryPageDialog::Texts CDialogImport::PageTexts() const {
  return {StringId::kSelectSettingsToImport, StringId::kWhichToImport, StringId::kImportLeadIn};
}

void CDialogImport::FillControls() {
  CategoryPageDialog::FillControls();
  SetText(IDC_SHOW_CHANGES, StringId::kShowChanges);
}

bool CDialogImport::OnCommand(int control, int notification) {
  if (control != IDC_SHOW_CHANGES || notification != BN_CLICKED) return false;
  SendMessageW(GetParent(Window()), kChangesRequest, 0, 0);
  return true;
}

int CDialogReset::TemplateNumber() const { return IDD_RESET_CATEGORIES; }

CategoryPageDialog::Texts CDialogReset::PageTexts() const {
  // The import's lead-in is this page's too.
  return {StringId::kSelectSettingsToReset, StringId::kWhichToReset, StringId::kImportLeadIn};
}

void CDialogReset::FillControls() {
  CategoryPageDialog::FillControls();
  SetText(IDC_SHOW_CHANGES, StringId::kShowChanges);
  SetText(IDC_RESET_BACKUP, StringId::kOneClickBackup);
}

bool CDialogReset::OnCommand(int control, int notification) {
  if (notification != BN_CLICKED) return false;
  if (control != IDC_RESET_BACKUP && control != IDC_SHOW_CHANGES) return false;
  const UINT request = control == IDC_RESET_BACKUP ? kBackupRequest : kChangesRequest;
  SendMessageW(GetParent(Window()), request, 0, 0);
  return true;
}

void CDialogReset::ShowBackup(const std::wstring& text) const {
  SetText(IDC_BACKUP_TEXT, text);
  Repaint(IDC_BACKUP_TEXT);
}

}  // namespace carrovan
