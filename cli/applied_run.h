#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "cli/run_choice.h"
#include "cli/session.h"
#include "environment/product_context.h"
#include "package/import_report.h"
#include "platform/console.h"
#include "platform/machine.h"
#include "restore/journal_record.h"

namespace carrovan {

struct CategoryOutcome {
  std::wstring label;
  std::wstring outcome;  // "imported", "left out", "reset", "kept"
};

// What an import or a reset did.
struct AppliedRun {
  ImportReport report;
  std::wstring finishText;
  std::vector<CategoryOutcome> categories;  // in tree order; empty for a legacy package
  ProductContext context;                   // of the version that it worked on
};

// One run on a machine, which may be the real one or stand in front of it. Nothing, after saying
// why, when the run is refused. Lines of its log go to the log that it gets.
using Run =
    std::function<std::optional<AppliedRun>(const Session&, const Machine& machine, LineLog& log)>;

// Runs in the chosen way and prints what came of it. `about` is what a restore point says of the
// run.
ExitStatus RunAsChosen(const Session& session, const RunChoice& choice, const PointBegun& about,
                       const Machine& machine, const Run& run);

}  // namespace carrovan
