#include "platform/machine.h"
#include "platform/windows/tarvik_library.h"
#include "platform/windows/tarvik_ports.h"
#include "platform/windows/windows_code_page.h"
#include "platform/windows/windows_command_interpreter.h"
#include "platform/windows/windows_facts.h"
#include "platform/windows/windows_file_system.h"
#include "platform/windows/windows_registry.h"

namespace carrovan {
namespace {

class WindowsMachine : public OwnedMachine {
 public:
  explicit WindowsMachine(std::unique_ptr<TarvikLibrary> tarvik)
      : tarvik_(std::move(tarvik)),
        product_(tarvik_->Functions()),
        archives_(tarvik_->Functions()) {}

  Machine Ports() override {
    return {&files_,        &registry_, &folders_, &guids_,    &profiles_,  &product_,  &archives_,
            &registryTool_, &clock_,    &user_,    &codePage_, &processes_, self_.get()};
  }

 private:
  std::unique_ptr<TarvikLibrary> tarvik_;
  WindowsFileSystem files_;
  WindowsRegistry registry_;
  WindowsKnownFolders folders_;
  WindowsGuidSource guids_;
  WindowsProfileFile profiles_;
  TarvikProduct product_;
  TarvikArchiveLibrary archives_;
  WindowsCommandInterpreter interpreter_;
  InterpretedRegistryTool registryTool_{interpreter_};
  WindowsClock clock_;
  WindowsUserIdentity user_;
  WindowsCodePage codePage_;
  WindowsProcessList processes_;
  std::unique_ptr<OwnProcess> self_ = OpenHostProcess();
};

}  // namespace

MachineOrReason OpenNativeMachine() {
  TarvikOrReason tarvik = LoadTarvik(TarvikPath());
  if (!tarvik.object) return {nullptr, tarvik.reason};
  return {std::make_unique<WindowsMachine>(std::move(tarvik.object)), L""};
}

}  // namespace carrovan
