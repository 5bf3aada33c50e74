#pragma once

#include <string>

namespace carrovan {

// Name of the file in which new content is written before it takes a file's place. Of the names
// from attempt 0 on, the first that nothing in the folder has is taken. It does not grow with the
// name of the file, which may be as long as a name can be.
inline std::wstring PartName(int attempt) {
  return L"~carrovan" + std::to_wstring(attempt) + L".part";
}

}  // namespace carrovan
