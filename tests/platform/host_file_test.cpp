#include "platform/posix/host_file_system.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/posix/host_access.h"
#include "tests/support/temporary_folder.h"

namespace carrovan {
namespace {

namespace fs = std::filesystem;

using Bytes = std::vector<std::uint8_t>;

TEST(HostAccess, TellsTheNumberThatWindowsHasForAnError) {
  const struct {
    std::errc error;
    SystemCode code;
  } kRows[] = {
      {std::errc(), kSystemOk},
      {std::errc::no_such_file_or_directory, kFileNotFound},
      {std::errc::not_a_directory, kPathNotFound},
      {std::errc::too_many_symbolic_link_levels, kPathNotFound},
      {std::errc::permission_denied, kAccessDenied},
      {std::errc::operation_not_permitted, kAccessDenied},
      {std::errc::read_only_file_system, kAccessDenied},
      {std::errc::is_a_directory, kAccessDenied},
      {std::errc::file_exists, kAlreadyExists},
      {std::errc::directory_not_empty, kFolderNotEmpty},
      {std::errc::no_space_on_device, kSystemDiskFull},
      {std::errc::filename_too_long, kNameTooLong},
      {std::errc::device_or_resource_busy, kSharingViolation},
      {std::errc::invalid_argument, kInvalidName},
      {std::errc::io_error, kGeneralFailure},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(SystemCodeOf(std::make_error_code(row.error)), row.code);
    const std::error_code fromSystem(static_cast<int>(row.error), std::system_category());
    EXPECT_EQ(SystemCodeOf(fromSystem), row.code) << fromSystem.message();
  }
}

TEST(HostAccess, LooksAtTheOwnersPermissionsOnly) {
  TemporaryFolder folder;
  const fs::path file = folder.Path() / "file";
  PutHostFile(file, "x");
  EXPECT_TRUE(OwnerMayRead(file) && OwnerMayWrite(file) && MayPutFile(file));
  folder.TakePermission(file, fs::perms::owner_read);
  EXPECT_FALSE(OwnerMayRead(file));
  EXPECT_TRUE(OwnerMayWrite(file));
  folder.TakePermission(file, fs::perms::owner_write);
  EXPECT_FALSE(OwnerMayWrite(file) || MayPutFile(file));
  EXPECT_TRUE(MayPutFile(folder.Path() / "new"));
  folder.TakePermission(folder.Path(), fs::perms::owner_write);
  EXPECT_FALSE(MayPutFile(folder.Path() / "new"));
}

TEST(HostFile, ReadsAndReplacesAFileWhole) {
  const TemporaryFolder folder;
  const fs::path file = folder.Path() / "file";
  EXPECT_EQ(ReplaceHostFile(file, Bytes{1, 2, 3}), FileStatus::kDone);
  EXPECT_EQ(ReplaceHostFile(file, Bytes{4}), FileStatus::kDone);
  Bytes content;
  EXPECT_EQ(ReadHostFile(file, content), FileStatus::kDone);
  EXPECT_EQ(content, Bytes{4});
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), fs::directory_iterator()), 1);
}

TEST(HostFile, ReadsNothingThatIsNoRegularFile) {
  const TemporaryFolder folder;
  Bytes content = {7};
  ASSERT_EQ(mkfifo((folder.Path() / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(ReadHostFile(folder.Path() / "pipe", content), FileStatus::kFailed);
  EXPECT_EQ(ReadHostFile(folder.Path(), content), FileStatus::kFailed);
  EXPECT_EQ(ReadHostFile(folder.Path() / "none", content), FileStatus::kMissing);
  EXPECT_EQ(content, Bytes{7});
}

TEST(HostFile, ReadsNoFileAboveTheLimit) {
  const TemporaryFolder folder;
  PutHostFile(folder.Path() / "huge", "");
  fs::resize_file(folder.Path() / "huge", kLargestHostFile + 1);
  Bytes content;
  EXPECT_EQ(ReadHostFile(folder.Path() / "huge", content), FileStatus::kFailed);
}

TEST(HostFile, KeepsTheOldFileWhereItMayNotBeReplaced) {
  TemporaryFolder folder;
  PutHostFile(folder.Path() / "file", "old");
  folder.TakePermission(folder.Path() / "file", fs::perms::owner_write);
  EXPECT_EQ(ReplaceHostFile(folder.Path() / "file", Bytes{1}), FileStatus::kFailed);
  EXPECT_EQ(HostFileBytes(folder.Path() / "file"), "old");
  EXPECT_EQ(ReplaceHostFile(folder.Path() / "none" / "file", Bytes{1}), FileStatus::kMissing);
}

}  // namespace
}  // namespace carrovan
