#include "tests/package/export_fixture.h"

#include "environment/version_folders.h"
#include "package/staging_folder.h"
#include "text/path_text.h"

namespace carrovan {

ExportFixture::ExportFixture() {
  const std::wstring install =
      RemoveFileSpec(RemoveFileSpec(machine_->product.startupFolder)) + L"\\AppData\\";
  machine_->MakeFolder(install + L"en-us");
  machine_->MakeFolder(install + L"zh-cn");
  EXPECT_TRUE(LoadProductContext(context_, Ports()));
  EXPECT_TRUE(RenewStagingFolder(context_, Ports()));
  EXPECT_TRUE(PrepareVersionFolders(context_, Ports()));
  chosen_ = OfferedOnExport(context_);
  chosen_.erase(SettingCategory::Options);
  chosen_.erase(SettingCategory::Register);
  packagePath_ = PackagePath();
  FillMachine();
}

ExportFixture::~ExportFixture() { DeleteStagingFolder(context_, Ports()); }

void ExportFixture::FillMachine() {
  for (const std::wstring language : {L"en-us\\", L"zh-cn\\"}) {
    machine_->PutFile(Roaming(language + L"Customization\\UI.xml"), "<ribbon/>");
    machine_->PutFile(Roaming(language + L"Template\\零件.tpl"), "template");
    machine_->PutFile(Local(language + L"3DBOM\\bom.xml"), "bom");
    machine_->PutFile(Local(language + L"PropertyTemplates\\NewTemplates\\p.xml"), "property");
    machine_->PutFile(Local(language + L"PropertyTemplates\\old.xml"), "not a new template");
    machine_->PutFile(Local(language + L"materials\\steel.mat"), "steel");
    machine_->PutFile(Local(language + L"ToolBox\\bolt\\m8.prt"), "bolt");
    machine_->PutFile(Local(language + L"FavoriteCatalog\\c.xml"), "catalog");
    machine_->PutFile(Local(language + L"SheetMetal\\s.tab"), "sheet");
    machine_->PutFile(Local(language + L"CosmeticThread\\t.tab"), "thread");
  }
  machine_->PutFile(Local(L"Customization\\keys.xml"), "<keys/>");
  machine_->PutFile(Draft(L"26.0\\draft.ini"), "local draft");
  const std::wstring user = RemoveFileSpec(*Ports().folders->LocalAppData());
  machine_->PutFile(
      user + L"\\Roaming" + Draft(L"26.0\\draft.uik").substr((user + L"\\Local").size()),
      "roaming draft");
  for (const wchar_t* subkey : {L"\\General", L"\\Point Snap", L"\\SheetMetal"}) {
    machine_->PutValue(RegistryHive::kCurrentUser, LiveKey(context_) + subkey,
                       MakeStringValue(L"where", subkey));
  }
}

std::wstring ExportFixture::Roaming(const std::wstring& below) const {
  return context_.roamingRoot + L"\\" + below;
}

std::wstring ExportFixture::Local(const std::wstring& below) const {
  return context_.localRoot + L"\\" + below;
}

std::wstring ExportFixture::Draft(const std::wstring& below) const {
  return context_.localFolder + L"\\" + below;
}

void ExportFixture::CheckOnly(std::initializer_list<SettingCategory> categories) {
  chosen_ = categories;
}

ExportReport ExportFixture::Export(RegistryToolPace pace) { return ExportOn(Ports(), pace); }

ExportReport ExportFixture::ExportOn(const Machine& machine, RegistryToolPace pace) {
  PacedRegistryTool tool(*machine.registryTool, *machine.clock, pace);
  RunObserver observer;
  return RunExport({context_, machine, tool, observer}, chosen_, packagePath_);
}

std::vector<std::wstring> ExportFixture::EntryNames() {
  std::vector<std::wstring> names;
  const auto archive = Ports().archives->Open(PackagePath());
  if (!archive) return names;
  for (std::size_t i = 0; const auto item = archive->Item(i); ++i) names.push_back(item->name);
  return names;
}

std::map<std::wstring, std::string> ExportFixture::Entries() {
  std::map<std::wstring, std::string> entries;
  const auto archive = Ports().archives->Open(PackagePath());
  if (!archive) return entries;
  const std::wstring file = machine_->ScratchFolder() + L"extracted";
  for (std::size_t i = 0; const auto item = archive->Item(i); ++i) {
    EXPECT_EQ(archive->Extract(i, file), ArchiveResult::kDone);
    entries[item->name] = machine_->FileBytes(file).value_or("no file");
  }
  return entries;
}

}  // namespace carrovan
