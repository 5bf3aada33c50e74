#include "package/package_writer.h"

#include <gtest/gtest.h>

#include "tests/package/memory_archive.h"

namespace carrovan {
namespace {

using Names = std::vector<std::wstring>;

std::unique_ptr<MemoryArchive> FilledArchive() {
  auto archive = std::make_unique<MemoryArchive>();
  archive->Add(L"config.ini", "[Base]");
  archive->Add(L"Local\\en-us\\a.xml", "<a/>");
  archive->Add(L"local\\B.xml", "<b/>");
  archive->Add(L"Empty\\", "");
  archive->Add(L"broken.xml", "<c/>", ArchiveResult::kDamaged);
  return archive;
}

class ArchiveFilesTest : public testing::Test {
 protected:
  Names Listed(const std::wstring& folder) const {
    Names names;
    for (const FolderEntry& entry : ListFolder(files_, folder)) {
      names.push_back(entry.name + (entry.isFolder ? L"\\" : L""));
    }
    return names;
  }

  std::unique_ptr<MemoryArchive> archive_ = FilledArchive();
  ArchiveFiles files_{*archive_};
};

TEST_F(ArchiveFilesTest, FindsItemsWithoutRegardToCase) {
  EXPECT_TRUE(files_.Exists(L"CONFIG.INI"));
  EXPECT_TRUE(files_.Exists(L"Local\\EN-US\\a.XML"));
  EXPECT_FALSE(files_.Exists(L"a.xml"));
  EXPECT_FALSE(files_.Exists(L"Loc"));
}

TEST_F(ArchiveFilesTest, FoldersAreWhatNamesHaveInCommon) {
  for (const wchar_t* folder : {L"", L"Local", L"local\\", L"LOCAL\\en-us", L"Empty"}) {
    EXPECT_TRUE(files_.IsFolder(folder)) << testing::PrintToString(folder);
  }
  for (const wchar_t* path : {L"config.ini", L"Local\\en", L"Other"}) {
    EXPECT_FALSE(files_.IsFolder(path)) << testing::PrintToString(path);
  }
  EXPECT_EQ(Listed(L""), (Names{L"broken.xml", L"config.ini", L"Empty\\", L"local\\"}));
  EXPECT_EQ(Listed(L"Local"), (Names{L"B.xml", L"en-us\\"}));
  EXPECT_EQ(Listed(L"Empty"), Names());
  std::vector<FolderEntry> entries;
  EXPECT_EQ(files_.ReadFolder(L"Other", entries), kPathNotFound);
}

TEST_F(ArchiveFilesTest, ReadsItemsWholeAndInParts) {
  std::string bytes;
  EXPECT_EQ(files_.ReadBytes(L"LOCAL\\b.xml", bytes), kSystemOk);
  EXPECT_EQ(bytes, "<b/>");
  bytes.clear();
  std::uint64_t size = 0;
  const auto take = [&](std::string_view part, std::uint64_t fileBytes) {
    bytes += part;
    size = fileBytes;
    return true;
  };
  EXPECT_EQ(files_.ReadInParts(L"config.ini", take), kSystemOk);
  EXPECT_EQ(bytes, "[Base]");
  EXPECT_EQ(size, 6U);
}

TEST_F(ArchiveFilesTest, WhatCannotBeReadLeavesTheTextAsItWas) {
  archive_->Declare(L"large.xml", ArchiveFiles::kLongestFileBytes + 1, 1);
  const ArchiveFiles files(*archive_);
  std::string bytes = "as it was";
  EXPECT_EQ(files.ReadBytes(L"missing", bytes), kFileNotFound);
  EXPECT_EQ(files.ReadBytes(L"Local", bytes), kFileNotFound);
  EXPECT_EQ(files.ReadBytes(L"broken.xml", bytes), kInvalidData);
  EXPECT_EQ(files.ReadBytes(L"large.xml", bytes), kInvalidData);
  EXPECT_EQ(bytes, "as it was");
  const auto take = [](std::string_view, std::uint64_t) { return true; };
  EXPECT_EQ(files.ReadInParts(L"missing", take), kFileNotFound);
  EXPECT_EQ(files.ReadInParts(L"broken.xml", take), kInvalidData);
}

TEST_F(ArchiveFilesTest, ChangesNothing) {
  EXPECT_EQ(files_.CreateFolder(L"new"), kAccessDenied);
  EXPECT_EQ(files_.CreateEmptyFile(L"new"), kAccessDenied);
  EXPECT_EQ(files_.RemoveFile(L"config.ini"), kAccessDenied);
  EXPECT_EQ(files_.RemoveFolder(L"Empty"), kAccessDenied);
  EXPECT_EQ(files_.WriteBytes(L"config.ini", "x"), kAccessDenied);
  std::unique_ptr<FileReplacement> replacement;
  EXPECT_EQ(files_.BeginReplacement(L"config.ini", 1, replacement), kAccessDenied);
  EXPECT_EQ(replacement, nullptr);
  EXPECT_EQ(files_.AppendBytes(L"config.ini", "x"), kAccessDenied);
  EXPECT_EQ(files_.CopyOver(L"config.ini", L"new"), kAccessDenied);
  EXPECT_EQ(files_.MoveTo(L"config.ini", L"new"), kAccessDenied);
  EXPECT_TRUE(files_.IsReadOnly(L"config.ini"));
  EXPECT_FALSE(files_.IsLink(L"config.ini"));
  EXPECT_FALSE(files_.Exists(L"new"));
}

TEST(ArchiveFilesOfNothing, HaveARootWithoutEntries) {
  MemoryArchive empty;
  const ArchiveFiles files(empty);
  std::vector<FolderEntry> entries;
  EXPECT_EQ(files.ReadFolder(L"", entries), kSystemOk);
  EXPECT_TRUE(entries.empty());
}

}  // namespace
}  // namespace carrovan
