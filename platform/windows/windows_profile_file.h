#pragma once

#include "platform/profile_file.h"

namespace carrovan {

// Initialization files through the system's own profile functions.
class WindowsProfileFile : public ProfileFile {
 public:
  std::wstring ReadValue(const std::wstring& section, const std::wstring& key,
                         const std::wstring& filePath) const override;
  bool WriteValue(const std::wstring& section, const std::wstring& key, const std::wstring& value,
                  const std::wstring& filePath) override;
};

}  // namespace carrovan
