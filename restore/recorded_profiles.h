#pragma once

#include "platform/profile_file.h"
#include "restore/recorded_change.h"

namespace carrovan {

// Initialization files whose writing is noted as a change of the file.
class RecordedProfiles : public ProfileFile {
 public:
  RecordedProfiles(ProfileFile& profiles, ChangeRecorder& recorder)
      : profiles_(profiles), recorder_(recorder) {}

  std::wstring ReadValue(const std::wstring& section, const std::wstring& key,
                         const std::wstring& filePath) const override {
    return profiles_.ReadValue(section, key, filePath);
  }
  bool WriteValue(const std::wstring& section, const std::wstring& key, const std::wstring& value,
                  const std::wstring& filePath) override {
    return MakeRecorded(
        recorder_, filePath, [&] { return profiles_.WriteValue(section, key, value, filePath); },
        [](SystemCode) { return false; });
  }

 private:
  ProfileFile& profiles_;
  ChangeRecorder& recorder_;
};

}  // namespace carrovan
