// Drops a file on the wizard's window, as the desktop does: drop_probe.exe CAPTION FILE

#include <windows.h>

#include <shlobj.h>

#include <bit>
#include <cstring>
#include <string>
#include <vector>

#include "platform/windows/handles.h"

namespace carrovan {
namespace {

// What a window learns of a drop: the place, and the dropped names with an empty one behind them.
std::vector<char> DropOf(const std::wstring& file) {
  DROPFILES drop{};
  drop.pFiles = sizeof(drop);
  drop.fWide = TRUE;
  const std::size_t textBytes = (file.size() + 2) * sizeof(wchar_t);
  std::vector<char> bytes(sizeof(drop) + textBytes);
  std::memcpy(bytes.data(), &drop, sizeof(drop));
  std::memcpy(bytes.data() + sizeof(drop), file.data(), file.size() * sizeof(wchar_t));
  return bytes;
}

bool Drop(HWND window, const std::wstring& file) {
  DWORD processId = 0;
  GetWindowThreadProcessId(window, &processId);
  const KernelObject process(
      OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, processId));
  if (!process) return false;
  const std::vector<char> bytes = DropOf(file);
  // The window reads it later, and it goes with the window's process.
  void* place = VirtualAllocEx(process.Get(), nullptr, bytes.size(), MEM_COMMIT, PAGE_READWRITE);
  return place != nullptr &&
         WriteProcessMemory(process.Get(), place, bytes.data(), bytes.size(), nullptr) != FALSE &&
         PostMessageW(window, WM_DROPFILES, std::bit_cast<WPARAM>(place), 0) != FALSE;
}

}  // namespace
}  // namespace carrovan

int wmain(int argc, wchar_t** argv) {
  if (argc != 3) return 2;
  const HWND window = FindWindowW(nullptr, argv[1]);
  return window != nullptr && carrovan::Drop(window, argv[2]) ? 0 : 1;
}
