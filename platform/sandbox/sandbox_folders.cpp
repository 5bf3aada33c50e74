#include "platform/sandbox/sandbox_folders.h"

#include "platform/path_text.h"
#include "platform/text.h"

namespace carrovan {

std::optional<std::wstring> SandboxFolders::TempPath() const {
  std::wstring path = appData_ + L"Local\\Temp\\";
  if (ToUtf16(path).size() > kFixedPathBuffer) return std::nullopt;
  return path;
}

}  // namespace carrovan
