#include "platform/windows/windows_clock.h"

#include <windows.h>

namespace carrovan {

void WindowsClock::Pause(std::chrono::milliseconds duration) {
  Sleep(static_cast<DWORD>(duration.count()));
}

}  // namespace carrovan
