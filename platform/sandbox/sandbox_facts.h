#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "platform/posix/path_mapper.h"
#include "platform/profile_file.h"
#include "platform/system_facts.h"

namespace carrovan {

// The folders that a user has on a freshly installed system.
class SandboxFolders : public KnownFolders {
 public:
  explicit SandboxFolders(const std::wstring& userName)
      : appData_(L"C:\\Users\\" + userName + L"\\AppData\\") {}

  std::optional<std::wstring> RoamingAppData() const override { return appData_ + L"Roaming"; }
  std::optional<std::wstring> LocalAppData() const override { return appData_ + L"Local"; }
  std::optional<std::wstring> TempPath() const override;

 private:
  std::wstring appData_;
};

// The product that a machine in a folder has, and the user who has it: section "Product" of its
// "product.ini".
class SandboxProduct : public ProductIdentity {
 public:
  explicit SandboxProduct(std::wstring iniText) : iniText_(std::move(iniText)) {}

  std::wstring StartupFolder() const override { return Fact(L"StartupFolder"); }
  std::wstring CompanyShortName() const override { return Fact(L"CompanyShortName"); }
  std::wstring ProductName() const override { return Fact(L"ProductName"); }
  std::wstring HumanReadableVersion() const override { return Fact(L"HumanReadableVersion"); }
  std::wstring ProductVersion() const override { return Fact(L"ProductVersion"); }

  std::wstring UserName() const { return Fact(L"UserName"); }

 private:
  std::wstring Fact(std::wstring_view key) const;

  std::wstring iniText_;
};

// The user of a machine in a folder, with the profile where a freshly installed system has it.
class SandboxUser : public UserIdentity {
 public:
  explicit SandboxUser(std::wstring name) : name_(std::move(name)) {}

  std::optional<std::wstring> UserName() const override;
  std::optional<std::wstring> ProfileFolder() const override;

 private:
  std::wstring name_;
};

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
