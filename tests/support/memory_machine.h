#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/machine.h"
#include "platform/posix/host_facts.h"
#include "registry_text/registry_key.h"
#include "tests/support/fakes.h"
#include "tests/support/memory_files.h"
#include "tests/support/test_machine.h"

namespace carrovan {

// A whole machine in memory, for tests that run the engine hundreds of times. Its parts keep to the
// contracts of the ports and are as simple as those allow.

class MemoryRegistry : public RegistryEditor {
 public:
  RegistryKey& Root(RegistryHive hive) { return hives_[static_cast<std::size_t>(hive)]; }
  const RegistryKey& Root(RegistryHive hive) const {
    return hives_[static_cast<std::size_t>(hive)];
  }

  // Both hives, or one key, as the registry tool would write them.
  std::wstring Text(RegistryHive hive, const std::wstring& keyPath = {}) const;

  bool CanOpenKey(RegistryHive hive, const std::wstring& keyPath) const override;
  std::optional<std::vector<std::wstring>> SubkeyNames(RegistryHive hive,
                                                       const std::wstring& keyPath) const override;
  std::optional<std::vector<RegistryValue>> Values(RegistryHive hive,
                                                   const std::wstring& keyPath) const override;
  SystemCode TryOpen(RegistryHive hive, const std::wstring& keyPath) const override;
  std::optional<std::uint32_t> ValueType(RegistryHive hive, const std::wstring& keyPath,
                                         const std::wstring& name) const override;
  SystemCode SetValues(RegistryHive hive, const std::wstring& keyPath,
                       const std::vector<RegistryValue>& values) override;
  SystemCode CreateKey(RegistryHive hive, const std::wstring& keyPath) override;
  SystemCode DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                         const std::wstring& name) override;
  SystemCode DeleteTree(RegistryHive hive, const std::wstring& keyPath) override;
  SystemCode CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                      RegistryHive targetHive, const std::wstring& targetPath) override;
  SystemCode Flush(RegistryHive) override { return kSystemOk; }

 private:
  std::array<RegistryKey, 2> hives_;  // by RegistryHive
};

// Descriptions among the files, in UTF-8.
class MemoryProfiles : public ProfileFile {
 public:
  explicit MemoryProfiles(FileSystem& files) : files_(files) {}
  std::wstring ReadValue(const std::wstring& section, const std::wstring& key,
                         const std::wstring& filePath) const override;
  bool WriteValue(const std::wstring& section, const std::wstring& key, const std::wstring& value,
                  const std::wstring& filePath) override;

 private:
  FileSystem& files_;
};

// Archives of a form of their own, kept among the files.
class MemoryArchives : public ArchiveLibrary {
 public:
  // How an archive that is kept comes to its path.
  using Keep = std::function<SystemCode(const std::wstring& path, std::string_view bytes)>;

  explicit MemoryArchives(FileSystem& files, Keep keep = {})
      : files_(files), keep_(std::move(keep)) {}
  std::unique_ptr<ArchiveWriter> Create(const std::wstring& archivePath,
                                        ArchivePurpose purpose) override;
  std::unique_ptr<ArchiveReader> Open(const std::wstring& archivePath) override;

 private:
  FileSystem& files_;
  Keep keep_;
};

class MemoryRegistryTool : public RegistryTool {
 public:
  MemoryRegistryTool(FileSystem& files, MemoryRegistry& registry)
      : files_(files), registry_(registry) {}
  std::unique_ptr<RunningTool> ExportKey(const std::wstring& keyPath,
                                         const std::wstring& filePath) override {
    return std::make_unique<EndedTool>(Export(keyPath, filePath));
  }
  std::unique_ptr<RunningTool> ImportFile(const std::wstring& filePath) override {
    return std::make_unique<EndedTool>(Import(filePath));
  }

 private:
  bool Import(const std::wstring& file);
  bool Export(const std::wstring& fullPath, const std::wstring& file);

  FileSystem& files_;
  MemoryRegistry& registry_;
};

class CountingGuids : public GuidSource {
 public:
  std::optional<std::wstring> NewGuid() override {
    const std::wstring number = std::to_wstring(++made_);
    return L"{00000000-0000-4000-8000-" + std::wstring(12 - number.size(), L'0') + number + L"}";
  }

 private:
  int made_ = 0;
};

class MemoryUser : public UserIdentity {
 public:
  std::optional<std::wstring> UserName() const override { return L"u"; }
  std::optional<std::wstring> ProfileFolder() const override { return L"C:\\Users\\u"; }
};

struct MemoryMachine {
  MemoryFiles files;
  MemoryRegistry registry;
  FixedFolders folders;
  CountingGuids guids;
  MemoryProfiles profiles{files};
  FixedProduct product;
  MemoryArchives archives{files};
  MemoryRegistryTool registryTool{files, registry};
  RecordingClock clock;
  MemoryUser user;
  Utf8CodePage codePage;
  NoProcesses processes;
  FixedProcess self;

  Machine Ports() {
    return {&files,        &registry, &folders, &guids,    &profiles,  &product, &archives,
            &registryTool, &clock,    &user,    &codePage, &processes, &self};
  }
};

}  // namespace carrovan
