#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <string>
#include <vector>

#include "support/zip/zip_reader.h"
#include "support/zip/zip_writer.h"
#include "tests/zip/zip_test_files.h"

// What only a POSIX system can be made to do on demand: sources that fail half way, a full disk, a
// kill at any moment.

namespace carrovan {
namespace {

namespace fs = std::filesystem;

// Runs the function in a process of its own, in which no file may grow beyond a size, as on a disk
// that is full. Returns its exit status.
int RunOnFullDisk(std::size_t mostBytes, const std::function<int()>& function) {
  const pid_t child = fork();
  if (child == 0) {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {mostBytes, mostBytes};
    setrlimit(RLIMIT_FSIZE, &limit);
    _exit(function());
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int NumberOf(ArchiveResult result) { return static_cast<int>(result); }

std::string ContentOf(const fs::path& archive, std::size_t index) {
  const auto reader = ZipReader::Open(archive);
  const auto bytes = reader ? reader->Read(index, std::size_t{1} << 30) : std::nullopt;
  return bytes ? std::string(bytes->begin(), bytes->end()) : "unreadable";
}

TEST(ZipFaults, SkipsASourceThatCannotBeReadToItsEnd) {
  const TempFolder folder;
  const auto writer = ZipWriter::Create(folder / L"a.zip");
  ASSERT_EQ(writer->Add(L"first", folder.Put(L"file", "1")), ArchiveResult::kDone);
  // It opens as a regular file, and the first read fails.
  fs::create_symlink("/proc/self/mem", folder / L"unreadable");
  EXPECT_EQ(writer->Add(L"bad", folder / L"unreadable"), ArchiveResult::kSourceUnreadable);
  ASSERT_EQ(writer->Add(L"last", folder.Put(L"file", "2")), ArchiveResult::kDone);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  EXPECT_EQ(ContentOf(folder / L"a.zip", 0), "1");
  EXPECT_EQ(ContentOf(folder / L"a.zip", 1), "2");
}

TEST(ZipFaults, DoesNotWaitForAPipeOrADevice) {
  const TempFolder folder;
  ASSERT_EQ(mkfifo((folder / L"pipe").c_str(), 0600), 0);
  const auto writer = ZipWriter::Create(folder / L"a.zip");
  EXPECT_EQ(writer->Add(L"pipe", folder / L"pipe"), ArchiveResult::kSourceUnreadable);
  EXPECT_EQ(writer->Add(L"zero", "/dev/zero"), ArchiveResult::kSourceUnreadable);
}

TEST(ZipFaults, TakesASymbolicLinkForTheFileBehindIt) {
  const TempFolder folder;
  fs::create_symlink(folder.Put(L"file", "content"), folder / L"link");
  fs::create_symlink(folder / L"nothing", folder / L"broken");
  const auto writer = ZipWriter::Create(folder / L"a.zip");
  EXPECT_EQ(writer->Add(L"link", folder / L"link"), ArchiveResult::kDone);
  EXPECT_EQ(writer->Add(L"broken", folder / L"broken"), ArchiveResult::kSourceMissing);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  EXPECT_EQ(ContentOf(folder / L"a.zip", 0), "content");
}

TEST(ZipFaults, StoresWhatItReadsWhateverTheSizeWasBefore) {
  const TempFolder folder;
  const auto writer = ZipWriter::Create(folder / L"a.zip");
  // A regular file whose size is 0 until it is read.
  ASSERT_EQ(fs::file_size("/proc/self/limits"), 0U);
  ASSERT_EQ(writer->Add(L"limits", "/proc/self/limits"), ArchiveResult::kDone);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  EXPECT_EQ(ContentOf(folder / L"a.zip", 0), FileBytes("/proc/self/limits"));
}

TEST(ZipFaults, CannotStartInAFolderThatTakesNoFiles) {
  const TempFolder folder;
  fs::create_directory(folder / L"closed");
  SetReadOnly(folder / L"closed");
  EXPECT_EQ(ZipWriter::Create(folder / L"closed/a.zip"), nullptr);
}

TEST(ZipFaults, ReplacesALinkAtTheTargetAndNotTheFileBehindIt) {
  const TempFolder folder;
  WriteArchive(folder / L"a.zip", {{L"item", "content"}});
  fs::create_symlink(folder.Put(L"precious", "precious"), folder / L"target");
  ASSERT_EQ(ZipReader::Open(folder / L"a.zip")->Extract(0, folder / L"target"),
            ArchiveResult::kDone);
  EXPECT_EQ(FileBytes(folder / L"precious"), "precious");
  EXPECT_FALSE(fs::is_symlink(folder / L"target"));
  EXPECT_EQ(FileBytes(folder / L"target"), "content");
}

TEST(ZipFaults, WritesAndReadsTheLongestFileNames) {
  const TempFolder folder;
  const std::wstring name(255, L'n');
  WriteArchive(folder / L"a.zip", {{name, "content"}});
  ASSERT_EQ(ZipReader::Open(folder / L"a.zip")->Extract(0, folder / name), ArchiveResult::kDone);
  EXPECT_EQ(FileBytes(folder / name), "content");
}

TEST(ZipFaults, SkipsAFileThatFillsTheDiskAndStoresTheNext) {
  const TempFolder folder;
  const fs::path large = folder.Put(L"large", RandomBytes(200'000));
  const fs::path small = folder.Put(L"small", "small");
  const int status = RunOnFullDisk(100'000, [&] {
    const auto writer = ZipWriter::Create(folder / L"a.zip");
    const ArchiveResult result = writer->Add(L"large", large);
    if (writer->Add(L"small", small) != ArchiveResult::kDone) return -1;
    return writer->Close() == ArchiveResult::kDone ? NumberOf(result) : -1;
  });
  EXPECT_EQ(status, NumberOf(ArchiveResult::kDiskFull));
  EXPECT_EQ(ContentOf(folder / L"a.zip", 0), "small");
}

// Which files did not fit, one digit for each, as several threads packed them.
int FilesThatDoNotFit(const fs::path& archive, const std::vector<fs::path>& files,
                      unsigned threads) {
  return RunOnFullDisk(100'000, [&] {
    const auto writer = ZipWriter::Create(archive);
    writer->UseThreads(threads);
    for (const fs::path& file : files) writer->Expect(file);
    int digits = 0;
    for (std::size_t i = 0; i < files.size(); ++i) {
      const ArchiveResult result = writer->Add(std::to_wstring(i), files[i]);
      if (result != ArchiveResult::kDone && result != ArchiveResult::kDiskFull) return -1;
      digits = 2 * digits + (result == ArchiveResult::kDiskFull ? 1 : 0);
    }
    return digits;
  });
}

TEST(ZipFaults, FailsForTheSameFilesOnAFullDiskWithAnyNumberOfThreads) {
  const TempFolder folder;
  std::vector<fs::path> files;
  for (const std::size_t size : {40'000, 30'000, 50'000, 10'000, 40'000, 5'000, 20'000}) {
    files.push_back(folder.Put(std::to_wstring(files.size()), RandomBytes(size)));
  }
  for (const unsigned threads : {1U, 2U, 8U}) {
    EXPECT_EQ(FilesThatDoNotFit(folder / L"a.zip", files, threads), 0b0010101) << threads;
  }
}

TEST(ZipFaults, LeavesTheOldArchiveWhenTheDiskIsFullAtTheEnd) {
  const TempFolder folder;
  folder.Put(L"a.zip", "old");
  const fs::path source = folder.Put(L"source", RandomBytes(100'000));
  // The spool just fits. The archive has headers besides.
  const int status = RunOnFullDisk(100'000, [&] {
    const auto writer = ZipWriter::Create(folder / L"a.zip");
    if (writer->Add(L"entry", source) != ArchiveResult::kDone) return -1;
    return NumberOf(writer->Close());
  });
  EXPECT_EQ(status, NumberOf(ArchiveResult::kDiskFull));
  EXPECT_EQ(FileBytes(folder / L"a.zip"), "old");
  EXPECT_EQ(folder.Listing(), (std::vector<std::wstring>{L"a.zip", L"source"}));
}

TEST(ZipFaults, LeavesTheOldFileWhenTheDiskIsFullInTheMiddleOfAnItem) {
  const TempFolder folder;
  WriteArchive(folder / L"a.zip", {{L"item", RandomBytes(200'000)}});
  folder.Put(L"target", "old");
  const int status = RunOnFullDisk(100'000, [&] {
    return NumberOf(ZipReader::Open(folder / L"a.zip")->Extract(0, folder / L"target"));
  });
  EXPECT_EQ(status, NumberOf(ArchiveResult::kDiskFull));
  EXPECT_EQ(FileBytes(folder / L"target"), "old");
  EXPECT_EQ(folder.Listing(), (std::vector<std::wstring>{L"a.zip", L"target"}));
}

// Writes the same archive again and again until it is killed.
[[noreturn]] void KeepWriting(const fs::path& archive, const fs::path& source) {
  for (;;) {
    const auto writer = ZipWriter::Create(archive);
    for (int i = 0; i < 5; ++i) {
      if (writer->Add(std::to_wstring(i), source) != ArchiveResult::kDone) _exit(1);
    }
    if (writer->Close() != ArchiveResult::kDone) _exit(1);
  }
}

void ExpectWholeArchive(const fs::path& archive, std::size_t count) {
  const auto reader = ZipReader::Open(archive);
  ASSERT_NE(reader, nullptr);
  for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(reader->Check(i), ArchiveResult::kDone);
  EXPECT_FALSE(reader->Item(count));
}

TEST(ZipFaults, KeepsAWholeArchiveWheneverItIsKilled) {
  const TempFolder folder;
  const fs::path archive = folder / L"a.zip";
  const fs::path source = folder.Put(L"source", SettingsText(300'000));
  const std::vector<NamedFile> before = {
      {L"0", ""}, {L"1", ""}, {L"2", ""}, {L"3", ""}, {L"4", ""}};
  WriteArchive(archive, before);
  for (int round = 0; round < 30; ++round) {
    SCOPED_TRACE(round);
    const pid_t child = fork();
    if (child == 0) KeepWriting(archive, source);
    usleep(static_cast<useconds_t>(1000 * round));
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
    ExpectWholeArchive(archive, before.size());
    // The next run takes over what is left of this one.
    WriteArchive(archive, before);
    EXPECT_EQ(folder.Listing(), (std::vector<std::wstring>{L"a.zip", L"source"}));
  }
}

TEST(ZipFaults, UsesZip64ForMoreEntriesThanTheOldFormatCounts) {
  constexpr std::size_t kCount = 65'600;
  const TempFolder folder;
  const fs::path source = folder.Put(L"source", "x");
  const auto writer = ZipWriter::Create(folder / L"a.zip");
  for (std::size_t i = 0; i < kCount; ++i) {
    ASSERT_EQ(writer->Add(std::to_wstring(i), source), ArchiveResult::kDone);
  }
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  const auto reader = ZipReader::Open(folder / L"a.zip");
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(reader->Item(kCount - 1)->name, std::to_wstring(kCount - 1));
  EXPECT_EQ(reader->Check(kCount - 1), ArchiveResult::kDone);
  EXPECT_FALSE(reader->Item(kCount));
}

}  // namespace
}  // namespace carrovan
