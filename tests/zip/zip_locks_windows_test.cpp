#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/files/os_file.h"
#include "support/zip/zip_reader.h"
#include "support/zip/zip_writer.h"
#include "tests/zip/zip_test_files.h"

// What only Windows knows: files that somebody else keeps locked, names of devices, and paths whose
// mark says that they may be long.

namespace carrovan {
namespace {

using Names = std::vector<std::wstring>;

TEST(ZipLocks, SkipsASourceThatIsLocked) {
  const TempFolder folder;
  OsFile locked;
  ASSERT_EQ(locked.CreateNew(folder / L"locked"), FileStatus::kDone);
  const auto writer = ZipWriter::Create(folder / L"a.zip");
  EXPECT_EQ(writer->Add(L"locked", folder / L"locked"), ArchiveResult::kSourceUnreadable);
  EXPECT_EQ(writer->Add(L"free", folder.Put(L"free", "x")), ArchiveResult::kDone);
  EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  EXPECT_EQ(ZipReader::Open(folder / L"a.zip")->Item(0)->name, L"free");
}

TEST(ZipLocks, LeavesAnArchiveThatIsLocked) {
  const TempFolder folder;
  OsFile locked;
  ASSERT_EQ(locked.CreateNew(folder / L"a.zip"), FileStatus::kDone);
  const auto writer = ZipWriter::Create(folder / L"a.zip");
  ASSERT_NE(writer, nullptr);
  EXPECT_EQ(writer->Add(L"entry", folder.Put(L"source", "x")), ArchiveResult::kDone);
  EXPECT_EQ(writer->Close(), ArchiveResult::kTargetNotWritable);
  EXPECT_EQ(folder.Listing(), (Names{L"a.zip", L"source"}));
  locked.Close();
  EXPECT_EQ(FileBytes(folder / L"a.zip"), "");
}

TEST(ZipLocks, LeavesATargetThatIsLocked) {
  const TempFolder folder;
  WriteArchive(folder / L"a.zip", {{L"item", "new"}});
  OsFile locked;
  ASSERT_EQ(locked.CreateNew(folder / L"target"), FileStatus::kDone);
  EXPECT_EQ(ZipReader::Open(folder / L"a.zip")->Extract(0, folder / L"target"),
            ArchiveResult::kTargetNotWritable);
  EXPECT_EQ(folder.Listing(), (Names{L"a.zip", L"target"}));
}

TEST(ZipLocks, ReadsNoDevice) {
  const TempFolder folder;
  const auto writer = ZipWriter::Create(folder / L"a.zip");
  EXPECT_EQ(writer->Add(L"device", L"NUL"), ArchiveResult::kSourceUnreadable);
  EXPECT_EQ(ZipReader::Open(L"NUL"), nullptr);
}

TEST(ZipLongPaths, TakesPathsThatAreMarkedAsLong) {
  const TempFolder folder;
  const auto marked = [&](const std::wstring& name) {
    return std::filesystem::path(LR"(\\?\)" + folder.Path().wstring() + L"\\" + name);
  };
  const auto writer = ZipWriter::Create(marked(L"a.zip"));
  ASSERT_NE(writer, nullptr);
  folder.Put(L"source", "content");
  EXPECT_EQ(writer->Add(L"item", marked(L"source")), ArchiveResult::kDone);
  EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  const auto reader = ZipReader::Open(marked(L"a.zip"));
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(reader->Extract(0, marked(L"new\\folder\\item")), ArchiveResult::kDone);
  EXPECT_EQ(FileBytes(folder / L"new\\folder\\item"), "content");
}

}  // namespace
}  // namespace carrovan
