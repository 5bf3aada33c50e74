#pragma once

#include "platform/archive_library.h"
#include "platform/forwarding_ports.h"
#include "platform/profile_file.h"
#include "platform/registry.h"
#include "platform/registry_tool.h"
#include "restore/change_recorder.h"

namespace carrovan {

// Archives whose writing and unpacking are noted as changes of files.
class RecordedArchives : public ArchiveLibrary {
 public:
  RecordedArchives(ArchiveLibrary& archives, ChangeRecorder& recorder)
      : archives_(archives), recorder_(recorder) {}

  std::unique_ptr<ArchiveWriter> Create(const std::wstring& archivePath,
                                        ArchivePurpose purpose) override;
  std::unique_ptr<ArchiveReader> Open(const std::wstring& archivePath) override;

 private:
  ArchiveLibrary& archives_;
  ChangeRecorder& recorder_;
};

// A file system that has each change noted before it is made.
class RecordedFiles : public ForwardingFiles {
 public:
  RecordedFiles(FileSystem& files, ChangeRecorder& recorder)
      : ForwardingFiles(files), recorder_(recorder) {}

  SystemCode CreateFolder(const std::wstring& path) override;
  SystemCode CreateEmptyFile(const std::wstring& path) override;
  SystemCode RemoveFile(const std::wstring& path) override;
  SystemCode RemoveFolder(const std::wstring& path) override;
  SystemCode WriteBytes(const std::wstring& path, std::string_view bytes) override;
  SystemCode BeginReplacement(const std::wstring& path, std::uint64_t expectedBytes,
                              std::unique_ptr<FileReplacement>& replacement) override;
  SystemCode OpenToAppend(const std::wstring& path,
                          std::unique_ptr<FileAppender>& appender) override;
  SystemCode HoldFile(const std::wstring& path, FileHold hold) override;
  SystemCode CopyOver(const std::wstring& source, const std::wstring& target) override;
  SystemCode MoveTo(const std::wstring& source, const std::wstring& target) override;
  void Announce(std::span<const std::wstring> paths, ComingChange change) override;

 private:
  ChangeRecorder& recorder_;
};

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

// A registry that has each change noted before it is made.
class RecordedRegistry : public ForwardingRegistry {
 public:
  RecordedRegistry(RegistryEditor& registry, ChangeRecorder& recorder)
      : ForwardingRegistry(registry), recorder_(recorder) {}

  SystemCode SetValues(RegistryHive hive, const std::wstring& keyPath,
                       const std::vector<RegistryValue>& values) override;
  SystemCode CreateKey(RegistryHive hive, const std::wstring& keyPath) override;
  SystemCode DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                         const std::wstring& name) override;
  SystemCode DeleteTree(RegistryHive hive, const std::wstring& keyPath) override;
  SystemCode CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                      RegistryHive targetHive, const std::wstring& targetPath) override;

 private:
  // The keys that a copy of one tree over another changes, both given by their top keys.
  void NoteCopy(RegistryHive sourceHive, const std::wstring& sourcePath, RegistryHive targetHive,
                const std::wstring& targetPath, std::vector<std::wstring>& noted);

  // Makes one change of a key, noted before and after.
  template <typename Change>
  [[nodiscard]] SystemCode ChangeKey(RegistryHive hive, const std::wstring& keyPath,
                                     const std::vector<std::wstring>& setting, Change change);

  ChangeRecorder& recorder_;
};

// A registry tool of which the keys are noted that a file names before it is imported.
class RecordedRegistryTool : public ForwardingRegistryTool {
 public:
  RecordedRegistryTool(RegistryTool& tool, const FileReader& files, ChangeRecorder& recorder)
      : ForwardingRegistryTool(tool), files_(files), recorder_(recorder) {}

  // Null also when the keys could not be noted.
  std::unique_ptr<RunningTool> ImportFile(const std::wstring& filePath) override;

 private:
  const FileReader& files_;
  ChangeRecorder& recorder_;
};

// A machine whose changes are noted in a restore point as they are made. The machine and the
// recorder outlive it.
class RecordedMachine {
 public:
  RecordedMachine(const Machine& machine, ChangeRecorder& recorder)
      : behind_(machine),
        files_(*machine.files, recorder),
        profiles_(*machine.profiles, recorder),
        archives_(*machine.archives, recorder),
        registry_(*machine.registry, recorder),
        registryTool_(*machine.registryTool, *machine.files, recorder) {}

  Machine Ports() {
    Machine ports = behind_;
    ports.files = &files_;
    ports.profiles = &profiles_;
    ports.archives = &archives_;
    ports.registry = &registry_;
    ports.registryTool = &registryTool_;
    return ports;
  }

 private:
  Machine behind_;
  RecordedFiles files_;
  RecordedProfiles profiles_;
  RecordedArchives archives_;
  RecordedRegistry registry_;
  RecordedRegistryTool registryTool_;
};

}  // namespace carrovan
