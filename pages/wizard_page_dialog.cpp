#include "pages/wizard_page_dialog.h"

#include <algorithm>

#include "resources/resource.h"

namespace carrovan {
namespace {

FontHandle MakeArial(int height, int weight, int dotsPerInch) {
  return FontHandle(CreateFontW(MulDiv(height, dotsPerInch, 96), 0, 0, 0, weight, FALSE, FALSE,
                                FALSE, ANSI_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS,
                                DEFAULT_QUALITY, DEFAULT_PITCH | FF_SWISS, L"Arial"));
}

}  // namespace

WizardFonts::WizardFonts(int dotsPerInch)
    : title_(MakeArial(20, FW_BOLD, dotsPerInch)),
      text_(MakeArial(17, FW_NORMAL, dotsPerInch)),
      heading_(MakeArial(18, FW_BOLD, dotsPerInch)) {}

HFONT WizardFonts::Get(PageFont font) const {
  switch (font) {
    case PageFont::kTitle:
      return title_.Get();
    case PageFont::kText:
      return text_.Get();
    case PageFont::kHeading:
      return heading_.Get();
  }
  return nullptr;
}

namespace {

// Sent to a child window after its parent has taken a new scale; older headers lack the name.
constexpr UINT kScaleChangedAfterParent = 0x02E3;

constexpr POINT kBannerCorner{8, 10};

HBRUSH HollowBrush() { return static_cast<HBRUSH>(GetStockObject(HOLLOW_BRUSH)); }

bool IsUnnamedStatic(HWND control) {
  if (static_cast<short>(GetDlgCtrlID(control)) != -1) return false;
  wchar_t name[8] = {};
  GetClassNameW(control, name, static_cast<int>(std::size(name)));
  return lstrcmpiW(name, L"Static") == 0;
}

void DrawTransparently(HDC context) {
  SetBkMode(context, TRANSPARENT);
  SetTextColor(context, RGB(0, 0, 0));
}

HBRUSH ColorUnnamedStatic(HDC context, UnnamedStatics look) {
  if (look == UnnamedStatics::kUsual) return nullptr;
  SetTextColor(context, RGB(0, 0, 0));
  if (look == UnnamedStatics::kBlackText) return nullptr;
  SetBkMode(context, TRANSPARENT);
  return HollowBrush();
}

}  // namespace

void WizardPageDialog::ApplyFonts() const {
  for (const ControlLook& look : Looks()) {
    SendMessageW(Control(look.control), WM_SETFONT,
                 reinterpret_cast<WPARAM>(surroundings_.fonts.Get(look.font)), TRUE);
  }
}

void WizardPageDialog::SetText(int control, StringId text) const {
  SetText(control, Resources().Text(static_cast<int>(text)));
}

void WizardPageDialog::Repaint(int control) const {
  const HWND text = Control(control);
  RECT covered{};
  GetWindowRect(text, &covered);
  MapWindowPoints(nullptr, Window(), reinterpret_cast<POINT*>(&covered), 2);
  InvalidateRect(Window(), &covered, TRUE);
  UpdateWindow(Window());
  InvalidateRect(text, nullptr, TRUE);
  UpdateWindow(text);
}

bool WizardPageDialog::OnInitDialog() {
  banner_ = Resources().Bitmap(IDB_BANNER);
  ApplyFonts();
  FillControls();
  // The focus comes when the page is shown.
  return false;
}

HBRUSH WizardPageDialog::OnControlColor(HDC context, HWND control) {
  // The user's own colours are the only ones that he is sure to tell apart.
  if (surroundings_.isHighContrastOn()) return nullptr;
  if (IsUnnamedStatic(control)) return ColorUnnamedStatic(context, UnnamedStaticsLook());
  const auto looks = Looks();
  const auto look = std::ranges::find(looks, GetDlgCtrlID(control),
                                      [](const ControlLook& l) { return l.control; });
  if (look == looks.end() || look->background == ControlBackground::kUsual) return nullptr;
  SelectObject(context, surroundings_.fonts.Get(look->font));
  if (look->background == ControlBackground::kTransparent) DrawTransparently(context);
  return HollowBrush();
}

std::optional<LRESULT> WizardPageDialog::OnMessage(UINT message, WPARAM, LPARAM) {
  if (message == WM_PAINT) {
    Paint();
    return 0;
  }
  // By now the system has given the controls fonts of its own.
  if (message == kScaleChangedAfterParent) ApplyFonts();
  return std::nullopt;
}

void WizardPageDialog::Paint() const {
  const PaintContext paint(Window());
  RECT client{};
  GetClientRect(Window(), &client);
  const RECT band{0, 0, client.right, client.bottom / 5};
  const bool ownColours = !surroundings_.isHighContrastOn();
  FillRect(paint.Get(), &band,
           ownColours ? static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH))
                      : GetSysColorBrush(COLOR_BTNFACE));
  if (banner_) DrawBanner(paint.Get(), client);
}

void WizardPageDialog::DrawBanner(HDC context, const RECT& client) const {
  BITMAP banner{};
  GetObjectW(banner_.Get(), sizeof(banner), &banner);
  const MemoryContext memory(CreateCompatibleDC(context));
  const SelectedObject selected(memory.Get(), banner_.Get());
  SetStretchBltMode(context, HALFTONE);
  SetBrushOrgEx(context, 0, 0, nullptr);
  StretchBlt(context, kBannerCorner.x, kBannerCorner.y, client.right / 6, client.bottom / 6,
             memory.Get(), 0, 0, banner.bmWidth, banner.bmHeight, SRCCOPY);
}

}  // namespace carrovan
