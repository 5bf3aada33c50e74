#include "tests/wizard/wizard_fixture.h"

#include "package/staging_folder.h"
#include "text/path_text.h"

namespace carrovan {

WizardFixture::WizardFixture() {
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

Machine WizardFixture::PortsWith(KnownFolders& folders) {
  const Machine ports = machine_->Ports();
  return WithFolders(ports, folders);
}

WizardFlow WizardFixture::FlowOn(const Machine& machine) {
  return WizardFlow({context_, state_, machine, tool_, frame_, import_, reset_});
}

bool WizardFixture::HasStagingFolder() const {
  return machine_->Ports().files.IsFolder(RemoveFileSpec(context_.stagingFolder));
}

bool WizardFixture::IsStagingFolderFresh() const {
  const auto entries = machine_->Ports().files.ListFolder(context_.stagingFolder);
  return entries.size() == 1 && entries[0].name == kRunFolderMark;
}

std::wstring WizardFixture::LiveKeyOf(const std::wstring& version) const {
  return L"SOFTWARE\\" + machine_->product.companyShortName + L"\\" +
         machine_->product.productName + L" " + version;
}

}  // namespace carrovan
