// The last steps of an import where something is in the way.
#include "package/put_in_place.h"

#include <gtest/gtest.h>

#include "platform/forwarding_ports.h"
#include "tests/support/fakes.h"
#include "tests/support/test_machine.h"

namespace carrovan {
namespace {

// A machine with a staging folder that holds what a package brought.
class PutInPlaceTest : public testing::Test {
 protected:
  PutInPlaceTest() {
    context_.stagingFolder = machine_->ScratchFolder() + L"staging\\";
    context_.packageDescriptionPath = context_.stagingFolder + L"config.ini";
    machine_->PutFile(context_.stagingFolder + L"Options\\General.reg", "REGEDIT4\r\n");
    folders_.temp = machine_->ScratchFolder();
  }

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  FixedFolders folders_;
  ProductContext context_;
  RecordingInterpreter interpreter_;
  RunObserver observer_;
  PacedRegistryTool tool_{interpreter_.tool, machine_->clock, RegistryToolPace::kWaitForEnd};
  RunReport report_;
};

TEST_F(PutInPlaceTest, FolderOfRegistryFilesThatCannotBeReadIsAProblem) {
  class ClosedFolder : public ForwardingFiles {
   public:
    using ForwardingFiles::ForwardingFiles;
    SystemCode ReadFolder(const std::wstring&, std::vector<FolderEntry>&) const override {
      return kAccessDenied;
    }
  };
  const Machine ports = machine_->Ports();
  const ClosedFolder files(*ports.files);
  ImportRegistryFolder(context_.stagingFolder + L"Options", files, tool_, report_);
  EXPECT_TRUE(interpreter_.started.empty());
  ASSERT_EQ(report_.problems.size(), 1u);
  EXPECT_TRUE(report_.problems[0].find(context_.stagingFolder + L"Options") != std::wstring::npos);
}

TEST_F(PutInPlaceTest, MissingFolderOfRegistryFilesIsNoProblem) {
  const Machine ports = machine_->Ports();
  ImportRegistryFolder(context_.stagingFolder + L"Register", *ports.files, tool_, report_);
  EXPECT_TRUE(report_.IsComplete());
}

TEST_F(PutInPlaceTest, AfterAFailureTheDescriptionLiesInTheFreshStagingFolder) {
  const std::wstring kept = context_.stagingFolder;
  const Machine ports = machine_->Ports();
  const Machine machine = With<&Machine::folders>(ports, folders_);
  const std::wstring unknown;
  PutInPlace({context_, unknown, machine, tool_, observer_}, report_);
  EXPECT_TRUE(ports.files->Exists(kept + L"Options\\General.reg"));
  EXPECT_NE(context_.stagingFolder, kept);
  EXPECT_EQ(context_.packageDescriptionPath, context_.stagingFolder + L"config.ini");
}

}  // namespace
}  // namespace carrovan
