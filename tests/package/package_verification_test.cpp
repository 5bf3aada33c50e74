#include "package/package_verification.h"

#include <gtest/gtest.h>

#include "package/package_writer.h"
#include "tests/package/memory_archive.h"
#include "tests/support/registry_bytes.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr char kLines[] =
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC 28.0\\General]\r\n\"a\"=dword:00000001\r\n";
const std::string kRegistryFile = RegistryFileBytes(kLines);

std::string Description(const std::string& marks) {
  return "[Selected]\r\n" + marks +
         "[Base]\r\nCOMPANY=Vantric\r\nINTERNAL VERSION=28.0\r\nRELEASE VERSION=2026\r\n"
         "PRODUCT=VANTRIC\r\n";
}

class PackageVerificationTest : public testing::Test {
 protected:
  void Describe(const std::string& marks) { archive_.Add(L"config.ini", Description(marks)); }

  PackageVerification Verify(bool legacy = false) {
    ArchiveFiles files(archive_);
    const auto dom = OpenXmlDom(files);
    return VerifyPackage(archive_, *dom, legacy);
  }

  // The only finding; the test fails when there is another number of them.
  RefusedItem OnlyFinding(bool legacy = false) {
    const auto verification = Verify(legacy);
    EXPECT_EQ(verification.findings.size(), 1U);
    return verification.findings.empty() ? RefusedItem() : verification.findings.back();
  }

  MemoryArchive archive_;
};

TEST_F(PackageVerificationTest, SoundPackageIsCounted) {
  Describe("Options=1\r\nInterface layout=1\r\n");
  archive_.Add(L"Options\\General.reg", kRegistryFile);
  archive_.Add(L"Register\\All.reg", kRegistryFile);
  archive_.Add(L"Roaming\\Vantric\\VANTRIC\\28.0\\en-us\\Customization\\Ribbon.XML", "<ribbon/>");
  archive_.Add(L"Roaming\\Vantric\\VANTRIC\\28.0\\en-us\\Customization\\x.txt", "<not xml");
  archive_.Add(L"Local\\Vantric\\folder.xml\\", "");
  const auto verification = Verify();
  EXPECT_TRUE(verification.IsSound());
  EXPECT_EQ(verification.notes, std::vector<RefusedItem>());
  EXPECT_EQ(verification.entries, 6U);
  EXPECT_EQ(verification.registryFiles, 2U);
  EXPECT_EQ(verification.documents, 1U);
}

TEST_F(PackageVerificationTest, DamagedAndEncryptedEntriesAreFoundOnce) {
  Describe("");
  archive_.Add(L"Local\\Vantric\\a.xml", "<a/>", ArchiveResult::kDamaged);
  archive_.Add(L"Local\\Vantric\\b.txt", "b", ArchiveResult::kEncrypted);
  const auto verification = Verify();
  EXPECT_EQ(verification.findings,
            (std::vector<RefusedItem>{{L"Local\\Vantric\\a.xml", L"the data is damaged"},
                                      {L"Local\\Vantric\\b.txt", L"the data is encrypted"}}));
}

TEST_F(PackageVerificationTest, UnfitNameIsFoundOnce) {
  Describe("");
  archive_.Add(L"..\\a.xml", "<a/>");
  EXPECT_EQ(OnlyFinding(), (RefusedItem{L"..\\a.xml", L"the name leads out of the folder"}));
}

TEST_F(PackageVerificationTest, DescriptionMustBeWhole) {
  const auto missing = Verify();
  ASSERT_EQ(missing.findings.size(), 2U);
  EXPECT_EQ(missing.findings[0].reason, L"the description is missing");
  EXPECT_EQ(missing.findings[1].reason, L"the company is empty");

  Describe("Options=0\r\nWallpapers=1\r\n");
  EXPECT_EQ(OnlyFinding(), (RefusedItem{L"config.ini", L"\"Wallpapers\" is not a category"}));
}

TEST_F(PackageVerificationTest, RegistryFilesMustParse) {
  Describe("");
  archive_.Add(L"Options\\none.txt", "not a registry file");
  EXPECT_EQ(OnlyFinding(), (RefusedItem{L"Options\\none.txt", L"this is not a registry file"}));
}

TEST_F(PackageVerificationTest, RegistryFileInUtf8WithItsMarkIsNoneToTheTool) {
  Describe("");
  archive_.Add(L"Options\\a.reg",
               std::string("\xEF\xBB\xBFWindows Registry Editor Version 5.00\r\n\r\n") + kLines);
  EXPECT_EQ(OnlyFinding().reason,
            L"line 1 is not understood: UTF-8 behind its mark, which the registry tool refuses");
}

TEST_F(PackageVerificationTest, FirstLineOfARegistryFileThatIsNotUnderstoodIsFound) {
  Describe("");
  archive_.Add(L"Options\\odd.reg",
               RegistryFileBytes(std::string(kLines) + "\"b\"=hex:zz\r\n\"c\"\r\n"));
  EXPECT_EQ(OnlyFinding().reason, L"line 5 is not understood: bytes that are not hexadecimal");
}

TEST_F(PackageVerificationTest, KeysOfOthersAreFound) {
  Describe("");
  archive_.Add(L"Register\\run.reg", RegistryFileBytes("[HKEY_CURRENT_USER\\SOFTWARE\\Other]\r\n"));
  EXPECT_EQ(OnlyFinding().reason,
            L"line 3 names the key HKEY_CURRENT_USER\\SOFTWARE\\Other, which lies outside "
            L"HKEY_CURRENT_USER\\SOFTWARE\\Vantric");
}

TEST_F(PackageVerificationTest, DocumentsMustBeWellFormed) {
  for (const char* text : {"<a>", "", "no document", "<a/><b/>", "<!DOCTYPE a><a/>", "<a b=1/>"}) {
    archive_ = MemoryArchive();
    Describe("");
    archive_.Add(L"Roaming\\Vantric\\a.XML", text);
    const RefusedItem found = OnlyFinding();
    EXPECT_EQ(found.name, L"Roaming\\Vantric\\a.XML") << text;
    EXPECT_FALSE(found.reason.empty()) << text;
    EXPECT_EQ(found.reason.find(L'\n'), std::wstring::npos) << text;
  }
}

TEST_F(PackageVerificationTest, DocumentInEachEncodingIsSound) {
  Describe("");
  archive_.Add(L"Local\\Vantric\\8.xml", "\xEF\xBB\xBF<a>\xE8\x9E\xBA</a>");
  archive_.Add(L"Local\\Vantric\\16.xml", std::string("\xFF\xFE<\0a\0/\0>\0", 10));
  EXPECT_TRUE(Verify().IsSound());
}

TEST_F(PackageVerificationTest, TooLargeFilesAreNotedAndNotParsed) {
  Describe("");
  archive_.Add(L"Local\\Vantric\\large.xml", std::string(ArchiveFiles::kLongestFileBytes + 1, ' '));
  const auto verification = Verify();
  EXPECT_TRUE(verification.IsSound());
  ASSERT_EQ(verification.notes.size(), 1U);
  EXPECT_EQ(verification.notes[0].name, L"Local\\Vantric\\large.xml");
}

TEST_F(PackageVerificationTest, CategoriesWithoutDataAreNoted) {
  Describe(
      "Options=1\r\nRegister=1\r\nDocument Template=1\r\nShortcut key=1\r\n"
      "2D Draft Settings=1\r\nCosmetic Thread=1\r\nSheet Metal Library=1\r\n");
  archive_.Add(L"options\\General.reg", kRegistryFile);
  archive_.Add(L"Register\\", "");
  archive_.Add(L"Local\\Vantric\\VANTRIC\\28.0\\Customization\\keys.xml", "<a/>");
  archive_.Add(L"Local\\Vantric\\VANTRIC\\28.0\\en-us\\CosmeticThread\\a.txt", "a");
  archive_.Add(L"Local\\Vantric\\VANTRIC\\27.0\\en-us\\SheetMetal\\a.txt", "a");
  archive_.Add(L"Roaming\\Vantric\\VANTRIC\\28.0\\Template\\a.txt", "a");
  const auto verification = Verify();
  EXPECT_TRUE(verification.IsSound());
  std::vector<std::wstring> names;
  for (const RefusedItem& note : verification.notes) names.push_back(note.name);
  EXPECT_EQ(names,
            (std::vector<std::wstring>{L"Register", L"Document Template", L"Sheet Metal Library"}));
}

TEST_F(PackageVerificationTest, LegacyPackageHoldsOneWellFormedDocument) {
  archive_.Add(L"Scene_UI.xml", "<scene/>");
  archive_.Add(L"Options\\x", "[HKLM]");
  const auto verification = Verify(true);
  EXPECT_TRUE(verification.IsSound());
  EXPECT_EQ(verification.registryFiles, 0U);
  EXPECT_EQ(verification.documents, 1U);

  archive_.Add(L"second.xml", "<a/>");
  EXPECT_EQ(OnlyFinding(true).reason, L"a legacy package holds exactly one XML document");
}

TEST_F(PackageVerificationTest, NothingOfAnAbsurdPackageIsRead) {
  Describe("Options=1\r\n");
  archive_.Add(L"Options\\a.reg", "not a registry file");
  archive_.Declare(L"Local\\zeros.xml", std::uint64_t{5} << 30, 1000);
  EXPECT_EQ(OnlyFinding().name, L"*");
  EXPECT_EQ(archive_.reads, 0);
}

// All items but the first say that they are too large to be parsed.
class LargeItems : public MemoryArchive {
 public:
  std::optional<ArchiveItem> Item(std::size_t index) const override {
    auto item = MemoryArchive::Item(index);
    if (item && index > 0) item->sizeBytes = ArchiveFiles::kLongestFileBytes + 1;
    return item;
  }
};

TEST(PackageVerificationOfLargeFiles, OnlyWhatWouldBeParsedIsTooLargeForThat) {
  LargeItems archive;
  archive.Add(L"config.ini", Description(""));
  archive.Add(L"Local\\Vantric\\parts.dat", "x");
  archive.Add(L"Local\\Vantric\\large.xml", "<a/>");
  ArchiveFiles files(archive);
  const auto verification = VerifyPackage(archive, *OpenXmlDom(files), false);
  EXPECT_EQ(verification.findings, std::vector<RefusedItem>());
  EXPECT_EQ(
      verification.notes,
      (std::vector<RefusedItem>{{L"Local\\Vantric\\large.xml", L"too large to be parsed here"}}));
}

TEST(PackageVerificationOfLargeFiles, RegistryFileThatWasCutShortIsFoundOnce) {
  LargeItems archive;
  archive.Add(L"config.ini", Description(""));
  archive.Add(L"Options\\whole.reg", kRegistryFile);
  archive.Add(L"Options\\cut.reg", RegistryFileBytes(std::string(kLines) + "\"b\"="));
  ArchiveFiles files(archive);
  const auto verification = VerifyPackage(archive, *OpenXmlDom(files), false);
  ASSERT_EQ(verification.findings.size(), 1u);
  EXPECT_EQ(verification.findings[0].name, L"Options\\cut.reg");
}

TEST_F(PackageVerificationTest, RegistryFileThatWasCutShortIsFound) {
  for (const char* end : {"\"b\"=hex:01,\\\r\n", "\"b\"=dword:0000", "\"b\"=\"c\"", "\"b\"=\"c"}) {
    archive_ = MemoryArchive();
    Describe("");
    archive_.Add(L"Options\\General.reg", RegistryFileBytes(std::string(kLines) + end));
    const RefusedItem found = OnlyFinding();
    EXPECT_EQ(found.name, L"Options\\General.reg") << end;
    EXPECT_FALSE(found.reason.empty()) << end;
  }
}

TEST_F(PackageVerificationTest, HeadersThatDifferFromTheDirectoryAreFound) {
  Describe("");
  archive_.Add(L"Local\\Vantric\\a.txt", "a");
  archive_.Add(L"Local\\Vantric\\folder\\", "");
  archive_.headerProblems = {{L"Local\\Vantric\\a.txt", L"its local header bears another name"},
                             {L"Local\\Vantric\\folder\\", L"it has no local header"}};
  EXPECT_EQ(
      Verify().findings,
      (std::vector<RefusedItem>{{L"Local\\Vantric\\a.txt", L"its local header bears another name"},
                                {L"Local\\Vantric\\folder\\", L"it has no local header"}}));
}

}  // namespace
}  // namespace carrovan
