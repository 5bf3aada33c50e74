#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/files/os_file.h"
#include "support/zip/zip_reader.h"
#include "support/zip/zip_writer.h"
#include "tests/zip/zip_test_files.h"

// An archive that is there stays whole until the new one takes its place.

namespace carrovan {
namespace {

namespace fs = std::filesystem;

const std::string kOld = "what was there before";

// A folder with a file to store and something at the archive's path.
class ZipReplacement : public testing::Test {
 protected:
  ZipReplacement() {
    folder_.Put(L"source", "content");
    folder_.Put(L"a.zip", kOld);
  }

  std::unique_ptr<ZipWriter> FilledWriter() const {
    auto writer = ZipWriter::Create(archive_);
    EXPECT_NE(writer, nullptr);
    EXPECT_EQ(writer->Add(L"entry", folder_ / L"source"), ArchiveResult::kDone);
    return writer;
  }

  void ExpectOldArchiveAndNothingElse() const {
    EXPECT_EQ(FileBytes(archive_), kOld);
    EXPECT_EQ(folder_.Listing(), (std::vector<std::wstring>{L"a.zip", L"source"}));
  }

  void ExpectNewArchiveAndNothingElse() const {
    const auto reader = ZipReader::Open(archive_);
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->Check(0), ArchiveResult::kDone);
    EXPECT_EQ(folder_.Listing(), (std::vector<std::wstring>{L"a.zip", L"source"}));
  }

  TempFolder folder_;
  fs::path archive_ = folder_ / L"a.zip";
};

TEST_F(ZipReplacement, LeavesTheOldArchiveUntilItIsClosed) {
  const auto writer = FilledWriter();
  EXPECT_EQ(FileBytes(archive_), kOld);
  EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  ExpectNewArchiveAndNothingElse();
}

TEST_F(ZipReplacement, LeavesNothingBehindWhenItIsGivenUp) {
  FilledWriter().reset();
  ExpectOldArchiveAndNothingElse();
}

TEST_F(ZipReplacement, ReplacesWhatAKilledRunLeft) {
  folder_.Put(L"a.zip.part", RandomBytes(5000));
  EXPECT_EQ(FilledWriter()->Close(), ArchiveResult::kDone);
  ExpectNewArchiveAndNothingElse();
}

TEST_F(ZipReplacement, LeavesTheArchiveThatAnotherRunIsWriting) {
  OsFile otherRun;
  ASSERT_EQ(otherRun.CreateOrTakeOver(folder_ / L"a.zip.part"), FileStatus::kDone);
  EXPECT_EQ(FilledWriter()->Close(), ArchiveResult::kTargetNotWritable);
  EXPECT_EQ(FileBytes(archive_), kOld);

  EXPECT_EQ(otherRun.CloseAs(folder_ / L"a.zip.part", archive_), FileStatus::kDone);
  EXPECT_EQ(FileBytes(archive_), "");
}

TEST_F(ZipReplacement, FailsWhenTheSiblingCannotBeMade) {
  fs::create_directory(folder_ / L"a.zip.part");
  EXPECT_EQ(FilledWriter()->Close(), ArchiveResult::kTargetNotWritable);
  EXPECT_EQ(FileBytes(archive_), kOld);
}

TEST_F(ZipReplacement, CannotStartOnAReadOnlyArchive) {
  SetReadOnly(archive_);
  EXPECT_EQ(ZipWriter::Create(archive_), nullptr);
  ExpectOldArchiveAndNothingElse();
}

TEST_F(ZipReplacement, LeavesAnArchiveThatBecameReadOnly) {
  const auto writer = FilledWriter();
  SetReadOnly(archive_);
  EXPECT_EQ(writer->Close(), ArchiveResult::kTargetNotWritable);
  ExpectOldArchiveAndNothingElse();
}

TEST_F(ZipReplacement, LeavesAFolderThatTookTheArchivesPlace) {
  const auto writer = FilledWriter();
  fs::remove(archive_);
  fs::create_directory(archive_);
  EXPECT_EQ(writer->Close(), ArchiveResult::kTargetNotWritable);
  EXPECT_EQ(folder_.Listing(), (std::vector<std::wstring>{L"a.zip/", L"source"}));
}

TEST_F(ZipReplacement, CannotStartWhereNoFileCanBe) {
  EXPECT_EQ(ZipWriter::Create(folder_.Path()), nullptr);
  EXPECT_EQ(ZipWriter::Create(folder_ / L"no folder\\a.zip"), nullptr);
  EXPECT_EQ(ZipWriter::Create(folder_ / L"source\\a.zip"), nullptr);
  EXPECT_EQ(ZipWriter::Create(folder_ / L"ends in a separator\\"), nullptr);
  EXPECT_EQ(ZipWriter::Create(L""), nullptr);
  ExpectOldArchiveAndNothingElse();
}

TEST_F(ZipReplacement, WritesWhereItWasToldWhenTheCurrentFolderChanges) {
  const fs::path before = fs::current_path();
  fs::current_path(folder_.Path());
  const auto writer = ZipWriter::Create(L"a.zip");
  fs::current_path(before);
  ASSERT_NE(writer, nullptr);
  ASSERT_EQ(writer->Add(L"entry", folder_ / L"source"), ArchiveResult::kDone);
  EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  ExpectNewArchiveAndNothingElse();
}

}  // namespace
}  // namespace carrovan
