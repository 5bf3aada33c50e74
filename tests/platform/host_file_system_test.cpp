#include "platform/posix/host_file_system.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/support/temporary_folder.h"

namespace carrovan {
namespace {

namespace fs = std::filesystem;

std::vector<std::wstring> Names(const std::vector<FolderEntry>& entries) {
  std::vector<std::wstring> names;
  names.reserve(entries.size());
  for (const FolderEntry& entry : entries) names.push_back(entry.name);
  return names;
}

// Drive C: of a root; what every machine does is tested by the contract.
class HostFileSystemTest : public testing::Test {
 protected:
  HostFileSystemTest() { fs::create_directory(Host("")); }

  fs::path Host(const std::string& path) const { return folder_.Path() / "C" / path; }
  void Put(const std::string& path) { PutHostFile(Host(path), "content"); }

  TemporaryFolder folder_;
  DrivePathMapper paths_{folder_.Path()};
  HostFileSystem files_{paths_};
};

TEST_F(HostFileSystemTest, RefusesNewNamesThatWindowsRefuses) {
  EXPECT_EQ(files_.CreateFolder(L"C:\\a?b"), kInvalidName);
  EXPECT_EQ(files_.CreateEmptyFile(L"C:\\a:b"), kInvalidName);
  EXPECT_EQ(files_.CreateEmptyFile(std::wstring(L"C:\\a\0b", 6)), kInvalidName);
  EXPECT_EQ(files_.RemoveFile(L""), kInvalidName);
  EXPECT_EQ(files_.RemoveFolder(L""), kInvalidName);
  EXPECT_TRUE(ListFolder(files_, L"C:\\").empty());
}

TEST_F(HostFileSystemTest, ListsAsContentFilesOnlyRegularOnes) {
  Put("file.xml");
  fs::create_directory(Host("folder.xml"));
  ASSERT_EQ(mkfifo(Host("pipe.xml").c_str(), 0600), 0);
  fs::create_symlink(Host("file.xml"), Host("to file.xml"));
  fs::create_symlink(Host("pipe.xml"), Host("to pipe.xml"));
  fs::create_symlink("/dev/zero", Host("to device.xml"));
  std::vector<std::wstring> content;
  for (const FolderEntry& entry : ListFolder(files_, L"C:\\")) {
    if (IsContentFile(entry)) content.push_back(entry.name);
  }
  EXPECT_EQ(content, (std::vector<std::wstring>{L"file.xml", L"to file.xml"}));
  EXPECT_EQ(ListFolder(files_, L"C:\\").size(), 6u);
}

TEST_F(HostFileSystemTest, ReportsAFileWhereAFolderIsNeeded) {
  Put("file");
  EXPECT_EQ(files_.CreateFolder(L"C:\\file\\sub"), kPathNotFound);
  EXPECT_EQ(files_.CreateEmptyFile(L"C:\\file\\sub"), kPathNotFound);
  EXPECT_EQ(files_.RemoveFile(L"C:\\file\\sub"), kPathNotFound);
  EXPECT_EQ(files_.RemoveFolder(L"C:\\file"), kNotAFolder);
  EXPECT_TRUE(ListFolder(files_, L"C:\\file").empty());
}

TEST_F(HostFileSystemTest, GivesRoomThatWasNotUsedBack) {
  std::unique_ptr<FileReplacement> file;
  ASSERT_EQ(files_.BeginReplacement(L"C:\\new", 8 << 20, file), kSystemOk);
  ASSERT_EQ(file->Append("content"), kSystemOk);
  ASSERT_EQ(file->Complete(), kSystemOk);
  struct stat facts = {};
  ASSERT_EQ(stat(Host("new").c_str(), &facts), 0);
  EXPECT_EQ(facts.st_size, 7);
  EXPECT_LT(facts.st_blocks * 512, 1 << 20);
}

// In a process of its own no file may grow beyond a size, as on a disk that is full.
TEST_F(HostFileSystemTest, ReplacementOnAFullDiskLeavesTheFileAlone) {
  Put("file");
  const pid_t child = fork();
  if (child == 0) {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {100'000, 100'000};
    setrlimit(RLIMIT_FSIZE, &limit);
    std::unique_ptr<FileReplacement> file;
    if (files_.BeginReplacement(L"C:\\file", 200'000, file) != kSystemOk) _exit(1);
    if (file->Append(std::string(90'000, 'x')) != kSystemOk) _exit(2);
    const SystemCode code = file->Append(std::string(90'000, 'x'));
    file.reset();
    _exit(code == kSystemDiskFull ? 0 : 3);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(fs::file_size(Host("file")), std::string("content").size());
  EXPECT_EQ(Names(ListFolder(files_, L"C:\\")), std::vector<std::wstring>{L"file"});
}

TEST_F(HostFileSystemTest, ReportsANameThatIsTooLongForTheHost) {
  EXPECT_EQ(files_.CreateFolder(L"C:\\" + std::wstring(300, L'x')), kNameTooLong);
  EXPECT_EQ(files_.CreateEmptyFile(L"C:\\" + std::wstring(300, L'x')), kNameTooLong);
}

TEST_F(HostFileSystemTest, PrefersTheExactSpelling) {
  Put("Name.txt");
  Put("name.txt");
  ASSERT_EQ(files_.RemoveFile(L"C:\\name.txt"), kSystemOk);
  EXPECT_EQ(Names(ListFolder(files_, L"C:\\")), std::vector<std::wstring>{L"Name.txt"});
}

TEST_F(HostFileSystemTest, TellsTheFirstOfSeveralSpellingsEachTime) {
  Put("NAME.txt");
  Put("name.txt");
  ASSERT_EQ(files_.RemoveFile(L"C:\\Name.TXT"), kSystemOk);
  EXPECT_EQ(Names(ListFolder(files_, L"C:\\")), std::vector<std::wstring>{L"name.txt"});
}

TEST_F(HostFileSystemTest, ListsALinkAsOneAndRemovesOnlyIt) {
  Put("target/inside.txt");
  Put("file.txt");
  fs::create_directory_symlink(Host("target"), Host("to folder"));
  fs::create_symlink(Host("file.txt"), Host("to file"));
  fs::create_symlink(Host("nowhere"), Host("to nothing"));
  for (const FolderEntry& entry : ListFolder(files_, L"C:\\")) {
    EXPECT_EQ(entry.isLink, entry.name.starts_with(L"to "));
    EXPECT_EQ(entry.isFolder, entry.name == L"target" || entry.name == L"to folder");
    EXPECT_EQ(files_.IsLink(L"C:\\" + entry.name), entry.isLink);
  }
  EXPECT_TRUE(files_.IsFolder(L"C:\\to folder"));
  EXPECT_TRUE(files_.Exists(L"C:\\to folder\\inside.txt"));
  EXPECT_FALSE(files_.Exists(L"C:\\to nothing"));
  EXPECT_EQ(files_.CreateFolder(L"C:\\to nothing"), kAlreadyExists);
  EXPECT_EQ(files_.RemoveFolder(L"C:\\to folder"), kSystemOk);
  EXPECT_EQ(files_.RemoveFile(L"C:\\to file"), kSystemOk);
  EXPECT_EQ(files_.RemoveFile(L"C:\\to nothing"), kSystemOk);
  EXPECT_EQ(Names(ListFolder(files_, L"C:\\")),
            (std::vector<std::wstring>{L"file.txt", L"target"}));
  EXPECT_TRUE(files_.Exists(L"C:\\target\\inside.txt"));
}

TEST_F(HostFileSystemTest, TakesALinkToAFolderForAFolderWhenItIsRemoved) {
  Put("target/inside.txt");
  fs::create_directory_symlink(Host("target"), Host("link"));
  EXPECT_EQ(files_.RemoveFile(L"C:\\link"), kAccessDenied);
  EXPECT_EQ(files_.RemoveFolder(L"C:\\link"), kSystemOk);
  EXPECT_TRUE(files_.Exists(L"C:\\target\\inside.txt"));
}

TEST_F(HostFileSystemTest, ComesToAnEndInALoopOfLinks) {
  fs::create_directory(Host("a"));
  fs::create_directory_symlink(Host("a"), Host("a/self"));
  fs::create_symlink(Host("ping"), Host("pong"));
  fs::create_symlink(Host("pong"), Host("ping"));
  EXPECT_FALSE(files_.Exists(L"C:\\ping"));
  EXPECT_FALSE(files_.IsFolder(L"C:\\ping"));
  EXPECT_TRUE(ListFolder(files_, L"C:\\ping").empty());
  EXPECT_EQ(files_.CreateEmptyFile(L"C:\\ping\\x"), kPathNotFound);
  const auto entries = ListFolder(files_, L"C:\\a");
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_TRUE(entries[0].isFolder && entries[0].isLink);
  EXPECT_EQ(files_.RemoveFolder(L"C:\\a\\self"), kSystemOk);
  EXPECT_TRUE(files_.IsFolder(L"C:\\a"));
  EXPECT_EQ(files_.RemoveFile(L"C:\\pong"), kSystemOk);
}

// The permissions hold for everybody, so this passes for the host's administrator too.
TEST_F(HostFileSystemTest, LeavesAClosedFolderAsItIs) {
  Put("closed/file.txt");
  fs::create_directory(Host("closed/sub"));
  folder_.TakePermission(Host("closed"), fs::perms::owner_write);
  EXPECT_EQ(files_.CreateFolder(L"C:\\closed\\new"), kAccessDenied);
  EXPECT_EQ(files_.CreateEmptyFile(L"C:\\closed\\new"), kAccessDenied);
  EXPECT_EQ(files_.RemoveFile(L"C:\\closed\\file.txt"), kAccessDenied);
  EXPECT_EQ(files_.RemoveFolder(L"C:\\closed\\sub"), kAccessDenied);
  EXPECT_EQ(Names(ListFolder(files_, L"C:\\closed")),
            (std::vector<std::wstring>{L"file.txt", L"sub"}));
}

TEST_F(HostFileSystemTest, DoesNotEmptyAReadOnlyFile) {
  Put("file.txt");
  folder_.TakePermission(Host("file.txt"), fs::perms::owner_write);
  EXPECT_EQ(files_.CreateEmptyFile(L"C:\\file.txt"), kAccessDenied);
  EXPECT_EQ(HostFileBytes(Host("file.txt")), "content");
}

TEST_F(HostFileSystemTest, ListsNothingOfAFolderThatNobodyMayRead) {
  Put("closed/file.txt");
  folder_.TakePermission(Host("closed"), fs::perms::owner_read);
  EXPECT_TRUE(ListFolder(files_, L"C:\\closed").empty());
}

TEST_F(HostFileSystemTest, HeldFileIsNobodyElsesUntilItsHolderIsGone) {
  Put("mark");
  {
    HostFileSystem holder(paths_);
    ASSERT_EQ(holder.HoldFile(L"C:\\mark", FileHold::kTake), kSystemOk);
    EXPECT_EQ(files_.HoldFile(L"C:\\mark", FileHold::kTake), kSharingViolation);
    EXPECT_EQ(files_.HoldFile(L"C:\\MARK", FileHold::kMake), kSharingViolation);
  }
  EXPECT_EQ(files_.HoldFile(L"C:\\mark", FileHold::kTake), kSystemOk);
  std::string bytes;
  EXPECT_EQ(files_.ReadBytes(L"C:\\mark", bytes), kSystemOk);
  EXPECT_EQ(bytes, "content");
}

TEST_F(HostFileSystemTest, FileOfAKilledProcessIsHeldNoLonger) {
  Put("mark");
  int ready[2] = {};
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  if (child == 0) {
    HostFileSystem holder(paths_);
    const bool held = holder.HoldFile(L"C:\\mark", FileHold::kTake) == kSystemOk;
    if (write(ready[1], held ? "y" : "n", 1) == 1) pause();
    _exit(1);
  }
  char held = 'n';
  ASSERT_EQ(read(ready[0], &held, 1), 1);
  EXPECT_EQ(held, 'y');
  EXPECT_EQ(files_.HoldFile(L"C:\\mark", FileHold::kTake), kSharingViolation);
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_EQ(files_.HoldFile(L"C:\\mark", FileHold::kTake), kSystemOk);
  close(ready[0]);
  close(ready[1]);
}

TEST_F(HostFileSystemTest, LinkIsNotHeld) {
  Put("elsewhere");
  fs::create_symlink(Host("elsewhere"), Host("mark"));
  EXPECT_EQ(files_.HoldFile(L"C:\\mark", FileHold::kTake), kAccessDenied);
}

}  // namespace
}  // namespace carrovan
