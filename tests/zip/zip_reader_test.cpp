#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <vector>

#include "support/files/os_file.h"
#include "support/zip/zip_reader.h"
#include "support/zip/zip_writer.h"
#include "tests/zip/raw_zip.h"
#include "tests/zip/zip_test_files.h"
#include "text/text.h"

namespace carrovan {
namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::wstring>;

TEST(ZipReader, OpensNothingThatIsNoArchive) {
  const TempFolder folder;
  for (const std::string& bytes :
       {std::string(), std::string("PK"), std::string("Just a text.\r\n"), RandomBytes(70'000),
        std::string("PK\3\4 and nothing more"), std::string(100'000, '\0')}) {
    EXPECT_EQ(ZipReader::Open(folder.Put(L"a.zip", bytes)), nullptr) << bytes.substr(0, 20);
  }
  EXPECT_EQ(ZipReader::Open(folder / L"missing.zip"), nullptr);
  EXPECT_EQ(ZipReader::Open(folder.Path()), nullptr);
  EXPECT_EQ(ZipReader::Open(L""), nullptr);
}

TEST(ZipReader, OpensAnArchiveWithoutItems) {
  const TempFolder folder;
  const auto reader = ZipReader::Open(folder.Put(L"a.zip", RawZip({})));
  ASSERT_NE(reader, nullptr);
  EXPECT_FALSE(reader->Item(0));
}

TEST(ZipReader, OpensAnArchiveBehindOtherData) {
  const TempFolder folder;
  std::string archive = RawZip({{"item", "content"}});
  const auto reader = ZipReader::Open(folder.Put(L"a.zip", archive + "trailing bytes"));
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(reader->Check(0), ArchiveResult::kDone);
}

TEST(ZipReader, HasNoItemPastTheLastOne) {
  const TempFolder folder;
  const auto reader = ZipReader::Open(folder.Put(L"a.zip", RawZip({{"item", "content"}})));
  for (const std::size_t index : {std::size_t{1}, std::size_t{2}, ~std::size_t{0}}) {
    EXPECT_FALSE(reader->Item(index));
    EXPECT_FALSE(reader->Read(index, 1000));
    EXPECT_EQ(reader->Check(index), ArchiveResult::kNoSuchItem);
    EXPECT_EQ(reader->Extract(index, folder / L"target"), ArchiveResult::kNoSuchItem);
  }
  EXPECT_EQ(folder.Listing(), (Names{L"a.zip"}));
}

TEST(ZipReader, DecodesNames) {
  constexpr std::uint16_t kUtf8Flag = 0x800;
  struct Row {
    std::string stored;
    std::uint16_t flags;
    std::wstring name;
  };
  const std::vector<Row> rows = {
      {"plain.txt", 0, L"plain.txt"},
      {"a/b\\c.txt", 0, L"a\\b\\c.txt"},
      {ToUtf8(L"图层.xml"), kUtf8Flag, L"图层.xml"},
      {ToUtf8(L"图层.xml"), 0, L"图层.xml"},  // written without the flag
      {"\x81.txt", 0, L"ü.txt"},              // code page 437
      {ToUtf8(L"\U0001F600"), kUtf8Flag, L"\U0001F600"},
      {"", 0, L""},
      {"\xED\xA0\x80", 0, L""},  // half a surrogate pair is no text
  };
  for (const Row& row : rows) {
    const TempFolder folder;
    const auto reader =
        ZipReader::Open(folder.Put(L"a.zip", RawZip({{row.stored, "x", row.flags}})));
    ASSERT_NE(reader, nullptr) << row.stored;
    EXPECT_EQ(ToUtf8(reader->Item(0)->name), ToUtf8(row.name)) << row.stored;
  }
}

TEST(ZipReader, TellsTheDeclaredSizes) {
  const TempFolder folder;
  WriteArchive(folder / L"a.zip", {{L"text", SettingsText(10'000)}});
  const auto item = ZipReader::Open(folder / L"a.zip")->Item(0);
  EXPECT_EQ(item->sizeBytes, 10'000U);
  EXPECT_EQ(item->packedSizeBytes, NumberAt(*FileBytes(folder / L"a.zip"), 18, 4));
}

TEST(ZipReader, RefusesNamesThatLeaveTheDestinationBeforeItMakesAnything) {
  for (const std::string name : {"../evil.txt",
                                 "..\\evil.txt",
                                 "a/../../evil.txt",
                                 "a\\..\\..\\evil.txt",
                                 "/evil.txt",
                                 "\\evil.txt",
                                 "\\\\server\\share\\evil.txt",
                                 "C:\\evil.txt",
                                 "C:evil.txt",
                                 "c:/evil.txt",
                                 "a/b:stream",
                                 "a//b",
                                 "NUL",
                                 "con.txt",
                                 "a/LPT1",
                                 "COM\xC2\xB9.txt",
                                 "CONIN$",
                                 "..",
                                 "../",
                                 ".",
                                 "a/.. /evil",
                                 "trailing.",
                                 "trailing ",
                                 "tab\tname",
                                 "\xED\xA0\x80",
                                 ""}) {
    const TempFolder folder;
    const auto reader = ZipReader::Open(folder.Put(L"in\\a.zip", RawZip({{name, "evil"}})));
    ASSERT_NE(reader, nullptr) << name;
    EXPECT_EQ(reader->Extract(0, folder / L"out\\sub\\target"), ArchiveResult::kNameRefused)
        << name;
    EXPECT_EQ(folder.Listing(), (Names{L"in/", L"in/a.zip"})) << name;
  }
}

TEST(ZipReader, ExtractsIntoFoldersThatItMakes) {
  const TempFolder folder;
  const auto reader = ZipReader::Open(folder.Put(L"a.zip", RawZip({{"a/b/c.txt", "content"}})));
  EXPECT_EQ(reader->Extract(0, folder / L"out\\a\\b\\c.txt"), ArchiveResult::kDone);
  EXPECT_EQ(FileBytes(folder / L"out\\a\\b\\c.txt"), "content");
  EXPECT_EQ(folder.Listing(), (Names{L"a.zip", L"out/", L"out/a/", L"out/a/b/", L"out/a/b/c.txt"}));
}

TEST(ZipReader, MakesAFolderOfAnItemThatIsOne) {
  const TempFolder folder;
  const auto reader =
      ZipReader::Open(folder.Put(L"a.zip", RawZip({{"a/b/", ""}, {"c\\", ""}, {"c\\d", "x"}})));
  EXPECT_EQ(reader->Extract(0, folder / L"out\\a\\b\\"), ArchiveResult::kDone);
  EXPECT_EQ(reader->Extract(0, folder / L"out\\a\\b\\"), ArchiveResult::kDone);  // there already
  EXPECT_EQ(reader->Extract(1, folder / L"out\\c"), ArchiveResult::kDone);
  EXPECT_EQ(reader->Extract(2, folder / L"out\\c\\d"), ArchiveResult::kDone);
  EXPECT_EQ(folder.Listing(),
            (Names{L"a.zip", L"out/", L"out/a/", L"out/a/b/", L"out/c/", L"out/c/d"}));
}

TEST(ZipReader, ReplacesNoFolderByAFileAndNoFileByAFolder) {
  const TempFolder folder;
  const auto reader = ZipReader::Open(
      folder.Put(L"a.zip", RawZip({{"folder", "file"}, {"file/", ""}, {"file/below", "x"}})));
  folder.Put(L"out\\folder\\inside", "precious");
  folder.Put(L"out\\file", "precious");
  fs::create_directory(folder / L"out\\empty");
  EXPECT_EQ(reader->Extract(0, folder / L"out\\folder"), ArchiveResult::kTargetNotWritable);
  EXPECT_EQ(reader->Extract(0, folder / L"out\\empty"), ArchiveResult::kTargetNotWritable);
  EXPECT_EQ(reader->Extract(1, folder / L"out\\file"), ArchiveResult::kTargetNotWritable);
  EXPECT_EQ(reader->Extract(2, folder / L"out\\file\\below"), ArchiveResult::kTargetNotWritable);
  EXPECT_EQ(FileBytes(folder / L"out\\folder\\inside"), "precious");
  EXPECT_EQ(FileBytes(folder / L"out\\file"), "precious");
  EXPECT_EQ(folder.Listing(), (Names{L"a.zip", L"out/", L"out/empty/", L"out/file", L"out/folder/",
                                     L"out/folder/inside"}));
}

TEST(ZipReader, ReplacesAFileThatIsThere) {
  const TempFolder folder;
  const auto reader = ZipReader::Open(folder.Put(L"a.zip", RawZip({{"item", "new"}})));
  folder.Put(L"target", "a longer text that was there");
  EXPECT_EQ(reader->Extract(0, folder / L"target"), ArchiveResult::kDone);
  EXPECT_EQ(FileBytes(folder / L"target"), "new");
  EXPECT_EQ(folder.Listing(), (Names{L"a.zip", L"target"}));
}

TEST(ZipReader, LeavesAReadOnlyFileAlone) {
  const TempFolder folder;
  const auto reader = ZipReader::Open(folder.Put(L"a.zip", RawZip({{"item", "new"}})));
  SetReadOnly(folder.Put(L"target", "old"));
  EXPECT_EQ(reader->Extract(0, folder / L"target"), ArchiveResult::kTargetNotWritable);
  EXPECT_EQ(FileBytes(folder / L"target"), "old");
  EXPECT_EQ(folder.Listing(), (Names{L"a.zip", L"target"}));
}

TEST(ZipReader, WritesEachOfTwoItemsOfOneName) {
  const TempFolder folder;
  const auto reader =
      ZipReader::Open(folder.Put(L"a.zip", RawZip({{"twin", "first"}, {"twin", "second"}})));
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(reader->Extract(0, folder / L"twin"), ArchiveResult::kDone);
  EXPECT_EQ(FileBytes(folder / L"twin"), "first");
  EXPECT_EQ(reader->Extract(1, folder / L"twin"), ArchiveResult::kDone);
  EXPECT_EQ(FileBytes(folder / L"twin"), "second");
}

TEST(ZipReader, ReadsItemsThatShareTheirData) {
  const TempFolder folder;
  RawItem overlapping{"second", "content"};
  overlapping.headerOffset = 0;
  const auto reader =
      ZipReader::Open(folder.Put(L"a.zip", RawZip({{"first", "content"}, overlapping})));
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(reader->Extract(0, folder / L"first"), ArchiveResult::kDone);
  EXPECT_EQ(reader->Extract(1, folder / L"second"), ArchiveResult::kDone);
  EXPECT_EQ(FileBytes(folder / L"second"), "content");
}

TEST(ZipReader, TouchesNoFileThatLooksLikeItsOwnUnfinishedOne) {
  const TempFolder folder;
  const auto reader = ZipReader::Open(folder.Put(L"a.zip", RawZip({{"item", "new"}})));
  folder.Put(L"~carrovan0.part", "a stranger's");
  folder.Put(L"target.part", "a stranger's");
  EXPECT_EQ(reader->Extract(0, folder / L"target"), ArchiveResult::kDone);
  EXPECT_EQ(folder.Listing(), (Names{L"a.zip", L"target", L"target.part", L"~carrovan0.part"}));
  EXPECT_EQ(FileBytes(folder / L"~carrovan0.part"), "a stranger's");
}

TEST(ZipReader, TakesTheArchivesOwnTimeForLocalTime) {
  const TempFolder folder;
  RawItem item{"item", "content"};
  item.dosTime = 13 << 11 | 14 << 5 | 16 / 2;
  item.dosDate = (2021 - 1980) << 9 | 7 << 5 | 9;
  const auto reader = ZipReader::Open(folder.Put(L"a.zip", RawZip({item})));
  ASSERT_EQ(reader->Extract(0, folder / L"target"), ArchiveResult::kDone);
  std::tm local = {};
  local.tm_year = 2021 - 1900;
  local.tm_mon = 6;
  local.tm_mday = 9;
  local.tm_hour = 13;
  local.tm_min = 14;
  local.tm_sec = 16;
  local.tm_isdst = -1;
  EXPECT_EQ(ModifiedSeconds(folder / L"target"), std::mktime(&local));
}

TEST(ZipReader, ExtractsAnItemWhoseTimeIsNone) {
  const TempFolder folder;
  RawItem item{"item", "content"};
  item.dosTime = 0xFFFF;
  item.dosDate = 0;
  const auto reader = ZipReader::Open(folder.Put(L"a.zip", RawZip({item})));
  EXPECT_EQ(reader->Extract(0, folder / L"target"), ArchiveResult::kDone);
  EXPECT_EQ(FileBytes(folder / L"target"), "content");
}

TEST(ZipReader, ReadsAnItemUpToTheLimit) {
  const TempFolder folder;
  const auto reader = ZipReader::Open(folder.Put(L"a.zip", RawZip({{"item", "content"}})));
  EXPECT_EQ(reader->Read(0, 7)->size(), 7U);
  EXPECT_FALSE(reader->Read(0, 6));
  EXPECT_EQ(folder.Listing(), (Names{L"a.zip"}));
}

TEST(ZipReader, ReadsAnEmptyItem) {
  const TempFolder folder;
  const auto reader = ZipReader::Open(folder.Put(L"a.zip", RawZip({{"item", ""}})));
  EXPECT_EQ(reader->Read(0, 0)->size(), 0U);
  EXPECT_EQ(reader->Extract(0, folder / L"target"), ArchiveResult::kDone);
  EXPECT_EQ(FileBytes(folder / L"target"), "");
}

}  // namespace
}  // namespace carrovan
