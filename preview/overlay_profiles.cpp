#include "preview/overlay_profiles.h"

namespace carrovan {

std::wstring OverlayProfiles::ReadValue(const std::wstring& section, const std::wstring& key,
                                        const std::wstring& filePath) const {
  return machine_.ReadValue(section, key, files_.Locate(filePath));
}

// A file of the spool never changes, so the copy that is written is made first.
bool OverlayProfiles::WriteValue(const std::wstring& section, const std::wstring& key,
                                 const std::wstring& value, const std::wstring& filePath) {
  std::string content;
  const SystemCode code = files_.ReadBytes(filePath, content);
  if (code != kFileNotFound &&
      (code != kSystemOk || files_.WriteBytes(filePath, content) != kSystemOk)) {
    return false;
  }
  if (code == kSystemOk) return machine_.WriteValue(section, key, value, files_.Locate(filePath));
  if (files_.CodeOfWriting(filePath) != kSystemOk) return false;
  const std::wstring spoolFile = files_.NewSpoolFile();
  return machine_.WriteValue(section, key, value, spoolFile) &&
         files_.Adopt(spoolFile, filePath) == kSystemOk;
}

}  // namespace carrovan
