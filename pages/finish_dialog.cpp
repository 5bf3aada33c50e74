#include "pages/finish_dialog.h"

#include "resources/resource.h"

namespace carrovan {
namespace {

constexpr ControlLook kLooks[] = {
    {IDC_FINISH_TITLE, PageFont::kTitle, ControlBackground::kTransparent},
    {IDC_FINISH_MESSAGE, PageFont::kText, ControlBackground::kTransparent},
};

}  // namespace

void CFinishDialog::ShowOutcome(const std::wstring& text) const {
  SetText(IDC_FINISH_MESSAGE, text);
  InvalidateRect(Window(), nullptr, TRUE);
}

int CFinishDialog::TemplateNumber() const { return IDD_FINISH; }

std::span<const ControlLook> CFinishDialog::Looks() const { return kLooks; }

void CFinishDialog::FillControls() { SetText(IDC_FINISH_TITLE, StringId::kOperationCompleted); }

}  // namespace carrovan
