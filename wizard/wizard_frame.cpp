#include "wizard/wizard_frame.h"

#include <algorithm>
#include <array>
#include <span>

#include "environment/string_table.h"

namespace carrovan {
namespace {

using enum WizardPage;

constexpr std::array kNoModePages{kStart};
constexpr std::array kExportPages{kStart, kVersion, kExportCategories, kFinish};
constexpr std::array kImportPages{kStart, kPath, kImportCategories, kFinish};
constexpr std::array kResetPages{kStart, kResetCategories, kFinish};

std::span<const WizardPage> PagesOf(MigrationMode mode) {
  switch (mode) {
    case MigrationMode::kNone:
      return kNoModePages;
    case MigrationMode::kExport:
      return kExportPages;
    case MigrationMode::kImport:
      return kImportPages;
    case MigrationMode::kReset:
      return kResetPages;
  }
  return kNoModePages;
}

void EnableButtons(WizardButtons& buttons, MigrationMode mode, int pageIndex) {
  const bool reset = mode == MigrationMode::kReset;
  buttons.nextEnabled = pageIndex < 2;
  buttons.backEnabled = pageIndex == 1 || (pageIndex == 2 && !reset);
  buttons.backVisible = buttons.backEnabled;
  buttons.finishEnabled = pageIndex == 2 || pageIndex == (reset ? 1 : 3);
}

void LabelButtons(WizardButtons& buttons, WizardPage page) {
  if (page != kStart && page != kFinish) return;
  buttons.nextVisible = page == kStart;
  buttons.finishLabel = page == kStart ? StringId::kFinish : StringId::kHome;
  buttons.cancelLabel = StringId::kClose;
}

}  // namespace

int LastPageIndex(MigrationMode mode) { return static_cast<int>(PagesOf(mode).size()) - 1; }

WizardPage PageAt(MigrationMode mode, int pageIndex) {
  const int shown = std::clamp(pageIndex, 0, LastPageIndex(mode));
  return PagesOf(mode)[static_cast<std::size_t>(shown)];
}

WizardButtons ButtonsAt(MigrationMode mode, int pageIndex) {
  WizardButtons buttons;
  if (mode == MigrationMode::kNone) {
    buttons.nextEnabled = true;
    LabelButtons(buttons, kStart);
    return buttons;
  }
  EnableButtons(buttons, mode, pageIndex);
  LabelButtons(buttons, PageAt(mode, pageIndex));
  return buttons;
}

}  // namespace carrovan
