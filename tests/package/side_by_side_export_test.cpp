#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/package/export_fixture.h"

namespace carrovan {
namespace {

using enum SettingCategory;

// A registry tool that works as late as it can: when it is waited for. Of the exports that it is
// asked for, every `failsAt`-th ends without its work.
class LateRegistryTool : public ForwardingRegistryTool {
 public:
  LateRegistryTool(RegistryTool& tool, int failsAt)
      : ForwardingRegistryTool(tool), failsAt_(failsAt) {}

  std::wstring failingKey = L"none";  // every export of such a key fails
  std::vector<std::wstring> started;
  int running = 0;
  int mostRunning = 0;

  std::unique_ptr<RunningTool> ExportKey(const std::wstring& key,
                                         const std::wstring& file) override {
    started.push_back(key);
    mostRunning = std::max(mostRunning, ++running);
    const bool fails = key.ends_with(failingKey) ||
                       (failsAt_ > 0 && started.size() % static_cast<unsigned>(failsAt_) == 0);
    return std::make_unique<Late>(*this, key, file, fails);
  }

 private:
  class Late : public RunningTool {
   public:
    Late(LateRegistryTool& owner, std::wstring key, std::wstring file, bool fails)
        : owner_(owner), key_(std::move(key)), file_(std::move(file)), fails_(fails) {}

    bool WaitForEnd() override {
      --owner_.running;
      if (fails_) return false;
      const auto done = owner_.ForwardingRegistryTool::ExportKey(key_, file_);
      return done && done->WaitForEnd();
    }

   private:
    LateRegistryTool& owner_;
    std::wstring key_;
    std::wstring file_;
    bool fails_;
  };

  int failsAt_;
};

class SideBySideExport : public ExportFixture {
 protected:
  ExportReport ExportWith(RegistryTool& registryTool, std::size_t atATime) {
    const Machine ports = Ports();
    PacedRegistryTool tool(registryTool, *ports.clock, RegistryToolPace::kWaitForEnd, atATime);
    RunObserver observer;
    return RunExport({context_, ports, tool, observer}, chosen_, packagePath_);
  }
};

TEST_F(SideBySideExport, AsManyKeysAreExportedAtATimeAsAllowed) {
  for (const int atATime : {1, 4, 64}) {
    LateRegistryTool tool(*Ports().registryTool, 0);
    CheckOnly({Options});
    ExportWith(tool, static_cast<std::size_t>(atATime));
    EXPECT_EQ(tool.mostRunning, std::min(atATime, 26));
    EXPECT_EQ(tool.running, 0) << "each is waited for";
  }
}

TEST_F(SideBySideExport, ThePackageHoldsTheSameInTheSameOrder) {
  CheckOnly({Options, Register});
  LateRegistryTool one(*Ports().registryTool, 0);
  ExportWith(one, 1);
  const auto names = EntryNames();
  const auto entries = Entries();
  LateRegistryTool several(*Ports().registryTool, 0);
  const auto report = ExportWith(several, 26);
  EXPECT_TRUE(report.missingKeys.empty());
  EXPECT_EQ(several.started, one.started);
  EXPECT_EQ(EntryNames(), names);
  EXPECT_EQ(Entries(), entries);
}

TEST_F(SideBySideExport, AToolThatEndedWithoutItsWorkIsStartedAgainForItsKey) {
  CheckOnly({Options, Register});
  LateRegistryTool sound(*Ports().registryTool, 0);
  ExportWith(sound, 1);
  const auto entries = Entries();
  for (const std::size_t atATime : {1U, 2U, 7U}) {
    LateRegistryTool failing(*Ports().registryTool, 2);
    const auto report = ExportWith(failing, atATime);
    EXPECT_TRUE(report.missingKeys.empty()) << atATime;
    EXPECT_TRUE(report.registryFileProblems.empty()) << atATime;
    EXPECT_EQ(Entries(), entries) << atATime;
  }
}

TEST_F(SideBySideExport, KeysThatFailAreNamedAlike) {
  CheckOnly({Options, Register});
  LateRegistryTool tool(*Ports().registryTool, 0);
  tool.failingKey = L"General";
  const auto expected = ExportWith(tool, 1);
  EXPECT_EQ(expected.missingKeys.size(), 1U);
  const auto report = ExportWith(tool, 4);
  EXPECT_EQ(report.missingKeys, expected.missingKeys);
  EXPECT_EQ(report.registryFileProblems, expected.registryFileProblems);
  EXPECT_EQ(report.refusal, expected.refusal);
}

TEST_F(SideBySideExport, FixedPausesComeOneAfterTheOther) {
  const Machine ports = Ports();
  const PacedRegistryTool tool(*ports.registryTool, *ports.clock, RegistryToolPace::kFixedPause, 8);
  EXPECT_EQ(tool.ExportsAtATime(), 1U);
}

}  // namespace
}  // namespace carrovan
