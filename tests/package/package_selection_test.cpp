#include "package/legacy_import.h"

#include "tests/package/import_fixture.h"
#include "tests/support/restore_points.h"
#include "wizard/wizard_flow.h"

namespace carrovan {
namespace {

using Lines = std::vector<std::wstring>;

// A path page that answers from its fields.
class RecordingPathPage : public PathPageView {
 public:
  std::vector<OpenFileQuestion> questions;
  std::optional<std::wstring> answer;
  std::wstring path;
  std::vector<std::wstring> versions;
  std::optional<std::wstring> selected;

  std::optional<std::wstring> ChooseOpenFile(const OpenFileQuestion& question) override {
    questions.push_back(question);
    return answer;
  }
  void ShowPackagePath(const std::wstring& shown) override { path = shown; }
  void ListVersions(const std::vector<std::wstring>& listed) override {
    versions = listed;
    selected = listed.empty() ? std::nullopt : std::optional(listed.back());
  }
  std::optional<std::wstring> SelectedVersion() const override { return selected; }
};

class PackageSelectionTest : public ImportFixture {
 protected:
  void Select(const std::wstring& path) {
    page_.answer = path;
    Select();
  }
  void Select() { SelectOn(ports_); }
  WizardFlow FlowOn(const Machine& machine) {
    return WizardFlow(
        {context_, state_, machine, machine_->Packages(), EnglishTexts(), log_, frame_});
  }
  void SelectOn(const Machine& machine) { FlowOn(machine).SelectFile(page_); }

  // A legacy package of these files, under a name of its own.
  std::wstring MakeLegacyPackage(const std::map<std::wstring, std::string>& files) {
    entries_ = files;
    MakePackage();
    const std::wstring path = machine_->ScratchFolder() + L"Old.UCX";
    machine_->PutFile(path, Content(PackagePath()));
    return path;
  }

  // What the page shows and what Next would import.
  void ExpectNothingTaken(const std::wstring& shown, const Lines& versions,
                          const std::wstring& path) const {
    EXPECT_EQ(page_.path, shown);
    EXPECT_EQ(page_.versions, versions);
    EXPECT_EQ(page_.selected, versions.back());
    EXPECT_EQ(state_.package.path, path);
  }

  RecordingPathPage page_;
  RecordingFrame frame_;
  RestorePointsOfTest points_{ports_};
};

TEST_F(PackageSelectionTest, OpenFileQuestionIsThatOfBothKinds) {
  Select();
  ASSERT_EQ(page_.questions.size(), 1u);
  EXPECT_EQ(page_.questions[0].defaultExtension, L".ucex");
  EXPECT_EQ(page_.questions[0].filter, L"User Configuration Files (*.ucx; *.ucex)|*.ucx;*.ucex||");
  EXPECT_TRUE(page_.questions[0].hideReadOnlyBox);
  EXPECT_TRUE(page_.questions[0].askBeforeOverwriting);
}

TEST_F(PackageSelectionTest, CancelKeepsThePathAndTakesTheShownVersion) {
  page_.path = L"before";
  page_.selected = L"2025";
  Select();
  EXPECT_EQ(page_.path, L"before");
  EXPECT_EQ(context_.selectedVersion, L"2025");
  EXPECT_EQ(state_.package.targetInternalVersion, L"27.0");
}

TEST_F(PackageSelectionTest, EmptyPathDoesNothing) {
  page_.selected = L"2025";
  Select(L"");
  EXPECT_EQ(context_.selectedVersion, L"2026");
  EXPECT_TRUE(page_.versions.empty());
}

TEST_F(PackageSelectionTest, PackageIsShownWithTheInstalledVersions) {
  Select(L"C:\\x\\package.ucex");
  EXPECT_EQ(page_.path, L"C:\\x\\package.ucex");
  EXPECT_EQ(page_.versions, (Lines{L"2026"}));
  EXPECT_EQ(state_.package.path, L"C:\\x\\package.ucex");
  EXPECT_EQ(state_.package.targetInternalVersion, L"28.0");
}

TEST_F(PackageSelectionTest, OnlyUcxIsLegacyInWhateverCase) {
  for (const wchar_t* name : {L"PACKAGE.UCX", L"package.Ucx", L"package.ucx"}) {
    frame_.messages.clear();
    Select(L"C:\\missing\\" + std::wstring(name));
    EXPECT_EQ(frame_.messages, (Lines{L"File corruption"})) << name;
  }
  for (const wchar_t* name : {L"package.zip", L"package.ucex", L"ucx", L"package.ucx.zip"}) {
    frame_.messages.clear();
    Select(L"C:\\missing\\" + std::wstring(name));
    EXPECT_TRUE(frame_.messages.empty()) << name;
    EXPECT_EQ(state_.package.path, L"C:\\missing\\" + std::wstring(name));
  }
}

TEST_F(PackageSelectionTest, LegacyDocumentThatNamesItsVersionOffersThatOne) {
  Select(MakeLegacyPackage(
      {{L"UI.xml", "<r><Surface_Finish><ImgDir0001 value=\"2025\"/></Surface_Finish></r>"}}));
  EXPECT_TRUE(frame_.messages.empty());
  EXPECT_EQ(page_.versions, (Lines{L"2025"}));
  EXPECT_EQ(state_.package.legacyXmlPath, context_.stagingFolder + L"UI.xml");
  EXPECT_EQ(context_.selectedVersion, L"2025");
  EXPECT_EQ(state_.package.targetInternalVersion, L"27.0");
}

TEST_F(PackageSelectionTest, LegacyDocumentWithoutAVersionIsRetargetedAndOffersTheRunningOne) {
  const std::string product(context_.productName.begin(), context_.productName.end());
  Select(
      MakeLegacyPackage({{L"UI.xml", "<r a=\"" + product + "24.0\" b=\"" + product + "23.0\"/>"}}));
  EXPECT_EQ(page_.versions, (Lines{L"2026"}));
  const std::string document = Content(state_.package.legacyXmlPath);
  EXPECT_NE(document.find(product + "28.0"), std::string::npos) << document;
  EXPECT_NE(document.find(product + "23.0"), std::string::npos) << document;
}

TEST_F(PackageSelectionTest, LegacyPackageWithoutExactlyOneDocumentIsCorrupted) {
  const std::vector<std::map<std::wstring, std::string>> kPackages = {
      {{L"a.xml", "<a/>"}, {L"b.XML", "<b/>"}},
      {{L"a.txt", "text"}},
      {{L"sub\\a.xml", "<a/>"}},
      {{L"folder.xml\\a.txt", "text"}},
  };
  page_.path = L"before";
  page_.versions = {L"2025"};
  page_.selected = L"2025";
  state_.package.path = L"C:\\before.ucex";
  for (const auto& files : kPackages) {
    frame_.messages.clear();
    Select(MakeLegacyPackage(files));
    EXPECT_EQ(frame_.messages, (Lines{L"File corruption"}));
    ExpectNothingTaken(L"before", {L"2025"}, L"C:\\before.ucex");
  }
}

TEST_F(PackageSelectionTest, FolderThatIsNamedLikeADocumentIsNone) {
  Select(MakeLegacyPackage({{L"folder.xml\\a.txt", "text"}, {L"b.xml", "<b/>"}}));
  EXPECT_TRUE(frame_.messages.empty());
  EXPECT_EQ(state_.package.legacyXmlPath, context_.stagingFolder + L"b.xml");
}

TEST_F(PackageSelectionTest, PipeOrDeviceThatIsNamedLikeADocumentIsNone) {
  const std::wstring folder = machine_->ScratchFolder() + L"documents\\";
  machine_->PutFile(folder + L"pipe.xml", "");
  const SpecialFiles files(*ports_.files, L"pipe.xml");
  EXPECT_EQ(FindSingleXml(files, folder), L"");
  machine_->PutFile(folder + L"a.xml", "<a/>");
  EXPECT_EQ(FindSingleXml(files, folder), folder + L"a.xml");
}

TEST_F(PackageSelectionTest, RefusedPackageLeavesNothingBehindAndTheChosenOneAsItIs) {
  Select(PackagePath());
  machine_->PutFile(context_.stagingFolder + L"unpacked.txt", "unpacked");
  const std::wstring staging = context_.stagingFolder;
  const std::wstring description = context_.packageDescriptionPath;
  page_.answer = MakeLegacyPackage({{L"a.txt", "text"}});
  FixedGuids guids;
  const Machine machine = With<&Machine::guids>(ports_, guids);
  SelectOn(machine);
  EXPECT_EQ(frame_.messages, (Lines{L"File corruption"}));
  EXPECT_EQ(context_.stagingFolder, staging);
  EXPECT_EQ(context_.packageDescriptionPath, description);
  EXPECT_EQ(Content(staging + L"unpacked.txt"), "unpacked");
  EXPECT_FALSE(ports_.files->Exists(*ports_.folders->TempPath() + guids.guid->substr(1, 36)));
  ExpectNothingTaken(PackagePath(), {L"2026"}, PackagePath());
}

TEST_F(PackageSelectionTest, NewPackageTakesThePlaceOfTheUnpackedOne) {
  const std::wstring staging = context_.stagingFolder;
  machine_->PutFile(staging + L"unpacked.txt", "unpacked");
  Select(MakeLegacyPackage({{L"a.xml", "<a/>"}}));
  EXPECT_FALSE(ports_.files->Exists(staging));
  EXPECT_EQ(context_.packageDescriptionPath, context_.stagingFolder + L"config.ini");
}

TEST_F(PackageSelectionTest, EachSelectionStartsAfresh) {
  Select(MakeLegacyPackage({{L"a.xml", "<a/>"}}));
  Select(MakeLegacyPackage({{L"b.xml", "<b/>"}}));
  EXPECT_TRUE(frame_.messages.empty());
  EXPECT_EQ(state_.package.legacyXmlPath, context_.stagingFolder + L"b.xml");
}

class LegacyImportTest : public PackageSelectionTest {
 protected:
  void ImportDocument(const std::wstring& name, const std::string& document) {
    ASSERT_TRUE(TakeLegacyPackage(Run(), view_, state_, MakeLegacyPackage({{name, document}})));
    ImportFace(Run(), view_).ApplyLegacy();
  }

  // The wizard's next step from the path page.
  void GoOn() {
    ChooseMode(state_, context_, MigrationMode::kImport);
    state_.pageIndex = 1;
    FlowOn(ports_).Next();
    EXPECT_FALSE(frame_.finishText.empty());
  }

  void MakeLanguageFolders() {
    machine_->MakeFolder(Roaming(L"en-us"));
    machine_->MakeFolder(Roaming(L"zh-CN"));
  }
  // The document that was put in place under the product's name and this ending.
  std::string Placed(const std::wstring& ending) const {
    return Content(Roaming(L"en-us\\Customization\\" + context_.productName + ending));
  }

  std::wstring OptionKey() const {
    return L"SOFTWARE\\Vantric\\" + context_.productName + L" 28.0\\General";
  }
  void PutOption(const std::wstring& name) {
    machine_->PutValue(RegistryHive::kCurrentUser, OptionKey(), MakeStringValue(name, L"x"));
  }
  std::optional<RegistryValue> Option(const std::wstring& name) const {
    return machine_->Value(RegistryHive::kCurrentUser, OptionKey(), name);
  }
};

TEST_F(LegacyImportTest, CancelledClickGoesOnWithThePackageThatWasChosen) {
  MakeLanguageFolders();
  Select(MakeLegacyPackage({{L"Scene_UI.xml", "<s/>"}}));
  const std::wstring path = state_.package.path;
  page_.answer.reset();
  Select();
  Select(L"");
  ExpectNothingTaken(path, {L"2026"}, path);
  GoOn();
  EXPECT_EQ(Placed(L"-Scene.xml"), "<s/>");
}

TEST_F(LegacyImportTest, RefusedPackageGoesOnWithThePackageThatWasChosen) {
  MakeLanguageFolders();
  Select(MakeLegacyPackage({{L"Scene_UI.xml", "<s/>"}}));
  const std::wstring path = state_.package.path;
  Select(L"C:\\missing\\another.ucx");
  EXPECT_EQ(frame_.messages, (Lines{L"File corruption"}));
  ExpectNothingTaken(path, {L"2026"}, path);
  machine_->DeletePath(path);
  GoOn();
  EXPECT_EQ(Placed(L"-Scene.xml"), "<s/>");
}

TEST_F(LegacyImportTest, DocumentOfSeveralNamesIsTheFirstOfThem) {
  MakeLanguageFolders();
  ImportDocument(L"Scene_UI.xml of ERROR_UI.xml", "<both/>");
  EXPECT_EQ(Placed(L"-PartTemplate.xml"), "<both/>");
  EXPECT_EQ(Placed(L"-Scene.xml"), "no file");
  PutOption(L"Folder");
  ImportDocument(L"VANTRIC_Option_Config.xml of Scene_UI.xml",
                 "<r><General><Folder value=\"y\"/></General></r>");
  EXPECT_NE(Placed(L"-Scene.xml"), "no file");
  EXPECT_EQ(Option(L"Folder"), MakeStringValue(L"Folder", L"x"));
}

TEST_F(LegacyImportTest, ErrorDocumentBecomesThePartTemplateOfBothLanguages) {
  machine_->MakeFolder(Roaming(L"zh-CN"));
  machine_->PutFile(
      Roaming(L"en-us\\Customization\\" + context_.productName + L"-PartTemplate.xml"), "old");
  ImportDocument(L"my ERROR_UI.xml", "<a/>");
  for (const std::wstring language : {L"zh-CN", L"en-us"}) {
    EXPECT_EQ(Content(Roaming(language + L"\\Customization\\" + context_.productName +
                              L"-PartTemplate.xml")),
              "<a/>");
  }
  EXPECT_EQ(view_.finishText, L"Your settings have been successfully imported to  " +
                                  context_.productName + L" 2026.");
  EXPECT_TRUE(report_.IsComplete());
}

TEST_F(LegacyImportTest, SceneDocumentBecomesTheSceneOfBothLanguages) {
  machine_->MakeFolder(Roaming(L"zh-CN"));
  machine_->MakeFolder(Roaming(L"en-us"));
  ImportDocument(L"Scene_UI.xml", "<s/>");
  for (const std::wstring language : {L"zh-CN", L"en-us"}) {
    EXPECT_EQ(
        Content(Roaming(language + L"\\Customization\\" + context_.productName + L"-Scene.xml")),
        "<s/>");
  }
}

TEST_F(LegacyImportTest, FolderThatNeedsMoreThanOneLevelIsPassedOver) {
  machine_->MakeFolder(Roaming(L"en-us"));
  ImportDocument(L"Scene_UI.xml", "<s/>");
  EXPECT_EQ(Content(Roaming(L"zh-CN\\Customization\\" + context_.productName + L"-Scene.xml")),
            "no file");
  EXPECT_EQ(Content(Roaming(L"en-us\\Customization\\" + context_.productName + L"-Scene.xml")),
            "<s/>");
  EXPECT_EQ(report_.problems.size(), 1u);
  EXPECT_TRUE(view_.messages.empty());
}

TEST_F(LegacyImportTest, FoldersThatTheSystemCannotTellAreAProblem) {
  ASSERT_TRUE(
      TakeLegacyPackage(Run(), view_, state_, MakeLegacyPackage({{L"Scene_UI.xml", "<s/>"}})));
  FixedFolders folders;
  folders.roaming.reset();
  context_.roamingRoot.clear();
  const Machine machine = With<&Machine::folders>(ports_, folders);
  ImportFace({context_, state_.package, machine, *tool_, *dom_, log_, observer_, report_}, view_)
      .ApplyLegacy();
  EXPECT_EQ(report_.problems.size(), 1u);
  EXPECT_FALSE(ports_.files->Exists(L"\\en-us"));
}

TEST_F(LegacyImportTest, PackageThatCannotBeUnpackedAnywhereIsNotChosen) {
  const std::wstring package = MakeLegacyPackage({{L"Scene_UI.xml", "<s/>"}});
  FixedGuids guids;
  guids.guid.reset();
  const Machine machine = With<&Machine::guids>(ports_, guids);
  const ImportRun run{context_, state_.package, machine, *tool_, *dom_, log_, observer_, report_};
  EXPECT_EQ(OpenLegacyPackage(run, package).refusal, RunRefusal::kNoStagingFolder);
  EXPECT_EQ(TextOf(RunRefusal::kNoStagingFolder), L"No folder can be made in the temporary path");
}

TEST_F(LegacyImportTest, OptionDocumentGoesIntoTheTargetsRegistry) {
  const std::wstring key = L"SOFTWARE\\Vantric\\" + context_.productName + L" 28.0\\General";
  machine_->PutValue(RegistryHive::kCurrentUser, key, MakeStringValue(L"Folder", L"x"));
  ImportDocument(L"VANTRIC_Option_Config.xml",
                 "<r><General><Folder value=\"C:\\Parts 2025\"/></General></r>");
  const auto value = machine_->Value(RegistryHive::kCurrentUser, key, L"Folder");
  ASSERT_TRUE(value);
  EXPECT_EQ(*value, MakeStringValue(L"Folder", L"C:\\Parts 2026"));
}

TEST_F(LegacyImportTest, OptionsNameTheCurrentUsersFolders) {
  PutOption(L"Folder");
  ImportDocument(L"VANTRIC_Option_Config.xml",
                 "<r><General><Folder value=\"C:\\Users\\somebody\\Parts\"/></General></r>");
  const std::wstring user = ports_.user->UserName().value();
  EXPECT_EQ(Option(L"Folder"), MakeStringValue(L"Folder", L"C:\\Users\\" + user + L"\\Parts"));
}

TEST_F(LegacyImportTest, OptionsThatWereSetAreCounted) {
  PutOption(L"One");
  PutOption(L"Two");
  ImportDocument(
      L"VANTRIC_Option_Config.xml",
      "<r><General><One value=\"1\"/><Two value=\"2\"/><None value=\"3\"/></General></r>");
  EXPECT_EQ(report_.optionsSet, 2u);
  EXPECT_TRUE(report_.IsComplete());
  EXPECT_EQ(report_.dropped.size(), 1u);
}

TEST_F(LegacyImportTest, OptionDocumentOfWhichNothingFitsIsAProblem) {
  PutOption(L"One");
  for (const char* document :
       {"<r><None value=\"1\"/></r>", "<r/>", "<r><Sub><One value=\"1\"/></Sub></r>"}) {
    ImportDocument(L"VANTRIC_Option_Config.xml", document);
    EXPECT_EQ(report_.optionsSet, 0u);
    EXPECT_EQ(report_.problems, (Lines{L"No option was imported: the version has no value that "
                                       L"VANTRIC_Option_Config.xml could set"}));
  }
  EXPECT_TRUE(view_.messages.empty());
}

TEST_F(LegacyImportTest, OtherDocumentsSetNoOptions) {
  MakeLanguageFolders();
  ImportDocument(L"Scene_UI.xml", "<s/>");
  EXPECT_EQ(report_.optionsSet, std::nullopt);
}

TEST_F(LegacyImportTest, DocumentNamesAreMatchedWithRegardToCase) {
  machine_->MakeFolder(Roaming(L"en-us"));
  machine_->MakeFolder(Roaming(L"zh-CN"));
  ImportDocument(L"scene_ui.xml", "<s/>");
  EXPECT_EQ(Content(Roaming(L"en-us\\Customization\\" + context_.productName + L"-Scene.xml")),
            "no file");
  EXPECT_EQ(report_.problems.size(), 1u);
}

TEST_F(LegacyImportTest, RefusedPackageLeavesTheReportOfTheChosenOne) {
  report_.problems = {L"of the chosen one"};
  EXPECT_FALSE(TakeLegacyPackage(Run(), view_, state_, MakeLegacyPackage({{L"a.txt", "text"}})));
  EXPECT_EQ(view_.messages, (Lines{L"File corruption"}));
  EXPECT_EQ(report_.problems, (Lines{L"of the chosen one"}));
}

}  // namespace
}  // namespace carrovan
