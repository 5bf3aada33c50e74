#pragma once

#include "package/run_report.h"
#include "wizard/wizard_frame.h"

namespace carrovan {

// Lets the user follow a run: in the progress of the frame, and in the tree of its page when it has
// one. The progress is gone when this is destroyed.
class RunProgress : public RunObserver {
 public:
  // A run works on about so many keys and files. Of most only an estimate is known before.
  explicit RunProgress(WizardFrame& frame, std::size_t expectedItems, CategoryTree* tree = nullptr)
      : frame_(frame), expected_(expectedItems), tree_(tree) {}
  ~RunProgress() override { frame_.HideProgress(); }
  RunProgress(const RunProgress&) = delete;
  RunProgress& operator=(const RunProgress&) = delete;

  void OnCategory(SettingCategory category) override;
  void OnItem(const std::wstring& path) override;

 private:
  std::size_t ItemsPerCategory() const;
  int Thousandths() const;

  WizardFrame& frame_;
  std::size_t expected_;
  CategoryTree* tree_;
  std::size_t items_ = 0;
};

}  // namespace carrovan
