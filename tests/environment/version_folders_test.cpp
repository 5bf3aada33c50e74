#include "environment/version_folders.h"

#include <gtest/gtest.h>

#include "tests/support/fakes.h"
#include "tests/support/test_machine.h"

namespace carrovan {
namespace {

class VersionFolders : public testing::Test {
 protected:
  VersionFolders() {
    context_.companyShortName = L"Vantric";
    context_.productName = L"VANTRIC";
    context_.productVersion = L"28.0";
    context_.humanReadableVersion = L"2026";
    context_.selectedVersion = L"2026";
    context_.localFolder = L"as it was";
    context_.stagingLocalFolder = L"as it was";
    context_.stagingFolder = L"C:\\T\\";
    folders_.local = machine_->ScratchFolder() + L"Local";
    folders_.roaming = machine_->ScratchFolder() + L"Roaming";
  }

  Machine Ports() {
    const Machine ports = machine_->Ports();
    return With<&Machine::folders>(ports, folders_);
  }

  std::wstring Drafting(const std::wstring& name) const {
    return *folders_.local + L"\\ORMA\\ORMA CAD TVRN-INT" + name + L" (x64)";
  }

  std::wstring LocalFolderOf(const std::wstring& year) {
    context_.selectedVersion = year;
    BuildLocalFolder(context_, Ports());
    return context_.localFolder;
  }

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  FixedFolders folders_;
  ProductContext context_;
};

TEST_F(VersionFolders, RegistryRootHasTheVersionBehindABlank) {
  EXPECT_EQ(RegistryRoot(context_), L"HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC 28.0");
  EXPECT_EQ(LiveKey(context_), L"SOFTWARE\\Vantric\\VANTRIC 28.0");
}

TEST_F(VersionFolders, LocalFolderWithoutSubfoldersTakesTheComputedName) {
  EXPECT_EQ(LocalFolderOf(L"2026"), Drafting(L"-VANTRIC 2026") + L"\\26.0");
}

TEST_F(VersionFolders, LocalFolderTakesItsOnlySubfolder) {
  machine_->MakeFolder(Drafting(L"-VANTRIC 2026") + L"\\R7");
  machine_->PutFile(Drafting(L"-VANTRIC 2026") + L"\\file.txt", "not a folder");
  EXPECT_EQ(LocalFolderOf(L"2026"), Drafting(L"-VANTRIC 2026") + L"\\R7");
}

TEST_F(VersionFolders, LocalFolderWithTwoSubfoldersTakesTheComputedName) {
  machine_->MakeFolder(Drafting(L"-VANTRIC 2026") + L"\\R7");
  machine_->MakeFolder(Drafting(L"-VANTRIC 2026") + L"\\R8");
  EXPECT_EQ(LocalFolderOf(L"2026"), Drafting(L"-VANTRIC 2026") + L"\\26.0");
}

TEST_F(VersionFolders, Release2025UsesTheFolderOf2024WhateverItHolds) {
  machine_->MakeFolder(Drafting(L"-VANTRIC 2024") + L"\\R7");
  EXPECT_EQ(LocalFolderOf(L"2025"), Drafting(L"-VANTRIC 2024") + L"\\25.0");
}

TEST_F(VersionFolders, OrmaBrandHasABlankAndNoProductName) {
  context_.companyShortName = L"ORMA";
  EXPECT_EQ(LocalFolderOf(L"2025"), Drafting(L" 2025") + L"\\25.0");
}

TEST_F(VersionFolders, UnknownCompanyKeepsTheFolderAndAddsTheSubfolder) {
  context_.companyShortName = L"Another";
  context_.localFolder = L"C:\\kept";
  EXPECT_EQ(LocalFolderOf(L"2026"), L"C:\\kept\\26.0");
}

TEST_F(VersionFolders, LocalFolderStaysWhenTheSystemCannotTellTheUsersFolder) {
  folders_.local.reset();
  EXPECT_EQ(LocalFolderOf(L"2026"), L"as it was");
}

TEST_F(VersionFolders, VersionShorterThanTwoCharactersIsTakenWhole) {
  EXPECT_EQ(LocalFolderOf(L"7"), Drafting(L"-VANTRIC 7") + L"\\7.0");
}

TEST_F(VersionFolders, StagingLocalFolderFollowsTheBrandWithoutASubfolder) {
  BuildStagingLocalFolder(context_, L"2026");
  EXPECT_EQ(context_.stagingLocalFolder,
            L"C:\\T\\Local\\ORMA\\ORMA CAD TVRN-INT-VANTRIC 2026 (x64)");
  BuildStagingLocalFolder(context_, L"2025");
  EXPECT_EQ(context_.stagingLocalFolder,
            L"C:\\T\\Local\\ORMA\\ORMA CAD TVRN-INT-VANTRIC 2024 (x64)\\25.0");
  context_.companyShortName = L"ORMA";
  BuildStagingLocalFolder(context_, L"2025");
  EXPECT_EQ(context_.stagingLocalFolder, L"C:\\T\\Local\\ORMA\\ORMA CAD TVRN-INT 2025 (x64)");
}

TEST_F(VersionFolders, StagingLocalFolderOfAnUnknownCompanyStays) {
  context_.companyShortName = L"Another";
  BuildStagingLocalFolder(context_, L"2026");
  EXPECT_EQ(context_.stagingLocalFolder, L"as it was");
}

TEST_F(VersionFolders, CompanyIsKnownInWhateverCase) {
  for (const wchar_t* vantric : {L"VANTRIC", L"vantric"}) {
    context_.companyShortName = vantric;
    EXPECT_EQ(LocalFolderOf(L"2026"), Drafting(L"-VANTRIC 2026") + L"\\26.0");
    EXPECT_EQ(LocalFolderOf(L"2025"), Drafting(L"-VANTRIC 2024") + L"\\25.0");
    BuildStagingLocalFolder(context_, L"2025");
    EXPECT_EQ(context_.stagingLocalFolder,
              L"C:\\T\\Local\\ORMA\\ORMA CAD TVRN-INT-VANTRIC 2024 (x64)\\25.0");
    ASSERT_TRUE(PrepareVersionFolders(context_, Ports()));
    EXPECT_EQ(context_.localFolder, Drafting(L"-VANTRIC 2026"));
  }
  for (const wchar_t* orma : {L"Orma", L"orma"}) {
    context_.companyShortName = orma;
    EXPECT_EQ(LocalFolderOf(L"2026"), Drafting(L" 2026") + L"\\26.0");
    ASSERT_TRUE(PrepareVersionFolders(context_, Ports()));
    EXPECT_EQ(context_.localFolder, Drafting(L" 2026"));
  }
}

TEST_F(VersionFolders, PreparingFillsKeysAndFolders) {
  ASSERT_TRUE(PrepareVersionFolders(context_, Ports()));
  const std::wstring root = L"HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC 28.0";
  EXPECT_EQ(context_.registryRoot, root);
  EXPECT_EQ(context_.registerKeys, std::vector<std::wstring>{root});
  ASSERT_EQ(context_.optionKeys.size(), 26u);
  EXPECT_EQ(context_.optionKeys.front(), root + L"\\General");
  EXPECT_EQ(context_.optionKeys.back(), root + L"\\Export Options");
  EXPECT_EQ(context_.roamingRoot, *folders_.roaming + L"\\Vantric\\VANTRIC\\28.0");
  EXPECT_EQ(context_.localRoot, *folders_.local + L"\\Vantric\\VANTRIC\\28.0");
  EXPECT_EQ(context_.localFolder, Drafting(L"-VANTRIC 2026"));
}

TEST_F(VersionFolders, PreparingAgainDoesNotExtendTheFoldersTwice) {
  ASSERT_TRUE(PrepareVersionFolders(context_, Ports()));
  const ProductContext first = context_;
  ASSERT_TRUE(PrepareVersionFolders(context_, Ports()));
  EXPECT_EQ(context_.roamingRoot, first.roamingRoot);
  EXPECT_EQ(context_.localRoot, first.localRoot);
  EXPECT_EQ(context_.localFolder, first.localFolder);
  EXPECT_EQ(context_.optionKeys, first.optionKeys);
}

TEST_F(VersionFolders, PreparingRelease2025HasNoSubfolder) {
  context_.humanReadableVersion = L"2025";
  ASSERT_TRUE(PrepareVersionFolders(context_, Ports()));
  EXPECT_EQ(context_.localFolder, Drafting(L"-VANTRIC 2024"));
}

TEST_F(VersionFolders, PreparingTheOrmaBrandUsesTheYearAlone) {
  context_.companyShortName = L"ORMA";
  ASSERT_TRUE(PrepareVersionFolders(context_, Ports()));
  EXPECT_EQ(context_.localFolder, Drafting(L" 2026"));
}

TEST_F(VersionFolders, PreparingAnUnknownCompanyLeavesTheDraftingFolder) {
  context_.companyShortName = L"Another";
  ASSERT_TRUE(PrepareVersionFolders(context_, Ports()));
  EXPECT_EQ(context_.localFolder, L"as it was");
}

TEST_F(VersionFolders, PreparingNeedsCompanyProductAndVersion) {
  for (std::wstring ProductContext::*field :
       {&ProductContext::companyShortName, &ProductContext::productName,
        &ProductContext::productVersion}) {
    ProductContext incomplete = context_;
    (incomplete.*field).clear();
    EXPECT_FALSE(PrepareVersionFolders(incomplete, Ports()));
  }
}

TEST_F(VersionFolders, PreparingFailsWhenEitherUserFolderIsUnknown) {
  folders_.roaming.reset();
  EXPECT_FALSE(PrepareVersionFolders(context_, Ports()));
  folders_.roaming = L"C:\\R";
  folders_.local.reset();
  EXPECT_FALSE(PrepareVersionFolders(context_, Ports()));
}

TEST_F(VersionFolders, RoamingTwinNeedsBothUserFolders) {
  const std::wstring path = *folders_.local + L"\\ORMA\\26.0";
  EXPECT_EQ(RoamingTwin(path, folders_), *folders_.roaming + L"\\ORMA\\26.0");
  FixedFolders unknown = folders_;
  unknown.roaming.reset();
  EXPECT_FALSE(RoamingTwin(path, unknown));
  unknown = folders_;
  unknown.local.reset();
  EXPECT_FALSE(RoamingTwin(path, unknown));
}

TEST_F(VersionFolders, OnlyWhatLiesInTheLocalFolderHasARoamingTwin) {
  EXPECT_FALSE(RoamingTwin(*folders_.local, folders_));
  EXPECT_FALSE(RoamingTwin(*folders_.local + L"Low\\x", folders_));
}

}  // namespace
}  // namespace carrovan
