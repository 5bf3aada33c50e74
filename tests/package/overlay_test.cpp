// The last steps of an import where something is in the way.
#include "package/overlay.h"

#include <gtest/gtest.h>

#include "platform/forwarding_files.h"
#include "tests/support/fakes.h"
#include "tests/support/test_machine.h"

namespace carrovan {
namespace {

// A machine with a staging folder that holds what a package brought.
class OverlayTest : public testing::Test {
 protected:
  OverlayTest() {
    context_.stagingFolder = machine_->ScratchFolder() + L"staging\\";
    context_.packageDescriptionPath = context_.stagingFolder + L"config.ini";
    machine_->PutFile(context_.stagingFolder + L"Options\\General.reg", "REGEDIT4\r\n");
    folders_.temp = machine_->ScratchFolder();
  }

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  FixedFolders folders_;
  ProductContext context_;
  RecordingInterpreter interpreter_;
  RecordingView view_;
  RegistryTool tool_{interpreter_, machine_->clock, RegistryToolPace::kWaitForEnd};
  ImportReport report_;
};

TEST_F(OverlayTest, FolderOfRegistryFilesThatCannotBeReadIsAProblem) {
  class ClosedFolder : public ForwardingFiles {
   public:
    using ForwardingFiles::ForwardingFiles;
    SystemCode ReadFolder(const std::wstring&, std::vector<FolderEntry>&) const override {
      return kAccessDenied;
    }
  };
  const Machine ports = machine_->Ports();
  const ClosedFolder files(ports.files);
  ImportRegistryFolder(context_.stagingFolder + L"Options", files, tool_, report_);
  EXPECT_TRUE(interpreter_.started.empty());
  ASSERT_EQ(report_.problems.size(), 1u);
  EXPECT_TRUE(report_.problems[0].find(context_.stagingFolder + L"Options") != std::wstring::npos);
}

TEST_F(OverlayTest, MissingFolderOfRegistryFilesIsNoProblem) {
  const Machine ports = machine_->Ports();
  ImportRegistryFolder(context_.stagingFolder + L"Register", ports.files, tool_, report_);
  EXPECT_TRUE(report_.IsComplete());
}

TEST_F(OverlayTest, AfterAFailureTheDescriptionLiesInTheFreshStagingFolder) {
  const std::wstring kept = context_.stagingFolder;
  const Machine ports = machine_->Ports();
  const Machine machine = WithFolders(ports, folders_);
  const std::wstring unknown;
  ApplyOverlay({context_, unknown, machine, tool_, view_}, report_);
  EXPECT_TRUE(ports.files.Exists(kept + L"Options\\General.reg"));
  EXPECT_NE(context_.stagingFolder, kept);
  EXPECT_EQ(context_.packageDescriptionPath, context_.stagingFolder + L"config.ini");
}

}  // namespace
}  // namespace carrovan
