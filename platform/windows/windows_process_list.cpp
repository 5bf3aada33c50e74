#include "platform/windows/windows_process_list.h"

#include <windows.h>

#include <tlhelp32.h>

#include "platform/windows/handles.h"

namespace carrovan {

std::vector<std::wstring> WindowsProcessList::ExecutableNames() const {
  const FileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  std::vector<std::wstring> names;
  if (!snapshot) return names;
  PROCESSENTRY32W process{};
  process.dwSize = sizeof(process);
  BOOL found = Process32FirstW(snapshot.Get(), &process);
  for (; found != FALSE; found = Process32NextW(snapshot.Get(), &process)) {
    names.emplace_back(process.szExeFile);
  }
  return names;
}

}  // namespace carrovan
