#include "rewrite/package_tree.h"

#include <gtest/gtest.h>

#include "tests/rewrite/rewrite_bench.h"
#include "tests/support/fakes.h"
#include "tests/support/test_links.h"
#include "tests/support/test_machine.h"
#include "text/text.h"

namespace carrovan {
namespace {

class PackageTree : public testing::Test {
 protected:
  PackageTree() {
    inputs.packageReleaseVersion = L"2024";
    inputs.packageInternalVersion = L"26.0";
    inputs.targetReleaseYear = L"2026";
    inputs.targetInternalVersion = L"28.0";
    inputs.productName = L"VAN TRIC";
    inputs.firstDraftingFolder = L"C:\\Users\\u\\ORMA CAD TVRN-INT-VANTRIC 2026 (x64)\\28.0";
  }

  std::vector<RewriteFailure> Rewrite(const std::wstring& folder = L"C:\\p") {
    return RewritePackageTree(folder, inputs, bench.Ports());
  }

  RewriteBench bench;
  RewriteInputs inputs;
};

TEST_F(PackageTree, RenamesFoldersThatBearTheInternalVersionAndNoFile) {
  bench.files.Put(L"C:\\p\\Local\\VANTRIC 26.0\\26.0\\26.0.txt", "26.0 2024");
  EXPECT_TRUE(Rewrite().empty());
  EXPECT_EQ(bench.files.Bytes(L"C:\\p\\Local\\VANTRIC 28.0\\28.0\\26.0.txt"), "26.0 2024");
  EXPECT_EQ(bench.files.Names(L"C:\\p\\Local"), std::vector<std::wstring>{L"VANTRIC 28.0"});
}

TEST_F(PackageTree, LeavesTheReleaseYearInOtherFolderNames) {
  bench.files.Put(L"C:\\p\\Release 2024\\x", "");
  Rewrite();
  EXPECT_TRUE(bench.files.Has(L"C:\\p\\Release 2024\\x"));
}

TEST_F(PackageTree, RenamesDraftingFoldersByVersionAndYear) {
  bench.files.Put(L"C:\\p\\ORMA CAD TVRN-INT-VANTRIC 2024 (x64)\\26.0\\en-US\\a.xml", "2024");
  Rewrite();
  EXPECT_EQ(bench.files.Bytes(L"C:\\p\\ORMA CAD TVRN-INT-VANTRIC 2026 (x64)\\28.0\\en-US\\a.xml"),
            "2024");
}

TEST_F(PackageTree, DraftingFolderOfA2023PackageBecomesThatOf2024For2025) {
  inputs.packageReleaseVersion = L"2023";
  inputs.targetReleaseYear = L"2025";
  bench.files.PutFolder(L"C:\\p\\ORMA CAD TVRN-INT-VANTRIC 2023 (x64)\\25.0");
  Rewrite();
  EXPECT_EQ(bench.files.Names(L"C:\\p"),
            std::vector<std::wstring>{L"ORMA CAD TVRN-INT-VANTRIC 2024 (x64)"});
  EXPECT_EQ(bench.files.Names(L"C:\\p\\ORMA CAD TVRN-INT-VANTRIC 2024 (x64)"),
            std::vector<std::wstring>{L"28.0"});
}

TEST_F(PackageTree, DraftingFolderOf2024FollowsTheTargetYearWhateverThePackage) {
  inputs.packageReleaseVersion = L"2025";
  bench.files.PutFolder(L"C:\\p\\ORMA CAD TVRN-INT-VANTRIC 2024 (x64)");
  Rewrite();
  EXPECT_EQ(bench.files.Names(L"C:\\p"),
            std::vector<std::wstring>{L"ORMA CAD TVRN-INT-VANTRIC 2026 (x64)"});
}

TEST_F(PackageTree, DraftingFolderOf2024StaysFor2025) {
  inputs.packageReleaseVersion = L"2023";
  inputs.targetReleaseYear = L"2025";
  bench.files.PutFolder(L"C:\\p\\ORMA CAD TVRN-INT-VANTRIC 2024 (x64)");
  Rewrite();
  EXPECT_EQ(bench.files.Names(L"C:\\p"),
            std::vector<std::wstring>{L"ORMA CAD TVRN-INT-VANTRIC 2024 (x64)"});
}

TEST_F(PackageTree, DraftingVersionStaysWithoutOneOnThisMachine) {
  inputs.firstDraftingFolder = L"C:\\Users\\u\\none";
  bench.files.PutFolder(L"C:\\p\\ORMA CAD TVRN-INT x\\27.5");
  Rewrite();
  EXPECT_TRUE(bench.files.IsFolder(L"C:\\p\\ORMA CAD TVRN-INT x\\27.5"));
}

TEST_F(PackageTree, LeavesFilesOfTheDraftingProductAlone) {
  bench.files.Put(L"C:\\p\\ORMA CAD TVRN-INT\\a.xml", "2024");
  bench.files.Put(L"C:\\p\\ORMA CAD TVRN-INT\\a.reg", "2024");
  bench.files.Put(L"C:\\p\\ORMA CAD TVRN-INT.xml", "2024");
  Rewrite();
  EXPECT_TRUE(bench.files.changes.empty());
}

TEST_F(PackageTree, RewritesYearAndVersionInXmlFiles) {
  bench.files.Put(L"C:\\p\\a.XML", "<a>VANTRIC23.0 VANTRIC26.0 2024 26.0</a>\n");
  bench.files.Put(L"C:\\p\\.xml", "2024");
  Rewrite();
  EXPECT_EQ(bench.files.Bytes(L"C:\\p\\a.XML"), "<a>VANTRIC23.0 VANTRIC28.0 2026 26.0</a>\r\n");
  EXPECT_EQ(bench.files.Bytes(L"C:\\p\\.xml"), "2026\r\n");
}

TEST_F(PackageTree, RewritesRegistryFilesPassByPass) {
  bench.files.Put(L"C:\\p\\Options\\k.Reg",
                  Utf16File(L"[HKEY_CURRENT_USER\\SOFTWARE\\V\\VAN TRIC 26.0\\2024]\r\n"
                            L"\"a\"=\"26.0\\\\x\"\r\n\"b\"=\"26.0\"\r\n"
                            L"\"c\"=\"C:\\\\Users\\\\old\\\\x\"\r\n\"d\"=\"/Users/old\"\r\n"));
  Rewrite();
  EXPECT_EQ(bench.files.Bytes(L"C:\\p\\Options\\k.Reg"),
            Utf16File(L"[HKEY_CURRENT_USER\\SOFTWARE\\V\\VAN TRIC 28.0\\2026]\r\n"
                      L"\"a\"=\"28.0\\\\x\"\r\n\"b\"=\"26.0\"\r\n"
                      L"\"d\"=\"/Users/newuser\"\r\n"));
  EXPECT_EQ(bench.log.lines,
            (std::vector<std::wstring>{
                L"Successfully replaced 2 user paths",
                L"Successfully removed 1 registry entries with invalid absolute paths"}));
}

// A year in front would take the version's number apart, and what it makes is not looked at again.
TEST_F(PackageTree, RewritesTheYearInRegistryFilesAfterTheVersions) {
  inputs.packageReleaseVersion = L"26";
  bench.files.Put(L"C:\\p\\k.reg", Utf16File(L"[V\\VAN TRIC 26.0\\x]\r\n\"26.0\\\\y\"=\"26\"\r\n"));
  Rewrite();
  EXPECT_EQ(bench.files.Bytes(L"C:\\p\\k.reg"),
            Utf16File(L"[V\\VAN TRIC 28.0\\x]\r\n\"28.0\\\\y\"=\"2026\"\r\n"));
}

TEST_F(PackageTree, LeavesOtherFilesAlone) {
  for (const wchar_t* name : {L"a.txt", L"a.xml.bak", L"axml", L"a.registry", L"xml"}) {
    bench.files.Put(std::wstring(L"C:\\p\\") + name, "2024");
  }
  Rewrite();
  EXPECT_TRUE(bench.files.changes.empty());
}

TEST_F(PackageTree, LeavesPipesAndDevicesAlone) {
  bench.files.Put(L"C:\\p\\pipe.xml", "2024");
  SpecialFiles files(bench.files, L"pipe.xml");
  EXPECT_TRUE(
      RewritePackageTree(L"C:\\p", inputs, {files, bench.user, bench.codePage, bench.log}).empty());
  EXPECT_TRUE(bench.files.changes.empty());
}

TEST_F(PackageTree, TakesAFolderWithATrailingBackslash) {
  bench.files.Put(L"C:\\p\\26.0\\a.xml", "2024");
  Rewrite(L"C:\\p\\");
  EXPECT_EQ(bench.files.Bytes(L"C:\\p\\28.0\\a.xml"), "2026\r\n");
}

TEST_F(PackageTree, GoesOnAfterEachFailureAndNamesIt) {
  bench.files.Put(L"C:\\p\\1\\a.xml", "2024");
  bench.files.Put(L"C:\\p\\1\\b.reg", "2024");
  bench.files.Put(L"C:\\p\\1\\c.xml", "2024");
  bench.files.Put(L"C:\\p\\26.0\\d.xml", "2024");
  bench.files.PutFolder(L"C:\\p\\28.0");
  bench.files.MakeReadOnly(L"C:\\p\\1\\a.xml");
  bench.files.fault = [](const std::string& operation, const std::wstring& path) {
    return operation == "read" && path.ends_with(L"b.reg") ? kSharingViolation : kSystemOk;
  };
  const auto failures = Rewrite();
  ASSERT_EQ(failures.size(), 3u);
  EXPECT_EQ(failures[0].path, L"C:\\p\\1\\a.xml");
  EXPECT_EQ(failures[0].code, kAccessDenied);
  EXPECT_EQ(failures[1].path, L"C:\\p\\1\\b.reg");
  EXPECT_EQ(failures[1].code, kSharingViolation);
  EXPECT_EQ(failures[2].path, L"C:\\p\\26.0");
  EXPECT_EQ(failures[2].code, kAlreadyExists);
  EXPECT_EQ(bench.files.Bytes(L"C:\\p\\1\\c.xml"), "2026\r\n");
  EXPECT_EQ(bench.files.Bytes(L"C:\\p\\26.0\\d.xml"), "2026\r\n");
}

TEST_F(PackageTree, NamesAFolderThatIsNotThere) {
  const auto failures = Rewrite(L"C:\\none");
  ASSERT_EQ(failures.size(), 1u);
  EXPECT_EQ(failures[0].path, L"C:\\none");
}

TEST_F(PackageTree, GoesDownFartherThanAProgramsStackCould) {
  std::wstring folder = L"C:\\p";
  for (int i = 0; i < 400; ++i) folder += L"\\x";
  bench.files.Put(folder + L"\\a.xml", "2024");
  EXPECT_TRUE(Rewrite().empty());
  EXPECT_EQ(bench.files.Bytes(folder + L"\\a.xml"), "2026\r\n");
}

// Shows every folder as a link.
class LinkedFolders : public ForwardingFiles {
 public:
  using ForwardingFiles::ForwardingFiles;

  SystemCode ReadFolder(const std::wstring& folder,
                        std::vector<FolderEntry>& entries) const override {
    const SystemCode code = ForwardingFiles::ReadFolder(folder, entries);
    for (FolderEntry& entry : entries) entry.isLink = entry.isFolder;
    return code;
  }
};

TEST_F(PackageTree, DoesNotFollowLinks) {
  bench.files.Put(L"C:\\p\\26.0\\a.xml", "2024");
  LinkedFolders files(bench.files);
  RewritePackageTree(L"C:\\p", inputs, {files, bench.user, bench.codePage, bench.log});
  EXPECT_TRUE(bench.files.changes.empty());
}

TEST_F(PackageTree, WorksOnTheMachinesOwnFiles) {
  const auto machine = NewTestMachine();
  const Machine ports = machine->Ports();
  const std::wstring user = ports.user->UserName().value();
  const std::wstring folder = machine->ScratchFolder() + L"p";
  machine->PutFile(folder + L"\\V 26.0\\\x4E2D.xml", "<a>2024</a>");
  machine->PutFile(folder + L"\\V 26.0\\k.reg",
                   Utf16File(L"\"a\"=\"Q:\\\\none\"\r\n\"b\"=\"C:/Users/someone else\"\r\n"));
  machine->PutFile(folder + L"\\read-only.xml", "2024");
  machine->MakeReadOnly(folder + L"\\read-only.xml");
  machine->PutFile(folder + L"\\locked.reg", "2024");
  machine->MakeUnreadable(folder + L"\\locked.reg");
  const auto failures =
      RewritePackageTree(folder, inputs, {*ports.files, *ports.user, *ports.codePage, bench.log});
  EXPECT_EQ(failures.size(), 2u);
  EXPECT_EQ(machine->FileBytes(folder + L"\\V 28.0\\\x4E2D.xml"), "<a>2026</a>\r\n");
  EXPECT_EQ(machine->FileBytes(folder + L"\\V 28.0\\k.reg"), Utf16File(L""));
  EXPECT_EQ(machine->FileBytes(folder + L"\\read-only.xml"), "2024");
  EXPECT_EQ(bench.log.lines.size(), 2u) << ToUtf8(user);
}

TEST_F(PackageTree, LeavesAFolderThatIsALinkAlone) {
  const auto machine = NewTestMachine();
  const Machine ports = machine->Ports();
  const std::wstring shared = machine->ScratchFolder() + L"shared";
  machine->PutFile(shared + L"\\a.xml", "2024");
  const std::wstring folder = machine->ScratchFolder() + L"p";
  if (!MakeLink(*machine, folder, shared)) GTEST_SKIP() << "this system makes no links";
  const auto failures = RewritePackageTree(folder + L"\\", inputs,
                                           {*ports.files, *ports.user, *ports.codePage, bench.log});
  ASSERT_EQ(failures.size(), 1u);
  EXPECT_EQ(failures[0].code, kNotAFolder);
  EXPECT_EQ(machine->FileBytes(shared + L"\\a.xml"), "2024");
}

TEST_F(PackageTree, ExtensionBeginsWithItsDot) {
  bench.files.Put(L"C:\\p\\areg", Utf16File(L"\"y\"=\"2024\"\r\n"));
  bench.files.Put(L"C:\\p\\axml", "2024");
  Rewrite();
  EXPECT_TRUE(bench.files.changes.empty());
}

}  // namespace
}  // namespace carrovan
