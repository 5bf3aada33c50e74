#include "package/import_run.h"

#include "environment/installed_versions.h"
#include "tests/package/import_fixture.h"
#include "text/text.h"

namespace carrovan {
namespace {

using enum SettingCategory;
using Lines = std::vector<std::wstring>;
using Entry = ImportFace::Entry;

constexpr wchar_t kAdvice[] =
    L"It is recommended that users retain the absolute path-related files from the old version "
    L"settings. \nOtherwise, these configurations may become invalid.";
constexpr wchar_t kMissingFolders[] =
    L"Associated local and roaming folders for this version are missed, please run Vantric at "
    L"least once after installation!";
constexpr wchar_t kRunOnce[] = L"Please run Vantric at least once";

class ImportPreparationTest : public ImportFixture {};

TEST_F(ImportPreparationTest, DescriptionFillsThePackageState) {
  Describe({"Options"}, "2025", "27.0");
  EXPECT_EQ(Enter(), Entry::kReady);
  const PackageState& package = state_.package;
  EXPECT_EQ(package.internalVersion, L"27.0");
  EXPECT_EQ(package.releaseVersion, L"2025");
  EXPECT_EQ(package.company, context_.companyShortName);
  EXPECT_EQ(package.product, context_.productName);
  // The package's folders are looked for under the target's version number.
  EXPECT_EQ(package.localFolder,
            context_.stagingFolder + PackageLocal(L"").substr(0, PackageLocal(L"").size() - 1));
  EXPECT_EQ(package.roamingFolder,
            context_.stagingFolder + PackageRoaming(L"").substr(0, PackageRoaming(L"").size() - 1));
}

TEST_F(ImportPreparationTest, MissingOrEmptyConfigValueReadsAsTheLiteralText) {
  const std::wstring ini = machine_->ScratchFolder() + L"config.ini";
  machine_->PutFile(ini, "[Base]\r\nCOMPANY=\r\nPRODUCT=VANTRIC\r\n");
  const ProfileReader& profiles = *ports_.profiles;
  EXPECT_EQ(ReadConfigValue(L"COMPANY", L"BASE", ini, profiles), L"Please check the file.");
  EXPECT_EQ(ReadConfigValue(L"RELEASE VERSION", L"BASE", ini, profiles), L"Please check the file.");
  EXPECT_EQ(ReadConfigValue(L"PRODUCT", L"BASE", ini, profiles), L"VANTRIC");
  EXPECT_EQ(ReadConfigValue(L"PRODUCT", L"BASE", ini + L"x", profiles), L"Please check the file.");
}

TEST_F(ImportPreparationTest, TreeOffersWhatTheDescriptionMarks) {
  Describe({"Cosmetic Thread", "Options", "No such category"});
  EXPECT_EQ(Enter(), Entry::kReady);
  EXPECT_EQ(Offered(),
            (std::vector<int>{static_cast<int>(Options), static_cast<int>(CosmeticThread)}));
}

TEST_F(ImportPreparationTest, DescriptionWithoutTheSectionGivesTheRootAlone) {
  Describe({});
  std::string& text = entries_[L"config.ini"];
  text = text.substr(text.find("[Base]"));
  EXPECT_EQ(Enter(), Entry::kReady);
  EXPECT_EQ(tree_.ItemData(tree_.Root()), 1);
  EXPECT_EQ(tree_.FirstChild(tree_.Root()), CategoryTree::kNoItem);
}

TEST_F(ImportPreparationTest, NewerPackageIsRefused) {
  Describe({"Options"}, "2027", "29.0");
  EXPECT_EQ(Enter(), Entry::kRefused);
  EXPECT_EQ(view_.messages, (Lines{L"Downgrading is not supported."}));
}

TEST_F(ImportPreparationTest, PackageOf2025GoesInto2025And2026ButNotInto2024) {
  for (const wchar_t* year : {L"2024", L"2025", L"2026"}) {
    machine_->PutKey(RegistryHive::kCurrentUser,
                     L"SOFTWARE\\Vantric\\" + context_.productName + L" " + InternalForm(year));
    for (const wchar_t* folder : {L"Local\\", L"Roaming\\"}) {
      machine_->MakeFolder(state_.package.applicationDataRoot + folder + L"Vantric\\" +
                           context_.productName + L"\\" + InternalForm(year));
    }
    Describe({"Options"}, "2025", "27.0");
    EXPECT_EQ(Enter(year), std::wstring(year) == L"2024" ? Entry::kRefused : Entry::kReady);
  }
}

TEST_F(ImportPreparationTest, MissingReleaseNeverBlocks) {
  Describe({"Options"});
  std::string& text = entries_[L"config.ini"];
  text = text.substr(0, text.find("RELEASE")) + text.substr(text.find("PRODUCT="));
  EXPECT_EQ(Enter(), Entry::kReady);
  EXPECT_EQ(state_.package.releaseVersion, L"Please check the file.");
  EXPECT_EQ(view_.messages, (Lines{kAdvice}));
}

TEST_F(ImportPreparationTest, TargetThatWasNeverStartedIsRefused) {
  Describe({"Options"}, "2025", "27.0");
  EXPECT_EQ(Enter(L"2025"), Entry::kRefused);
  EXPECT_EQ(view_.messages, (Lines{kRunOnce}));
}

TEST_F(ImportPreparationTest, TargetIsLookedForUnderThePackagesOwnNames) {
  Describe({"Options"});
  std::string& text = entries_[L"config.ini"];
  text.replace(text.find("COMPANY=Vantric"), 15, "COMPANY=Elsewhere");
  EXPECT_EQ(Enter(), Entry::kRefused);
  EXPECT_EQ(view_.messages, (Lines{kRunOnce}));
}

TEST_F(ImportPreparationTest, FileThatIsNoArchiveEndsInTheRefusalOfAnEmptyDescription) {
  machine_->PutFile(PackagePath(), "not a zip archive");
  state_.package.path = PackagePath();
  EXPECT_EQ(ImportFace(Run(), view_).EnterCategories(tree_), Entry::kRefused);
  EXPECT_EQ(view_.messages, (Lines{kRunOnce}));
  EXPECT_EQ(state_.package.company, L"Please check the file.");
}

TEST_F(ImportPreparationTest, SameReleaseIsNeitherToldNorRewritten) {
  const std::string document = "<a>C:\\Users\\somebody\\x 2026</a>";
  entries_[PackageRoaming(L"en-us\\Customization\\UI.xml")] = document;
  Describe({"Interface layout"});
  EXPECT_EQ(Enter(), Entry::kReady);
  EXPECT_TRUE(view_.messages.empty());
  EXPECT_EQ(Content(state_.package.roamingFolder + L"\\en-us\\Customization\\UI.xml"), document);
}

// The releases are compared as texts: what reads as the same number is another release.
TEST_F(ImportPreparationTest, ReleaseThatIsSpelledOtherwiseIsAnotherOne) {
  for (const char* release : {"2026.0", "02026", "2026 SP1"}) {
    view_.messages.clear();
    entries_[PackageRoaming(L"en-us\\Template\\t.xml")] = std::string("<a>") + release + "</a>";
    Describe({"Document Template"}, release, "28.0");
    EXPECT_EQ(Enter(), Entry::kReady);
    EXPECT_EQ(view_.messages, (Lines{kAdvice})) << release;
    EXPECT_EQ(Content(state_.package.roamingFolder + L"\\en-us\\Template\\t.xml"),
              "<a>2026</a>\r\n");
  }
}

TEST_F(ImportPreparationTest, OtherReleaseIsToldAndRewrittenForTheTarget) {
  entries_[PackageRoaming(L"en-us\\Customization\\UI.xml", L"27.0")] = "<a year=\"2025\"/>";
  Describe({"Interface layout"}, "2025", "27.0");
  EXPECT_EQ(Enter(), Entry::kReady);
  EXPECT_EQ(view_.messages, (Lines{kAdvice}));
  EXPECT_NE(Content(state_.package.roamingFolder + L"\\en-us\\Customization\\UI.xml").find("2026"),
            std::string::npos);
}

TEST_F(ImportPreparationTest, OtherReleaseIntoAMissingFolderEndsTheProgram) {
  for (const std::wstring& root : {context_.localRoot, context_.roamingRoot}) {
    machine_->DeletePath(root);
    Describe({"Options"}, "2025", "27.0");
    EXPECT_EQ(Enter(), Entry::kEnded);
    EXPECT_EQ(view_.messages, (Lines{kAdvice, kMissingFolders}));
    view_.messages.clear();
    machine_->MakeFolder(root);
  }
}

TEST_F(ImportPreparationTest, FoldersThatTheSystemCannotTellEndTheProgram) {
  FixedFolders folders;
  folders.roaming.reset();
  const Machine machine = With<&Machine::folders>(ports_, folders);
  Describe({"Interface layout"});
  MakePackage();
  state_.package.path = PackagePath();
  const ImportRun run{context_, state_.package, machine, *tool_, *dom_, log_, observer_, report_};
  EXPECT_EQ(ImportFace(run, view_).EnterCategories(tree_), Entry::kEnded);
  EXPECT_EQ(view_.messages, (Lines{kMissingFolders}));
}

TEST_F(ImportPreparationTest, CompanyThatLeadsOutOfThePackageIsRefused) {
  for (const std::string company : {"..\\..\\..", "../..", "Vantric\\..\\.."}) {
    view_.messages.clear();
    Describe({"Custom materials"});
    std::string& text = entries_[L"config.ini"];
    text.replace(text.find("COMPANY=Vantric"), 15, "COMPANY=" + company);
    EXPECT_EQ(Enter(), Entry::kRefused) << company;
    EXPECT_EQ(view_.messages, (Lines{kRunOnce}));
  }
}

TEST_F(ImportPreparationTest, SameReleaseNeedsNoFolders) {
  machine_->DeletePath(context_.localRoot);
  Describe({"Options"});
  EXPECT_EQ(Enter(), Entry::kReady);
}

TEST_F(ImportPreparationTest, DraftingFolderIsTheOneFoundOnEntering) {
  const std::wstring draft = state_.package.applicationDataRoot +
                             L"Local\\ORMA\\ORMA CAD TVRN-INT-" + context_.productName +
                             L" 2026 (x64)";
  machine_->MakeFolder(draft + L"\\26.3");
  Describe({"2D Draft Settings"});
  EXPECT_EQ(Enter(), Entry::kReady);
  EXPECT_EQ(state_.package.draftingFolder, draft + L"\\26.3");
  EXPECT_EQ(context_.localFolder, draft);
}

TEST_F(ImportPreparationTest, PackageWhoseNamesLeadElsewhereIsRefusedLikeOneThatWasNeverStarted) {
  const std::string company = "COMPANY=Vantric";
  const std::string product = "PRODUCT=" + ToUtf8(context_.productName);
  // The key that such a product would have is there.
  for (const wchar_t* name : {L"..", L"a\\..\\..", L"", L"x."}) {
    machine_->PutKey(RegistryHive::kCurrentUser,
                     L"SOFTWARE\\Vantric\\" + std::wstring(name) + L" 28.0");
  }
  for (const char* name : {"..", "a\\..\\..", "x."}) {
    Describe({"Options"});
    std::string& text = entries_[L"config.ini"];
    text.replace(text.find(product), product.size(), std::string("PRODUCT=") + name);
    view_.messages.clear();
    EXPECT_EQ(Enter(), Entry::kRefused) << name;
    EXPECT_EQ(view_.messages, (Lines{kRunOnce})) << name;
  }
}

TEST_F(ImportPreparationTest, MissingProductIsLookedForByTheTextThatItReadsAs) {
  Describe({"Options"});
  std::string& text = entries_[L"config.ini"];
  text.erase(text.find("PRODUCT="), 8);
  machine_->PutKey(RegistryHive::kCurrentUser, L"SOFTWARE\\Vantric\\Please check the file. 28.0");
  EXPECT_EQ(Enter(), Entry::kReady);
  EXPECT_EQ(state_.package.product, L"Please check the file.");
}

}  // namespace
}  // namespace carrovan
