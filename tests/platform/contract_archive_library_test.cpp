// What the engine may rely on, whatever machine it runs on.
#include <gtest/gtest.h>

#include <memory>

#include "tests/support/contract_machines.h"
#include "tests/zip/raw_zip.h"
#include "text/text.h"

namespace carrovan {
namespace {

class ArchiveLibraryContract : public ContractTest {
 protected:
  std::wstring At(const std::wstring& name) const { return machine_->ScratchFolder() + name; }
  ArchiveLibrary& Archives() { return *machine_->Ports().archives; }

  std::unique_ptr<ArchiveReader> Stored(const std::vector<RawItem>& items) {
    machine_->PutFile(archive_, RawZip(items));
    return Archives().Open(archive_);
  }

  std::vector<std::wstring> Names(const std::wstring& folder) {
    std::vector<std::wstring> names;
    for (const FolderEntry& entry : ListFolder(*machine_->Ports().files, folder)) {
      names.push_back(entry.name);
    }
    return names;
  }

  std::wstring archive_ = At(L"archive.ucex");
};

std::string Pattern(std::size_t size) {
  std::string bytes;
  for (std::size_t i = 0; i < size; ++i) bytes.push_back(static_cast<char>(i * i >> 3));
  return bytes;
}

CARROVAN_CONTRACT(ArchiveLibraryContract);

TEST_P(ArchiveLibraryContract, GivesBackWhatWasStoredForEitherPurpose) {
  const struct {
    std::wstring entryName;
    std::string content;
  } kFiles[] = {
      {L"config.ini", "[Selected]\r\n"},
      {L"Roaming\\ORMA\\en-us\\menu.xml", Pattern(1'000'000)},
      {L"Local\\\x4E2D\x6587\\" + FromUtf8("\xF0\x9F\x98\x80") + L" \x00E4.xml", Pattern(3)},
      {L"Local\\empty", ""},
  };
  for (const ArchivePurpose purpose : {ArchivePurpose::kKeep, ArchivePurpose::kUnpackAtOnce}) {
    auto writer = Archives().Create(archive_, purpose);
    ASSERT_NE(writer, nullptr);
    for (const auto& file : kFiles) {
      machine_->PutFile(At(L"in\\" + file.entryName), file.content);
      EXPECT_EQ(writer->Add(file.entryName, At(L"in\\" + file.entryName)), ArchiveResult::kDone);
    }
    ASSERT_EQ(writer->Close(), ArchiveResult::kDone);

    auto reader = Archives().Open(archive_);
    ASSERT_NE(reader, nullptr);
    std::size_t index = 0;
    for (const auto& file : kFiles) {
      const auto item = reader->Item(index);
      ASSERT_TRUE(item);
      EXPECT_EQ(item->name, file.entryName);
      EXPECT_EQ(item->sizeBytes, file.content.size());
      EXPECT_EQ(reader->Extract(index, At(L"out\\" + file.entryName)), ArchiveResult::kDone);
      EXPECT_EQ(machine_->FileBytes(At(L"out\\" + file.entryName)), file.content);
      ++index;
    }
    EXPECT_EQ(reader->Item(index), std::nullopt);
    EXPECT_EQ(reader->Extract(index, At(L"out\\none")), ArchiveResult::kNoSuchItem);
  }
}

TEST_P(ArchiveLibraryContract, ArchiveThatIsUnpackedAtOnceIsNotCompressed) {
  machine_->PutFile(At(L"a.txt"), std::string(10'000, 'a'));
  const auto writer = Archives().Create(archive_, ArchivePurpose::kUnpackAtOnce);
  ASSERT_NE(writer, nullptr);
  ASSERT_EQ(writer->Add(L"a.txt", At(L"a.txt")), ArchiveResult::kDone);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  const auto reader = Archives().Open(archive_);
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(reader->Item(0)->packedSizeBytes, 10'000u);
}

TEST_P(ArchiveLibraryContract, FileThatIsGoneBeforeItWasReadFailsTheArchive) {
  machine_->PutFile(archive_, "the archive of before");
  machine_->PutFile(At(L"a.txt"), "a");
  const auto writer = Archives().Create(archive_, ArchivePurpose::kUnpackAtOnce);
  ASSERT_NE(writer, nullptr);
  ASSERT_EQ(writer->Add(L"a.txt", At(L"a.txt")), ArchiveResult::kDone);
  machine_->DeletePath(At(L"a.txt"));
  EXPECT_EQ(writer->Close(), ArchiveResult::kSourceUnreadable);
  EXPECT_EQ(machine_->FileBytes(archive_), "the archive of before");
}

TEST_P(ArchiveLibraryContract, KeepsTheModificationTimeBothWays) {
  RawItem item = {.name = "old.txt", .data = "x"};
  item.dosTime = (4 << 11) | (5 << 5) | (6 / 2);
  item.dosDate = ((2001 - 1980) << 9) | (2 << 5) | 3;
  const auto reader = Stored({item});
  ASSERT_NE(reader, nullptr);
  ASSERT_EQ(reader->Extract(0, At(L"old.txt")), ArchiveResult::kDone);
  const auto writer = Archives().Create(At(L"again.ucex"), ArchivePurpose::kKeep);
  ASSERT_NE(writer, nullptr);
  ASSERT_EQ(writer->Add(L"old.txt", At(L"old.txt")), ArchiveResult::kDone);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  const std::string bytes = machine_->FileBytes(At(L"again.ucex")).value();
  const std::size_t record = CentralRecord(bytes, 0);
  EXPECT_EQ(NumberAt(bytes, record + 12, 2), item.dosTime);
  EXPECT_EQ(NumberAt(bytes, record + 14, 2), item.dosDate);
}

TEST_P(ArchiveLibraryContract, SkipsWhatCannotBeReadAndGoesOn) {
  machine_->PutFile(At(L"good.txt"), "good");
  machine_->PutFile(At(L"secret.txt"), "secret");
  machine_->MakeUnreadable(At(L"secret.txt"));
  machine_->MakeFolder(At(L"folder"));
  const auto writer = Archives().Create(archive_, ArchivePurpose::kKeep);
  ASSERT_NE(writer, nullptr);
  EXPECT_EQ(writer->Add(L"a", At(L"missing.txt")), ArchiveResult::kSourceMissing);
  EXPECT_EQ(writer->Add(L"b", At(L"missing\\x.txt")), ArchiveResult::kSourceMissing);
  EXPECT_EQ(writer->Add(L"c", At(L"secret.txt")), ArchiveResult::kSourceUnreadable);
  EXPECT_EQ(writer->Add(L"d", At(L"folder")), ArchiveResult::kSourceUnreadable);
  EXPECT_EQ(writer->Add(L"e", At(L"good.txt")), ArchiveResult::kDone);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  const auto reader = Archives().Open(archive_);
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(reader->Item(0)->name, L"e");
  EXPECT_EQ(reader->Item(1), std::nullopt);
}

TEST_P(ArchiveLibraryContract, StoresNothingUnderANameThatIsUnfit) {
  machine_->PutFile(At(L"good.txt"), "good");
  const auto writer = Archives().Create(archive_, ArchivePurpose::kKeep);
  ASSERT_NE(writer, nullptr);
  EXPECT_EQ(writer->Add(L"Once.txt", At(L"good.txt")), ArchiveResult::kDone);
  for (const wchar_t* name : {L"", L"Once.txt", L"ONCE.TXT", L"..\\x", L"C:\\x", L"\\x"}) {
    EXPECT_EQ(writer->Add(name, At(L"good.txt")), ArchiveResult::kNameRefused) << ToUtf8(name);
  }
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  EXPECT_EQ(Archives().Open(archive_)->Item(1), std::nullopt);
}

TEST_P(ArchiveLibraryContract, LeavesTheOldArchiveWholeWithoutClose) {
  machine_->PutFile(At(L"in\\good.txt"), Pattern(100'000));
  machine_->PutFile(At(L"out\\archive.ucex"), "old");
  auto writer = Archives().Create(At(L"out\\archive.ucex"), ArchivePurpose::kKeep);
  ASSERT_NE(writer, nullptr);
  ASSERT_EQ(writer->Add(L"a", At(L"in\\good.txt")), ArchiveResult::kDone);
  EXPECT_EQ(machine_->FileBytes(At(L"out\\archive.ucex")), "old");
  writer.reset();
  EXPECT_EQ(machine_->FileBytes(At(L"out\\archive.ucex")), "old");
  EXPECT_EQ(Names(At(L"out")), std::vector<std::wstring>{L"archive.ucex"});
}

TEST_P(ArchiveLibraryContract, PutsTheNewArchiveInPlaceOfTheOld) {
  machine_->PutFile(At(L"good.txt"), "good");
  machine_->PutFile(At(L"out\\archive.ucex"), std::string(10'000, 'x'));
  const auto writer = Archives().Create(At(L"OUT\\Archive.ucex"), ArchivePurpose::kKeep);
  ASSERT_NE(writer, nullptr);
  ASSERT_EQ(writer->Add(L"a", At(L"good.txt")), ArchiveResult::kDone);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  EXPECT_EQ(Names(At(L"out")).size(), 1u);
  const auto reader = Archives().Open(At(L"out\\archive.ucex"));
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(reader->Item(0)->name, L"a");
}

TEST_P(ArchiveLibraryContract, CreatesNothingWhereNothingCanBe) {
  machine_->MakeFolder(At(L"folder"));
  EXPECT_EQ(Archives().Create(At(L"none\\archive.ucex"), ArchivePurpose::kKeep), nullptr);
  EXPECT_EQ(Archives().Create(At(L"folder"), ArchivePurpose::kKeep), nullptr);
  EXPECT_EQ(Archives().Create(L"", ArchivePurpose::kKeep), nullptr);
  EXPECT_FALSE(machine_->Ports().files->Exists(At(L"none")));
}

TEST_P(ArchiveLibraryContract, LeavesAReadOnlyArchiveAlone) {
  machine_->PutFile(archive_, "old");
  machine_->MakeReadOnly(archive_);
  EXPECT_EQ(Archives().Create(archive_, ArchivePurpose::kKeep), nullptr);
  EXPECT_EQ(machine_->FileBytes(archive_), "old");
}

TEST_P(ArchiveLibraryContract, OpensNothingThatIsNoArchive) {
  machine_->PutFile(At(L"text.txt"), "no archive at all, but long enough to hold an end record");
  machine_->PutFile(At(L"empty"), "");
  machine_->MakeFolder(At(L"folder"));
  for (const wchar_t* name : {L"missing", L"none\\missing", L"text.txt", L"empty", L"folder"}) {
    EXPECT_EQ(Archives().Open(At(name)), nullptr) << ToUtf8(name);
  }
  EXPECT_EQ(Archives().Open(L""), nullptr);
}

TEST_P(ArchiveLibraryContract, TakesEitherSeparatorInAStoredName) {
  const auto reader = Stored({{.name = "a/b\\c.txt", .data = "x"}});
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(reader->Item(0)->name, L"a\\b\\c.txt");
}

TEST_P(ArchiveLibraryContract, RefusesItemsThatWouldLeaveTheDestination) {
  const std::vector<std::string> names = {"../evil",  "..\\evil", "a/../../evil", "/evil",
                                          "\\evil",   "C:\\evil", "C:evil",       "a\\..\\..\\evil",
                                          "x:stream", "NUL",      "a/..",         "evil."};
  std::vector<RawItem> items;
  items.reserve(names.size());
  for (const std::string& name : names) items.push_back({.name = name, .data = "evil"});
  const auto reader = Stored(items);
  ASSERT_NE(reader, nullptr);
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(reader->Extract(i, At(L"out\\sub\\evil")), ArchiveResult::kNameRefused) << names[i];
  }
  EXPECT_FALSE(machine_->Ports().files->Exists(At(L"out")));
}

TEST_P(ArchiveLibraryContract, ReplacesAFileOnlyByCompleteData) {
  RawItem damaged = {.name = "a", .data = Pattern(100'000)};
  damaged.checksum = 12345;
  RawItem encrypted = {.name = "b", .data = "x"};
  encrypted.flags = 1;
  RawItem unknown = {.name = "c", .data = "x"};
  unknown.method = 98;
  const auto reader = Stored({damaged, encrypted, unknown, {.name = "d", .data = "new"}});
  ASSERT_NE(reader, nullptr);
  machine_->PutFile(At(L"out\\file"), "old");
  EXPECT_EQ(reader->Extract(0, At(L"out\\file")), ArchiveResult::kDamaged);
  EXPECT_EQ(reader->Extract(1, At(L"out\\file")), ArchiveResult::kEncrypted);
  EXPECT_EQ(reader->Extract(2, At(L"out\\file")), ArchiveResult::kMethodUnsupported);
  EXPECT_EQ(machine_->FileBytes(At(L"out\\file")), "old");
  EXPECT_EQ(reader->Extract(3, At(L"OUT\\File")), ArchiveResult::kDone);
  EXPECT_EQ(machine_->FileBytes(At(L"out\\file")), "new");
  EXPECT_EQ(Names(At(L"out")).size(), 1u);
}

TEST_P(ArchiveLibraryContract, WritesNothingWhereItMayNot) {
  const auto reader = Stored({{.name = "a", .data = "new"}});
  ASSERT_NE(reader, nullptr);
  machine_->PutFile(At(L"file"), "old");
  machine_->MakeReadOnly(At(L"file"));
  machine_->PutFile(At(L"plain"), "x");
  for (const wchar_t* name : {L"file", L"a?b", L"c?d\\file", L"plain\\file"}) {
    EXPECT_EQ(reader->Extract(0, At(name)), ArchiveResult::kTargetNotWritable) << ToUtf8(name);
  }
  EXPECT_EQ(machine_->FileBytes(At(L"file")), "old");
}

TEST_P(ArchiveLibraryContract, WritesNothingIntoAFolderThatIsClosed) {
  if (CannotTry()) GTEST_SKIP() << "only an attempt shows that the folder is closed";
  const auto reader = Stored({{.name = "a", .data = "new"}});
  ASSERT_NE(reader, nullptr);
  machine_->MakeFolder(At(L"closed"));
  machine_->MakeFolderUnwritable(At(L"closed"));
  for (const wchar_t* name : {L"closed\\file", L"closed\\sub\\file"}) {
    EXPECT_EQ(reader->Extract(0, At(name)), ArchiveResult::kTargetNotWritable) << ToUtf8(name);
  }
  EXPECT_EQ(Archives().Create(At(L"closed\\archive.ucex"), ArchivePurpose::kKeep), nullptr);
  EXPECT_TRUE(Names(At(L"closed")).empty());
}

TEST_P(ArchiveLibraryContract, MakesAFolderOfAnItemThatIsOne) {
  const auto reader = Stored({{.name = "sub/", .data = ""}});
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(reader->Extract(0, At(L"out\\sub\\")), ArchiveResult::kDone);
  EXPECT_TRUE(machine_->Ports().files->IsFolder(At(L"out\\sub")));
}

TEST_P(ArchiveLibraryContract, TakesPathsLongerThanTheFixedBuffers) {
  std::wstring folder = At(L"long");
  while (folder.size() < 300) folder += L"\\" + std::wstring(60, L'x');
  machine_->PutFile(folder + L"\\in.txt", "content");
  const auto writer = Archives().Create(folder + L"\\archive.ucex", ArchivePurpose::kKeep);
  ASSERT_NE(writer, nullptr);
  EXPECT_EQ(writer->Add(L"in.txt", folder + L"\\in.txt"), ArchiveResult::kDone);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  const auto reader = Archives().Open(folder + L"\\archive.ucex");
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(reader->Extract(0, folder + L"\\sub\\out.txt"), ArchiveResult::kDone);
  EXPECT_EQ(machine_->FileBytes(folder + L"\\sub\\out.txt"), "content");
}

}  // namespace
}  // namespace carrovan
