#pragma once

#include "restore/recorded_archives.h"
#include "restore/recorded_files.h"
#include "restore/recorded_profiles.h"
#include "restore/recorded_registry.h"

namespace carrovan {

// A machine whose changes are noted in a restore point as they are made. The machine and the
// recorder outlive it.
class RecordedMachine {
 public:
  RecordedMachine(const Machine& machine, ChangeRecorder& recorder)
      : behind_(machine),
        files_(machine.files, recorder),
        profiles_(machine.profiles, recorder),
        archives_(machine.archives, recorder),
        registry_(machine.registryEditor, machine.registry, recorder),
        interpreter_(machine.interpreter, machine.files, recorder) {}

  Machine Ports() {
    return {files_,          behind_.registry, behind_.folders,  behind_.guids, profiles_,
            behind_.product, archives_,        interpreter_,     behind_.clock, registry_,
            behind_.user,    behind_.codePage, behind_.processes};
  }

 private:
  Machine behind_;
  RecordedFiles files_;
  RecordedProfiles profiles_;
  RecordedArchives archives_;
  RecordedRegistry registry_;
  RecordedInterpreter interpreter_;
};

}  // namespace carrovan
