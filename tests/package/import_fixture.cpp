#include "tests/package/import_fixture.h"

#include "environment/installed_versions.h"
#include "environment/version_folders.h"
#include "package/staging_folder.h"
#include "text/path_text.h"
#include "text/text.h"
#include "wizard/category_tree.h"

namespace carrovan {

ImportFixture::ImportFixture() {
  const std::wstring install =
      RemoveFileSpec(RemoveFileSpec(machine_->product.startupFolder)) + L"\\AppData\\";
  machine_->MakeFolder(install + L"en-us");
  machine_->MakeFolder(install + L"zh-cn");
  tool_ = std::make_unique<PacedRegistryTool>(*ports_.registryTool, *ports_.clock, pace_);
  dom_ = OpenXmlDom(*ports_.files);
  EXPECT_TRUE(LoadProductContext(context_, ports_));
  EnumerateInstalledVersions(context_, *ports_.registry);
  InitializePackageState(state_.package, context_, ports_);
  EXPECT_TRUE(RenewStagingFolder(context_, ports_));
  EXPECT_TRUE(PrepareVersionFolders(context_, ports_));
  FillMachine();
}

ImportFixture::~ImportFixture() { DeleteStagingFolder(context_, ports_); }

void ImportFixture::FillMachine() {
  machine_->PutKey(RegistryHive::kCurrentUser, LiveKey(context_));
  machine_->MakeFolder(context_.roamingRoot);
  machine_->MakeFolder(context_.localRoot);
}

void ImportFixture::Describe(const std::vector<std::string>& labels, const std::string& release,
                             const std::string& internal) {
  std::string text = "[Selected]\r\n";
  for (const std::string& label : labels) text += label + "=1\r\n";
  text += "[Base]\r\nCOMPANY=" + ToUtf8(context_.companyShortName) +
          "\r\nINTERNAL VERSION=" + internal + "\r\nRELEASE VERSION=" + release +
          "\r\nPRODUCT=" + ToUtf8(context_.productName) + "\r\n";
  entries_[L"config.ini"] = text;
}

void ImportFixture::MakePackage() {
  const auto writer = ports_.archives->Create(PackagePath(), ArchivePurpose::kKeep);
  ASSERT_TRUE(writer);
  const std::wstring source = machine_->ScratchFolder() + L"source";
  for (const auto& [name, bytes] : entries_) {
    machine_->PutFile(source, bytes);
    ASSERT_EQ(writer->Add(name, source), ArchiveResult::kDone) << ToUtf8(name);
  }
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
}

ImportRun ImportFixture::Run() {
  return {context_, state_.package, ports_, *tool_, *dom_, log_, observer_, report_};
}

ImportFace::Entry ImportFixture::Enter(const std::wstring& targetYear) {
  MakePackage();
  state_.package.path = PackagePath();
  SelectTargetVersion(state_, context_, targetYear);
  return ImportFace(Run(), view_).EnterCategories(tree_);
}

void ImportFixture::Import(const std::vector<SettingCategory>& ticked,
                           const std::wstring& targetYear) {
  ASSERT_EQ(Enter(targetYear), ImportFace::Entry::kReady);
  tree_.SetAllChecked(false);
  for (const SettingCategory category : ticked) EXPECT_TRUE(tree_.SetChecked(category, true));
  ImportFace(Run(), view_).Apply(tree_);
}

std::vector<int> ImportFixture::Offered() const {
  std::vector<int> offered;
  for (auto item = tree_.FirstChild(tree_.Root()); item != CategoryTree::kNoItem;
       item = tree_.NextSibling(item)) {
    offered.push_back(tree_.ItemData(item));
  }
  return offered;
}

std::wstring ImportFixture::PackageRoaming(const std::wstring& below, const std::wstring& version) {
  return L"Roaming\\" + context_.companyShortName + L"\\" + context_.productName + L"\\" + version +
         L"\\" + below;
}

std::wstring ImportFixture::PackageLocal(const std::wstring& below, const std::wstring& version) {
  return L"Local\\" + context_.companyShortName + L"\\" + context_.productName + L"\\" + version +
         L"\\" + below;
}

std::wstring ImportFixture::Roaming(const std::wstring& below) const {
  return context_.roamingRoot + L"\\" + below;
}

std::wstring ImportFixture::Local(const std::wstring& below) const {
  return context_.localRoot + L"\\" + below;
}

std::string ImportFixture::Content(const std::wstring& path) const {
  return machine_->FileBytes(path).value_or("no file");
}

}  // namespace carrovan
