#pragma once

#include <memory>

#include "platform/archive_library.h"
#include "platform/command_interpreter.h"
#include "platform/file_system.h"
#include "platform/profile_file.h"
#include "platform/registry.h"
#include "preview/machine_changes.h"
#include "preview/overlay_files.h"
#include "preview/overlay_registry.h"

namespace carrovan {

// Archives among the files of an overlay: a library of the machine reads and writes them in the
// spool.
class OverlayArchives : public ArchiveLibrary {
 public:
  // Both outlive it.
  OverlayArchives(ArchiveLibrary& machine, OverlayFiles& files)
      : machine_(machine), files_(files) {}

  std::unique_ptr<ArchiveWriter> Create(const std::wstring& archivePath,
                                        ArchivePurpose purpose) override;
  std::unique_ptr<ArchiveReader> Open(const std::wstring& archivePath) override;

 private:
  ArchiveLibrary& machine_;
  OverlayFiles& files_;
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

// A command interpreter that knows the registry tool's import and nothing else, on the files and
// the registry of an overlay. The work is done or has failed when Start returns; any other command
// line does nothing and fails.
class OverlayInterpreter : public CommandInterpreter {
 public:
  // Both outlive it.
  OverlayInterpreter(const FileReader& files, RegistryEditor& registry)
      : files_(files), registry_(registry) {}

  // Never null.
  std::unique_ptr<RunningCommand> Start(const std::wstring& parameters) override;

 private:
  bool Import(const std::wstring& file);

  const FileReader& files_;
  RegistryEditor& registry_;
};

// A machine on which any run can be tried out: it looks like another one, and what is changed on it
// stays in it and can be told.
class OverlayMachine {
 public:
  // Null, with a line that says why, when there is no place for what is to be written. The parts of
  // the machine outlive it.
  static std::unique_ptr<OverlayMachine> Open(const Machine& machine, std::wstring& reason);

  Machine Ports();

  // What a run has changed so far.
  MachineChanges Changes() const;

 private:
  OverlayMachine(const Machine& machine, std::unique_ptr<OverlayFiles> files);

  Machine machine_;
  std::unique_ptr<OverlayFiles> files_;
  OverlayRegistry registry_;
  OverlayProfiles profiles_;
  OverlayArchives archives_;
  OverlayInterpreter interpreter_;
};

}  // namespace carrovan
