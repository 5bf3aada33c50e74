// What the engine may rely on, whatever machine it runs on.
#include <gtest/gtest.h>

#include <memory>

#include "tests/support/contract_machines.h"
#include "text/text.h"

namespace carrovan {
namespace {

class FileSystemContract : public ContractTest {
 protected:
  std::wstring At(const std::wstring& name) const { return machine_->ScratchFolder() + name; }
  FileSystem& Files() { return *machine_->Ports().files; }

  std::vector<std::wstring> Listed(const std::wstring& folder) {
    std::vector<std::wstring> names;
    for (const FolderEntry& entry : ListFolder(Files(), folder)) names.push_back(entry.name);
    return names;
  }
};

// Characters of one, two and three bytes in UTF-8, and one outside the 16-bit range.
const std::wstring kManyScripts = FromUtf8("a \xC3\xA4 \xE4\xB8\xAD\xE6\x96\x87 \xF0\x9F\x98\x80");

TEST_P(FileSystemContract, TellsWhatIsThere) {
  machine_->PutFile(At(L"folder\\file.txt"), "x");
  EXPECT_TRUE(Files().Exists(At(L"folder")));
  EXPECT_TRUE(Files().Exists(At(L"folder\\")));
  EXPECT_TRUE(Files().Exists(At(L"folder\\file.txt")));
  EXPECT_TRUE(Files().IsFolder(At(L"folder")));
  EXPECT_TRUE(Files().IsFolder(At(L"folder\\")));
  EXPECT_FALSE(Files().IsFolder(At(L"folder\\file.txt")));
  for (const wchar_t* missing :
       {L"none", L"none\\file.txt", L"folder\\none", L"folder\\file.txt\\x"}) {
    EXPECT_FALSE(Files().Exists(At(missing))) << ToUtf8(missing);
    EXPECT_FALSE(Files().IsFolder(At(missing))) << ToUtf8(missing);
  }
}

TEST_P(FileSystemContract, FindsNothingUnderAnEmptyPath) {
  EXPECT_FALSE(Files().Exists(L""));
  EXPECT_FALSE(Files().IsFolder(L""));
  EXPECT_TRUE(ListFolder(Files(), L"").empty());
}

TEST_P(FileSystemContract, FindsNamesWithoutRegardToCase) {
  machine_->PutFile(At(L"Folder\\\x00C4pfel.TXT"), "x");
  EXPECT_TRUE(Files().Exists(At(L"FOLDER\\\x00E4PFEL.txt")));
  EXPECT_EQ(Files().CreateFolder(At(L"fOLDER")), kAlreadyExists);
  EXPECT_EQ(Files().RemoveFile(At(L"folder\\\x00E4pfel.txt")), kSystemOk);
  EXPECT_TRUE(Listed(At(L"Folder")).empty());
}

TEST_P(FileSystemContract, TakesEitherSeparatorAndStepsBack) {
  machine_->PutFile(At(L"folder\\file.txt"), "x");
  EXPECT_TRUE(Files().Exists(At(L"folder/file.txt")));
  EXPECT_TRUE(Files().Exists(At(L"folder\\..\\folder\\.\\file.txt")));
}

TEST_P(FileSystemContract, ListsAFolderInTheOrderOfTheFileSystem) {
  const std::wstring emoji = FromUtf8("\xF0\x9F\x98\x80");
  for (const std::wstring& name :
       {std::wstring(L"zz"), std::wstring(L"b"), std::wstring(L"A"), std::wstring(L"_x"),
        std::wstring(L"a1"), std::wstring(L"Z"), std::wstring(L"\x4E2D"), emoji,
        std::wstring(L"\xFF21"), std::wstring(L"a-b"), std::wstring(L"a.b")}) {
    machine_->MakeFolder(At(L"list\\" + name));
  }
  machine_->PutFile(At(L"list\\M.txt"), "");
  EXPECT_EQ(Listed(At(L"list")),
            (std::vector<std::wstring>{L"A", L"a-b", L"a.b", L"a1", L"b", L"M.txt", L"Z", L"zz",
                                       L"_x", L"\x4E2D", emoji, L"\xFF21"}));
}

TEST_P(FileSystemContract, ListsNamesAsTheyAreSpelled) {
  machine_->PutFile(At(L"list\\ReadMe.TXT"), "x");
  machine_->MakeFolder(At(L"list\\en-US"));
  const auto entries = ListFolder(Files(), At(L"LIST"));
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[0].name, L"en-US");
  EXPECT_TRUE(entries[0].isFolder);
  EXPECT_EQ(entries[1].name, L"ReadMe.TXT");
  EXPECT_FALSE(entries[1].isFolder);
  EXPECT_FALSE(entries[0].isLink || entries[1].isLink);
}

TEST_P(FileSystemContract, ListsNothingWhereThereIsNoFolder) {
  machine_->PutFile(At(L"file.txt"), "x");
  machine_->MakeFolder(At(L"empty"));
  EXPECT_TRUE(ListFolder(Files(), At(L"none")).empty());
  EXPECT_TRUE(ListFolder(Files(), At(L"file.txt")).empty());
  EXPECT_TRUE(ListFolder(Files(), At(L"empty")).empty());
  EXPECT_TRUE(ListFolder(Files(), At(L"empty\\")).empty());
}

TEST_P(FileSystemContract, CreatesOneFolderAtATime) {
  EXPECT_EQ(Files().CreateFolder(At(L"a")), kSystemOk);
  EXPECT_TRUE(Files().IsFolder(At(L"a")));
  EXPECT_EQ(Files().CreateFolder(At(L"a\\b\\")), kSystemOk);
  EXPECT_TRUE(Files().IsFolder(At(L"a\\b")));
  EXPECT_EQ(Files().CreateFolder(At(L"a")), kAlreadyExists);
  EXPECT_EQ(Files().CreateFolder(At(L"none\\b")), kPathNotFound);
  EXPECT_FALSE(Files().Exists(At(L"none")));
  machine_->PutFile(At(L"file"), "x");
  EXPECT_EQ(Files().CreateFolder(At(L"file")), kAlreadyExists);
}

TEST_P(FileSystemContract, CreatesAnEmptyFileAndEmptiesOneThatIsThere) {
  EXPECT_EQ(Files().CreateEmptyFile(At(L"file.txt")), kSystemOk);
  EXPECT_EQ(machine_->FileBytes(At(L"file.txt")), "");
  machine_->PutFile(At(L"file.txt"), "content");
  EXPECT_EQ(Files().CreateEmptyFile(At(L"FILE.txt")), kSystemOk);
  EXPECT_EQ(machine_->FileBytes(At(L"file.txt")), "");
  EXPECT_EQ(Files().CreateEmptyFile(At(L"none\\file.txt")), kPathNotFound);
  machine_->MakeFolder(At(L"folder"));
  EXPECT_EQ(Files().CreateEmptyFile(At(L"folder")), kAccessDenied);
  EXPECT_TRUE(Files().IsFolder(At(L"folder")));
}

TEST_P(FileSystemContract, CreatesNothingUnderANameThatNoFileCanHave) {
  for (const wchar_t* name : {L"a?b", L"a*b", L"a<b", L"a>b", L"a|b", L"a\"b"}) {
    EXPECT_EQ(Files().CreateFolder(At(name)), kInvalidName) << ToUtf8(name);
    EXPECT_EQ(Files().CreateEmptyFile(At(name)), kInvalidName) << ToUtf8(name);
  }
}

TEST_P(FileSystemContract, RemovesAFile) {
  machine_->PutFile(At(L"file.txt"), "x");
  EXPECT_EQ(Files().RemoveFile(At(L"file.txt")), kSystemOk);
  EXPECT_FALSE(Files().Exists(At(L"file.txt")));
  EXPECT_EQ(Files().RemoveFile(At(L"file.txt")), kFileNotFound);
  EXPECT_EQ(Files().RemoveFile(At(L"none\\file.txt")), kPathNotFound);
  machine_->MakeFolder(At(L"folder"));
  EXPECT_EQ(Files().RemoveFile(At(L"folder")), kAccessDenied);
}

TEST_P(FileSystemContract, NeitherRemovesNorEmptiesAReadOnlyFile) {
  machine_->PutFile(At(L"file.txt"), "content");
  machine_->MakeReadOnly(At(L"file.txt"));
  EXPECT_EQ(Files().RemoveFile(At(L"file.txt")), kAccessDenied);
  EXPECT_EQ(Files().CreateEmptyFile(At(L"file.txt")), kAccessDenied);
  EXPECT_EQ(machine_->FileBytes(At(L"file.txt")), "content");
}

TEST_P(FileSystemContract, RemovesOnlyAnEmptyFolder) {
  machine_->PutFile(At(L"folder\\file.txt"), "x");
  EXPECT_EQ(Files().RemoveFolder(At(L"folder")), kFolderNotEmpty);
  EXPECT_TRUE(Files().Exists(At(L"folder\\file.txt")));
  EXPECT_EQ(Files().RemoveFolder(At(L"folder\\file.txt")), kNotAFolder);
  EXPECT_EQ(Files().RemoveFile(At(L"folder\\file.txt")), kSystemOk);
  EXPECT_EQ(Files().RemoveFolder(At(L"folder\\")), kSystemOk);
  EXPECT_FALSE(Files().Exists(At(L"folder")));
  EXPECT_EQ(Files().RemoveFolder(At(L"folder")), kFileNotFound);
  EXPECT_EQ(Files().RemoveFolder(At(L"none\\folder")), kPathNotFound);
}

TEST_P(FileSystemContract, CreatesNothingInAFolderThatIsClosed) {
  if (CannotTry()) GTEST_SKIP() << "only an attempt shows that the folder is closed";
  machine_->PutFile(At(L"closed\\file.txt"), "x");
  machine_->MakeFolderUnwritable(At(L"closed"));
  EXPECT_EQ(Files().CreateFolder(At(L"closed\\new")), kAccessDenied);
  EXPECT_EQ(Files().CreateEmptyFile(At(L"closed\\new.txt")), kAccessDenied);
  EXPECT_EQ(Listed(At(L"closed")), std::vector<std::wstring>{L"file.txt"});
}

TEST_P(FileSystemContract, StillListsAFileThatNobodyMayRead) {
  machine_->PutFile(At(L"folder\\secret.txt"), "x");
  machine_->MakeUnreadable(At(L"folder\\secret.txt"));
  EXPECT_TRUE(Files().Exists(At(L"folder\\secret.txt")));
  EXPECT_EQ(Listed(At(L"folder")), std::vector<std::wstring>{L"secret.txt"});
}

TEST_P(FileSystemContract, KeepsNamesInEveryScript) {
  EXPECT_EQ(Files().CreateFolder(At(kManyScripts)), kSystemOk);
  EXPECT_EQ(Files().CreateEmptyFile(At(kManyScripts + L"\\" + kManyScripts)), kSystemOk);
  EXPECT_EQ(Listed(At(kManyScripts)), std::vector<std::wstring>{kManyScripts});
  EXPECT_EQ(Files().RemoveFile(At(kManyScripts + L"\\" + kManyScripts)), kSystemOk);
  EXPECT_EQ(Files().RemoveFolder(At(kManyScripts)), kSystemOk);
}

TEST_P(FileSystemContract, TakesPathsLongerThanTheFixedBuffers) {
  std::wstring folder = At(L"long");
  ASSERT_EQ(Files().CreateFolder(folder), kSystemOk);
  while (folder.size() < 300) {
    folder += L"\\" + std::wstring(60, L'x');
    ASSERT_EQ(Files().CreateFolder(folder), kSystemOk);
  }
  const std::wstring file = folder + L"\\file.txt";
  EXPECT_EQ(Files().CreateEmptyFile(file), kSystemOk);
  EXPECT_TRUE(Files().Exists(file));
  EXPECT_FALSE(Files().IsFolder(file));
  EXPECT_TRUE(Files().IsFolder(folder));
  EXPECT_EQ(Listed(folder), std::vector<std::wstring>{L"file.txt"});
  EXPECT_EQ(Files().RemoveFolder(folder), kFolderNotEmpty);
  EXPECT_EQ(Files().RemoveFile(file), kSystemOk);
  while (folder.size() > At(L"").size()) {
    ASSERT_EQ(Files().RemoveFolder(folder), kSystemOk);
    folder.resize(folder.rfind(L'\\'));
  }
}

TEST_P(FileSystemContract, HoldsAFileUntilItIsRemoved) {
  EXPECT_EQ(Files().HoldFile(At(L"mark"), FileHold::kTake), kFileNotFound);
  EXPECT_FALSE(Files().Exists(At(L"mark")));
  ASSERT_EQ(Files().HoldFile(At(L"mark"), FileHold::kMake), kSystemOk);
  EXPECT_TRUE(Files().Exists(At(L"mark")));
  EXPECT_EQ(Files().RemoveFile(At(L"mark")), kSystemOk);
  EXPECT_FALSE(Files().Exists(At(L"mark")));
  machine_->PutFile(At(L"mark"), "what it holds");
  ASSERT_EQ(Files().HoldFile(At(L"mark"), FileHold::kTake), kSystemOk);
  EXPECT_EQ(Files().RemoveFile(At(L"mark")), kSystemOk);
}

TEST_P(FileSystemContract, HoldsNoFileInAFolderThatIsMissing) {
  EXPECT_NE(Files().HoldFile(At(L"none\\mark"), FileHold::kMake), kSystemOk);
  EXPECT_FALSE(Files().Exists(At(L"none")));
}

CARROVAN_CONTRACT(FileSystemContract);

}  // namespace
}  // namespace carrovan
