#include "package/package_inspection.h"

#include <gtest/gtest.h>

#include "tests/package/memory_archive.h"
#include "tests/support/registry_bytes.h"

namespace carrovan {
namespace {

constexpr char kDescription[] =
    "[Selected]\r\nOptions=1\r\nCosmetic Thread=1\r\nRegister=0\r\n[Base]\r\nCOMPANY=Vantric\r\n"
    "INTERNAL VERSION=28.0\r\nRELEASE VERSION=2026\r\nPRODUCT=VANTRIC\r\n";

using Labels = std::vector<std::wstring>;

TEST(PackageInspection, TellsWhereASoundPackageComesFrom) {
  MemoryArchive archive;
  archive.Add(L"config.ini", kDescription);
  archive.Add(L"Options\\General.reg", "1234");
  const auto inspection = InspectPackage(archive, false);
  EXPECT_EQ(inspection.company, L"Vantric");
  EXPECT_EQ(inspection.product, L"VANTRIC");
  EXPECT_EQ(inspection.releaseVersion, L"2026");
  EXPECT_EQ(inspection.internalVersion, L"28.0");
  EXPECT_EQ(inspection.categories, (Labels{L"Options", L"Cosmetic Thread"}));
  ASSERT_EQ(inspection.entries.size(), 2u);
  EXPECT_EQ(inspection.entries[1].name, L"Options\\General.reg");
  EXPECT_EQ(inspection.entries[1].sizeBytes, 4u);
  EXPECT_TRUE(inspection.refused.empty());
  EXPECT_TRUE(inspection.untrusted.empty());
  EXPECT_TRUE(inspection.contentWasRead);
}

TEST(PackageInspection, RefusesWhatThisSystemCannotMake) {
  const std::wstring name = L"Local\\Vantric\\" + std::wstring(250, L'x');
  MemoryArchive archive;
  archive.Add(L"config.ini", kDescription);
  archive.Add(name, "1", ArchiveResult::kNameRefused);
  const std::vector<RefusedItem> expected = {{name, L"the name is longer than this system allows"}};
  const auto inspection = InspectPackage(archive, false);
  EXPECT_EQ(inspection.refused, expected);
  EXPECT_EQ(inspection.untrusted, expected);
}

TEST(PackageInspection, ReadsAUtf16Description) {
  std::string utf16 = "\xFF\xFE";
  for (const char c : std::string(kDescription)) utf16 += {c, '\0'};
  MemoryArchive archive;
  archive.Add(L"CONFIG.INI", utf16);
  EXPECT_EQ(InspectPackage(archive, false).releaseVersion, L"2026");
}

TEST(PackageInspection, NamesEveryItemThatAnImportWouldRefuse) {
  MemoryArchive archive;
  archive.Add(L"config.ini", kDescription);
  archive.Add(L"..\\evil.txt", "x");
  archive.Add(L"Local\\damaged.xml", "x", ArchiveResult::kDamaged);
  archive.Add(L"Local\\secret.xml", "x", ArchiveResult::kEncrypted);
  archive.Add(L"Local\\", "");
  const auto inspection = InspectPackage(archive, false);
  ASSERT_EQ(inspection.refused.size(), 3u);
  EXPECT_EQ(inspection.refused[0].name, L"..\\evil.txt");
  EXPECT_EQ(inspection.refused[0].reason, L"the name leads out of the folder");
  EXPECT_EQ(inspection.refused[1].reason, L"the data is damaged");
  EXPECT_EQ(inspection.refused[2].reason, L"the data is encrypted");
  EXPECT_EQ(inspection.entries.size(), 5u);
}

TEST(PackageInspection, MissingDescriptionIsNamed) {
  MemoryArchive archive;
  archive.Add(L"Local\\config.ini", kDescription);
  const auto inspection = InspectPackage(archive, false);
  ASSERT_EQ(inspection.refused.size(), 1u);
  EXPECT_EQ(inspection.refused[0].name, L"config.ini");
  EXPECT_EQ(inspection.refused[0].reason, L"the description is missing");
}

TEST(PackageInspection, DescriptionWithoutItsValuesIsNamedOncePerKey) {
  MemoryArchive archive;
  archive.Add(L"config.ini", "[Base]\r\nCOMPANY=Vantric\r\nPRODUCT=\r\n");
  const auto inspection = InspectPackage(archive, false);
  ASSERT_EQ(inspection.refused.size(), 3u);
  EXPECT_EQ(inspection.refused[0].reason, L"the key PRODUCT is missing");
  EXPECT_EQ(inspection.refused[1].reason, L"the key RELEASE VERSION is missing");
  EXPECT_EQ(inspection.refused[2].reason, L"the key INTERNAL VERSION is missing");
}

TEST(PackageInspection, MarksThatAreNoCategoriesAreKept) {
  MemoryArchive archive;
  archive.Add(L"config.ini", "[Selected]\r\nOptions=1\r\nWallpapers=1\r\n[Base]\r\nx=1\r\n");
  EXPECT_EQ(InspectPackage(archive, false).unknownCategories, (Labels{L"Wallpapers"}));
}

TEST(PackageInspection, TellsWhyThePackageIsNotToBeTrusted) {
  MemoryArchive archive;
  archive.Add(L"config.ini", kDescription);
  archive.Add(L"Options\\own.reg",
              RegistryFileBytes("[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\x]\r\n"));
  archive.Add(L"Options\\run.reg",
              RegistryFileBytes("[HKEY_CURRENT_USER\\SOFTWARE\\Microsoft\\x]\r\n"));
  const auto inspection = InspectPackage(archive, false);
  EXPECT_TRUE(inspection.refused.empty());
  ASSERT_EQ(inspection.untrusted.size(), 1u);
  EXPECT_EQ(inspection.untrusted[0].name, L"Options\\run.reg");
}

TEST(PackageInspection, CompanyOrProductThatIsNoneIsAReasonForDistrust) {
  for (const char* names :
       {"", "COMPANY=..\\x\r\nPRODUCT=x\r\n", "COMPANY=Microsoft\r\nPRODUCT=x\r\n",
        "COMPANY=Vantric\r\nPRODUCT=..\r\n"}) {
    MemoryArchive archive;
    archive.Add(L"config.ini", std::string("[Base]\r\n") + names);
    const auto inspection = InspectPackage(archive, false);
    ASSERT_EQ(inspection.untrusted.size(), 1u) << names;
    EXPECT_EQ(inspection.untrusted[0].name, L"config.ini");
  }
}

TEST(PackageInspection, ReadsNothingOfAnAbsurdPackage) {
  MemoryArchive archive;
  archive.Add(L"config.ini", kDescription);
  archive.Declare(L"Local\\zeros.bin", std::uint64_t{5} << 30, 1000);
  const auto inspection = InspectPackage(archive, false);
  EXPECT_EQ(archive.reads, 0);
  EXPECT_FALSE(inspection.contentWasRead);
  EXPECT_EQ(inspection.entries.size(), 2u);
  EXPECT_EQ(inspection.untrusted.size(), 1u);
}

TEST(PackageInspection, HugeDescriptionIsNotRead) {
  MemoryArchive archive;
  archive.Add(L"config.ini", kDescription + std::string(1 << 20, ';'));
  EXPECT_EQ(InspectPackage(archive, false).refused.size(), 1u);
}

TEST(PackageInspection, LegacyPackageHoldsExactlyOneXmlAtItsRoot) {
  MemoryArchive one;
  one.Add(L"Scene_UI.XML", "<x/>");
  one.Add(L"sub\\other.xml", "<x/>");
  one.Add(L"readme.txt", "x");
  EXPECT_TRUE(InspectPackage(one, true).refused.empty());

  MemoryArchive two;
  two.Add(L"a.xml", "<x/>");
  two.Add(L"b.xml", "<x/>");
  EXPECT_EQ(InspectPackage(two, true).refused.size(), 1u);

  MemoryArchive none;
  none.Add(L"a.txt", "x");
  EXPECT_EQ(InspectPackage(none, true).refused.size(), 1u);
}

TEST(PackageInspection, LegacyPackagesAreToldByTheirExtensionInAnyCase) {
  for (const wchar_t* path : {L"a.ucx", L"C:\\P\\PACKAGE.UCX", L"/tmp/package.Ucx"}) {
    EXPECT_TRUE(IsLegacyPackageName(path)) << testing::PrintToString(path);
  }
  for (const wchar_t* path : {L"a.ucex", L"a.zip", L"ucx", L"a.ucx\\b", L"", L"a.ucx.zip"}) {
    EXPECT_FALSE(IsLegacyPackageName(path)) << testing::PrintToString(path);
  }
}

}  // namespace
}  // namespace carrovan
