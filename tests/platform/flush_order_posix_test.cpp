// In which order things come to the disk. The calls of this program to the system are noted on
// their way.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/posix/host_file_system.h"
#include "platform/posix/path_mapper.h"
#include "platform/sandbox/sandbox_registry.h"
#include "support/zip/zip_writer.h"
#include "tests/support/temporary_folder.h"

namespace {

std::vector<std::string>* noted = nullptr;

std::string NameOf(int descriptor) {
  std::error_code error;
  const auto path =
      std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), error);
  return path.filename().string();
}

void Note(const std::string& call) {
  if (noted != nullptr) noted->push_back(call);
}

template <typename Function>
Function Real(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int fsync(int descriptor) {
  Note("flush " + NameOf(descriptor));
  return Real<int (*)(int)>("fsync")(descriptor);
}

int fdatasync(int descriptor) {
  Note("flush " + NameOf(descriptor));
  return Real<int (*)(int)>("fdatasync")(descriptor);
}

int syncfs(int descriptor) noexcept {
  Note("flush all");
  return Real<int (*)(int)>("syncfs")(descriptor);
}

int rename(const char* from, const char* to) noexcept {
  Note("name " + std::filesystem::path(to).filename().string());
  return Real<int (*)(const char*, const char*)>("rename")(from, to);
}

int ftruncate(int descriptor, off_t length) noexcept {
  const std::string name = NameOf(descriptor);
  if (name.ends_with(".changes")) Note("empty " + name);
  return Real<int (*)(int, off_t)>("ftruncate")(descriptor, length);
}

int unlink(const char* path) noexcept {
  const std::string name = std::filesystem::path(path).filename().string();
  if (name.ends_with(".changes")) Note("remove " + name);
  return Real<int (*)(const char*)>("unlink")(path);
}
}

namespace carrovan {
namespace {

using Calls = std::vector<std::string>;

class FlushOrder : public testing::Test {
 protected:
  FlushOrder() { noted = &calls_; }
  ~FlushOrder() override { noted = nullptr; }

  std::string FolderName() const { return folder_.Path().filename().string(); }
  std::wstring Path(const wchar_t* name) const { return (folder_.Path() / name).wstring(); }

  Calls calls_;
  const TemporaryFolder folder_;
  const HostPathMapper paths_;
  HostFileSystem files_{paths_};
};

TEST_F(FlushOrder, FlushesAFilesContentAndAFoldersNames) {
  ASSERT_EQ(files_.CreateFolder(Path(L"folder")), kSystemOk);
  ASSERT_EQ(files_.WriteBytes(Path(L"file"), "x"), kSystemOk);
  calls_.clear();
  EXPECT_EQ(files_.Flush(std::vector<std::wstring>{Path(L"file"), Path(L"folder")}), kSystemOk);
  EXPECT_EQ(calls_, (Calls{"flush file", "flush folder"}));
}

TEST_F(FlushOrder, PassesOverWhatIsNotThere) {
  const std::vector<std::wstring> paths = {Path(L"missing"), Path(L"missing/below")};
  EXPECT_EQ(files_.Flush(paths), kSystemOk);
  EXPECT_EQ(calls_, Calls{});
}

TEST_F(FlushOrder, FlushesWhatIsAppendedByTheOpenFileAndOnlyWhenAsked) {
  std::unique_ptr<FileAppender> journal;
  ASSERT_EQ(files_.OpenToAppend(Path(L"journal"), journal), kSystemOk);
  EXPECT_EQ(journal->Append("a line"), kSystemOk);
  EXPECT_EQ(calls_, Calls{});
  EXPECT_EQ(journal->FlushToDisk(), kSystemOk);
  EXPECT_EQ(calls_, Calls{"flush journal"});
}

TEST_F(FlushOrder, FlushesManyPathsAtOnce) {
  std::vector<std::wstring> paths;
  for (int i = 0; i < 40; ++i) {
    paths.push_back(Path(std::to_wstring(i).c_str()));
    ASSERT_EQ(files_.WriteBytes(paths.back(), "x"), kSystemOk);
  }
  calls_.clear();
  EXPECT_EQ(files_.Flush(paths), kSystemOk);
  EXPECT_EQ(calls_, Calls{"flush all"});
}

TEST_F(FlushOrder, HasAPackageOnTheDiskBeforeItTakesItsName) {
  ASSERT_EQ(files_.WriteBytes(Path(L"source"), "content"), kSystemOk);
  calls_.clear();
  const auto writer = ZipWriter::Create(folder_.Path() / "a.zip");
  ASSERT_TRUE(writer);
  ASSERT_EQ(writer->Add(L"entry", folder_.Path() / "source"), ArchiveResult::kDone);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  EXPECT_EQ(calls_, (Calls{"flush a.zip.part", "name a.zip"}));
}

TEST_F(FlushOrder, HasChangesOfARegistryOnTheDiskWhenTheyAreFlushed) {
  SandboxRegistry registry(folder_.Path());
  ASSERT_EQ(registry.CreateKey(RegistryHive::kCurrentUser, L"SOFTWARE"), kSystemOk);
  calls_.clear();
  ASSERT_EQ(registry.Flush(RegistryHive::kCurrentUser), kSystemOk);
  EXPECT_EQ(calls_, (Calls{"flush HKEY_CURRENT_USER.changes", "flush " + FolderName()}));
}

TEST_F(FlushOrder, HasARegistryOnTheDiskBeforeItTakesItsNameAndBeforeItsLogGoes) {
  {
    SandboxRegistry registry(folder_.Path());
    ASSERT_EQ(registry.CreateKey(RegistryHive::kCurrentUser, L"SOFTWARE"), kSystemOk);
    calls_.clear();
  }
  EXPECT_EQ(calls_,
            (Calls{"flush ~carrovan0.part", "name HKEY_CURRENT_USER.reg", "flush " + FolderName(),
                   "empty HKEY_CURRENT_USER.changes", "remove HKEY_CURRENT_USER.changes"}));
}

}  // namespace
}  // namespace carrovan
