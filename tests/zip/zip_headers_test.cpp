#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/zip/zip_reader.h"
#include "support/zip/zip_writer.h"
#include "tests/zip/raw_zip.h"
#include "tests/zip/zip_test_files.h"

// What an archive says twice, and bytes in front of it.

namespace carrovan {
namespace {

using Problems = std::vector<std::wstring>;

// Fields of a local header.
constexpr std::size_t kFlags = 6;
constexpr std::size_t kMethod = 8;
constexpr std::size_t kChecksum = 14;
constexpr std::size_t kPackedSize = 18;
constexpr std::size_t kSize = 22;
constexpr std::size_t kName = 30;

// One text per item, empty where all is well.
Problems ProblemsOf(const std::string& bytes) {
  const TempFolder folder;
  folder.Put(L"a.zip", bytes);
  const auto reader = ZipReader::Open(folder / L"a.zip");
  EXPECT_NE(reader, nullptr);
  Problems problems;
  for (std::size_t i = 0; reader && reader->Item(i); ++i) {
    problems.push_back(reader->HeaderProblem(i).value_or(L""));
  }
  return problems;
}

std::string TwoItems() { return RawZip({{"one", "first"}, {"two", "second"}}); }

std::string WithNumber(std::string archive, std::size_t field, std::size_t length,
                       std::uint32_t number) {
  SetNumberAt(archive, field, length, number);
  return archive;
}

TEST(ZipHeaders, ArchivesOfOursSayTheSameTwice) {
  const TempFolder folder;
  WriteArchive(folder / L"a.zip",
               {{L"small", "x"}, {L"empty", ""}, {L"Local\\螺栓.xml", SettingsText(300'000)}});
  EXPECT_EQ(ProblemsOf(*FileBytes(folder / L"a.zip")), Problems(3));
  EXPECT_EQ(ProblemsOf(TwoItems()), Problems(2));
}

TEST(ZipHeaders, LocalHeaderThatSaysSomethingElseIsFound) {
  const struct {
    std::size_t field;
    std::size_t length;
    std::uint32_t number;
    const wchar_t* problem;
  } cases[] = {
      {0, 4, 0x12345678, L"it has no local header"},
      {kFlags, 2, 1, L"its local header and the directory differ on whether it is encrypted"},
      {kFlags, 2, 0x800, L"its local header bears other flags"},
      {kFlags, 2, 8, L"its local header bears other flags"},
      {kMethod, 2, 8, L"its local header names another method"},
      {kChecksum, 4, 1, L"its local header bears another checksum"},
      {kChecksum, 4, 0, L"its local header bears another checksum"},
      {kPackedSize, 4, 4, L"its local header bears another size"},
      {kSize, 4, 4, L"its local header bears another size"},
      {kName, 1, 'O', L"its local header bears another name"},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(ProblemsOf(WithNumber(TwoItems(), each.field, each.length, each.number)),
              (Problems{each.problem, L""}));
  }
}

TEST(ZipHeaders, OnlyTheDirectoryNeedKnowHowHardAnItemWasPacked) {
  EXPECT_EQ(ProblemsOf(WithNumber(TwoItems(), kFlags, 2, 6)), Problems(2));
}

TEST(ZipHeaders, ItemsThatShareBytesAreFound) {
  RawItem second{"one", "first"};
  second.headerOffset = 0;
  EXPECT_EQ(ProblemsOf(RawZip({{"one", "first"}, second})),
            (Problems{L"it shares bytes with another item", L"it shares bytes with another item"}));

  // An item within the content of another.
  const std::string inner = RawZip({{"inner", "x"}}).substr(0, 30 + 5 + 1);
  RawItem hidden{"inner", "x"};
  hidden.headerOffset = 30 + 5;
  EXPECT_EQ(ProblemsOf(RawZip({{"outer", inner}, hidden})),
            (Problems{L"it shares bytes with another item", L"it shares bytes with another item"}));
}

TEST(ZipHeaders, ContentMustEndInFrontOfTheDirectory) {
  std::string archive = RawZip({{"one", "first"}});
  const std::size_t record = CentralRecord(archive, 0);
  for (const std::size_t field : {kPackedSize, kSize}) {
    SetNumberAt(archive, field, 4, 6);
    SetNumberAt(archive, record + field + 2, 4, 6);
  }
  EXPECT_EQ(ProblemsOf(archive), Problems{L"its content does not end in front of the directory"});
}

// An item whose checksum and sizes follow its content, in one of the forms that programs write.
std::string WithDescriptor(const std::string& descriptor) {
  std::string archive = RawZip({{"one", "first" + descriptor}});
  const std::size_t record = CentralRecord(archive, 0);
  for (const std::size_t field : {kPackedSize, kSize}) {
    SetNumberAt(archive, field, 4, 0);
    SetNumberAt(archive, record + field + 2, 4, 5);
  }
  SetNumberAt(archive, kChecksum, 4, 0);
  SetNumberAt(archive, record + kChecksum + 2, 4, Crc32("first"));
  SetNumberAt(archive, kFlags, 2, 8);
  SetNumberAt(archive, record + kFlags + 2, 2, 8);
  return archive;
}

std::string Numbers(std::initializer_list<std::uint64_t> numbers, std::size_t length) {
  std::string bytes;
  for (const std::uint64_t number : numbers) {
    for (std::size_t i = 0; i < length; ++i) {
      bytes.push_back(static_cast<char>((number >> (8 * i)) & 0xFF));
    }
  }
  return bytes;
}

TEST(ZipHeaders, WhatFollowsTheContentMustSayTheSameToo) {
  const std::string checksum = Numbers({Crc32("first")}, 4);
  const std::string mark = "PK\7\10";
  for (const std::string& front : {checksum, mark + checksum}) {
    for (const std::size_t width : {4U, 8U}) {
      EXPECT_EQ(ProblemsOf(WithDescriptor(front + Numbers({5, 5}, width))), Problems{L""});
      EXPECT_EQ(ProblemsOf(WithDescriptor(front + Numbers({5, 6}, width))),
                Problems{L"what follows its content bears another checksum or size"});
    }
  }
  EXPECT_EQ(ProblemsOf(WithDescriptor(mark + Numbers({1}, 4) + Numbers({5, 5}, 4))),
            Problems{L"what follows its content bears another checksum or size"});
}

TEST(ZipHeaders, SizesOf64BitsAreCompared) {
  std::string archive = RawZip({{"one", "first"}});
  // Gives the local header the field that an item beyond 4 GB has.
  const std::string field = Numbers({1, 16}, 2) + Numbers({5, 5}, 8);
  archive.insert(kName + 3, field);
  SetNumberAt(archive, kName - 2, 2, static_cast<std::uint32_t>(field.size()));
  SetNumberAt(archive, kPackedSize, 4, 0xFFFFFFFF);
  SetNumberAt(archive, kSize, 4, 0xFFFFFFFF);
  const std::size_t end = archive.rfind("PK\5\6");
  SetNumberAt(archive, end + 16, 4, NumberAt(archive, end + 16, 4) + 20);
  EXPECT_EQ(ProblemsOf(archive), Problems{L""});
  EXPECT_EQ(ProblemsOf(WithNumber(archive, kName + 3 + 4, 4, 6)),
            Problems{L"its local header bears another size"});
}

TEST(ZipHeaders, NumbersPastTheLastItemHaveNoProblem) {
  const TempFolder folder;
  folder.Put(L"a.zip", TwoItems());
  const auto reader = ZipReader::Open(folder / L"a.zip");
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(reader->HeaderProblem(2), std::nullopt);
}

TEST(ZipWithBytesInFront, IsReadAsIfNothingWereThere) {
  for (const std::size_t length : {1U, 22U, 70'000U}) {
    const TempFolder folder;
    folder.Put(L"a.exe", std::string(length, 'M') + TwoItems());
    const auto reader = ZipReader::Open(folder / L"a.exe");
    ASSERT_NE(reader, nullptr) << length;
    const auto content = reader->Read(1, 100);
    ASSERT_TRUE(content) << length;
    EXPECT_EQ(std::string(content->begin(), content->end()), "second");
    EXPECT_EQ(reader->Extract(0, folder / L"one"), ArchiveResult::kDone);
    EXPECT_EQ(FileBytes(folder / L"one"), "first");
    EXPECT_EQ(reader->HeaderProblem(0), std::nullopt);
    EXPECT_EQ(reader->SizeBytes(), TwoItems().size());
  }
}

TEST(ZipWithBytesInFront, IsReadWhenItsNumbersCountThemToo) {
  std::string archive = TwoItems();
  const std::size_t end = archive.rfind("PK\5\6");
  for (const std::size_t i : {0U, 1U}) {
    const std::size_t field = CentralRecord(archive, i) + 42;
    SetNumberAt(archive, field, 4, NumberAt(archive, field, 4) + 10);
  }
  SetNumberAt(archive, end + 16, 4, NumberAt(archive, end + 16, 4) + 10);
  EXPECT_EQ(ProblemsOf(std::string(10, 'M') + archive), Problems(2));
}

TEST(ZipWithBytesInFront, MayHaveAComment) {
  std::string archive = TwoItems();
  SetNumberAt(archive, archive.size() - 2, 2, 9);
  EXPECT_EQ(ProblemsOf("MZ" + archive + "a comment"), Problems(2));
}

TEST(ZipWithBytesInFront, IsNoArchiveWhenItIsWithinOneThatWasCutShort) {
  const TempFolder folder;
  const std::string inner = TwoItems();
  const std::string outer = RawZip({{"first", "1"}, {"inner.zip", inner}, {"last", "3"}});
  const std::size_t end = outer.find(inner) + inner.size();
  for (const std::size_t length : {end, end + 1, outer.size() - 1}) {
    EXPECT_EQ(ZipReader::Open(folder.Put(L"a.zip", outer.substr(0, length))), nullptr) << length;
  }
}

TEST(ZipWithBytesInFront, DamagedDirectoryIsNoArchive) {
  std::string archive = TwoItems();
  SetNumberAt(archive, CentralRecord(archive, 0), 4, 0);
  const TempFolder folder;
  folder.Put(L"a.exe", "MZ" + archive);
  EXPECT_EQ(ZipReader::Open(folder / L"a.exe"), nullptr);
}

}  // namespace
}  // namespace carrovan
