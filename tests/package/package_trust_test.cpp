#include "package/package_trust.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/package/memory_archive.h"
#include "tests/support/registry_bytes.h"
#include "text/text.h"

namespace carrovan {
namespace {

const std::string kGood = RegistryFileBytes("[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\x]\r\n");
const std::string kBad = RegistryFileBytes("[HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantric]\r\n");

std::vector<RefusedItem> Reasons(ArchiveExaminer& archive, PackageKind kind = PackageKind::kFull) {
  return ReasonsForDistrust(archive, kind, L"Vantric");
}

TEST(PackageTrust, RegistryFilesAreThoseThatAnImportImports) {
  for (const wchar_t* name : {L"Options\\General.reg", L"Register\\a", L"OPTIONS\\x.txt",
                              L"register\\.reg", L"Options\\Local"}) {
    EXPECT_TRUE(IsRegistryFileName(name)) << ToUtf8(name);
  }
  for (const wchar_t* name : {L"", L"Options", L"Options\\", L"Options\\sub\\a.reg", L"a.reg",
                              L"Local\\Options\\a.reg", L"Optionsx\\a.reg", L"\\Options\\a.reg"}) {
    EXPECT_FALSE(IsRegistryFileName(name)) << ToUtf8(name);
  }
}

TEST(PackageTrust, TakesASoundPackage) {
  MemoryArchive archive;
  archive.Add(L"config.ini", "[Base]");
  archive.Add(L"Options\\General.reg", kGood);
  archive.Add(L"Register\\none.txt", "not a registry file");
  archive.Add(L"Options\\sub\\a.reg", kBad);
  archive.Add(L"Local\\Vantric\\a.reg", kBad);
  archive.Add(L"Local\\", "");
  EXPECT_TRUE(Reasons(archive).empty());
}

TEST(PackageTrust, NamesEachRegistryFileWithAKeyOutside) {
  MemoryArchive archive;
  archive.Add(L"options\\a.txt", kBad);
  archive.Add(L"Options\\b.reg", kGood);
  archive.Add(L"REGISTER\\c", kBad);
  const auto reasons = Reasons(archive);
  ASSERT_EQ(reasons.size(), 2U);
  EXPECT_EQ(reasons[0], (RefusedItem{L"options\\a.txt",
                                     L"line 3 names the key HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantric, "
                                     L"which lies outside HKEY_CURRENT_USER\\SOFTWARE\\Vantric"}));
  EXPECT_EQ(reasons[1].name, L"REGISTER\\c");
}

TEST(PackageTrust, DistrustsFilesForFoldersOfOtherPrograms) {
  for (const wchar_t* name :
       {L"Roaming\\Microsoft\\Windows\\Start Menu\\Programs\\Startup\\a.bat",
        L"roaming\\MICROS~1\\a", L"Local\\Carrovan\\Restore\\2026-01-01T000000Z\\journal",
        L"LocalLow\\Other\\a", L"Local\\Vantric2\\a", L"Local\\Other\\"}) {
    MemoryArchive archive;
    archive.Add(name, "x");
    EXPECT_EQ(
        Reasons(archive),
        (std::vector<RefusedItem>{{name, L"the file would lie in a folder of another program"}}))
        << ToUtf8(name);
    EXPECT_TRUE(Reasons(archive, PackageKind::kLegacy).empty());
  }
}

TEST(PackageTrust, DistrustsAnItemOfWhichTheArchiveSaysTwoThings) {
  MemoryArchive archive;
  archive.Add(L"Local\\Vantric\\a", "x");
  archive.Add(L"Local\\Vantric\\damaged", "x", ArchiveResult::kDamaged);
  archive.headerProblems = {{L"Local\\Vantric\\a", L"its local header bears another name"},
                            {L"Local\\Vantric\\damaged", L"its local header bears another size"}};
  const std::vector<RefusedItem> expected = {
      {L"Local\\Vantric\\a", L"its local header bears another name"}};
  EXPECT_EQ(Reasons(archive), expected);
  EXPECT_EQ(Reasons(archive, PackageKind::kLegacy), expected);
}

TEST(PackageTrust, TakesFilesForTheProductsOwnFolders) {
  MemoryArchive archive;
  archive.Add(L"Local\\vantric\\VANTRIC\\28.0\\a", "x");
  archive.Add(L"roaming\\ORMA\\ORMA CAD TVRN-INT-VANTRIC 2026 (x64)\\26.0\\a", "x");
  archive.Add(L"Options\\sub\\a.txt", "x");
  archive.Add(L"readme.txt", "x");
  EXPECT_TRUE(Reasons(archive).empty());
}

TEST(PackageTrust, DistrustsARegistryFileThatCannotBeRead) {
  for (const ArchiveResult state :
       {ArchiveResult::kDamaged, ArchiveResult::kEncrypted, ArchiveResult::kMethodUnsupported}) {
    MemoryArchive archive;
    archive.Add(L"Options\\a.reg", kGood, state);
    EXPECT_EQ(Reasons(archive),
              (std::vector<RefusedItem>{{L"Options\\a.reg", L"its keys cannot be told: " +
                                                                DescribeArchiveResult(state)}}));
  }
}

TEST(PackageTrust, DistrustsARegistryFileWhoseNameACommandLineWouldChange) {
  for (const wchar_t* name :
       {L"Options\\%TEMP%.reg", L"Register\\a%b.reg", L"Options\\a\" b.reg"}) {
    MemoryArchive archive;
    archive.Add(name, kGood);
    EXPECT_EQ(Reasons(archive).size(), 1U) << ToUtf8(name);
  }
}

TEST(PackageTrust, DistrustsNamesThatLeadElsewhere) {
  MemoryArchive archive;
  archive.Add(L"..\\evil.txt", "x");
  archive.Add(L"Local\\nul.txt", "x");
  archive.Add(L"", "x");
  const auto reasons = Reasons(archive);
  ASSERT_EQ(reasons.size(), 3U);
  EXPECT_EQ(reasons[0], (RefusedItem{L"..\\evil.txt", L"the name leads out of the folder"}));
  EXPECT_EQ(reasons[1].reason, L"the name names a device");
  EXPECT_EQ(reasons[2].reason, L"the name is empty");
}

TEST(PackageTrust, DistrustsNamesThatAreTheSameToTheFileSystem) {
  MemoryArchive archive;
  archive.Add(L"Other\\a.txt", "1");
  archive.Add(L"Other\\A.TXT", "2");
  archive.Add(L"Other\\\xE4", "3");
  archive.Add(L"Other\\\xC4", "4");
  archive.Add(L"Other\\a", "5");
  const auto reasons = Reasons(archive);
  ASSERT_EQ(reasons.size(), 2U);
  EXPECT_EQ(reasons[0].name, L"Other\\A.TXT");
  EXPECT_EQ(reasons[1].name, L"Other\\\xC4");
}

TEST(PackageTrust, DistrustsNamesThatAreAFilesAndAFolders) {
  const std::vector<std::pair<const wchar_t*, const wchar_t*>> clashes = {
      {L"Other", L"other\\a"}, {L"Other\\a\\b", L"OTHER\\a"}, {L"a\\", L"A"}, {L"a", L"a\\"}};
  for (const auto& [first, second] : clashes) {
    MemoryArchive archive;
    archive.Add(first, "1");
    archive.Add(second, "2");
    const auto reasons = Reasons(archive);
    ASSERT_EQ(reasons.size(), 1U) << ToUtf8(second);
    EXPECT_EQ(reasons[0], (RefusedItem{second, L"the name is a file's and a folder's"}));
  }
  MemoryArchive apart;
  for (const wchar_t* name : {L"a\\", L"a\\b", L"a\\b.c", L"ab", L"a\\bc\\d", L"A\\bc\\e"}) {
    apart.Add(name, "x");
  }
  EXPECT_TRUE(Reasons(apart).empty());
}

bool IsBelow(const std::wstring& name, const std::wstring& folder) {
  return name.size() > folder.size() && name[folder.size()] == L'\\' &&
         CompareNames(name.substr(0, folder.size()), folder) == 0;
}

// Each name beside all in front of it.
std::vector<RefusedItem> ClashesOf(const std::vector<std::wstring>& names) {
  std::vector<RefusedItem> clashes;
  std::vector<std::wstring> taken;
  for (const std::wstring& name : names) {
    const auto is = [&](auto relation) { return std::ranges::any_of(taken, relation); };
    if (is([&](const std::wstring& each) { return CompareNames(each, name) == 0; })) {
      clashes.push_back({name, L"the name is there already, but for the case of its letters"});
      continue;
    }
    if (is([&](const std::wstring& each) { return IsBelow(each, name) || IsBelow(name, each); })) {
      clashes.push_back({name, L"the name is a file's and a folder's"});
    }
    taken.push_back(name);
  }
  return clashes;
}

TEST(PackageTrust, FindsEveryNameThatClashesWithOneInFrontOfIt) {
  constexpr const wchar_t* kParts[] = {L"a", L"A", L"b", L"a.b", L"\xE4", L"\xC4", L"[", L"a b"};
  std::mt19937 random(1);
  std::size_t found = 0;
  for (int round = 0; round < 300; ++round) {
    MemoryArchive archive;
    std::vector<std::wstring> names;
    for (std::size_t items = 1 + random() % 12; items > 0; --items) {
      std::wstring name = kParts[random() % std::size(kParts)];
      for (std::size_t below = random() % 4; below > 0; --below) {
        name += L"\\";
        name += kParts[random() % std::size(kParts)];
      }
      names.push_back(random() % 5 == 0 ? name + L"\\" : name);
      archive.Add(names.back(), "x");
    }
    const auto reasons = Reasons(archive);
    ASSERT_EQ(reasons, ClashesOf(names)) << "round " << round;
    found += reasons.size();
  }
  EXPECT_GT(found, 100U);
}

TEST(PackageTrust, TakesManyDeepNames) {
  MemoryArchive archive;
  std::wstring deep;
  for (int i = 0; i < 500; ++i) deep += L"d\\";
  for (int i = 0; i < 5'000; ++i) archive.Add(L"Other\\" + std::to_wstring(i) + L"\\" + deep, "");
  EXPECT_TRUE(Reasons(archive).empty());
}

TEST(PackageTrust, FoldersOfALegacyPackageMeanNothing) {
  MemoryArchive archive;
  archive.Add(L"Options\\a.reg", kBad);
  EXPECT_TRUE(Reasons(archive, PackageKind::kLegacy).empty());
  archive.Add(L"..\\a", "x");
  EXPECT_EQ(Reasons(archive, PackageKind::kLegacy).size(), 1U);
}

struct SizeRow {
  std::uint64_t sizeBytes;
  std::uint64_t packedSizeBytes;
  bool absurd;
};

TEST(PackageTrust, DistrustsOnlyAbsurdSizes) {
  constexpr std::uint64_t kGigabyte = std::uint64_t{1} << 30;
  for (const SizeRow& row :
       {SizeRow{kGigabyte, 1, false}, SizeRow{kGigabyte + 1, 1, true},
        SizeRow{5 * kGigabyte, kGigabyte, false}, SizeRow{5 * kGigabyte, kGigabyte / 100, false},
        SizeRow{5 * kGigabyte, kGigabyte / 250, true}, SizeRow{~std::uint64_t{0}, kGigabyte, true},
        SizeRow{0, 0, false}}) {
    MemoryArchive archive;
    archive.Declare(L"Local\\a", row.sizeBytes, row.packedSizeBytes);
    EXPECT_EQ(RefusalOfSize(archive).has_value(), row.absurd)
        << row.sizeBytes << " from " << row.packedSizeBytes;
  }
}

TEST(PackageTrust, SizesThatOverflowTogetherAreAbsurd) {
  MemoryArchive archive;
  archive.Declare(L"Local\\a", ~std::uint64_t{0}, 1);
  archive.Declare(L"Local\\b", 2, 1);
  EXPECT_TRUE(RefusalOfSize(archive));
}

TEST(PackageTrust, ReadsNothingOfAnAbsurdPackage) {
  MemoryArchive archive;
  archive.Add(L"Options\\a.reg", kBad);
  archive.Declare(L"Local\\a", std::uint64_t{5} << 30, 1000);
  const auto reasons = Reasons(archive);
  ASSERT_EQ(reasons.size(), 1U);
  EXPECT_EQ(reasons[0].name, L"*");
  EXPECT_EQ(archive.reads, 0);
}

TEST(PackageTrust, CompanyMustNameAPlaceOfItsOwn) {
  for (const wchar_t* company : {L"", L"Vantric\\x", L"\\", L"a]b", L"a[b", L"Microsoft",
                                 L"CLASSES", L"policies", L"Wow6432Node", L"carrovan"}) {
    EXPECT_TRUE(RefusalOfIdentity(company, L"VANTRIC")) << ToUtf8(company);
  }
  for (const wchar_t* company : {L"Vantric", L"ORMA", L"Microsoft Partner", L"A & B"}) {
    EXPECT_FALSE(RefusalOfIdentity(company, L"VANTRIC")) << ToUtf8(company);
  }
}

TEST(PackageTrust, DistrustsFilesOfNobody) {
  for (const wchar_t* name : {L"Local\\a.txt", L"ROAMING\\a", L"LocalLow\\desktop.ini"}) {
    MemoryArchive archive;
    archive.Add(name, "x");
    EXPECT_EQ(Reasons(archive),
              (std::vector<RefusedItem>{{name, L"the file would lie in no program's folder"}}))
        << ToUtf8(name);
    EXPECT_TRUE(Reasons(archive, PackageKind::kLegacy).empty());
  }
  // It stands for no folder of the profile, and is laid over nothing.
  MemoryArchive archive;
  archive.Add(L"Local", "x");
  EXPECT_TRUE(Reasons(archive).empty());
}

TEST(PackageTrust, DistrustsARegistryFileThatIsNotUnderstoodWhole) {
  MemoryArchive archive;
  archive.Add(L"Options\\a.reg", RegistryFileBytes("[HKEY_CURRENT_USER\\SOFTWARE\\Vantric]\r\n"
                                                   "\"a\"=\"x\\c\"\r\n"));
  archive.Add(L"Register\\b", "regedit4\n");
  EXPECT_EQ(
      Reasons(archive),
      (std::vector<RefusedItem>{{L"Options\\a.reg", L"line 4 is not understood: an unknown escape"},
                                {L"Register\\b", L"line 1 is not understood: 8-bit text"}}));
}

TEST(PackageTrust, TakesOnePlainNameForACompanyAndAProduct) {
  for (const wchar_t* name : {L"Vantric", L"VANTRIC 2026 (x64)", L"\x4E2D\x6587", L"a.b", L".a"}) {
    EXPECT_TRUE(IsPlainName(name)) << ToUtf8(name);
    EXPECT_EQ(RefusalOfIdentity(L"Vantric", name), std::nullopt) << ToUtf8(name);
  }
  for (const wchar_t* name :
       {L"",       L".",    L"..",  L"...", L"a\\b", L"a/b", L"\\a", L"a\\",
        L"..\\..", L"C:",   L"a:b", L"a.",  L"a ",   L" ",   L"con", L"NUL.txt",
        L"COM1",   L"a\tb", L"a*",  L"a?",  L"a\"",  L"a|b", L"<a>", L"[a]"}) {
    EXPECT_FALSE(IsPlainName(name)) << ToUtf8(name);
    if (*name == 0) continue;
    EXPECT_EQ(RefusalOfIdentity(L"Vantric", name), L"the product is not one plain name");
    EXPECT_EQ(RefusalOfIdentity(name, L"VANTRIC"), L"the company is not one plain name");
  }
  EXPECT_EQ(RefusalOfIdentity(L"", L"VANTRIC"), L"the company is empty");
  EXPECT_EQ(RefusalOfIdentity(L"Vantric", L""), std::nullopt);
  EXPECT_EQ(RefusalOfIdentity(L"Microsoft", L"a"), L"the company's key belongs to the system");
}

TEST(PackageTrust, DistrustsItemsWhereTheRunKeepsItsOwn) {
  for (const wchar_t* name : {L"Version_Changed_Files.zip", L"Version_Changed_Files.zip.part\\a",
                              L"VERSION_CHANGED_FILES.ZIP.PART", L"~carrovan.lock"}) {
    for (const PackageKind kind : {PackageKind::kFull, PackageKind::kLegacy}) {
      MemoryArchive archive;
      archive.Add(name, "x");
      EXPECT_EQ(Reasons(archive, kind),
                (std::vector<RefusedItem>{{name,
                                           L"the name is one that an import keeps for "
                                           L"itself"}}))
          << ToUtf8(name);
    }
  }
}

}  // namespace
}  // namespace carrovan
