#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/machine.h"
#include "registry_text/registry_key.h"

namespace carrovan {

// Identity with fixed values. The product's name is unique to each test machine, so that tests on a
// real registry and profile never meet each other or a real product.
class FixedProduct : public ProductIdentity {
 public:
  std::wstring startupFolder;
  std::wstring companyShortName = L"Vantric";
  std::wstring productName = L"VANTRIC";
  std::wstring humanReadableVersion = L"2026";
  std::wstring productVersion = L"28.0";

  std::wstring StartupFolder() const override { return startupFolder; }
  std::wstring CompanyShortName() const override { return companyShortName; }
  std::wstring ProductName() const override { return productName; }
  std::wstring HumanReadableVersion() const override { return humanReadableVersion; }
  std::wstring ProductVersion() const override { return productVersion; }
};

// Notes the pauses instead of making them.
class RecordingClock : public Clock {
 public:
  std::vector<std::chrono::milliseconds> pauses;

  void Pause(std::chrono::milliseconds duration) override { pauses.push_back(duration); }

  // 2026-03-04 05:06:07 UTC until a test says otherwise.
  std::chrono::system_clock::time_point now{std::chrono::seconds(1772600767)};
  std::chrono::system_clock::time_point Now() const override { return now; }
};

// A machine that a test may fill and spoil: a sandbox folder natively, the real registry and
// profile in the Windows program. Everything it made is gone when it is destroyed.
class TestMachine {
 public:
  virtual ~TestMachine() = default;

  // The machine's own adapters, with `product` and `clock` in place of the real ones.
  virtual Machine Ports() = 0;

  // The machine's files, for looking into archives.
  virtual HostFiles& Packages() = 0;

  FixedProduct product;
  RecordingClock clock;

  // A fresh folder for the test's own files, with a trailing backslash. The product's startup
  // folder is set below it: scratch + "Program Files\Product\Bin".
  virtual std::wstring ScratchFolder() const = 0;

  virtual void MakeFolder(const std::wstring& path) = 0;                         // and its parents
  virtual void PutFile(const std::wstring& path, const std::string& bytes) = 0;  // and its parents
  virtual std::optional<std::string> FileBytes(const std::wstring& path) const = 0;
  virtual void DeletePath(const std::wstring& path) = 0;  // a file, or a folder with its content

  // Until the machine is destroyed, nobody can read the file's content (it is still listed).
  virtual void MakeUnreadable(const std::wstring& path) = 0;
  // Until the machine is destroyed, nothing can be created in the folder.
  virtual void MakeFolderUnwritable(const std::wstring& folder) = 0;
  virtual void MakeReadOnly(const std::wstring& path) = 0;

  // True where moving a file onto itself does not give it the new spelling, as under Wine.
  virtual bool KeepsSpelling() const { return false; }

  // Key paths are relative to the hive. Keys are created with their parents and removed at the end
  // when they were not there before.
  virtual void PutKey(RegistryHive hive, const std::wstring& keyPath) = 0;
  virtual void PutValue(RegistryHive hive, const std::wstring& keyPath,
                        const RegistryValue& value) = 0;
  virtual std::optional<RegistryValue> Value(RegistryHive hive, const std::wstring& keyPath,
                                             const std::wstring& name) const = 0;
  // Until the machine is destroyed, the key is there but cannot be opened for reading. False when
  // this system cannot do that.
  [[nodiscard]] virtual bool MakeKeyUnreadable(RegistryHive hive, const std::wstring& keyPath) = 0;
};

std::unique_ptr<TestMachine> NewTestMachine();

// The same machine with one port replaced: With<&Machine::files>(machine, files).
template <auto kPort, typename Port>
Machine With(Machine machine, Port& port) {
  machine.*kPort = &port;
  return machine;
}

}  // namespace carrovan
