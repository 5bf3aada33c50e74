#include "environment/wizard_state.h"

#include <gtest/gtest.h>

#include "tests/support/fakes.h"
#include "tests/support/test_machine.h"

namespace carrovan {
namespace {

using Years = std::vector<std::wstring>;

TEST(WizardStateTest, ModeIsTheSameInStateAndContext) {
  WizardState state;
  ProductContext context;
  for (const MigrationMode mode :
       {MigrationMode::kReset, MigrationMode::kExport, MigrationMode::kImport}) {
    ChooseMode(state, context, mode);
    EXPECT_EQ(state.mode, mode);
    EXPECT_EQ(context.mode, mode);
  }
}

TEST(WizardStateTest, PackageStateStartsWithTheRunningProduct) {
  const auto machine = NewTestMachine();
  ProductContext context;
  context.companyShortName = L"ORMA";
  context.productName = L"ORMA CAD";
  context.productVersion = L"28.0";
  context.humanReadableVersion = L"2026";
  PackageState package;
  package.path = L"C:\\old.ucex";
  InitializePackageState(package, context, machine->Ports());
  EXPECT_EQ(package.company, L"ORMA");
  EXPECT_EQ(package.product, L"ORMA CAD");
  EXPECT_EQ(package.targetInternalVersion, L"28.0");
  EXPECT_EQ(package.defaultTargetText, L"2026");
  EXPECT_EQ(package.path, L"");
}

TEST(WizardStateTest, ApplicationDataRootIsTheParentOfTheUsersLocalFolder) {
  const auto machine = NewTestMachine();
  FixedFolders folders;
  folders.local = L"C:\\Users\\Local hero\\AppData\\Local";
  PackageState package;
  InitializePackageState(package, {}, With<&Machine::folders>(machine->Ports(), folders));
  EXPECT_EQ(package.applicationDataRoot, L"C:\\Users\\Local hero\\AppData\\");

  folders.local.reset();
  InitializePackageState(package, {}, With<&Machine::folders>(machine->Ports(), folders));
  EXPECT_EQ(package.applicationDataRoot, L"");
}

TEST(InstalledYears, AreListedInOrderAndTheLastOneIsWorkedOn) {
  ProductContext context;
  context.installedVersions = {{L"26.0"}, {L"27.0"}, {L"28.0"}};
  EXPECT_EQ(ListInstalledYears(context), (Years{L"2024", L"2025", L"2026"}));
  EXPECT_EQ(context.humanReadableVersion, L"2026");
  EXPECT_EQ(context.selectedVersion, L"2026");
  EXPECT_EQ(context.productVersion, L"28.0");
}

TEST(InstalledYears, LaterListingReturnsToTheLastVersion) {
  ProductContext context;
  context.installedVersions = {{L"27.0"}, {L"28.0"}};
  SelectVersion(context, L"2025");
  ListInstalledYears(context);
  EXPECT_EQ(context.productVersion, L"28.0");
  EXPECT_EQ(context.humanReadableVersion, L"2026");
}

TEST(InstalledYears, SingleVersionIsTheOneWorkedOn) {
  ProductContext context;
  context.installedVersions = {{L"27.1"}};
  EXPECT_EQ(ListInstalledYears(context), (Years{L"2025"}));
  EXPECT_EQ(context.humanReadableVersion, L"2025");
  EXPECT_EQ(context.productVersion, L"27.1");
}

TEST(InstalledYears, WithoutAVersionTheYearIsEmpty) {
  ProductContext context;
  context.productVersion = L"28.0";
  context.humanReadableVersion = L"2026";
  EXPECT_TRUE(ListInstalledYears(context).empty());
  EXPECT_EQ(context.humanReadableVersion, L"");
  EXPECT_EQ(context.selectedVersion, L"");
  EXPECT_EQ(context.productVersion, L"28.0");
}

TEST(RunningVersion, ReplacesTheOneThatWasWorkedOn) {
  ProductContext context;
  context.installedVersions = {{L"27.0"}, {L"28.1"}};
  SelectVersion(context, L"2025");
  SelectRunningVersion(context);
  EXPECT_EQ(context.productVersion, L"28.1");
  EXPECT_EQ(context.humanReadableVersion, L"2026");
  EXPECT_EQ(context.selectedVersion, L"2026");
}

TEST(ShownVersion, BecomesTheOneToWorkOn) {
  ProductContext context;
  context.installedVersions = {{L"27.0"}, {L"28.1"}};
  SelectShownVersion(context, L"2025");
  EXPECT_EQ(context.productVersion, L"27.0");
  EXPECT_EQ(context.selectedVersion, L"2025");
  SelectShownVersion(context, L"2026");
  EXPECT_EQ(context.productVersion, L"28.1");
  EXPECT_EQ(context.selectedVersion, L"2026");
}

TEST(TargetVersion, IsTheContextsVersionAndThePackagesTarget) {
  WizardState state;
  ProductContext context;
  SelectTargetVersion(state, context, L"2025");
  EXPECT_EQ(context.productVersion, L"27.0");
  EXPECT_EQ(context.humanReadableVersion, L"2025");
  EXPECT_EQ(context.selectedVersion, L"2025");
  EXPECT_EQ(state.package.targetInternalVersion, L"27.0");
}

TEST(TargetVersion, TextWithoutANumberBecomesTheYearZero) {
  WizardState state;
  ProductContext context;
  SelectTargetVersion(state, context, L"latest");
  EXPECT_EQ(state.package.targetInternalVersion, L"-1998.0");
  EXPECT_EQ(context.humanReadableVersion, L"0");
}

}  // namespace
}  // namespace carrovan
