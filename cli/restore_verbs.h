#pragma once

#include <string>

#include "cli/verbs.h"
#include "restore/prune.h"

namespace carrovan {

// The verbs that work on restore points: "restore-points", "undo" and "prune".

struct RestorePointsOptions {
  bool json = false;
};
ExitStatus RunRestorePointsVerb(const Session& session, const RestorePointsOptions& options);

struct UndoOptions {
  std::wstring id;            // empty for the newest
  CategoryChoice categories;  // all unless labels are given
  bool force = false;
  bool trust = false;
  bool json = false;
  bool dryRun = false;   // change nothing and print what would change
  bool details = false;  // then: each single item
  std::wstring report;   // a page to write about the undo; empty for none
};
ExitStatus RunUndoVerb(const Session& session, const UndoOptions& options);

struct PruneOptions {
  PruneChoice choice;
  bool json = false;
};
ExitStatus RunPruneVerb(const Session& session, const PruneOptions& options);

struct RestoreOptions {
  RestorePointsOptions list;
  UndoOptions undo;
  PruneOptions prune;
};

// The options outlive the application object.
void AddRestoreVerbs(CLI::App& app, RestoreOptions& options, Verb& chosen);

}  // namespace carrovan
