#include "environment/installed_versions.h"

#include <gtest/gtest.h>

#include "tests/support/fakes.h"
#include "tests/support/test_machine.h"

namespace carrovan {
namespace {

class VersionCheck : public testing::Test {
 protected:
  VersionCheck() {
    context_.companyShortName = machine_->product.companyShortName;
    context_.productName = machine_->product.productName;
    context_.productVersion = L"27.0";
  }

  void PutUserKey(const std::wstring& behindProduct) {
    machine_->PutKey(RegistryHive::kCurrentUser, L"SOFTWARE\\" + context_.companyShortName + L"\\" +
                                                     context_.productName + behindProduct);
  }

  bool PassesLiveKey() { return HasBeenRun(context_, *machine_->Ports().registry); }
  bool Passes(const std::wstring& version) {
    return HasBeenRun(context_.companyShortName, context_.productName, version,
                      *machine_->Ports().registry);
  }

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  ProductContext context_;
};

TEST_F(VersionCheck, VersionThatWasRunPasses) {
  PutUserKey(L" 27.0");
  EXPECT_TRUE(PassesLiveKey());
  EXPECT_TRUE(Passes(L"27.0"));
}

TEST_F(VersionCheck, VersionThatWasNeverRunFails) {
  PutUserKey(L" 28.0");
  EXPECT_FALSE(PassesLiveKey());
  EXPECT_FALSE(Passes(L"27.0"));
}

TEST_F(VersionCheck, SubkeyFormIsEnoughForATargetOnly) {
  PutUserKey(L"\\27.0");
  EXPECT_TRUE(Passes(L"27.0"));
  EXPECT_FALSE(PassesLiveKey());
}

TEST_F(VersionCheck, KeyThatMayNotBeReadFails) {
  PutUserKey(L" 27.0");
  const std::wstring key =
      L"SOFTWARE\\" + context_.companyShortName + L"\\" + context_.productName + L" 27.0";
  if (!machine_->MakeKeyUnreadable(RegistryHive::kCurrentUser, key)) {
    GTEST_SKIP() << "this system cannot guard a key";
  }
  EXPECT_FALSE(PassesLiveKey());
  EXPECT_FALSE(Passes(L"27.0"));
}

}  // namespace
}  // namespace carrovan
