// The wizard and another run of the same user.

#include "guard/run_lock.h"
#include "restore/prune.h"
#include "tests/wizard/guarded_wizard.h"

namespace carrovan {
namespace {

using enum WizardPage;

constexpr wchar_t kAnotherRunText[] =
    L"Another run is at work:\ncarrovan-cli import, process 1234\n\n"
    L"Nothing was changed. Try again when it has ended.";

class OneRunAtATime : public GuardedWizard {
 protected:
  // One of the command line.
  OrReason<RunLock> AnotherRun() {
    FixedProcess self;
    self.facts = {L"carrovan-cli", 1234};
    return RunLock::Take(With<&Machine::self>(Wired(), self), L"import");
  }
};

TEST_F(OneRunAtATime, AnotherRunHoldsUpAnImportUntilItHasEnded) {
  MakeTemplatePackage();
  GoToImportCategories();
  {
    const auto other = AnotherRun();
    flow_.Finish();
    EXPECT_EQ(frame_.messages, Texts{kAnotherRunText});
    EXPECT_EQ(frame_.Page(), kImportCategories);
    EXPECT_EQ(state_.pageIndex, 2);
    EXPECT_EQ(Template(), "mine");
    flow_.ShowChanges();
    EXPECT_EQ(frame_.listQuestions.size(), 1u);
  }
  EXPECT_TRUE(Points().empty());
  flow_.Finish();
  EXPECT_EQ(frame_.Page(), kFinish);
  EXPECT_EQ(Template(), "theirs");
}

TEST_F(OneRunAtATime, AnotherRunHoldsUpALegacyImportUntilItHasEnded) {
  machine_->PutFile(Scene(), "<mine/>");
  MakeLegacyPackage(machine_->ScratchFolder() + L"old.ucx");
  OpenIn(MigrationMode::kImport);
  state_.package.path = machine_->ScratchFolder() + L"old.ucx";
  flow_.Next();
  {
    const auto other = AnotherRun();
    flow_.Next();
    EXPECT_EQ(frame_.messages, Texts{kAnotherRunText});
    EXPECT_EQ(frame_.Page(), kPath);
    EXPECT_EQ(machine_->FileBytes(Scene()), "<mine/>");
  }
  flow_.Next();
  EXPECT_EQ(frame_.Page(), kFinish);
  EXPECT_NE(machine_->FileBytes(Scene()), "<mine/>");
}

TEST_F(OneRunAtATime, AnotherRunHoldsUpAResetUntilItHasEnded) {
  OpenIn(MigrationMode::kReset);
  flow_.Next();
  {
    const auto other = AnotherRun();
    flow_.Next();
    EXPECT_EQ(frame_.messages, Texts{kAnotherRunText});
    EXPECT_EQ(frame_.Page(), kResetCategories);
    EXPECT_EQ(state_.pageIndex, 1);
    EXPECT_EQ(Template(), "mine");
  }
  flow_.Next();
  EXPECT_EQ(Template(), "none");
}

TEST_F(OneRunAtATime, AnotherRunHoldsUpAnUndoUntilItHasEnded) {
  ImportTemplate();
  {
    const auto other = AnotherRun();
    flow_.UndoLast();
    EXPECT_EQ(frame_.messages, Texts{kAnotherRunText});
    EXPECT_EQ(Template(), "theirs");
    EXPECT_TRUE(frame_.details.canUndo);
  }
  flow_.UndoLast();
  EXPECT_EQ(Template(), "mine");
}

TEST_F(OneRunAtATime, AnotherRunHoldsUpAnImportThatGoesOnWithoutARestorePoint) {
  MakeTemplatePackage();
  GoToImportCategories();
  OrReason<RunLock> other;
  machine_->PutFile(*RestoreRoot(folders_), "in the way");
  frame_.whileAsking = [&] {
    if (!other.object) other = AnotherRun();
  };
  flow_.Finish();
  EXPECT_EQ(frame_.questions.size(), 1u);
  EXPECT_EQ(frame_.messages, Texts{kAnotherRunText});
  EXPECT_EQ(frame_.Page(), kImportCategories);
  EXPECT_EQ(Template(), "mine");
}

TEST_F(OneRunAtATime, UndoKeepsOthersOutUntilItsLastQuestionIsAnswered) {
  ImportTemplate();
  machine_->PutFile(Roaming(kTemplate), "edited since");
  std::vector<bool> wereKeptOut;
  frame_.whileAsking = [&] { wereKeptOut.push_back(!AnotherRun().object); };
  flow_.UndoLast();
  EXPECT_EQ(wereKeptOut, (std::vector<bool>{false, true}));  // to confirm, then to overwrite
  EXPECT_TRUE(AnotherRun().object);
}

TEST_F(OneRunAtATime, RestorePointThatIsPrunedWhileTheUserIsAskedIsNotUndone) {
  ImportTemplate();
  frame_.whileAsking = [&] {
    const Machine ports = machine_->Ports();
    static_cast<void>(PruneRestorePoints(*ports.files, *ports.clock, *RestoreRoot(folders_), {}));
  };
  flow_.UndoLast();
  EXPECT_EQ(frame_.messages, (Texts{L"There is nothing to undo."}));
  EXPECT_TRUE(frame_.listQuestions.empty());
  EXPECT_EQ(Template(), "theirs");
}

}  // namespace
}  // namespace carrovan
