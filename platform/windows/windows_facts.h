#pragma once

#include "platform/profile_file.h"
#include "platform/system_facts.h"

namespace carrovan {

class WindowsClock : public Clock {
 public:
  void Pause(std::chrono::milliseconds duration) override;
  std::chrono::system_clock::time_point Now() const override {
    return std::chrono::system_clock::now();
  }
};

class WindowsGuidSource : public GuidSource {
 public:
  std::optional<std::wstring> NewGuid() override;
};

// The folders of the user who runs this program.
class WindowsKnownFolders : public KnownFolders {
 public:
  std::optional<std::wstring> RoamingAppData() const override;
  std::optional<std::wstring> LocalAppData() const override;
  std::optional<std::wstring> TempPath() const override;
};

class WindowsProcessList : public ProcessList {
 public:
  std::vector<std::wstring> ExecutableNames() const override;
};

class WindowsProcess : public OwnProcess {
 public:
  ProcessFacts Facts() const override;
};

// The user who runs this program.
class WindowsUserIdentity : public UserIdentity {
 public:
  std::optional<std::wstring> UserName() const override;
  std::optional<std::wstring> ProfileFolder() const override;
};

// Initialization files through the system's own profile functions.
class WindowsProfileFile : public ProfileFile {
 public:
  std::wstring ReadValue(const std::wstring& section, const std::wstring& key,
                         const std::wstring& filePath) const override;
  bool WriteValue(const std::wstring& section, const std::wstring& key, const std::wstring& value,
                  const std::wstring& filePath) override;
};

}  // namespace carrovan
