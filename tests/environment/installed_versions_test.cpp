#include "environment/installed_versions.h"

#include <gtest/gtest.h>

#include "environment/version_folders.h"
#include "tests/support/test_machine.h"

namespace carrovan {
namespace {

class InstalledVersions : public testing::Test {
 protected:
  void SetUp() override {
    context_.companyShortName = machine_->product.companyShortName;
    context_.productName = machine_->product.productName;
    context_.productVersion = L"26.0";
  }

  std::wstring MachineKey() const {
    return L"SOFTWARE\\" + context_.companyShortName + L"\\" + context_.productName;
  }

  void Install(std::initializer_list<const wchar_t*> versions) {
    for (const wchar_t* version : versions) {
      machine_->PutKey(RegistryHive::kLocalMachine, MachineKey() + L"\\" + version);
    }
  }

  std::vector<std::wstring> Enumerate() {
    EnumerateInstalledVersions(context_, *machine_->Ports().registry);
    std::vector<std::wstring> names;
    for (const auto& version : context_.installedVersions) names.push_back(version.internalVersion);
    return names;
  }

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  ProductContext context_;
};

using Names = std::vector<std::wstring>;

TEST_F(InstalledVersions, OldVersionsAndThoseAfterTheRunningOneAreNotOffered) {
  Install({L"19.0", L"21.0", L"26.0", L"27.0"});
  EXPECT_EQ(Enumerate(), (Names{L"21.0", L"26.0"}));
}

TEST_F(InstalledVersions, VersionTwentyItselfIsNotOffered) {
  Install({L"20.0", L"20.1"});
  EXPECT_EQ(Enumerate(), (Names{L"20.1", L"26.0"}));
}

TEST_F(InstalledVersions, SubkeyThatIsNotANumberIsIgnored) {
  Install({L"25.0", L"Common"});
  EXPECT_EQ(Enumerate(), (Names{L"25.0", L"26.0"}));
}

TEST_F(InstalledVersions, RunningVersionIsLastEvenWithoutAKeyOfItsOwn) {
  Install({L"25.0", L"27.0"});
  EXPECT_EQ(Enumerate(), (Names{L"25.0", L"27.0", L"26.0"}));
}

TEST_F(InstalledVersions, MissingMachineKeyLeavesTheRunningVersion) {
  EXPECT_EQ(Enumerate(), (Names{L"26.0"}));
}

TEST_F(InstalledVersions, UnreadableMachineKeyLeavesTheRunningVersion) {
  Install({L"25.0"});
  if (!machine_->MakeKeyUnreadable(RegistryHive::kLocalMachine, MachineKey())) {
    GTEST_SKIP() << "this system lets its administrator read every key";
  }
  EXPECT_EQ(Enumerate(), (Names{L"26.0"}));
}

TEST_F(InstalledVersions, EnumeratingAgainStartsAfresh) {
  Install({L"25.0"});
  Enumerate();
  EXPECT_EQ(Enumerate(), (Names{L"25.0", L"26.0"}));
}

TEST_F(InstalledVersions, VersionHasBeenRunOnceItsUserKeyIsThere) {
  EXPECT_FALSE(HasBeenRun(context_, *machine_->Ports().registry));
  machine_->PutKey(RegistryHive::kCurrentUser, LiveKey(context_));
  EXPECT_TRUE(HasBeenRun(context_, *machine_->Ports().registry));
}

}  // namespace
}  // namespace carrovan
