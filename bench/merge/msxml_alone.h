#pragma once

#include <string>

namespace carrovan {

// Loads two documents and saves the second, with MSXML and nothing around it. False when that
// fails.
bool LoadBothAndSave(const std::wstring& oldPath, const std::wstring& newPath,
                     const std::wstring& outputPath);

}  // namespace carrovan
