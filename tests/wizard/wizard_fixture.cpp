#include "tests/wizard/wizard_fixture.h"

#include <algorithm>

#include "package/staging_folder.h"
#include "text/path_text.h"

namespace carrovan {

WizardFixture::WizardFixture() {
  folders_.roaming = machine_->ScratchFolder() + L"Profile\\Roaming";
  folders_.local = machine_->ScratchFolder() + L"Profile\\Local";
  folders_.temp = machine_->Ports().folders->TempPath();
  for (const auto& folder : {folders_.roaming, folders_.local}) machine_->MakeFolder(*folder);
  machine_->MakeFolder(RemoveFileSpec(RemoveFileSpec(machine_->product.startupFolder)) +
                       L"\\AppData\\en-us");
  const std::wstring machineKey =
      L"SOFTWARE\\" + machine_->product.companyShortName + L"\\" + machine_->product.productName;
  machine_->PutKey(RegistryHive::kLocalMachine, machineKey + L"\\27.0");
  machine_->PutKey(RegistryHive::kLocalMachine, machineKey + L"\\28.0");
  machine_->PutKey(RegistryHive::kCurrentUser, LiveKeyOf(L"28.0"));
  frame_.saveAnswer = machine_->ScratchFolder() + L"x.ucex";
}

WizardFixture::~WizardFixture() { DeleteStagingFolder(context_, machine_->Ports()); }

void WizardFixture::OpenIn(MigrationMode mode) {
  ASSERT_TRUE(flow_.Open());
  flow_.Start();
  ChooseMode(state_, context_, mode);
}

void WizardFixture::MakePackage(const std::wstring& path, const std::string& release) {
  const Machine ports = machine_->Ports();
  const std::wstring description = machine_->ScratchFolder() + L"config.ini";
  machine_->PutFile(description, "[Selected]\r\nOptions=1\r\nShortcut key=1\r\n[Base]\r\nCOMPANY=" +
                                     ToUtf8(machine_->product.companyShortName) +
                                     "\r\nINTERNAL VERSION=28.0\r\nRELEASE VERSION=" + release +
                                     "\r\nPRODUCT=" + ToUtf8(machine_->product.productName) +
                                     "\r\n");
  const auto writer = ports.archives->Create(path, ArchivePurpose::kKeep);
  ASSERT_TRUE(writer);
  ASSERT_EQ(writer->Add(L"config.ini", description), ArchiveResult::kDone);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
}

void WizardFixture::MakeLegacyPackage(const std::wstring& path) {
  const Machine ports = machine_->Ports();
  const std::wstring document = machine_->ScratchFolder() + L"Scene_UI.xml";
  machine_->PutFile(document, "<s/>");
  const auto writer = ports.archives->Create(path, ArchivePurpose::kKeep);
  ASSERT_TRUE(writer);
  ASSERT_EQ(writer->Add(L"Scene_UI.xml", document), ArchiveResult::kDone);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
}

std::ptrdiff_t WizardFixture::Resets() const {
  return std::ranges::count_if(frame_.finishTexts, [](const std::wstring& text) {
    return text.find(L"have been reset") != std::wstring::npos;
  });
}

Machine WizardFixture::Wired() {
  Machine machine = machine_->Ports();
  machine.folders = &folders_;
  machine.archives = &import_;
  machine.registryTool = &interpreter_.tool;
  return machine;
}

Machine WizardFixture::PortsWith(KnownFolders& folders) {
  return With<&Machine::folders>(Wired(), folders);
}

WizardFlow WizardFixture::FlowOn(const Machine& machine) {
  return WizardFlow(
      {context_, state_, machine, machine_->Packages(), EnglishTexts(), log_, frame_});
}

bool WizardFixture::HasStagingFolder() const {
  return machine_->Ports().files->IsFolder(RemoveFileSpec(context_.stagingFolder));
}

bool WizardFixture::IsStagingFolderFresh() const {
  const auto entries = ListFolder(*machine_->Ports().files, context_.stagingFolder);
  return entries.size() == 1 && entries[0].name == kRunFolderMark;
}

std::wstring WizardFixture::LiveKeyOf(const std::wstring& version) const {
  return L"SOFTWARE\\" + machine_->product.companyShortName + L"\\" +
         machine_->product.productName + L" " + version;
}

}  // namespace carrovan
