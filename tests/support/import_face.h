#pragma once

#include "package/import_run.h"
#include "tests/support/fakes.h"
#include "wizard/category_tree.h"

namespace carrovan {

// Takes the steps of an import in their order, as a face does, and notes what it would show.
class ImportFace {
 public:
  // How the way from the chosen package to its categories ended.
  enum class Entry { kReady, kRefused, kEnded };

  // The view outlives it, as does what the run refers to.
  ImportFace(const ImportRun& run, RecordingView& view) : run_(run), view_(view) {}

  Entry EnterCategories(CategoryTree& tree);
  void Apply(CategoryTree& tree);
  void ApplyLegacy();

 private:
  void ShowUnextracted(std::size_t from);

  ImportRun run_;
  RecordingView& view_;
};

// Unpacks a legacy package and takes the version that it is for as the target. False, after the
// view was shown, when it is refused.
bool TakeLegacyPackage(const ImportRun& run, RecordingView& view, WizardState& state,
                       const std::wstring& path);

}  // namespace carrovan
