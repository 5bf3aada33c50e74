#include "environment/product_context.h"

#include <gtest/gtest.h>

#include "tests/support/fakes.h"
#include "tests/support/test_machine.h"

namespace carrovan {
namespace {

class LoadContext : public testing::Test {
 protected:
  // The product's program folder as the test machine lays it: scratch + "Program
  // Files\Product\Bin".
  std::wstring InstallFolder() const { return machine_->ScratchFolder() + L"Program Files\\"; }

  bool Load() { return LoadProductContext(context_, machine_->Ports()); }

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  ProductContext context_;
};

using Names = std::vector<std::wstring>;

TEST_F(LoadContext, TakesTheIdentityFromTheSupportLibrary) {
  ASSERT_TRUE(Load());
  EXPECT_EQ(context_.companyShortName, L"Vantric");
  EXPECT_EQ(context_.productName, machine_->product.productName);
  EXPECT_EQ(context_.productVersion, L"28.0");
  EXPECT_EQ(context_.humanReadableVersion, L"2026");
  EXPECT_EQ(context_.startupFolder, machine_->product.startupFolder);
  EXPECT_EQ(context_.selectedVersion, L"2026");
}

TEST_F(LoadContext, CompanyNamesCompareWithoutRegardToCase) {
  machine_->product.companyShortName = L"vANTRIC";
  ASSERT_TRUE(Load());
  EXPECT_EQ(context_.brandFlag, 1);
  EXPECT_EQ(context_.companyShortName, L"vANTRIC");

  machine_->product.companyShortName = L"Orma";
  ASSERT_TRUE(Load());
  EXPECT_EQ(context_.brandFlag, 0);
}

TEST_F(LoadContext, UnknownCompanyIsToldAndClosesTheWizard) {
  machine_->product.companyShortName = L"Another";
  EXPECT_FALSE(Load());
  EXPECT_EQ(context_.defaultCustomizationFolder, L"");
  EXPECT_EQ(context_.stagingLocalFolder, L"");
}

TEST_F(LoadContext, LanguagesAreTheTaggedFoldersTwoLevelsAboveTheStartupFolder) {
  machine_->product.startupFolder = InstallFolder() + L"Product\\Bin";
  for (const wchar_t* name : {L"en-us", L"zh-cn", L"Common", L"EN", L"eng"}) {
    machine_->MakeFolder(InstallFolder() + L"AppData\\" + name);
  }
  machine_->PutFile(InstallFolder() + L"AppData\\fr", "a file, not a folder");
  ASSERT_TRUE(Load());
  EXPECT_EQ(context_.installLanguages, (Names{L"en-us", L"zh-cn"}));
}

TEST_F(LoadContext, TrailingBackslashOfTheStartupFolderCountsAsOneLevel) {
  machine_->product.startupFolder = InstallFolder() + L"Product\\Bin\\";
  machine_->MakeFolder(InstallFolder() + L"Product\\AppData\\de");
  ASSERT_TRUE(Load());
  EXPECT_EQ(context_.installLanguages, (Names{L"de"}));
}

TEST_F(LoadContext, MissingAppDataFolderGivesNoLanguages) {
  ASSERT_TRUE(Load());
  EXPECT_TRUE(context_.installLanguages.empty());
}

TEST_F(LoadContext, LoadingAgainStartsAfresh) {
  machine_->product.startupFolder = InstallFolder() + L"Product\\Bin";
  machine_->MakeFolder(InstallFolder() + L"AppData\\en-us");
  ASSERT_TRUE(Load());
  ASSERT_TRUE(Load());
  EXPECT_EQ(context_.installLanguages, (Names{L"en-us"}));
}

TEST_F(LoadContext, DefaultCustomizationFolderFollowsTheBrand) {
  machine_->product.startupFolder = L"C:\\Program Files\\ORMA\\Product\\Bin";
  ASSERT_TRUE(Load());
  EXPECT_EQ(context_.defaultCustomizationFolder,
            L"C:\\Program Files\\ORMA\\Product\\AppData\\Customization");

  machine_->product.companyShortName = L"ORMA";
  ASSERT_TRUE(Load());
  EXPECT_EQ(context_.defaultCustomizationFolder,
            L"C:\\Program Files\\ORMA\\Product\\AppData\\zh-cn\\Customization");
}

TEST_F(LoadContext, StartupFolderBeyondTheFixedBufferHasNoCustomizationFolder) {
  machine_->product.startupFolder = L"C:\\" + std::wstring(253, L'x') + L"\\Bin";  // 260 characters
  ASSERT_TRUE(Load());
  EXPECT_EQ(context_.defaultCustomizationFolder, L"");

  machine_->product.startupFolder = L"C:\\" + std::wstring(252, L'x') + L"\\Bin";
  ASSERT_TRUE(Load());
  EXPECT_NE(context_.defaultCustomizationFolder, L"");
}

TEST_F(LoadContext, StagingLocalFolderIsBuiltForTheRunningVersion) {
  context_.stagingFolder = L"C:\\T\\";
  ASSERT_TRUE(Load());
  EXPECT_EQ(context_.stagingLocalFolder, L"C:\\T\\Local\\ORMA\\ORMA CAD TVRN-INT-" +
                                             machine_->product.productName + L" 2026 (x64)");
}

TEST(SelectVersion, SetsEveryFormOfTheVersion) {
  ProductContext context;
  SelectVersion(context, L"2025");
  EXPECT_EQ(context.productVersion, L"27.0");
  EXPECT_EQ(context.humanReadableVersion, L"2025");
  EXPECT_EQ(context.selectedVersion, L"2025");
}

TEST(LanguageTag, TwoLettersOrALanguageWithItsRegion) {
  for (const wchar_t* tag : {L"en", L"zh-cn", L"zh-CN", L"zh-Cn"}) {
    EXPECT_TRUE(IsLanguageTag(tag)) << testing::PrintToString(tag);
  }
  for (const wchar_t* other : {L"", L"e", L"EN", L"En", L"eng", L"Zh-cn", L"zh_cn", L"zh-c",
                               L"zh-cnn", L"z1", L"zh-c1", L"éé", L"中文"}) {
    EXPECT_FALSE(IsLanguageTag(other)) << testing::PrintToString(other);
  }
}

}  // namespace
}  // namespace carrovan
