#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/zip/zip_reader.h"
#include "support/zip/zip_source.h"
#include "support/zip/zip_writer.h"
#include "tests/zip/raw_zip.h"
#include "tests/zip/zip_test_files.h"

// What a damaged or hostile archive gets: a refusal, and no file.

namespace carrovan {
namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::wstring>;

// The archive of one item after a change to its bytes.
class DamagedArchive {
 public:
  explicit DamagedArchive(const std::string& bytes) {
    folder_.Put(L"a.zip", bytes);
    folder_.Put(L"target", "old");
    reader_ = ZipReader::Open(folder_ / L"a.zip");
  }

  // Every way of reading the item gives the same answer, and the target stays.
  void ExpectRefusal(ArchiveResult expected) const {
    ASSERT_NE(reader_, nullptr);
    EXPECT_EQ(reader_->Check(0), expected);
    EXPECT_EQ(reader_->Extract(0, folder_ / L"target"), expected);
    EXPECT_EQ(reader_->Extract(0, folder_ / L"new"), expected);
    EXPECT_FALSE(reader_->Read(0, std::size_t{1} << 40));
    EXPECT_EQ(FileBytes(folder_ / L"target"), "old");
    EXPECT_EQ(folder_.Listing(), (Names{L"a.zip", L"target"}));
  }

 private:
  TempFolder folder_;
  std::unique_ptr<ZipReader> reader_;
};

std::string ArchiveOf(const std::string& content) {
  const TempFolder folder;
  WriteArchive(folder / L"a.zip", {{L"item", content}});
  return *FileBytes(folder / L"a.zip");
}

// Fields of a record of the central directory, relative to its beginning.
constexpr std::size_t kFlags = 8;
constexpr std::size_t kMethod = 10;
constexpr std::size_t kChecksum = 16;
constexpr std::size_t kPackedSize = 20;
constexpr std::size_t kSize = 24;
constexpr std::size_t kHeaderOffset = 42;

std::string WithField(std::string archive, std::size_t field, std::size_t length,
                      std::uint32_t number) {
  SetNumberAt(archive, CentralRecord(archive, 0) + field, length, number);
  return archive;
}

TEST(DamagedZip, IsNotOpenedWhenItIsCutShort) {
  const TempFolder folder;
  const std::string archive = ArchiveOf(SettingsText(2000));
  for (std::size_t length = 0; length < archive.size(); ++length) {
    EXPECT_EQ(ZipReader::Open(folder.Put(L"a.zip", archive.substr(0, length))), nullptr) << length;
  }
}

TEST(DamagedZip, NeverPassesChangedContentForGood) {
  const TempFolder folder;
  const std::string content = SettingsText(500);
  const std::string archive = ArchiveOf(content);
  for (std::size_t i = 0; i < archive.size(); ++i) {
    for (const int flip : {0x01, 0x80, 0xFF}) {
      std::string damaged = archive;
      damaged[i] = static_cast<char>(damaged[i] ^ flip);
      const auto reader = ZipReader::Open(folder.Put(L"a.zip", damaged));
      if (!reader) continue;
      const auto bytes = reader->Read(0, 100'000);
      if (!bytes) continue;
      EXPECT_EQ(std::string(bytes->begin(), bytes->end()), content) << i << " ^ " << flip;
    }
  }
}

TEST(DamagedZip, RefusesContentThatDoesNotMatchItsChecksum) {
  for (const std::size_t size : {std::size_t{1000}, kBufferBytes + 1}) {
    SCOPED_TRACE(size);
    const std::string archive = ArchiveOf(std::string(size, 'x'));
    const std::uint32_t checksum = NumberAt(archive, CentralRecord(archive, 0) + kChecksum, 4);
    DamagedArchive(WithField(archive, kChecksum, 4, checksum ^ 1))
        .ExpectRefusal(ArchiveResult::kDamaged);
  }
}

TEST(DamagedZip, RefusesASizeThatIsNotTheContents) {
  const std::string small = ArchiveOf(SettingsText(1000));
  const std::string large = ArchiveOf(std::string(kBufferBytes + 1000, 'x'));
  struct Row {
    const std::string& archive;
    std::uint32_t declared;
  };
  for (const Row& row : std::vector<Row>{{small, 999},
                                         {small, 1001},
                                         {small, 0},
                                         {small, kBufferBytes},
                                         {small, kBufferBytes + 1},
                                         {small, 0xFFFFFFFE},
                                         {large, kBufferBytes + 999},
                                         {large, kBufferBytes + 1001},
                                         {large, 1000},
                                         {large, 0},
                                         {large, 0xFFFFFFFE}}) {
    SCOPED_TRACE(row.declared);
    DamagedArchive(WithField(row.archive, kSize, 4, row.declared))
        .ExpectRefusal(ArchiveResult::kDamaged);
  }
}

TEST(DamagedZip, NeverHandsOnMoreThanAnItemDeclares) {
  for (const std::size_t size : {std::size_t{1000}, 2 * kBufferBytes + 1000}) {
    const std::string archive = ArchiveOf(std::string(size, 'x'));
    for (const std::size_t declared : {std::size_t{0}, std::size_t{1}, size / 2, size - 1}) {
      SCOPED_TRACE(declared);
      const TempFolder folder;
      const auto reader = ZipReader::Open(
          folder.Put(L"a.zip", WithField(archive, kSize, 4, static_cast<std::uint32_t>(declared))));
      ASSERT_NE(reader, nullptr);
      std::size_t taken = 0;
      EXPECT_EQ(reader->ReadInParts(0, [&](std::string_view part) { taken += part.size(); }),
                ArchiveResult::kDamaged);
      EXPECT_LE(taken, declared);
    }
  }
}

TEST(DamagedZip, RefusesAPackedSizeThatEndsTheDataTooEarly) {
  const std::string archive = ArchiveOf(SettingsText(1000));
  const std::uint32_t packedSize = NumberAt(archive, CentralRecord(archive, 0) + kPackedSize, 4);
  for (const std::uint32_t declared : {0U, 1U, packedSize - 1}) {
    SCOPED_TRACE(declared);
    DamagedArchive(WithField(archive, kPackedSize, 4, declared))
        .ExpectRefusal(ArchiveResult::kDamaged);
  }
}

TEST(DamagedZip, RefusesStoredDataOfTwoSizes) {
  RawItem item{"item", "content"};
  item.sizeBytes = 3;
  item.checksum = Crc32("con");
  DamagedArchive(RawZip({item})).ExpectRefusal(ArchiveResult::kDamaged);
}

TEST(DamagedZip, RefusesEmptyDataThatClaimsToBeMuch) {
  RawItem item{"item", ""};
  item.method = 8;
  for (const std::uint32_t declared : {1U, 1000U, 0x7FFFFFFFU}) {
    SCOPED_TRACE(declared);
    item.sizeBytes = declared;
    DamagedArchive(RawZip({item})).ExpectRefusal(ArchiveResult::kDamaged);
  }
}

TEST(DamagedZip, WritesAnEmptyFileForEmptyContentHoweverItIsPacked) {
  const TempFolder folder;
  RawItem item{"item", std::string("\x03\x00", 2)};  // deflate's way to say nothing
  item.method = 8;
  item.sizeBytes = 0;
  item.checksum = 0;
  // Many times the end of nothing, more than one buffer.
  RawItem large = item;
  large.data += std::string(kBufferBytes, '\0');
  for (const RawItem& row : {item, large}) {
    const auto reader = ZipReader::Open(folder.Put(L"a.zip", RawZip({row})));
    EXPECT_EQ(reader->Extract(0, folder / L"target"), ArchiveResult::kDone);
    EXPECT_EQ(FileBytes(folder / L"target"), "");
    fs::remove(folder / L"target");
  }
}

TEST(DamagedZip, RefusesDataThatIsNotDeflated) {
  RawItem item{"item", RandomBytes(1000)};
  item.method = 8;
  item.sizeBytes = 5000;
  DamagedArchive(RawZip({item})).ExpectRefusal(ArchiveResult::kDamaged);
  item.sizeBytes = kBufferBytes + 1;
  DamagedArchive(RawZip({item})).ExpectRefusal(ArchiveResult::kDamaged);
}

TEST(DamagedZip, RefusesAnItemThatLiesOutsideTheArchive) {
  const std::string archive = ArchiveOf(SettingsText(1000));
  for (const std::uint32_t offset : {1U, 100U, 0x7FFFFFFFU, 0xFFFFFFFEU}) {
    SCOPED_TRACE(offset);
    DamagedArchive(WithField(archive, kHeaderOffset, 4, offset))
        .ExpectRefusal(ArchiveResult::kDamaged);
  }
}

TEST(DamagedZip, RefusesEncryptedItems) {
  const std::string archive = ArchiveOf(SettingsText(1000));
  constexpr std::uint32_t kEncrypted = 0x01;
  constexpr std::uint32_t kStronglyEncrypted = 0x41;
  for (const std::uint32_t flags : {kEncrypted, kStronglyEncrypted}) {
    SCOPED_TRACE(flags);
    DamagedArchive(WithField(archive, kFlags, 2, flags)).ExpectRefusal(ArchiveResult::kEncrypted);
  }
}

TEST(DamagedZip, RefusesOtherMethods) {
  const std::string archive = ArchiveOf(SettingsText(1000));
  for (const std::uint32_t method : {1U, 6U, 9U, 12U, 14U, 93U, 95U, 97U, 0xFFFFU}) {
    SCOPED_TRACE(method);
    DamagedArchive(WithField(archive, kMethod, 2, method))
        .ExpectRefusal(ArchiveResult::kMethodUnsupported);
  }
}

TEST(DamagedZip, IsNotOpenedWhenItClaimsMoreItemsThanItHolds) {
  const TempFolder folder;
  const std::string archive = ArchiveOf("content");
  const std::size_t end = archive.rfind("PK\5\6");
  for (const std::uint32_t count : {0U, 2U, 0xFFFFU}) {
    std::string damaged = archive;
    SetNumberAt(damaged, end + 8, 2, count);
    SetNumberAt(damaged, end + 10, 2, count);
    EXPECT_EQ(ZipReader::Open(folder.Put(L"a.zip", damaged)), nullptr) << count;
  }
}

TEST(DamagedZip, IsNotOpenedWhenItsLargeCountIsALie) {
  const TempFolder folder;
  // The end record of the large format, whose count of items has eight bytes.
  std::string archive = "PK\6\6" + std::string(52, '\0') + "PK\6\7" + std::string(16, '\0') +
                        "PK\5\6" + std::string(18, '\0');
  SetNumberAt(archive, 4, 4, 44);           // length of the rest of the record
  SetNumberAt(archive, 24, 4, 0x10000000);  // items
  SetNumberAt(archive, 32, 4, 0x10000000);
  SetNumberAt(archive, 56 + 16, 4, 1);  // disks
  EXPECT_EQ(ZipReader::Open(folder.Put(L"a.zip", archive)), nullptr);
}

TEST(DamagedZip, GivesItsGoodItemsAllTheSame) {
  const TempFolder folder;
  RawItem bad{"bad", "content"};
  bad.checksum = 0;
  const auto reader = ZipReader::Open(
      folder.Put(L"a.zip", RawZip({{"first", "1"}, bad, {"..\\out", "2"}, {"last", "3"}})));
  EXPECT_EQ(reader->Extract(0, folder / L"first"), ArchiveResult::kDone);
  EXPECT_EQ(reader->Extract(1, folder / L"bad"), ArchiveResult::kDamaged);
  EXPECT_EQ(reader->Extract(2, folder / L"out"), ArchiveResult::kNameRefused);
  EXPECT_EQ(reader->Extract(3, folder / L"last"), ArchiveResult::kDone);
  EXPECT_EQ(folder.Listing(), (Names{L"a.zip", L"first", L"last"}));
}

TEST(DamagedZip, MakesNoFolderForAnItemThatItFindsBadInTime) {
  const TempFolder folder;
  RawItem bad{"bad", "content"};
  bad.checksum = 0;
  const auto reader = ZipReader::Open(folder.Put(L"a.zip", RawZip({bad})));
  EXPECT_EQ(reader->Extract(0, folder / L"new\\bad"), ArchiveResult::kDamaged);
  EXPECT_EQ(folder.Listing(), (Names{L"a.zip"}));
}

TEST(DamagedZip, FailsWhenItIsCutAfterItWasOpened) {
  const TempFolder folder;
  const fs::path path = folder.Put(L"a.zip", ArchiveOf(RandomBytes(100'000)));
  const auto reader = ZipReader::Open(path);
  std::error_code error;
  fs::resize_file(path, 50'000, error);
  if (error) GTEST_SKIP() << "this system keeps an open file from being cut";
  EXPECT_EQ(reader->Check(0), ArchiveResult::kDamaged);
}

}  // namespace
}  // namespace carrovan
