#include "pages/wizard_fonts.h"

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

}  // namespace carrovan
