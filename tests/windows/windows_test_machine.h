#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/windows/tarvik_library.h"
#include "platform/windows/tarvik_ports.h"
#include "platform/windows/windows_code_page.h"
#include "platform/windows/windows_command_interpreter.h"
#include "platform/windows/windows_facts.h"
#include "platform/windows/windows_file_system.h"
#include "platform/windows/windows_registry.h"
#include "tests/support/test_machine.h"
#include "tests/windows/obstacles.h"
#include "tests/windows/test_traces.h"

namespace carrovan {

// Hands out the system's GUIDs and notes them.
class NotingGuidSource : public GuidSource {
 public:
  std::vector<std::wstring> guids;

  std::optional<std::wstring> NewGuid() override;

 private:
  WindowsGuidSource source_;
};

// The machine that the test program runs on. Archives go through the tarvik.dll beside it.
class WindowsTestMachine : public TestMachine {
 public:
  explicit WindowsTestMachine(std::unique_ptr<TarvikLibrary> tarvik);
  WindowsTestMachine(const WindowsTestMachine&) = delete;
  WindowsTestMachine& operator=(const WindowsTestMachine&) = delete;
  ~WindowsTestMachine() override;

  Machine Ports() override;
  HostFiles& Packages() override { return *packages_; }
  std::wstring ScratchFolder() const override { return traces_.ScratchFolder(); }

  void MakeFolder(const std::wstring& path) override;
  void PutFile(const std::wstring& path, const std::string& bytes) override;
  std::optional<std::string> FileBytes(const std::wstring& path) const override;
  void DeletePath(const std::wstring& path) override;
  void MakeUnreadable(const std::wstring& path) override;
  void MakeFolderUnwritable(const std::wstring& folder) override;
  void MakeReadOnly(const std::wstring& path) override;
  bool KeepsSpelling() const override;

  void PutKey(RegistryHive hive, const std::wstring& keyPath) override;
  void PutValue(RegistryHive hive, const std::wstring& keyPath,
                const RegistryValue& value) override;
  std::optional<RegistryValue> Value(RegistryHive hive, const std::wstring& keyPath,
                                     const std::wstring& name) const override;
  [[nodiscard]] bool MakeKeyUnreadable(RegistryHive hive, const std::wstring& keyPath) override;

 private:
  struct Key {
    RegistryHive hive;
    std::wstring path;
  };

  void RemoveStagingFolders();

  TestTraces traces_;
  std::unique_ptr<TarvikLibrary> tarvik_;
  std::unique_ptr<HostFiles> packages_ = OpenHostFiles();
  WindowsFileSystem files_;
  WindowsRegistry registry_;
  WindowsKnownFolders folders_;
  NotingGuidSource guids_;
  WindowsProfileFile profiles_;
  TarvikArchiveLibrary archives_;
  WindowsCommandInterpreter interpreter_;
  InterpretedRegistryTool registryTool_{interpreter_};
  WindowsUserIdentity user_;
  WindowsCodePage codePage_;
  NoProcesses processes_;
  std::unique_ptr<OwnProcess> self_ = OpenHostProcess();

  std::vector<std::unique_ptr<Obstacle>> obstacles_;
  std::vector<std::wstring> madePaths_;
  std::vector<Key> madeKeys_;
};

}  // namespace carrovan
