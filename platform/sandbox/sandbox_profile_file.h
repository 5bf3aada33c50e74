#pragma once

#include <string>

#include "platform/profile_file.h"
#include "platform/sandbox/path_mapper.h"

namespace carrovan {

// Initialization files as host files. The code page is UTF-8.
class SandboxProfileFile : public ProfileFile {
 public:
  explicit SandboxProfileFile(const PathMapper& paths) : paths_(paths) {}

  std::wstring ReadValue(const std::wstring& section, const std::wstring& key,
                         const std::wstring& filePath) const override;

  // Bytes that do not decode stay as they are, but for the line that is changed.
  bool WriteValue(const std::wstring& section, const std::wstring& key, const std::wstring& value,
                  const std::wstring& filePath) override;

 private:
  const PathMapper& paths_;
};

}  // namespace carrovan
