#include "pages/end_pages.h"

#include "resources/resource.h"

namespace carrovan {
namespace {

// Keeps a radio button from being chosen by merely getting the focus; older headers lack the name.
constexpr UINT kSetDoNotClick = 0x00F8;

constexpr ControlLook kStartLooks[] = {
    {IDC_START_HEADING, PageFont::kTitle, ControlBackground::kTransparent},
    {IDC_START_INTRODUCTION, PageFont::kText, ControlBackground::kTransparent},
    {IDC_START_EXPORT_TEXT, PageFont::kText, ControlBackground::kTransparent},
    {IDC_START_IMPORT_TEXT, PageFont::kText, ControlBackground::kTransparent},
    {IDC_START_RESET_TEXT, PageFont::kText, ControlBackground::kTransparent},
    {IDC_START_EXPORT, PageFont::kHeading, ControlBackground::kUsual},
    {IDC_START_IMPORT, PageFont::kHeading, ControlBackground::kUsual},
    {IDC_START_RESET, PageFont::kHeading, ControlBackground::kUsual},
};

MigrationMode ModeOf(int control) {
  switch (control) {
    case IDC_START_EXPORT:
      return MigrationMode::kExport;
    case IDC_START_IMPORT:
      return MigrationMode::kImport;
    case IDC_START_RESET:
      return MigrationMode::kReset;
    default:
      return MigrationMode::kNone;
  }
}

}  // namespace

int CStartDialog::TemplateNumber() const { return IDD_START; }

std::span<const ControlLook> CStartDialog::Looks() const { return kStartLooks; }

void CStartDialog::FillControls() {
  SetText(IDC_START_HEADING, StringId::kWelcome);
  SetText(IDC_START_INTRODUCTION, StringId::kIntroduction);
  SetText(IDC_START_EXPORT, StringId::kExportChoice);
  SetText(IDC_START_IMPORT, StringId::kImportChoice);
  SetText(IDC_START_RESET, StringId::kResetChoice);
  SetText(IDC_START_EXPORT_TEXT, StringId::kExportExplanation);
  SetText(IDC_START_IMPORT_TEXT, StringId::kImportExplanation);
  SetText(IDC_START_RESET_TEXT, StringId::kResetExplanation);
  for (const int radio : {IDC_START_EXPORT, IDC_START_IMPORT, IDC_START_RESET}) {
    SendMessageW(Control(radio), kSetDoNotClick, TRUE, 0);
  }
}

bool CStartDialog::OnCommand(int control, int notification) {
  const MigrationMode mode = ModeOf(control);
  if (mode == MigrationMode::kNone || notification != BN_CLICKED) return false;
  ChooseMode(state_, context_, mode);
  return true;
}

namespace {

constexpr ControlLook kFinishLooks[] = {
    {IDC_FINISH_TITLE, PageFont::kTitle, ControlBackground::kTransparent},
    {IDC_FINISH_MESSAGE, PageFont::kText, ControlBackground::kTransparent},
};

}  // namespace

void CFinishDialog::ShowOutcome(const std::wstring& text) const {
  SetText(IDC_FINISH_MESSAGE, text);
  InvalidateRect(Window(), nullptr, TRUE);
}

int CFinishDialog::TemplateNumber() const { return IDD_FINISH; }

std::span<const ControlLook> CFinishDialog::Looks() const { return kFinishLooks; }

void CFinishDialog::FillControls() { SetText(IDC_FINISH_TITLE, StringId::kOperationCompleted); }

}  // namespace carrovan
