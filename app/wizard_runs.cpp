#include "app/wizard_runs.h"

namespace carrovan {
namespace {

constexpr wchar_t kNoImport[] = L"This version of Carrovan cannot import settings.";
constexpr wchar_t kNoReset[] = L"This version of Carrovan cannot reset settings.";

class RefusedImport : public ImportSteps {
 public:
  explicit RefusedImport(WizardFrame& frame) : frame_(frame) {}

  Entry EnterCategories(EditableCategoryTree&) override {
    frame_.ShowApplicationMessage(kNoImport);
    return Entry::kRefused;
  }
  void Apply(EditableCategoryTree&) override { frame_.SetFinishText(kNoImport); }
  void ApplyLegacy() override { frame_.SetFinishText(kNoImport); }

 private:
  WizardFrame& frame_;
};

class RefusedReset : public ResetSteps {
 public:
  explicit RefusedReset(WizardFrame& frame) : frame_(frame) {}

  void Apply(EditableCategoryTree&) override { frame_.SetFinishText(kNoReset); }

 private:
  WizardFrame& frame_;
};

}  // namespace

WizardRuns MakeWizardRuns(const WizardRunParts& parts) {
  WizardRuns runs;
  runs.importSteps = std::make_unique<RefusedImport>(parts.frame);
  runs.resetSteps = std::make_unique<RefusedReset>(parts.frame);
  runs.selectFile = [&frame = parts.frame](PathPageView&) {
    frame.ShowApplicationMessage(kNoImport);
  };
  return runs;
}

}  // namespace carrovan
