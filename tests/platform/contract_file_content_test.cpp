// What the engine may rely on when it reads and writes whole files.
#include <gtest/gtest.h>

#include <memory>

#include "tests/support/contract_machines.h"
#include "text/text.h"

namespace carrovan {
namespace {

class FileContentContract : public ContractTest {
 protected:
  std::wstring At(const std::wstring& name) const { return machine_->ScratchFolder() + name; }
  FileSystem& Files() { return *machine_->Ports().files; }
  void Put(const std::wstring& name, const std::string& bytes) {
    machine_->PutFile(At(name), bytes);
  }

  // What a file holds; "none" when it is not there.
  std::string Content(const std::wstring& name) const {
    return machine_->FileBytes(At(name)).value_or("none");
  }

  std::vector<std::wstring> Listed(const std::wstring& folder) {
    std::vector<std::wstring> names;
    for (const FolderEntry& entry : ListFolder(Files(), At(folder))) names.push_back(entry.name);
    return names;
  }

  SystemCode Read(const std::wstring& name) {
    std::string bytes = "before";
    const SystemCode code = Files().ReadBytes(At(name), bytes);
    EXPECT_TRUE(code == kSystemOk || bytes == "before") << ToUtf8(name);
    return code;
  }

  SystemCode List(const std::wstring& name) {
    std::vector<FolderEntry> entries = {{L"before"}};
    const SystemCode code = Files().ReadFolder(At(name), entries);
    EXPECT_TRUE(code == kSystemOk || entries.size() == 1) << ToUtf8(name);
    return code;
  }

  SystemCode Write(const std::wstring& name, std::string_view bytes) {
    return Files().WriteBytes(At(name), bytes);
  }
  SystemCode Copy(const std::wstring& source, const std::wstring& target) {
    return Files().CopyOver(At(source), At(target));
  }
  SystemCode Move(const std::wstring& source, const std::wstring& target) {
    return Files().MoveTo(At(source), At(target));
  }
};

// Every byte, a zero and the end-of-text mark of older systems among them, in odd company.
std::string BinaryBytes() {
  std::string bytes = "\r\n\n\r\x1A";
  for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
  return bytes + bytes;
}

// Characters of one, two and three bytes in UTF-8, and one outside the 16-bit range.
const std::wstring kManyScripts = FromUtf8("a \xC3\xA4 \xE4\xB8\xAD\xE6\x96\x87 \xF0\x9F\x98\x80");

TEST_P(FileContentContract, ReadsBackEveryByte) {
  const std::string large(300'001, 'x');
  for (const std::string& bytes : {std::string(), std::string("x"), BinaryBytes(), large}) {
    EXPECT_EQ(Write(L"file.bin", bytes), kSystemOk);
    EXPECT_EQ(machine_->FileBytes(At(L"file.bin")), bytes);
    std::string read = "before";
    EXPECT_EQ(Files().ReadBytes(At(L"file.bin"), read), kSystemOk);
    EXPECT_EQ(read, bytes);
  }
  EXPECT_EQ(Listed(L""), std::vector<std::wstring>{L"file.bin"});
}

TEST_P(FileContentContract, TellsWhyAFileCannotBeRead) {
  Put(L"folder\\file.txt", "x");
  Put(L"secret.txt", "x");
  machine_->MakeUnreadable(At(L"secret.txt"));
  EXPECT_EQ(Read(L"none.txt"), kFileNotFound);
  EXPECT_EQ(Read(L"none\\file.txt"), kPathNotFound);
  EXPECT_EQ(Read(L"folder\\file.txt\\file.txt"), kPathNotFound);
  EXPECT_EQ(Read(L"folder"), kAccessDenied);
  EXPECT_NE(Read(L"secret.txt"), kSystemOk);
}

TEST_P(FileContentContract, ReadsAReadOnlyFile) {
  Put(L"file.txt", "content");
  machine_->MakeReadOnly(At(L"file.txt"));
  EXPECT_EQ(Read(L"FILE.TXT"), kSystemOk);
}

TEST_P(FileContentContract, ReadsAFolder) {
  Put(L"folder\\file.txt", "x");
  machine_->MakeFolder(At(L"folder\\sub"));
  machine_->MakeFolder(At(L"empty"));
  for (const wchar_t* name : {L"folder", L"FOLDER\\"}) {
    std::vector<FolderEntry> entries = {{L"before"}};
    EXPECT_EQ(Files().ReadFolder(At(name), entries), kSystemOk);
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].name, L"file.txt");
    EXPECT_FALSE(entries[0].isFolder);
    EXPECT_EQ(entries[1].name, L"sub");
    EXPECT_TRUE(entries[1].isFolder);
  }
  std::vector<FolderEntry> entries = {{L"before"}};
  EXPECT_EQ(Files().ReadFolder(At(L"empty"), entries), kSystemOk);
  EXPECT_TRUE(entries.empty());
}

TEST_P(FileContentContract, TellsWhyAFolderCannotBeRead) {
  Put(L"file.txt", "x");
  EXPECT_EQ(List(L"none"), kPathNotFound);
  EXPECT_EQ(List(L"none\\none"), kPathNotFound);
  EXPECT_EQ(List(L"file.txt"), kNotAFolder);
}

TEST_P(FileContentContract, WritesOverAFile) {
  Put(L"File.txt", "a longer content");
  EXPECT_EQ(Write(L"fILE.TXT", "short"), kSystemOk);
  EXPECT_EQ(Content(L"File.txt"), "short");
  EXPECT_EQ(Listed(L"").size(), 1u);
}

TEST_P(FileContentContract, WritesBesideNamesOfAnyKind) {
  const std::wstring longest(255, L'x');
  Put(L"file.txt.part", "of somebody else");
  Put(L"~carrovan0.part", "of somebody else");
  EXPECT_EQ(Write(L"file.txt", "x"), kSystemOk);
  EXPECT_EQ(Write(longest, "x"), kSystemOk);
  EXPECT_EQ(Content(L"file.txt.part"), "of somebody else");
  EXPECT_EQ(Content(L"~carrovan0.part"), "of somebody else");
  EXPECT_EQ(Content(longest), "x");
  EXPECT_EQ(Listed(L"").size(), 4u);
}

TEST_P(FileContentContract, TellsWhyAFileCannotBeWritten) {
  machine_->MakeFolder(At(L"folder"));
  Put(L"file.txt", "x");
  EXPECT_EQ(Write(L"none\\file.txt", "new"), kPathNotFound);
  EXPECT_EQ(Write(L"file.txt\\file.txt", "new"), kPathNotFound);
  EXPECT_EQ(Write(L"folder", "new"), kAccessDenied);
  EXPECT_EQ(Write(L"a?b", "new"), kInvalidName);
  EXPECT_EQ(Listed(L""), (std::vector<std::wstring>{L"file.txt", L"folder"}));
  EXPECT_EQ(Content(L"file.txt"), "x");
}

TEST_P(FileContentContract, WritesNothingIntoAFolderThatIsClosed) {
  if (CannotTry()) GTEST_SKIP() << "only an attempt shows that the folder is closed";
  Put(L"closed\\file.txt", "x");
  machine_->MakeFolderUnwritable(At(L"closed"));
  EXPECT_EQ(Write(L"closed\\new.txt", "new"), kAccessDenied);
  EXPECT_EQ(Listed(L"closed"), std::vector<std::wstring>{L"file.txt"});
}

TEST_P(FileContentContract, NeverReplacesAReadOnlyFile) {
  Put(L"source.txt", "new");
  Put(L"target.txt", "old");
  machine_->MakeReadOnly(At(L"target.txt"));
  EXPECT_EQ(Write(L"target.txt", "new"), kAccessDenied);
  EXPECT_EQ(Copy(L"source.txt", L"target.txt"), kAccessDenied);
  EXPECT_EQ(Move(L"source.txt", L"target.txt"), kAlreadyExists);
  EXPECT_EQ(Content(L"source.txt"), "new");
  EXPECT_EQ(Content(L"target.txt"), "old");
  EXPECT_EQ(Listed(L"").size(), 2u);
}

TEST_P(FileContentContract, CopiesAFile) {
  Put(L"source.bin", BinaryBytes());
  Put(L"empty.txt", "");
  Put(L"old.bin", std::string(10'000, 'o'));
  EXPECT_EQ(Copy(L"source.bin", L"copy.bin"), kSystemOk);
  EXPECT_EQ(Copy(L"source.bin", L"OLD.bin"), kSystemOk);
  EXPECT_EQ(Content(L"source.bin"), BinaryBytes());
  EXPECT_EQ(Content(L"copy.bin"), BinaryBytes());
  EXPECT_EQ(Content(L"old.bin"), BinaryBytes());
  EXPECT_EQ(Copy(L"empty.txt", L"old.bin"), kSystemOk);
  EXPECT_EQ(Content(L"old.bin"), "");
  EXPECT_EQ(Listed(L"").size(), 4u);
}

TEST_P(FileContentContract, TellsWhyAFileCannotBeCopied) {
  Put(L"source.txt", "new");
  Put(L"target.txt", "old");
  machine_->MakeFolder(At(L"folder"));
  EXPECT_EQ(Copy(L"none.txt", L"target.txt"), kFileNotFound);
  EXPECT_EQ(Copy(L"none\\none.txt", L"target.txt"), kPathNotFound);
  EXPECT_EQ(Copy(L"folder", L"target.txt"), kAccessDenied);
  EXPECT_EQ(Copy(L"source.txt", L"none\\target.txt"), kPathNotFound);
  EXPECT_EQ(Copy(L"source.txt", L"folder"), kAccessDenied);
  EXPECT_EQ(Copy(L"none.txt", L"new.txt"), kFileNotFound);
  EXPECT_EQ(Content(L"target.txt"), "old");
  EXPECT_EQ(Listed(L""), (std::vector<std::wstring>{L"folder", L"source.txt", L"target.txt"}));
}

TEST_P(FileContentContract, LeavesTheTargetOfAnUnreadableFileAlone) {
  Put(L"secret.txt", "new");
  Put(L"target.txt", "old");
  machine_->MakeUnreadable(At(L"secret.txt"));
  EXPECT_NE(Copy(L"secret.txt", L"target.txt"), kSystemOk);
  EXPECT_EQ(Content(L"target.txt"), "old");
}

TEST_P(FileContentContract, MovesAFile) {
  Put(L"source.bin", BinaryBytes());
  machine_->MakeFolder(At(L"folder"));
  EXPECT_EQ(Move(L"SOURCE.bin", L"folder\\moved.bin"), kSystemOk);
  EXPECT_EQ(Content(L"folder\\moved.bin"), BinaryBytes());
  EXPECT_EQ(Listed(L""), std::vector<std::wstring>{L"folder"});
}

TEST_P(FileContentContract, MovesAFolderWithWhatItHolds) {
  Put(L"old\\sub\\file.bin", BinaryBytes());
  machine_->MakeFolder(At(L"old\\empty"));
  machine_->MakeFolder(At(L"other"));
  EXPECT_EQ(Move(L"OLD", L"new"), kSystemOk);
  EXPECT_EQ(Content(L"new\\sub\\file.bin"), BinaryBytes());
  EXPECT_EQ(Listed(L"new"), (std::vector<std::wstring>{L"empty", L"sub"}));
  EXPECT_EQ(Move(L"new", L"other"), kAlreadyExists);
  EXPECT_EQ(Move(L"new", L"none\\new"), kPathNotFound);
  EXPECT_EQ(Move(L"new", L"a?b"), kInvalidName);
  EXPECT_EQ(Listed(L""), (std::vector<std::wstring>{L"new", L"other"}));
}

TEST_P(FileContentContract, ReadsInParts) {
  const std::string large(1'000'003, 'x');
  for (const std::string& bytes : {std::string(), std::string("x"), BinaryBytes(), large}) {
    Put(L"file.bin", bytes);
    std::string read;
    EXPECT_EQ(Files().ReadInParts(At(L"FILE.bin"),
                                  [&](std::string_view part, std::uint64_t fileBytes) {
                                    EXPECT_FALSE(part.empty());
                                    EXPECT_EQ(fileBytes, bytes.size());
                                    read += part;
                                    return true;
                                  }),
              kSystemOk);
    EXPECT_EQ(read, bytes);
  }
}

TEST_P(FileContentContract, EndsReadingWhenNoMorePartsAreWanted) {
  Put(L"file.bin", std::string(1'000'003, 'x'));
  int parts = 0;
  EXPECT_EQ(Files().ReadInParts(At(L"file.bin"),
                                [&](std::string_view, std::uint64_t) { return ++parts < 2; }),
            kSystemOk);
  EXPECT_EQ(parts, 2);
}

TEST_P(FileContentContract, TellsWhyAFileCannotBeReadInParts) {
  Put(L"secret.txt", "x");
  machine_->MakeUnreadable(At(L"secret.txt"));
  const auto read = [this](const wchar_t* name) {
    return Files().ReadInParts(At(name), [](std::string_view, std::uint64_t) {
      ADD_FAILURE();
      return false;
    });
  };
  EXPECT_EQ(read(L"none.txt"), kFileNotFound);
  EXPECT_EQ(read(L"none\\none.txt"), kPathNotFound);
  EXPECT_NE(read(L"secret.txt"), kSystemOk);
}

TEST_P(FileContentContract, ReplacesAFileInPartsOnceAllAreThere) {
  for (const std::uint64_t expectedBytes : {0, 100'000, 300'002, 5'000'000}) {
    Put(L"File.bin", "old");
    std::unique_ptr<FileReplacement> file;
    ASSERT_EQ(Files().BeginReplacement(At(L"fILE.bin"), expectedBytes, file), kSystemOk);
    EXPECT_EQ(file->Append(std::string(300'001, 'x')), kSystemOk);
    EXPECT_EQ(file->Append(""), kSystemOk);
    EXPECT_EQ(file->Append(BinaryBytes()), kSystemOk);
    EXPECT_EQ(Content(L"File.bin"), "old");
    EXPECT_EQ(file->Complete(), kSystemOk);
    file.reset();
    EXPECT_EQ(Content(L"File.bin"), std::string(300'001, 'x') + BinaryBytes()) << expectedBytes;
    EXPECT_EQ(Listed(L""), std::vector<std::wstring>{L"File.bin"});
  }
}

TEST_P(FileContentContract, ReplacementMayBringNewAndEmptyFiles) {
  std::unique_ptr<FileReplacement> file;
  ASSERT_EQ(Files().BeginReplacement(At(L"new.bin"), 1000, file), kSystemOk);
  EXPECT_EQ(file->Complete(), kSystemOk);
  EXPECT_EQ(Content(L"new.bin"), "");
  EXPECT_EQ(Listed(L""), std::vector<std::wstring>{L"new.bin"});
}

TEST_P(FileContentContract, ReplacementThatIsGivenUpLeavesNothing) {
  Put(L"file.bin", "old");
  std::unique_ptr<FileReplacement> file;
  ASSERT_EQ(Files().BeginReplacement(At(L"file.bin"), 1000, file), kSystemOk);
  EXPECT_EQ(file->Append("new"), kSystemOk);
  file.reset();
  EXPECT_EQ(Content(L"file.bin"), "old");
  EXPECT_EQ(Listed(L""), std::vector<std::wstring>{L"file.bin"});
}

TEST_P(FileContentContract, ReplacesNothingInAFolderThatIsClosed) {
  if (CannotTry()) GTEST_SKIP() << "only an attempt shows that the folder is closed";
  Put(L"closed\\file.txt", "x");
  machine_->MakeFolderUnwritable(At(L"closed"));
  std::unique_ptr<FileReplacement> file;
  EXPECT_EQ(Files().BeginReplacement(At(L"closed\\new.txt"), 1, file), kAccessDenied);
  EXPECT_EQ(file, nullptr);
  EXPECT_EQ(Listed(L"closed"), std::vector<std::wstring>{L"file.txt"});
}

TEST_P(FileContentContract, TellsWhyAFileCannotBeReplaced) {
  machine_->MakeFolder(At(L"folder"));
  Put(L"readonly.txt", "x");
  machine_->MakeReadOnly(At(L"readonly.txt"));
  std::unique_ptr<FileReplacement> file;
  const auto begin = [&](const wchar_t* name) {
    return Files().BeginReplacement(At(name), 1, file);
  };
  EXPECT_EQ(begin(L"none\\file.txt"), kPathNotFound);
  EXPECT_EQ(begin(L"a?b\\file.txt"), kInvalidName);
  EXPECT_EQ(begin(L"readonly.txt"), kAccessDenied);
  EXPECT_EQ(file, nullptr);
  EXPECT_EQ(Listed(L""), (std::vector<std::wstring>{L"folder", L"readonly.txt"}));
  // The folder may be seen at once, or only when the file is to take its place.
  SystemCode code = begin(L"folder");
  if (code == kSystemOk) code = file->Complete();
  EXPECT_EQ(code, kAccessDenied);
}

TEST_P(FileContentContract, MovesOntoNothingThatIsThere) {
  Put(L"source.txt", "new");
  Put(L"target.txt", "old");
  machine_->MakeFolder(At(L"folder"));
  EXPECT_EQ(Move(L"source.txt", L"TARGET.txt"), kAlreadyExists);
  EXPECT_EQ(Move(L"source.txt", L"folder"), kAlreadyExists);
  EXPECT_EQ(Content(L"source.txt"), "new");
  EXPECT_EQ(Content(L"target.txt"), "old");
  EXPECT_TRUE(Files().IsFolder(At(L"folder")));
}

TEST_P(FileContentContract, GivesAFileOrAFolderAnotherSpelling) {
  if (machine_->KeepsSpelling()) GTEST_SKIP() << "this system keeps it";
  Put(L"folder\\file.txt", "x");
  EXPECT_EQ(Move(L"folder\\file.txt", L"FOLDER\\File.TXT"), kSystemOk);
  EXPECT_EQ(Listed(L"folder"), std::vector<std::wstring>{L"File.TXT"});
  EXPECT_EQ(Move(L"folder", L"Folder"), kSystemOk);
  EXPECT_EQ(Listed(L""), std::vector<std::wstring>{L"Folder"});
  EXPECT_EQ(Content(L"folder\\file.txt"), "x");
}

TEST_P(FileContentContract, TellsWhyAFileCannotBeMoved) {
  Put(L"source.txt", "new");
  EXPECT_EQ(Move(L"none.txt", L"target.txt"), kFileNotFound);
  EXPECT_EQ(Move(L"none\\none.txt", L"target.txt"), kPathNotFound);
  EXPECT_EQ(Move(L"source.txt", L"none\\target.txt"), kPathNotFound);
  EXPECT_EQ(Listed(L""), std::vector<std::wstring>{L"source.txt"});
  EXPECT_EQ(Content(L"source.txt"), "new");
}

TEST_P(FileContentContract, TakesNamesInEveryScript) {
  const std::wstring inside = kManyScripts + L"\\" + kManyScripts;
  machine_->MakeFolder(At(kManyScripts));
  EXPECT_EQ(Write(inside, "x"), kSystemOk);
  EXPECT_EQ(Copy(inside, inside + L" copy"), kSystemOk);
  EXPECT_EQ(Move(inside, inside + L" moved"), kSystemOk);
  EXPECT_EQ(Listed(kManyScripts),
            (std::vector<std::wstring>{kManyScripts + L" copy", kManyScripts + L" moved"}));
  EXPECT_EQ(Content(inside + L" copy"), "x");
  EXPECT_EQ(Content(inside + L" moved"), "x");
}

TEST_P(FileContentContract, TakesPathsLongerThanTheFixedBuffers) {
  std::wstring folder = L"long";
  ASSERT_EQ(Files().CreateFolder(At(folder)), kSystemOk);
  while (At(folder).size() < 300) {
    folder += L"\\" + std::wstring(60, L'x');
    ASSERT_EQ(Files().CreateFolder(At(folder)), kSystemOk);
  }
  EXPECT_EQ(Write(folder + L"\\file.txt", "x"), kSystemOk);
  EXPECT_EQ(Read(folder + L"\\file.txt"), kSystemOk);
  EXPECT_EQ(Copy(folder + L"\\file.txt", folder + L"\\copy.txt"), kSystemOk);
  EXPECT_EQ(Move(folder + L"\\copy.txt", folder + L"\\moved.txt"), kSystemOk);
  EXPECT_EQ(List(folder), kSystemOk);
  EXPECT_EQ(Listed(folder), (std::vector<std::wstring>{L"file.txt", L"moved.txt"}));
  EXPECT_EQ(Read(folder + L"\\none.txt"), kFileNotFound);
}

TEST_P(FileContentContract, AppendsToAFileAndMakesItWhenItIsMissing) {
  EXPECT_EQ(Files().AppendBytes(At(L"log"), "one\n"), kSystemOk);
  EXPECT_EQ(Files().AppendBytes(At(L"LOG"), std::string("\0\r\n", 3)), kSystemOk);
  EXPECT_EQ(Content(L"log"), std::string("one\n\0\r\n", 7));
}

TEST_P(FileContentContract, AppendsToAnOpenFileThatOthersReadMeanwhile) {
  Put(L"log", "zero\n");
  std::unique_ptr<FileAppender> log;
  ASSERT_EQ(Files().OpenToAppend(At(L"Log"), log), kSystemOk);
  EXPECT_EQ(log->Append("one\n"), kSystemOk);
  EXPECT_EQ(Content(L"log"), "zero\none\n");
  EXPECT_EQ(log->FlushToDisk(), kSystemOk);
  EXPECT_EQ(log->Append(""), kSystemOk);
  EXPECT_EQ(log->Append("two\n"), kSystemOk);
  EXPECT_EQ(Content(L"log"), "zero\none\ntwo\n");
  log.reset();
  EXPECT_EQ(Files().RemoveFile(At(L"log")), kSystemOk);
}

TEST_P(FileContentContract, MakesAFileThatIsOpenedToAppend) {
  std::unique_ptr<FileAppender> log;
  ASSERT_EQ(Files().OpenToAppend(At(L"log"), log), kSystemOk);
  EXPECT_EQ(Content(L"log"), "");
  log.reset();
  EXPECT_EQ(Files().OpenToAppend(At(L"none\\log"), log), kPathNotFound);
  EXPECT_EQ(log, nullptr);
}

TEST_P(FileContentContract, AppendsNothingWhereNothingCanBeWritten) {
  Put(L"closed", "content");
  machine_->MakeReadOnly(At(L"closed"));
  machine_->MakeFolder(At(L"folder"));
  EXPECT_EQ(Files().AppendBytes(At(L"closed"), "more"), kAccessDenied);
  EXPECT_EQ(Content(L"closed"), "content");
  EXPECT_NE(Files().AppendBytes(At(L"folder"), "more"), kSystemOk);
  EXPECT_EQ(Files().AppendBytes(At(L"none\\log"), "more"), kPathNotFound);
}

TEST_P(FileContentContract, TellsAReadOnlyFile) {
  Put(L"closed", "content");
  Put(L"open", "content");
  machine_->MakeReadOnly(At(L"closed"));
  EXPECT_TRUE(Files().IsReadOnly(At(L"closed")));
  EXPECT_FALSE(Files().IsReadOnly(At(L"open")));
  EXPECT_FALSE(Files().IsReadOnly(At(L"none")));
  EXPECT_FALSE(Files().IsReadOnly(machine_->ScratchFolder()));
  EXPECT_FALSE(Files().IsLink(At(L"open")));
  EXPECT_FALSE(Files().IsLink(At(L"none")));
}

CARROVAN_CONTRACT(FileContentContract);

}  // namespace
}  // namespace carrovan
