#include "platform/machine.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "platform/console.h"
#include "tests/support/temporary_folder.h"
#include "text/text.h"

namespace carrovan {
namespace {

TEST(NativeMachine, IsNoneWhereThereIsNoWindows) {
  const MachineOrReason opened = OpenNativeMachine();
  EXPECT_EQ(opened.object, nullptr);
  EXPECT_EQ(opened.reason, L"this needs Windows, or --root with a sandbox folder");
}

TEST(HostFiles, TakeThePathsOfTheHost) {
  const TemporaryFolder folder;
  PutHostFile(folder.Path() / "a.txt", "x");
  const auto files = OpenHostFiles();
  EXPECT_TRUE(files->Files().Exists(folder.Text() + L"a.txt"));
  EXPECT_FALSE(files->Files().Exists(folder.Text() + L"A.TXT"));
  EXPECT_EQ(files->Files().CreateFolder(folder.Text() + L"sub"), kSystemOk);
  EXPECT_EQ(files->Files().CreateEmptyFile(folder.Text() + L"sub\\b?.txt"), kSystemOk);
  EXPECT_TRUE(std::filesystem::exists(folder.Path() / "sub" / "b?.txt"));
}

TEST(HostFiles, KeepNamesThatAreNotUtf8) {
  const TemporaryFolder folder;
  const std::string name = "bad\xFFname\\with backslash";
  PutHostFile(folder.Path() / name, "x");
  const auto files = OpenHostFiles();
  const auto entries = ListFolder(files->Files(), folder.Text());
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_TRUE(files->Files().Exists(folder.Text() + entries[0].name));
  EXPECT_EQ(files->Files().RemoveFile(folder.Text() + entries[0].name), kSystemOk);
  EXPECT_FALSE(std::filesystem::exists(folder.Path() / name));
}

TEST(HostFiles, StoreAFileWhoseNameIsNotUtf8) {
  const TemporaryFolder folder;
  PutHostFile(folder.Path() / "\xFF.txt", "x");
  const auto files = OpenHostFiles();
  const std::wstring name = ListFolder(files->Files(), folder.Text()).at(0).name;
  const auto writer = files->Archives().Create(folder.Text() + L"a.zip", ArchivePurpose::kKeep);
  ASSERT_NE(writer, nullptr);
  EXPECT_EQ(writer->Add(name, folder.Text() + name), ArchiveResult::kDone);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  const auto archive = files->Examine(folder.Text() + L"a.zip");
  ASSERT_NE(archive, nullptr);
  EXPECT_EQ(archive->Item(0)->name, L"\xFFFD.txt");
  EXPECT_EQ(archive->Check(0), ArchiveResult::kDone);
  EXPECT_EQ(archive->Read(0, 10), std::vector<std::uint8_t>{'x'});
  EXPECT_EQ(archive->Read(0, 0), std::nullopt);
}

// Sends a standard stream elsewhere for a while.
class Redirection {
 public:
  Redirection(std::FILE* stream, int target) : stream_(stream), saved_(dup(fileno(stream))) {
    std::fflush(stream_);
    dup2(target, fileno(stream_));
    close(target);
  }
  ~Redirection() {
    std::fflush(stream_);
    dup2(saved_, fileno(stream_));
    close(saved_);
  }
  Redirection(const Redirection&) = delete;
  Redirection& operator=(const Redirection&) = delete;

 private:
  std::FILE* stream_;
  int saved_;
};

TEST(Console, WritesUtf8WhateverTheLocale) {
  const TemporaryFolder folder;
  const auto console = OpenConsole();
  {
    const Redirection out(stdout, open((folder.Path() / "out").c_str(), O_CREAT | O_WRONLY, 0600));
    const Redirection err(stderr, open((folder.Path() / "err").c_str(), O_CREAT | O_WRONLY, 0600));
    console->Out(L"\x4E2D\x00E4\n");
    console->Err(FromUtf8("\xF0\x9F\x98\x80\n"));
    EXPECT_FALSE(console->ErrIsTerminal());
  }
  EXPECT_EQ(HostFileBytes(folder.Path() / "out"), "\xE4\xB8\xAD\xC3\xA4\n");
  EXPECT_EQ(HostFileBytes(folder.Path() / "err"), "\xF0\x9F\x98\x80\n");
}

TEST(Console, GoesOnWhenNothingCanBeWritten) {
  const TemporaryFolder folder;
  const auto console = OpenConsole();
  int pipeEnds[2] = {-1, -1};
  ASSERT_EQ(pipe(pipeEnds), 0);
  close(pipeEnds[0]);
  {
    const Redirection out(stdout, pipeEnds[1]);
    console->Out(L"nobody reads this\n");
  }
  {
    const Redirection out(stdout, open("/dev/full", O_WRONLY));
    console->Out(L"this does not fit\n");
  }
  const Redirection out(stdout, open((folder.Path() / "out").c_str(), O_CREAT | O_WRONLY, 0600));
  console->Out(L"again\n");
  EXPECT_EQ(HostFileBytes(folder.Path() / "out"), "again\n");
}

}  // namespace
}  // namespace carrovan
