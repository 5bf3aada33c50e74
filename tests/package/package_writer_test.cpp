#include "package/package_writer.h"

#include <gtest/gtest.h>

#include "tests/support/fakes.h"
#include "tests/support/test_machine.h"

namespace carrovan {
namespace {

using Names = std::vector<std::wstring>;

struct NameRow {
  const wchar_t* path;
  const wchar_t* entryName;
};

ProductContext NamingContext() {
  ProductContext context;
  context.productName = L"VANTRIC";
  context.humanReadableVersion = L"2026";
  context.stagingFolder = L"C:\\Users\\u\\AppData\\Local\\Temp\\G\\";
  return context;
}

TEST(EntryName, OfASingleFileFollowsTheFirstRuleThatApplies) {
  constexpr NameRow kRows[] = {
      {L"C:\\Users\\u\\AppData\\Local\\Temp\\G\\VANTRIC2026.reg", L"Register\\VANTRIC2026.reg"},
      {L"C:\\Users\\u\\AppData\\Local\\Temp\\G\\config.ini", L"config.ini"},
      {L"C:\\Users\\u\\AppData\\Local\\Temp\\G\\General.reg", L"Options\\General.reg"},
      {L"C:\\Users\\u\\AppData\\Local\\Temp\\G\\Point Snap.reg", L"Options\\Point Snap.reg"},
      {L"D:\\elsewhere\\VANTRIC2026.reg", L"Register\\VANTRIC2026.reg"},
      {L"D:\\elsewhere\\General.reg", L""},
      {L"c:\\users\\u\\appdata\\local\\temp\\g\\General.reg", L""},
  };
  for (const NameRow& row : kRows) {
    EXPECT_EQ(EntryNameOfFile(NamingContext(), row.path), row.entryName)
        << testing::PrintToString(row.path);
  }
}

TEST(EntryName, InAFolderBeginsAtTheFirstLocalOrRoaming) {
  constexpr NameRow kRows[] = {
      {L"C:\\Users\\u\\AppData\\Local\\Temp\\G\\Local\\x.xml", L"Local\\x.xml"},
      {L"C:\\Users\\u\\AppData\\Local\\V\\x.xml", L"Local\\V\\x.xml"},
      {L"C:\\Users\\u\\AppData\\Roaming\\V\\x.xml", L"Roaming\\V\\x.xml"},
      {L"C:\\Users\\u\\AppData\\Roaming\\V\\Local\\x.xml", L"Local\\x.xml"},
      {L"C:\\Users\\MyLocal\\AppData\\Roaming\\V\\x.xml", L"Local\\AppData\\Roaming\\V\\x.xml"},
      {L"C:\\Users\\u\\appdata\\local\\x.xml", L""},
      {L"D:\\x.xml", L""},
  };
  for (const NameRow& row : kRows) {
    EXPECT_EQ(EntryNameInFolder(NamingContext(), row.path), row.entryName)
        << testing::PrintToString(row.path);
  }
}

TEST(EntryName, WithoutAStagingFolderNoPathIsTakenForAStagedFile) {
  ProductContext context = NamingContext();
  context.stagingFolder.clear();
  EXPECT_EQ(EntryNameOfFile(context, L"D:\\General.reg"), L"");
  EXPECT_EQ(EntryNameInFolder(context, L"D:\\x.xml"), L"");
}

// Shows every folder named "link" as a link.
class LinkingFiles : public ForwardingFiles {
 public:
  using ForwardingFiles::ForwardingFiles;

  SystemCode ReadFolder(const std::wstring& folder,
                        std::vector<FolderEntry>& entries) const override {
    const SystemCode code = ForwardingFiles::ReadFolder(folder, entries);
    for (FolderEntry& entry : entries) entry.isLink = entry.name == L"link";
    return code;
  }
};

class WritePackageTest : public testing::Test {
 protected:
  WritePackageTest() {
    context_ = NamingContext();
    context_.stagingFolder = machine_->ScratchFolder() + L"staging\\";
    machine_->MakeFolder(context_.stagingFolder);
  }

  PackageReport Write(const Names& sources) {
    return WritePackage(context_, machine_->Ports(), sources, Archive(), ArchivePurpose::kKeep,
                        observer_);
  }

  std::wstring Archive() const { return machine_->ScratchFolder() + L"x.ucex"; }

  // The scratch folder may itself lie below a folder named "Local".
  static std::wstring FromFirstLocal(const std::wstring& path) {
    return path.substr(path.find(L"Local\\"));
  }

  Names EntryNames() {
    Names names;
    const auto archive = machine_->Ports().archives->Open(Archive());
    if (!archive) return {L"no archive"};
    for (std::size_t i = 0; const auto item = archive->Item(i); ++i) names.push_back(item->name);
    return names;
  }

  RunObserver observer_;
  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  ProductContext context_;
};

TEST_F(WritePackageTest, SourcesAreStoredInTheOrderGiven) {
  machine_->PutFile(context_.stagingFolder + L"config.ini", "c");
  machine_->PutFile(context_.stagingFolder + L"Z.reg", "z");
  machine_->PutFile(context_.stagingFolder + L"A.reg", "a");
  const auto report =
      Write({context_.stagingFolder + L"Z.reg", context_.stagingFolder + L"config.ini",
             context_.stagingFolder + L"A.reg"});
  EXPECT_EQ(report.outcome, ArchiveResult::kDone);
  EXPECT_EQ(EntryNames(), (Names{L"Options\\Z.reg", L"config.ini", L"Options\\A.reg"}));
  EXPECT_EQ(report.storedPerSource, (std::vector<std::size_t>{1, 1, 1}));
}

TEST_F(WritePackageTest, FileWhoseNameDoesNotLeadBackToItIsNamed) {
  const std::wstring roaming = *machine_->Ports().folders->RoamingAppData();
  const std::wstring folder = roaming + L"\\Vantric\\names";
  machine_->PutFile(folder + L"\\MyLocal\\x.xml", "x");
  machine_->PutFile(folder + L"\\y.xml", "y");
  machine_->PutFile(context_.stagingFolder + L"Roaming\\V\\MyLocal\\z.xml", "z");
  const auto report = Write({folder, context_.stagingFolder + L"Roaming"});
  EXPECT_EQ(report.outcome, ArchiveResult::kDone);
  ASSERT_EQ(report.misplaced.size(), 1u);
  EXPECT_EQ(report.misplaced[0].path, folder + L"\\MyLocal\\x.xml");
  EXPECT_EQ(report.misplaced[0].entryName, L"Local\\x.xml");
  EXPECT_EQ(EntryNames(), (Names{L"Local\\x.xml", L"Roaming\\Vantric\\names\\y.xml",
                                 L"Roaming\\V\\MyLocal\\z.xml"}));
}

TEST_F(WritePackageTest, FolderFilesFollowTheFileSystemsOrderDepthFirst) {
  const std::wstring folder = machine_->ScratchFolder() + L"Local\\V";
  for (const wchar_t* name : {L"\\b.xml", L"\\A.xml", L"\\c\\2.xml", L"\\c\\1.xml", L"\\d.xml"}) {
    machine_->PutFile(folder + name, "x");
  }
  machine_->MakeFolder(folder + L"\\empty");
  Names expected;
  const FileReader& files = *machine_->Ports().files;
  for (const FolderEntry& entry : ListFolder(files, folder)) {
    const std::wstring path = folder + L"\\" + entry.name;
    if (!entry.isFolder) expected.push_back(FromFirstLocal(path));
    for (const FolderEntry& inner : ListFolder(files, path)) {
      expected.push_back(FromFirstLocal(path + L"\\" + inner.name));
    }
  }
  const auto report = Write({folder});
  EXPECT_EQ(EntryNames(), expected);
  EXPECT_EQ(report.storedPerSource, std::vector<std::size_t>{5});
}

TEST_F(WritePackageTest, StagedFoldersKeepTheirPlaceInTheStagingFolder) {
  machine_->PutFile(context_.stagingFolder + L"Local\\V\\x.xml", "x");
  Write({context_.stagingFolder + L"Local"});
  EXPECT_EQ(EntryNames(), Names{L"Local\\V\\x.xml"});
}

TEST_F(WritePackageTest, MissingSourceIsPassedOverWithoutAWord) {
  machine_->PutFile(context_.stagingFolder + L"A.reg", "a");
  const auto report =
      Write({context_.stagingFolder + L"missing.reg", context_.stagingFolder + L"A.reg"});
  EXPECT_EQ(EntryNames(), Names{L"Options\\A.reg"});
  EXPECT_TRUE(report.skipped.empty());
  EXPECT_EQ(report.storedPerSource, (std::vector<std::size_t>{0, 1}));
}

TEST_F(WritePackageTest, SingleFileIsKeptOutByItsWholePath) {
  machine_->PutFile(context_.stagingFolder + L"app.config.reg", "x");
  const auto report = Write({context_.stagingFolder + L"app.config.reg"});
  EXPECT_EQ(EntryNames(), Names{});
  EXPECT_TRUE(report.skipped.empty());
}

TEST_F(WritePackageTest, FolderFileIsKeptOutByItsEntryNameOnly) {
  const std::wstring folder = machine_->ScratchFolder() + L"a.config\\Local\\V";
  machine_->PutFile(folder + L"\\x.xml", "x");
  Write({folder});
  if (FromFirstLocal(folder) == L"Local\\V") {
    EXPECT_EQ(EntryNames(), Names{L"Local\\V\\x.xml"});
  } else {
    EXPECT_EQ(EntryNames(), Names{}) << "here the entry name itself holds the word";
  }
}

TEST_F(WritePackageTest, FileThatNoRuleNamesIsReported) {
  const std::wstring stray = machine_->ScratchFolder() + L"stray.txt";
  machine_->PutFile(stray, "x");
  machine_->PutFile(context_.stagingFolder + L"A.reg", "a");
  const auto report = Write({stray, context_.stagingFolder + L"A.reg"});
  ASSERT_EQ(report.skipped.size(), 1u);
  EXPECT_EQ(report.skipped[0].path, stray);
  EXPECT_EQ(report.skipped[0].reason, ArchiveResult::kNameRefused);
  EXPECT_EQ(EntryNames(), Names{L"Options\\A.reg"});
}

TEST_F(WritePackageTest, LinkToAFolderIsFollowedOnceAndALinkBelowItIsReported) {
  const std::wstring folder = machine_->ScratchFolder() + L"Local\\V";
  machine_->PutFile(folder + L"\\link\\a.xml", "x");
  machine_->PutFile(folder + L"\\link\\link\\b.xml", "x");
  const Machine p = machine_->Ports();
  LinkingFiles files(*p.files);
  const Machine linking = With<&Machine::files>(p, files);
  const auto report =
      WritePackage(context_, linking, Names{folder}, Archive(), ArchivePurpose::kKeep, observer_);
  EXPECT_EQ(EntryNames(), Names{FromFirstLocal(folder + L"\\link\\a.xml")});
  ASSERT_EQ(report.skipped.size(), 1u);
  EXPECT_EQ(report.skipped[0].path, folder + L"\\link\\link");
}

TEST_F(WritePackageTest, ArchiveThatCannotBeCreatedIsReportedAndNothingMore) {
  const auto report = WritePackage(context_, machine_->Ports(), Names{L"C:\\x"},
                                   machine_->ScratchFolder() + L"missing\\x.ucex",
                                   ArchivePurpose::kKeep, observer_);
  EXPECT_EQ(report.outcome, ArchiveResult::kTargetNotWritable);
  EXPECT_TRUE(report.storedPerSource.empty());
}

}  // namespace
}  // namespace carrovan
