#include "preview/overlay_machine.h"

#include <utility>

namespace carrovan {

std::unique_ptr<OverlayMachine> OverlayMachine::Open(const Machine& machine, std::wstring& reason) {
  auto files = OverlayFiles::Open(machine, reason);
  if (files == nullptr) return nullptr;
  return std::unique_ptr<OverlayMachine>(new OverlayMachine(machine, std::move(files)));
}

OverlayMachine::OverlayMachine(const Machine& machine, std::unique_ptr<OverlayFiles> files)
    : machine_(machine),
      files_(std::move(files)),
      registry_(machine.registry, machine.registryEditor),
      profiles_(machine.profiles, *files_),
      archives_(machine.archives, *files_),
      interpreter_(*files_, registry_) {}

Machine OverlayMachine::Ports() {
  return {*files_,          registry_,         machine_.folders,  machine_.guids, profiles_,
          machine_.product, archives_,         interpreter_,      machine_.clock, registry_,
          machine_.user,    machine_.codePage, machine_.processes};
}

MachineChanges OverlayMachine::Changes() const {
  MachineChanges changes;
  AddFileChanges(files_->Tree(), *files_, machine_.files, changes);
  AddRegistryChanges(registry_, machine_.registry, changes);
  return changes;
}

}  // namespace carrovan
