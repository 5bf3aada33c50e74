#include "environment/installed_versions.h"

#include <gtest/gtest.h>

#include "tests/support/fakes.h"
#include "tests/support/test_machine.h"
#include "tests/wizard/recording_frame.h"

namespace carrovan {
namespace {

using Texts = std::vector<std::wstring>;

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

  bool PassesLiveKey() { return PassesLiveKeyCheck(frame_, machine_->Ports().registry, context_); }
  bool Passes(const std::wstring& version) {
    return PassesVersionCheck(frame_, machine_->Ports().registry, context_.companyShortName,
                              context_.productName, version);
  }

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  ProductContext context_;
  RecordingFrame frame_;
};

TEST_F(VersionCheck, VersionThatWasRunPassesSilently) {
  PutUserKey(L" 27.0");
  EXPECT_TRUE(PassesLiveKey());
  EXPECT_TRUE(Passes(L"27.0"));
  EXPECT_TRUE(frame_.applicationMessages.empty());
}

TEST_F(VersionCheck, VersionThatWasNeverRunIsTold) {
  PutUserKey(L" 28.0");
  EXPECT_FALSE(PassesLiveKey());
  EXPECT_FALSE(Passes(L"27.0"));
  const std::wstring text = L"Please run Vantric at least once";
  EXPECT_EQ(frame_.applicationMessages, (Texts{text, text}));
  EXPECT_TRUE(frame_.messages.empty());
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
