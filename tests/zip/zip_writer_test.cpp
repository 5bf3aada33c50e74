#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/files/os_file.h"
#include "support/zip/zip_reader.h"
#include "support/zip/zip_source.h"
#include "support/zip/zip_writer.h"
#include "tests/zip/raw_zip.h"
#include "tests/zip/zip_test_files.h"
#include "text/text.h"

namespace carrovan {
namespace {

namespace fs = std::filesystem;

std::vector<NamedFile> Contents(const fs::path& archive) {
  const auto reader = ZipReader::Open(archive);
  std::vector<NamedFile> files;
  if (!reader) return files;
  for (std::size_t i = 0; const auto item = reader->Item(i); ++i) {
    const auto bytes = reader->Read(i, std::size_t{1} << 30);
    EXPECT_TRUE(bytes) << ToUtf8(item->name);
    if (bytes) files.push_back({item->name, std::string(bytes->begin(), bytes->end())});
  }
  return files;
}

void ExpectContents(const fs::path& archive, const std::vector<NamedFile>& expected) {
  const std::vector<NamedFile> actual = Contents(archive);
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i) {
    EXPECT_EQ(ToUtf8(actual[i].name), ToUtf8(expected[i].name));
    EXPECT_TRUE(actual[i].bytes == expected[i].bytes) << ToUtf8(expected[i].name);
  }
}

std::string Repeated(const std::string& block, std::size_t count) {
  std::string bytes;
  while (bytes.size() < count) bytes += block;
  bytes.resize(count);
  return bytes;
}

TEST(ZipWriter, StoresFilesInTheOrderGiven) {
  const TempFolder folder;
  const std::vector<NamedFile> files = {{L"Register\\b.reg", "two"},
                                        {L"config.ini", SettingsText(5000)},
                                        {L"Options\\a.reg", ""},
                                        {L"Local\\x\\y\\z.bin", RandomBytes(3000)}};
  WriteArchive(folder / L"a.zip", files);
  ExpectContents(folder / L"a.zip", files);
}

TEST(ZipWriter, StoresOneByteAndWhatDoesNotCompressAsItIs) {
  const TempFolder folder;
  const std::vector<NamedFile> files = {{L"one", "x"}, {L"random", RandomBytes(100'000)}};
  WriteArchive(folder / L"a.zip", files);
  ExpectContents(folder / L"a.zip", files);
  const auto reader = ZipReader::Open(folder / L"a.zip");
  EXPECT_EQ(reader->Item(0)->packedSizeBytes, 1U);
  EXPECT_EQ(reader->Item(1)->packedSizeBytes, 100'000U);
}

TEST(ZipWriter, CompressesText) {
  const TempFolder folder;
  WriteArchive(folder / L"a.zip", {{L"text", SettingsText(100'000)}});
  const auto item = ZipReader::Open(folder / L"a.zip")->Item(0);
  EXPECT_EQ(item->sizeBytes, 100'000U);
  EXPECT_LT(item->packedSizeBytes, 20'000U);
}

TEST(ZipWriter, StoresFilesOfAboutOneBuffer) {
  const std::string block = SettingsText(100'000);
  for (const std::size_t size : {kBufferBytes - 1, kBufferBytes, kBufferBytes + 1}) {
    SCOPED_TRACE(size);
    const TempFolder folder;
    const std::vector<NamedFile> files = {
        {L"before", "before"}, {L"large", Repeated(block, size)}, {L"after", "after"}};
    WriteArchive(folder / L"a.zip", files);
    ExpectContents(folder / L"a.zip", files);
  }
}

TEST(ZipWriter, StoresAFileThatIsLongerThanABufferEvenPacked) {
  const TempFolder folder;
  // Repeats itself at a distance that deflate does not see.
  const std::string incompressible = Repeated(RandomBytes(100'000), kBufferBytes + 12345);
  const std::vector<NamedFile> files = {{L"large", incompressible}, {L"after", "after"}};
  WriteArchive(folder / L"a.zip", files);
  ExpectContents(folder / L"a.zip", files);
}

TEST(ZipWriter, KeepsNamesOutsideTheCodePage) {
  const TempFolder folder;
  const std::vector<NamedFile> files = {{L"Local\\设置\\图层.xml", "1"},
                                        {L"Roaming\\\U0001F600 smile.txt", "2"},
                                        {L"Ünïcödé\\ß.txt", "3"},
                                        {L"with 'quotes' & (signs) %41 $x.txt", "4"}};
  const fs::path archive = folder / L"包\U0001F4E6.ucex";
  WriteArchive(archive, files);
  ExpectContents(archive, files);

  const auto reader = ZipReader::Open(archive);
  for (std::size_t i = 0; i < files.size(); ++i) {
    ASSERT_EQ(reader->Extract(i, folder / (L"out\\" + files[i].name)), ArchiveResult::kDone);
    EXPECT_EQ(FileBytes(folder / (L"out\\" + files[i].name)), files[i].bytes);
  }
}

TEST(ZipWriter, MarksNamesAsUtf8AndEntriesAsMadeByDos) {
  const TempFolder folder;
  WriteArchive(folder / L"a.zip", {{L"图\\层", "x"}});
  const std::string archive = *FileBytes(folder / L"a.zip");
  const std::size_t record = CentralRecord(archive, 0);
  EXPECT_EQ(archive.substr(record + 46, 7), ToUtf8(L"图\\层"));
  EXPECT_EQ(NumberAt(archive, record + 8, 2) & 0x800, 0x800U);
  EXPECT_EQ(NumberAt(archive, record + 5, 1), 0U);      // host system: DOS
  EXPECT_EQ(NumberAt(archive, record + 38, 4), 0x20U);  // archive attribute
  EXPECT_EQ(NumberAt(archive, 6, 2) & 0x800, 0x800U);   // the local header says the same
}

TEST(ZipWriter, UsesNoMethodButDeflateAndStored) {
  const TempFolder folder;
  WriteArchive(folder / L"a.zip", {{L"text", SettingsText(1000)}, {L"random", RandomBytes(1000)}});
  const std::string archive = *FileBytes(folder / L"a.zip");
  EXPECT_EQ(NumberAt(archive, CentralRecord(archive, 0) + 10, 2), 8U);
  EXPECT_EQ(NumberAt(archive, CentralRecord(archive, 1) + 10, 2), 0U);
}

TEST(ZipWriter, TakesForwardSlashesForSeparators) {
  const TempFolder folder;
  WriteArchive(folder / L"a.zip", {{L"Local/a/b.txt", "x"}});
  ExpectContents(folder / L"a.zip", {{L"Local\\a\\b.txt", "x"}});
}

TEST(ZipWriter, KeepsModificationTimesToTheSecond) {
  const TempFolder folder;
  const std::vector<std::int64_t> times = {1'700'000'001, 1'000'000'000, 315'532'801, 1};
  {
    const auto writer = ZipWriter::Create(folder / L"a.zip");
    for (std::size_t i = 0; i < times.size(); ++i) {
      const fs::path source = folder.Put(L"source", "x");
      SetModifiedSeconds(source, times[i]);
      ASSERT_EQ(writer->Add(std::to_wstring(i), source), ArchiveResult::kDone);
    }
    ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  }
  const auto reader = ZipReader::Open(folder / L"a.zip");
  for (std::size_t i = 0; i < times.size(); ++i) {
    ASSERT_EQ(reader->Extract(i, folder / L"out"), ArchiveResult::kDone);
    EXPECT_EQ(ModifiedSeconds(folder / L"out"), times[i]);
  }
}

TEST(ZipWriter, KeepsATimeThatTheTimestampCannotHoldInTheArchivesOwnField) {
  const TempFolder folder;
  const std::int64_t year2050 = 2'524'608'000;
  const auto writer = ZipWriter::Create(folder / L"a.zip");
  SetModifiedSeconds(folder.Put(L"source", "x"), year2050);
  ASSERT_EQ(writer->Add(L"x", folder / L"source"), ArchiveResult::kDone);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  ASSERT_EQ(ZipReader::Open(folder / L"a.zip")->Extract(0, folder / L"out"), ArchiveResult::kDone);
  EXPECT_EQ(ModifiedSeconds(folder / L"out"), year2050);
}

TEST(ZipWriter, RefusesNamesThatNoReaderMayUse) {
  const TempFolder folder;
  const fs::path source = folder.Put(L"source", "x");
  const auto writer = ZipWriter::Create(folder / L"a.zip");
  for (const std::wstring name :
       {L"", L"\\absolute", L"/absolute", L"C:\\x", L"a:b", L"..\\x", L"a\\..\\..\\x", L"a\\\\b",
        L"folder\\", L"folder/", L"NUL", L"a\\com1.txt", L"dot.", L"blank ", L"line\nbreak"}) {
    EXPECT_EQ(writer->Add(name, source), ArchiveResult::kNameRefused) << ToUtf8(name);
  }
  EXPECT_EQ(writer->Add(L"good", source), ArchiveResult::kDone);
  EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  ExpectContents(folder / L"a.zip", {{L"good", "x"}});
}

TEST(ZipWriter, RefusesANameThatIsStoredAlready) {
  const TempFolder folder;
  const fs::path source = folder.Put(L"source", "x");
  const auto writer = ZipWriter::Create(folder / L"a.zip");
  ASSERT_EQ(writer->Add(L"Local\\Äb.txt", source), ArchiveResult::kDone);
  for (const std::wstring name : {L"Local\\Äb.txt", L"Local/Äb.txt", L"LOCAL\\äB.TXT"}) {
    EXPECT_EQ(writer->Add(name, source), ArchiveResult::kNameRefused) << ToUtf8(name);
  }
  EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  ExpectContents(folder / L"a.zip", {{L"Local\\Äb.txt", "x"}});
}

TEST(ZipWriter, RefusesANameThatBecomesAnotherWhenItIsStored) {
  const TempFolder folder;
  const fs::path source = folder.Put(L"source", "x");
  const auto writer = ZipWriter::Create(folder / L"a.zip");
  // Halves of surrogate pairs, which are no text.
  EXPECT_EQ(writer->Add(std::wstring(1, wchar_t{0xD800}), source), ArchiveResult::kDone);
  EXPECT_EQ(writer->Add(std::wstring(1, wchar_t{0xDC00}), source), ArchiveResult::kNameRefused);
  EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  ExpectContents(folder / L"a.zip", {{L"\xFFFD", "x"}});
}

TEST(ZipWriter, StoresNamesUpToTheLengthThatTheFormatCounts) {
  const TempFolder folder;
  const fs::path source = folder.Put(L"source", "x");
  const auto writer = ZipWriter::Create(folder / L"a.zip");
  const std::wstring longest(0xFFFF, L'n');
  EXPECT_EQ(writer->Add(longest + L"n", source), ArchiveResult::kNameRefused);
  EXPECT_EQ(writer->Add(longest, source), ArchiveResult::kDone);
  EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  ExpectContents(folder / L"a.zip", {{longest, "x"}});
}

TEST(ZipWriter, TakesANameAgainWhoseFileCouldNotBeRead) {
  const TempFolder folder;
  const auto writer = ZipWriter::Create(folder / L"a.zip");
  EXPECT_EQ(writer->Add(L"a", folder / L"missing"), ArchiveResult::kSourceMissing);
  EXPECT_EQ(writer->Add(L"a", folder.Put(L"source", "x")), ArchiveResult::kDone);
  EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  ExpectContents(folder / L"a.zip", {{L"a", "x"}});
}

TEST(ZipWriter, GoesOnAfterASourceThatIsMissingOrNoFile) {
  const TempFolder folder;
  const auto writer = ZipWriter::Create(folder / L"a.zip");
  ASSERT_EQ(writer->Add(L"first", folder.Put(L"file", "1")), ArchiveResult::kDone);
  EXPECT_EQ(writer->Add(L"b", folder / L"missing"), ArchiveResult::kSourceMissing);
  EXPECT_EQ(writer->Add(L"c", folder / L"no folder\\x"), ArchiveResult::kSourceMissing);
  EXPECT_EQ(writer->Add(L"d", folder / L"file\\x"), ArchiveResult::kSourceMissing);
  EXPECT_EQ(writer->Add(L"e", folder.Path()), ArchiveResult::kSourceUnreadable);
  ASSERT_EQ(writer->Add(L"last", folder.Put(L"file", "2")), ArchiveResult::kDone);
  EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  ExpectContents(folder / L"a.zip", {{L"first", "1"}, {L"last", "2"}});
}

TEST(ZipWriter, ReadsAFileBeforeAddReturns) {
  const TempFolder folder;
  const auto writer = ZipWriter::Create(folder / L"a.zip");
  ASSERT_EQ(writer->Add(L"a", folder.Put(L"source", "before")), ArchiveResult::kDone);
  fs::remove(folder / L"source");
  EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  ExpectContents(folder / L"a.zip", {{L"a", "before"}});
}

TEST(ZipWriter, WritesAnArchiveWithoutEntries) {
  const TempFolder folder;
  const auto writer = ZipWriter::Create(folder / L"a.zip");
  EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  const auto reader = ZipReader::Open(folder / L"a.zip");
  ASSERT_NE(reader, nullptr);
  EXPECT_FALSE(reader->Item(0));
}

TEST(ZipWriter, ReadsAndWritesPathsBeyondTheFixedBuffers) {
  const TempFolder folder;
  const std::wstring component(120, L'n');
  const std::wstring deep = component + L"\\" + component;
  const std::vector<NamedFile> files = {{deep + L"\\" + component, SettingsText(1000)}};
  WriteArchive(folder / L"first.zip", files);
  ASSERT_EQ(ZipReader::Open(folder / L"first.zip")->Extract(0, folder / files[0].name),
            ArchiveResult::kDone);

  const fs::path second = folder / (deep + L"\\" + std::wstring(120, L'z'));
  const auto writer = ZipWriter::Create(second);
  ASSERT_NE(writer, nullptr);
  ASSERT_EQ(writer->Add(files[0].name, folder / files[0].name), ArchiveResult::kDone);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  ExpectContents(second, files);

  // The clean-up reaches only into paths that fit the fixed buffers.
  fs::rename(folder / component, folder / L"a");
  fs::rename(folder / (L"a\\" + component), folder / L"b");
}

}  // namespace
}  // namespace carrovan
