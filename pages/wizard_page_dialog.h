#pragma once

#include <span>
#include <string>

#include "environment/string_table.h"
#include "platform/windows/dialog.h"
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

// What every page shares with the frame, which outlives it. The fonts' content changes with the
// scale of the screen, the answer about high contrast with the user's wish.
struct PageSurroundings {
  const ResourceModule& resources;
  const WizardFonts& fonts;
  bool (*isHighContrastOn)() = &IsHighContrastOn;
};

enum class ControlBackground {
  kUsual,        // the system's
  kTransparent,  // black text on whatever lies behind
  kNone,         // the control draws its own
};

struct ControlLook {
  int control;
  PageFont font;
  ControlBackground background;
};

// How the statics without a number of their own look.
enum class UnnamedStatics { kUsual, kBlackText, kTransparent };

// One page of the wizard: a white band with the banner across its top, below it the controls in
// the wizard's fonts.
class WizardPageDialog : public Dialog {
 public:
  explicit WizardPageDialog(const PageSurroundings& surroundings) : surroundings_(surroundings) {}

  // Makes the page, invisible, inside the wizard's frame.
  bool CreateIn(HWND frame) { return CreatePage(surroundings_.resources, TemplateNumber(), frame); }

  // Hands the fonts to the controls again, because they have changed.
  void ApplyFonts() const;

 protected:
  virtual int TemplateNumber() const = 0;
  virtual std::span<const ControlLook> Looks() const = 0;
  virtual UnnamedStatics UnnamedStaticsLook() const { return UnnamedStatics::kUsual; }

  // Puts the page's texts and lists into its controls.
  virtual void FillControls() = 0;

  const ResourceModule& Resources() const { return surroundings_.resources; }
  void SetText(int control, StringId text) const;
  using Dialog::SetText;

  // Paints a text that has no background of its own, with what lies behind it, which has to wipe
  // out the former one.
  void Repaint(int control) const;

  bool OnInitDialog() override;
  HBRUSH OnControlColor(HDC context, HWND control) override;
  std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  void Paint() const;
  void DrawBanner(HDC context, const RECT& client) const;

  PageSurroundings surroundings_;
  BitmapHandle banner_;
};

}  // namespace carrovan
