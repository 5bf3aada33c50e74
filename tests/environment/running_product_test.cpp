#include "environment/installed_versions.h"

#include <gtest/gtest.h>

namespace carrovan {
namespace {

class FixedProcesses : public ProcessList {
 public:
  explicit FixedProcesses(std::vector<std::wstring> names) : names_(std::move(names)) {}
  std::vector<std::wstring> ExecutableNames() const override { return names_; }

 private:
  std::vector<std::wstring> names_;
};

TEST(RunningProduct, IsFoundInAnyLetterCase) {
  for (const wchar_t* name : {L"VANTRIC.exe", L"vantric.EXE", L"Vantric.Exe"}) {
    EXPECT_TRUE(IsProductRunning(FixedProcesses({L"System", name, L"explorer.exe"})))
        << testing::PrintToString(name);
  }
}

TEST(RunningProduct, OtherProgramsAreNotTheProduct) {
  EXPECT_FALSE(IsProductRunning(FixedProcesses(
      {L"System", L"VANTRIC", L"VANTRIC.exe.exe", L"xVANTRIC.exe", L"VANTRIC.com", L""})));
}

TEST(RunningProduct, SystemThatDoesNotTellHasNone) {
  EXPECT_FALSE(IsProductRunning(FixedProcesses({})));
}

}  // namespace
}  // namespace carrovan
