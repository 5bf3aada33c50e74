#include "wizard/run_progress.h"

#include <algorithm>

#include "text/path_text.h"

namespace carrovan {

void RunProgress::OnCategory(SettingCategory category) {
  items_ += ItemsPerCategory();
  if (tree_ != nullptr) ShowCategory(*tree_, category);
  const CategoryRecord* record = FindCategory(static_cast<int>(category));
  frame_.ShowProgress(Thousandths(), std::wstring(Text(record->label)));
}

void RunProgress::OnItem(const std::wstring& path) {
  ++items_;
  frame_.ShowProgress(Thousandths(), FileNameOf(path));
}

// Merging and removing, of which a run reports no items, are about half of its work.
std::size_t RunProgress::ItemsPerCategory() const {
  return std::max<std::size_t>(1, expected_ / (2 * CategoryTable().size()));
}

// Beyond what was expected it still moves, and does not come to the end before the run does.
int RunProgress::Thousandths() const {
  constexpr std::size_t kAtExpected = 900;
  constexpr std::size_t kWhole = 1000;
  if (items_ <= expected_) {
    return expected_ == 0 ? 0 : static_cast<int>(kAtExpected * items_ / expected_);
  }
  return static_cast<int>(kAtExpected + (kWhole - kAtExpected) * (items_ - expected_) / items_);
}

}  // namespace carrovan
