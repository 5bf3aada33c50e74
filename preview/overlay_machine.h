#pragma once

#include <memory>

#include "preview/machine_changes.h"
#include "preview/overlay_archives.h"
#include "preview/overlay_files.h"
#include "preview/overlay_interpreter.h"
#include "preview/overlay_profiles.h"
#include "preview/overlay_registry.h"

namespace carrovan {

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
