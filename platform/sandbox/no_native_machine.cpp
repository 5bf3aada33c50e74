#include "platform/native_machine.h"

namespace carrovan {

MachineOrReason OpenNativeMachine() {
  return {nullptr, L"this needs Windows, or --root with a sandbox folder"};
}

}  // namespace carrovan
