#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/archive_library.h"
#include "platform/file_system.h"
#include "platform/profile_file.h"
#include "platform/registry.h"
#include "platform/registry_tool.h"
#include "preview/machine_changes.h"
#include "preview/overlay_files.h"
#include "preview/overlay_registry.h"

namespace carrovan {

// What an archive would hold.
struct ArchiveList {
  struct File {
    std::wstring name;
    std::wstring real;  // the file of the machine or the spool that has its content
    std::uint64_t sizeBytes = 0;
  };

  std::wstring path;
  std::vector<File> files;
};

// Archives among the files of an overlay: a library of the machine reads and writes them in the
// spool. One that is unpacked at once is a list of the files that are to be in it, whose content is
// there already and never changes.
class OverlayArchives : public ArchiveLibrary {
 public:
  // Both outlive it.
  OverlayArchives(ArchiveLibrary& machine, OverlayFiles& files)
      : machine_(machine), files_(files) {}

  std::unique_ptr<ArchiveWriter> Create(const std::wstring& archivePath,
                                        ArchivePurpose purpose) override;
  std::unique_ptr<ArchiveReader> Open(const std::wstring& archivePath) override;

  // Writes those that were to be unpacked at once and are still there, as a run would leave them.
  void WriteLeftLists();

 private:
  ArchiveLibrary& machine_;
  OverlayFiles& files_;
  std::map<std::wstring, ArchiveList> lists_;  // by the empty file of the spool
};

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

// A registry tool that works on the files and the registry of an overlay. It exports nothing. The
// work is done or has failed when a call returns.
class OverlayRegistryTool : public RegistryTool {
 public:
  // Both outlive it.
  OverlayRegistryTool(const FileReader& files, RegistryEditor& registry)
      : files_(files), registry_(registry) {}

  // Never null.
  std::unique_ptr<RunningTool> ExportKey(const std::wstring& keyPath,
                                         const std::wstring& filePath) override;
  std::unique_ptr<RunningTool> ImportFile(const std::wstring& filePath) override;

 private:
  const FileReader& files_;
  RegistryEditor& registry_;
};

// A machine on which any run can be tried out: it looks like another one, and what is changed on it
// stays in it and can be reported.
class OverlayMachine {
 public:
  // None when there is no place for what is to be written. The parts of the machine outlive it.
  static OrReason<OverlayMachine> Open(const Machine& machine);

  Machine Ports();

  // What a run has changed so far.
  MachineChanges Changes();

 private:
  OverlayMachine(const Machine& machine, std::unique_ptr<OverlayFiles> files);

  Machine machine_;
  std::unique_ptr<OverlayFiles> files_;
  OverlayRegistry registry_;
  OverlayProfiles profiles_;
  OverlayArchives archives_;
  OverlayRegistryTool registryTool_;
};

}  // namespace carrovan
