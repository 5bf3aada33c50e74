#include "package/package_opening.h"

#include <gtest/gtest.h>

#include "package/staging_folder.h"
#include "tests/support/fakes.h"
#include "tests/support/test_machine.h"
#include "tests/zip/raw_zip.h"
#include "text/text.h"

namespace carrovan {
namespace {

using Names = std::vector<std::wstring>;

class ExtractArchiveTest : public testing::Test {
 protected:
  // An archive with these names; a name that must not be stored as it is is written under one of
  // equal length and patched afterwards, in the local and the central header.
  void MakeArchive(const std::vector<std::string>& names) {
    const Machine ports = machine_->Ports();
    auto writer = ports.archives->Create(Archive(), ArchivePurpose::kKeep);
    ASSERT_TRUE(writer);
    for (std::size_t i = 0; i < names.size(); ++i) {
      const std::wstring source = machine_->ScratchFolder() + L"source";
      machine_->PutFile(source, "content of " + names[i]);
      ASSERT_EQ(writer->Add(Placeholder(i, names[i].size()), source), ArchiveResult::kDone);
    }
    ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
    std::string bytes = machine_->FileBytes(Archive()).value_or("");
    for (std::size_t i = 0; i < names.size(); ++i) {
      const std::wstring wide = Placeholder(i, names[i].size());
      Patch(bytes, std::string(wide.begin(), wide.end()), names[i]);
    }
    machine_->PutFile(Archive(), bytes);
  }

  static std::wstring Placeholder(std::size_t index, std::size_t length) {
    std::wstring name = L"p" + std::to_wstring(index);
    name.resize(length, L'_');
    return name;
  }

  static void Patch(std::string& bytes, const std::string& from, const std::string& to) {
    for (std::size_t at = bytes.find(from); at != std::string::npos; at = bytes.find(from, at)) {
      bytes.replace(at, from.size(), to);
    }
  }

  ExtractReport Extract() {
    const Machine ports = machine_->Ports();
    return ExtractArchive(*ports.archives, *ports.files, observer_, Archive(), Destination());
  }

  std::wstring Archive() const { return machine_->ScratchFolder() + L"x.ucex"; }
  std::wstring Destination() const { return machine_->ScratchFolder() + L"in\\"; }

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  RunObserver observer_;
};

TEST_F(ExtractArchiveTest, ItemsLandBelowTheFolder) {
  MakeArchive({"config.ini", "Local\\a\\b\\x.xml"});
  const auto report = Extract();
  EXPECT_TRUE(report.opened);
  EXPECT_EQ(report.extracted.size(), 2u);
  EXPECT_EQ(machine_->FileBytes(Destination() + L"config.ini"), "content of config.ini");
  EXPECT_EQ(machine_->FileBytes(Destination() + L"Local\\a\\b\\x.xml"),
            "content of Local\\a\\b\\x.xml");
  EXPECT_TRUE(report.failed.empty());
}

TEST_F(ExtractArchiveTest, ForwardSlashesAreSeparators) {
  MakeArchive({"Local/a/x.xml"});
  EXPECT_EQ(Extract().extracted.size(), 1u);
  EXPECT_TRUE(machine_->Ports().files->Exists(Destination() + L"Local\\a\\x.xml"));
}

TEST_F(ExtractArchiveTest, NamesThatLeadOutAreToldAndTheOthersExtracted) {
  const std::vector<std::string> kHostile = {
      "..\\evil.txt", "a\\..\\..\\evil.txt",
      "../evil.txt",  "\\evil.txt",
      "/evil.txt",    "C:\\evil.txt",
      "C:evil.txt",   "a:stream",
      "\\\\s\\h\\e",  "NUL",
      "a\\con.txt",   "COM1",
      ".. \\evil",    "x\\..",
      "dot.",         "lpt9.a.b",
      "a\\\\b",
  };
  std::vector<std::string> names = kHostile;
  names.push_back("good.txt");
  MakeArchive(names);
  const auto report = Extract();
  EXPECT_EQ(report.extracted.size(), 1u);
  ASSERT_EQ(report.failed.size(), kHostile.size());
  EXPECT_EQ(TextOfUnextracted(report.failed[0]),
            L"Failed to extract file: " + Destination() + L"..\\evil.txt");
  const auto inside = ListFolder(*machine_->Ports().files, machine_->ScratchFolder() + L"in");
  ASSERT_EQ(inside.size(), 1u) << "a refused item makes no folder either";
  EXPECT_EQ(inside[0].name, L"good.txt");
  EXPECT_FALSE(machine_->Ports().files->Exists(machine_->ScratchFolder() + L"evil.txt"));
}

std::string Repeated(const std::string& text, std::size_t times) {
  std::string all;
  for (std::size_t i = 0; i < times; ++i) all += text;
  return all;
}

TEST_F(ExtractArchiveTest, NamesThatAreTooLongAreToldAndLeaveNoFolder) {
  const std::vector<std::string> names = {"a\\" + std::string(300, 'x'),
                                          Repeated("deep\\", 6'500) + "x",
                                          std::string(256, 'y') + "\\b\\x"};
  std::vector<RawItem> items = {{"good.txt", "good"}};
  for (const std::string& name : names) items.push_back({name, "x"});
  machine_->PutFile(Archive(), RawZip(items));
  const auto report = Extract();
  EXPECT_EQ(report.extracted.size(), 1u);
  EXPECT_EQ(report.failed.size(), names.size());
  EXPECT_EQ(ListFolder(*machine_->Ports().files, Destination()).size(), 1u);
}

TEST_F(ExtractArchiveTest, ItemThatFailsLeavesNoFolderThatWasMadeForIt) {
  RawItem alone{"alone\\damaged", "content"};
  RawItem beside{"kept\\beside\\damaged", "content"};
  RawItem within{"kept\\damaged", "content"};
  for (RawItem* const item : {&alone, &beside, &within}) item->checksum = 0;
  machine_->PutFile(Archive(), RawZip({alone, beside, within, {"kept\\good", "1"}}));
  machine_->MakeFolder(Destination() + L"kept\\empty");
  const auto report = Extract();
  EXPECT_EQ(report.extracted.size(), 1u);
  EXPECT_EQ(report.failed.size(), 3u);
  const FileSystem& files = *machine_->Ports().files;
  EXPECT_EQ(ListFolder(files, Destination()).size(), 1u);
  EXPECT_EQ(ListFolder(files, Destination() + L"kept").size(), 2u);
}

TEST_F(ExtractArchiveTest, SecondExtractionOverwritesInPlaceAndKeepsOthers) {
  MakeArchive({"x.txt"});
  machine_->PutFile(Destination() + L"x.txt", "older and longer than the new one");
  machine_->PutFile(Destination() + L"other.txt", "other");
  EXPECT_EQ(Extract().extracted.size(), 1u);
  EXPECT_EQ(machine_->FileBytes(Destination() + L"x.txt"), "content of x.txt");
  EXPECT_EQ(machine_->FileBytes(Destination() + L"other.txt"), "other");
}

TEST_F(ExtractArchiveTest, FileThatCannotBeReplacedIsToldAndStays) {
  MakeArchive({"locked.txt", "x.txt"});
  machine_->PutFile(Destination() + L"locked.txt", "mine");
  machine_->MakeReadOnly(Destination() + L"locked.txt");
  const auto report = Extract();
  EXPECT_EQ(report.failed, Names{Destination() + L"locked.txt"});
  EXPECT_EQ(machine_->FileBytes(Destination() + L"locked.txt"), "mine");
  EXPECT_TRUE(machine_->Ports().files->Exists(Destination() + L"x.txt"));
}

TEST_F(ExtractArchiveTest, PlaceholdersInNamesAreJustText) {
  MakeArchive({"%s%n%d.txt"});
  EXPECT_EQ(Extract().extracted.size(), 1u);
  MakeArchive({"..\\%s%n%d"});
  EXPECT_EQ(Extract().failed, Names{Destination() + L"..\\%s%n%d"});
}

TEST_F(ExtractArchiveTest, WhatIsNotAnArchiveIsSilent) {
  EXPECT_FALSE(Extract().opened);
  for (const char* bytes : {"", "PK", "this is not an archive"}) {
    machine_->PutFile(Archive(), bytes);
    EXPECT_FALSE(Extract().opened);
  }
  EXPECT_FALSE(machine_->Ports().files->Exists(Destination()));
}

TEST_F(ExtractArchiveTest, ArchiveCutAnywhereNeverGivesWrongContent) {
  MakeArchive({"a.txt", "b\\c.txt"});
  const std::string whole = machine_->FileBytes(Archive()).value_or("");
  for (std::size_t length = 0; length < whole.size(); length += 7) {
    machine_->PutFile(Archive(), whole.substr(0, length));
    machine_->DeletePath(machine_->ScratchFolder() + L"in");
    Extract();
    for (const char* name : {"a.txt", "b\\c.txt"}) {
      const std::string narrow = name;
      const auto bytes =
          machine_->FileBytes(Destination() + std::wstring(narrow.begin(), narrow.end()));
      EXPECT_EQ(bytes.value_or("content of " + narrow), "content of " + narrow) << length;
    }
  }
}

TEST_F(ExtractArchiveTest, ItemsOfAPackageDoNotLieWhereARunKeepsItsOwn) {
  const std::vector<std::string> kReserved = {"Version_Changed_Files.zip",
                                              "version_changed_files.ZIP\\x",
                                              "Version_Changed_Files.zip.part/x",
                                              "Version_Changed_Files.zip.part",
                                              "~carrovan.lock",
                                              "~CARROVAN.LOCK\\x"};
  for (const std::string& name : kReserved) {
    MakeArchive({name, "Local\\Version_Changed_Files.zip"});
    const ExtractReport report =
        UnpackPackage(machine_->Ports(), observer_, Archive(), Destination());
    EXPECT_EQ(report.extracted.size(), 1U) << name;
    EXPECT_EQ(report.failed.size(), 1U) << name;
    EXPECT_EQ(ListFolder(*machine_->Ports().files, Destination()).size(), 1U) << name;
    EXPECT_EQ(Extract().extracted.size(), 2U) << "elsewhere the name is as good as any: " << name;
    machine_->DeletePath(machine_->ScratchFolder() + L"in");
  }
}

TEST(RefusalOfPackageItem, RefusesWhatIsLongerThanAnyPathCanBe) {
  const std::wstring part(255, L'a');
  EXPECT_EQ(RefusalOfPackageItem(part + L"\\" + part), std::nullopt);
  for (const std::wstring& name :
       {part + L"a", part + L"a\\b", L"b/" + part + L"a", part + L".xml"}) {
    EXPECT_EQ(RefusalOfPackageItem(name), L"has a part of more than 255 characters");
  }
  // Windows counts units of 16 bits, of which such a character has two.
  std::wstring outside;
  for (int i = 0; i < 127; ++i) outside += FromUtf8("\xF0\x9F\x98\x80");
  EXPECT_EQ(RefusalOfPackageItem(outside + L"a"), std::nullopt);
  EXPECT_EQ(RefusalOfPackageItem(outside + L"ab"), L"has a part of more than 255 characters");

  std::wstring longest(32'000, L'a');
  for (std::size_t i = 100; i < longest.size(); i += 200) longest[i] = L'\\';
  EXPECT_EQ(RefusalOfPackageItem(longest), std::nullopt);
  EXPECT_EQ(RefusalOfPackageItem(longest + L"b"), L"has more than 32000 characters");
}

TEST(RefusalOfPackageItem, RefusesWhatLiesDeeperThanAnySettings) {
  std::wstring name;
  for (int i = 0; i < 512; ++i) name += i % 2 == 0 ? L"a\\" : L"b/";
  EXPECT_EQ(RefusalOfPackageItem(name), std::nullopt);
  EXPECT_EQ(RefusalOfPackageItem(name + L"file"), std::nullopt);
  EXPECT_EQ(RefusalOfPackageItem(L"c\\" + name + L"file"), L"lies in more than 512 folders");
  EXPECT_EQ(RefusalOfPackageItem(L"c\\d\\" + name), L"lies in more than 512 folders");
}

TEST(RefusalOfPackageItem, NamesTheReason) {
  EXPECT_EQ(RefusalOfPackageItem(L"Local\\x"), std::nullopt);
  EXPECT_EQ(RefusalOfPackageItem(L"Version_Changed_Files.zip2"), std::nullopt);
  EXPECT_EQ(RefusalOfPackageItem(L"..\\x"), L"leads out of the folder");
  EXPECT_EQ(RefusalOfPackageItem(L"Version_Changed_Files.zip"),
            L"is one that an import keeps for itself");
  EXPECT_EQ(RefusalOfPackageItem(std::wstring(kRunFolderMark)),
            L"is one that an import keeps for itself");
}

}  // namespace
}  // namespace carrovan
