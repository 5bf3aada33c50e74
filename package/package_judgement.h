#pragma once

#include <string>
#include <vector>

#include "package/package_inspection.h"
#include "platform/machine.h"

namespace carrovan {

// What is to be said against an import of a package, before anything of it is unpacked.
struct PackageJudgement {
  // The machine takes it for a package, but its directory cannot be looked into.
  bool isUnreadable = false;

  // Why nobody may import it: its description would lead an import elsewhere.
  std::vector<RefusedItem> unfit;

  // Why only somebody who knows where it comes from should import it.
  std::vector<RefusedItem> reasonsForDistrust;
};

// What is no package at all has nothing against it; it is left to the import to refuse.
PackageJudgement JudgePackage(HostFiles& files, const std::wstring& package,
                              const Machine& machine);

}  // namespace carrovan
