#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace carrovan {

class Clock {
 public:
  virtual ~Clock() = default;

  virtual void Pause(std::chrono::milliseconds duration) = 0;

  virtual std::chrono::system_clock::time_point Now() const = 0;
};

class GuidSource {
 public:
  virtual ~GuidSource() = default;

  // A fresh GUID in registry text form, braces included: "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}".
  // Nothing when the system cannot make one.
  virtual std::optional<std::wstring> NewGuid() = 0;
};

// Where the current user's folders lie. Each answer is nothing when the system does not know.
class KnownFolders {
 public:
  virtual ~KnownFolders() = default;

  // Without a trailing backslash.
  virtual std::optional<std::wstring> RoamingAppData() const = 0;
  virtual std::optional<std::wstring> LocalAppData() const = 0;

  // With a trailing backslash; at most 260 characters, as the system's own buffer holds.
  virtual std::optional<std::wstring> TempPath() const = 0;
};

// The processes that run on the machine.
class ProcessList {
 public:
  virtual ~ProcessList() = default;

  // Names of the executables without their folders; empty when the system does not say.
  virtual std::vector<std::wstring> ExecutableNames() const = 0;
};

// A machine on which nothing runs.
class NoProcesses : public ProcessList {
 public:
  std::vector<std::wstring> ExecutableNames() const override { return {}; }
};

// The process that this program runs as.
struct ProcessFacts {
  std::wstring program;  // the executable's name without its folder and ".exe"
  std::uint32_t id = 0;
};

class OwnProcess {
 public:
  virtual ~OwnProcess() = default;

  virtual ProcessFacts Facts() const = 0;
};

// The process as the host has it.
std::unique_ptr<OwnProcess> OpenHostProcess();

// What the maker's support library reports of the installed CAD product. A fact that it does not
// know is an empty text.
class ProductIdentity {
 public:
  virtual ~ProductIdentity() = default;

  virtual std::wstring StartupFolder() const = 0;         // folder of the product's executables
  virtual std::wstring CompanyShortName() const = 0;      // for example "Vantric"
  virtual std::wstring ProductName() const = 0;           // for example "VANTRIC"
  virtual std::wstring HumanReadableVersion() const = 0;  // year form, for example "2026"
  virtual std::wstring ProductVersion() const = 0;        // internal form, for example "28.0"
};

// Who the current user is. Each answer is nothing when the system does not know.
class UserIdentity {
 public:
  virtual ~UserIdentity() = default;

  // The account's name; with its terminating zero it fits the system's buffer of 256 characters.
  virtual std::optional<std::wstring> UserName() const = 0;

  // The environment's USERPROFILE as it is set; nothing also when it does not fit a fixed path
  // buffer.
  virtual std::optional<std::wstring> ProfileFolder() const = 0;
};

// The user who runs this program.
std::unique_ptr<UserIdentity> OpenHostUser();

// The code page of a machine: what the bytes of an 8-bit text mean there. Every byte below 0x80 is
// the ASCII character.
class CodePage {
 public:
  virtual ~CodePage() = default;

  // A byte that is no text in this code page becomes the unpaired surrogate U+DC80 to U+DCFF.
  virtual std::u16string Decode(std::string_view bytes) const = 0;

  // Decoded text gives the same bytes again. A character that the code page lacks becomes a
  // substitute.
  virtual std::string Encode(std::u16string_view text) const = 0;
};

// The code page of the system that this program runs on.
std::unique_ptr<CodePage> OpenHostCodePage();

}  // namespace carrovan
