#pragma once

#include "platform/profile_file.h"
#include "preview/overlay_files.h"

namespace carrovan {

// Initialization files among the files of an overlay, read and written by the machine's functions.
class OverlayProfiles : public ProfileFile {
 public:
  // Both outlive it.
  OverlayProfiles(ProfileFile& machine, OverlayFiles& files) : machine_(machine), files_(files) {}

  std::wstring ReadValue(const std::wstring& section, const std::wstring& key,
                         const std::wstring& filePath) const override;
  bool WriteValue(const std::wstring& section, const std::wstring& key, const std::wstring& value,
                  const std::wstring& filePath) override;

 private:
  ProfileFile& machine_;
  OverlayFiles& files_;
};

}  // namespace carrovan
