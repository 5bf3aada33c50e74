#pragma once

#include <string>

#include "platform/file_system.h"

namespace carrovan {

// Why a file cannot be opened as an archive, for a file of which that is known: one line that names
// the file ("C:\a.ucex is not a package: it is empty").
std::wstring DescribeNoPackage(const FileReader& files, const std::wstring& path);

}  // namespace carrovan
