#pragma once

#include "platform/windows/gdi_handles.h"

namespace carrovan {

enum class PageFont { kTitle, kText, kHeading };

// The fonts of the wizard's pages at one scale.
class WizardFonts {
 public:
  explicit WizardFonts(int dotsPerInch);

  HFONT Get(PageFont font) const;

 private:
  FontHandle title_;
  FontHandle text_;
  FontHandle heading_;
};

}  // namespace carrovan
