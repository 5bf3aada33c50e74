#pragma once

#include <gtest/gtest.h>

#include "tests/support/fakes.h"
#include "tests/support/test_machine.h"
#include "tests/wizard/recording_frame.h"
#include "wizard/wizard_flow.h"

namespace carrovan {

// The import's work, noted instead of done.
class RecordingImportSteps : public ImportSteps {
 public:
  std::vector<std::string> calls;
  const EditableCategoryTree* treeOfCall = nullptr;  // that of the last one
  Entry entry = Entry::kReady;
  std::function<void()> whileWorking;

  Entry EnterCategories(EditableCategoryTree& tree) override {
    Note("enter", &tree);
    return entry;
  }
  void Apply(EditableCategoryTree& tree) override { Note("apply", &tree); }
  void ApplyLegacy() override { Note("legacy", nullptr); }

 private:
  void Note(const char* call, const EditableCategoryTree* tree) {
    calls.emplace_back(call);
    treeOfCall = tree;
    if (whileWorking) whileWorking();
  }
};

class RecordingResetSteps : public ResetSteps {
 public:
  int runs = 0;
  const EditableCategoryTree* treeOfRun = nullptr;

  void Apply(EditableCategoryTree& tree) override {
    ++runs;
    treeOfRun = &tree;
  }
};

// A wizard on a machine with releases 2025 and 2026, the user having run 2026 only. The registry
// tool starts nothing.
class WizardFixture : public testing::Test {
 protected:
  WizardFixture();
  ~WizardFixture() override;

  // The open wizard on its start page with a mode chosen.
  void OpenIn(MigrationMode mode);

  // The machine with known folders of the test's own.
  Machine PortsWith(KnownFolders& folders);
  WizardFlow FlowOn(const Machine& machine);

  bool HasStagingFolder() const;
  bool IsStagingFolderFresh() const;  // nothing lies in it but its mark
  std::wstring LiveKeyOf(const std::wstring& version) const;

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  ProductContext context_;
  WizardState state_;
  RecordingInterpreter interpreter_;
  RegistryTool tool_{interpreter_, machine_->clock, RegistryToolPace::kFixedPause};
  RecordingFrame frame_;
  RecordingImportSteps import_;
  RecordingResetSteps reset_;
  WizardFlow flow_ = FlowOn(machine_->Ports());
};

}  // namespace carrovan
