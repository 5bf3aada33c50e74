#include <gtest/gtest.h>

#include <array>
#include <string>

#include "support/tarvik/product_facts.h"
#include "support/tarvik/zip_handles.h"
#include "tests/zip/zip_test_files.h"
#include "text/text.h"

namespace carrovan {
namespace {

std::wstring WidePath(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return FromUtf8(std::string(text.begin(), text.end()));
}

std::string Utf16WithMark(std::wstring_view text) {
  std::string bytes = "\xFF\xFE";
  for (const char16_t unit : ToUtf16(text)) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  }
  return bytes;
}

TEST(ProductFacts, AreReadFromEitherEncoding) {
  const std::wstring text =
      L"[Product]\r\nCompanyShortName=Vantric\r\nProductName=VANTRIC\r\nProductVersion=28.0\r\n"
      L"HumanReadableVersion=2026\r\nStartupFolder=C:\\产品\\Bin\r\nLanguage=zh-cn\r\n";
  const TempFolder folder;
  for (const std::string& bytes :
       {ToUtf8(text), "\xEF\xBB\xBF" + ToUtf8(text), Utf16WithMark(text)}) {
    const ProductFacts facts = ReadProductFacts(folder.Put(L"tarvik.ini", bytes));
    EXPECT_EQ(facts.companyShortName, L"Vantric");
    EXPECT_EQ(facts.productName, L"VANTRIC");
    EXPECT_EQ(facts.productVersion, L"28.0");
    EXPECT_EQ(facts.humanReadableVersion, L"2026");
    EXPECT_EQ(ToUtf8(facts.startupFolder), ToUtf8(L"C:\\产品\\Bin"));
    EXPECT_EQ(facts.language, L"zh-cn");
  }
}

TEST(ProductFacts, AreEmptyWhereTheFileDoesNotTellThem) {
  const TempFolder folder;
  EXPECT_EQ(ReadProductFacts(folder / L"missing.ini").productName, L"");
  const ProductFacts facts =
      ReadProductFacts(folder.Put(L"tarvik.ini", "[Other]\nProductName=X\n[Product]\nLanguage=\n"));
  EXPECT_EQ(facts.productName, L"");
  EXPECT_EQ(facts.language, L"");
}

TEST(LanguageSupport, CopiesTheCurrentLanguage) {
  const LanguageSupport support(L"en-us");
  const EyeLangSupport* object = support.Object();
  ASSERT_NE(object, nullptr);
  std::array<wchar_t, 20> buffer = {};
  EXPECT_EQ(object->currentLanguageName(object, 1033, buffer.data(), buffer.size()), 1);
  EXPECT_STREQ(buffer.data(), L"en-us");
}

TEST(LanguageSupport, LeavesABufferAloneThatIsTooSmall) {
  const LanguageSupport support(L"en-us");
  const EyeLangSupport* object = support.Object();
  std::array<wchar_t, 6> buffer = {L'?'};
  EXPECT_EQ(object->currentLanguageName(object, 1033, buffer.data(), 5), 0);
  EXPECT_EQ(buffer[0], L'?');
  EXPECT_EQ(object->currentLanguageName(object, 1033, buffer.data(), 6), 1);
  EXPECT_EQ(object->currentLanguageName(object, 1033, nullptr, 20), 0);
  EXPECT_EQ(object->currentLanguageName(nullptr, 1033, buffer.data(), 6), 0);
}

TEST(LanguageSupport, IsNoneWithoutALanguage) { EXPECT_EQ(LanguageSupport(L"").Object(), nullptr); }

class ZipHandlesTest : public testing::Test {
 protected:
  EyeZipHandle NewArchive() { return handles_.CreateZip(archive_.c_str(), nullptr); }

  // An archive of one item, opened.
  EyeZipHandle OpenedArchive() {
    const EyeZipHandle zip = NewArchive();
    EXPECT_EQ(handles_.Add(zip, itemName_.c_str(), source_.c_str()), ArchiveResult::kDone);
    EXPECT_EQ(handles_.CloseWriter(zip), ArchiveResult::kDone);
    return handles_.OpenZip(archive_.c_str(), nullptr);
  }

  TempFolder folder_;
  std::wstring archive_ = WidePath(folder_ / L"包.zip");
  std::wstring source_ = WidePath(folder_.Put(L"源.txt", "content"));
  std::wstring target_ = WidePath(folder_ / L"目标.txt");
  std::wstring itemName_ = std::wstring(300, L'n') + L"\\项目";
  ZipHandles handles_;
};

TEST_F(ZipHandlesTest, WriteAndReadAnArchive) {
  const EyeZipHandle zip = OpenedArchive();
  ASSERT_NE(zip, nullptr);
  EyeZipEntry entry = {};
  ASSERT_EQ(handles_.Item(zip, 0, &entry), ArchiveResult::kDone);
  EXPECT_EQ(ToUtf8(entry.name), ToUtf8(itemName_));
  EXPECT_EQ(entry.sizeBytes, 7U);
  EXPECT_EQ(entry.packedSizeBytes, 7U);
  EXPECT_EQ(handles_.Extract(zip, 0, target_.c_str()), ArchiveResult::kDone);
  EXPECT_EQ(FileBytes(folder_ / L"目标.txt"), "content");
  EXPECT_EQ(handles_.Item(zip, 1, &entry), ArchiveResult::kNoSuchItem);
  EXPECT_EQ(handles_.CloseReaderOrGiveUp(zip), ArchiveResult::kDone);
}

TEST_F(ZipHandlesTest, TellReadersFromWriters) {
  const EyeZipHandle reader = OpenedArchive();
  const EyeZipHandle writer = NewArchive();
  EXPECT_TRUE(handles_.IsReader(reader));
  EXPECT_FALSE(handles_.IsReader(writer));
  EXPECT_FALSE(handles_.IsReader(nullptr));
}

TEST_F(ZipHandlesTest, RefuseAPassword) {
  EXPECT_EQ(handles_.CreateZip(archive_.c_str(), "secret"), nullptr);
  handles_.CloseReaderOrGiveUp(OpenedArchive());
  EXPECT_EQ(handles_.OpenZip(archive_.c_str(), ""), nullptr);
}

TEST_F(ZipHandlesTest, AreNoneForWhatCannotBeOpenedOrCreated) {
  EXPECT_EQ(handles_.OpenZip(source_.c_str(), nullptr), nullptr);
  EXPECT_EQ(handles_.OpenZip(nullptr, nullptr), nullptr);
  EXPECT_EQ(handles_.CreateZip(nullptr, nullptr), nullptr);
  EXPECT_EQ(handles_.CreateZip(WidePath(folder_.Path()).c_str(), nullptr), nullptr);
}

TEST_F(ZipHandlesTest, GiveAWriterUpWithoutATrace) {
  const EyeZipHandle zip = NewArchive();
  ASSERT_EQ(handles_.Add(zip, L"item", source_.c_str()), ArchiveResult::kDone);
  EXPECT_EQ(handles_.CloseReaderOrGiveUp(zip), ArchiveResult::kDone);
  EXPECT_FALSE(FileBytes(folder_ / L"包.zip"));
}

TEST_F(ZipHandlesTest, FailOnHandlesThatAreClosedOrNone) {
  const EyeZipHandle closed = OpenedArchive();
  ASSERT_EQ(handles_.CloseReaderOrGiveUp(closed), ArchiveResult::kDone);
  const EyeZipHandle another = handles_.OpenZip(archive_.c_str(), nullptr);
  EXPECT_NE(another, closed);
  EyeZipEntry entry = {};
  for (const EyeZipHandle zip : {EyeZipHandle{}, closed, reinterpret_cast<EyeZipHandle>(&entry)}) {
    EXPECT_FALSE(handles_.IsReader(zip));
    EXPECT_EQ(handles_.Add(zip, L"item", source_.c_str()), ArchiveResult::kNoSuchItem);
    EXPECT_EQ(handles_.Item(zip, 0, &entry), ArchiveResult::kNoSuchItem);
    EXPECT_EQ(handles_.Extract(zip, 0, target_.c_str()), ArchiveResult::kNoSuchItem);
    EXPECT_EQ(handles_.CloseWriter(zip), ArchiveResult::kNoSuchItem);
    EXPECT_EQ(handles_.CloseReaderOrGiveUp(zip), ArchiveResult::kNoSuchItem);
  }
}

TEST_F(ZipHandlesTest, FailOnHandlesOfTheOtherKindAndOnNullPointers) {
  const EyeZipHandle reader = OpenedArchive();
  EXPECT_EQ(handles_.Add(reader, L"item", source_.c_str()), ArchiveResult::kNoSuchItem);
  EXPECT_EQ(handles_.CloseWriter(reader), ArchiveResult::kNoSuchItem);
  EXPECT_EQ(handles_.Item(reader, 0, nullptr), ArchiveResult::kNoSuchItem);
  EXPECT_EQ(handles_.Extract(reader, 0, nullptr), ArchiveResult::kNoSuchItem);
  EXPECT_TRUE(handles_.IsReader(reader));

  const EyeZipHandle writer = NewArchive();
  EyeZipEntry entry = {};
  EXPECT_EQ(handles_.Item(writer, 0, &entry), ArchiveResult::kNoSuchItem);
  EXPECT_EQ(handles_.Extract(writer, 0, target_.c_str()), ArchiveResult::kNoSuchItem);
  EXPECT_EQ(handles_.Add(writer, nullptr, source_.c_str()), ArchiveResult::kNoSuchItem);
  EXPECT_EQ(handles_.Add(writer, L"item", nullptr), ArchiveResult::kNoSuchItem);
}

}  // namespace
}  // namespace carrovan
