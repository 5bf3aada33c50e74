#pragma once

#include "reset/reset_run.h"
#include "wizard/wizard_flow.h"

namespace carrovan {

// The reset behind the wizard's steps.
class CategoryReset : public ResetSteps {
 public:
  explicit CategoryReset(ResetRun run) : run_(run) {}

  void Apply(EditableCategoryTree& tree) override { RunReset(run_, tree); }

 private:
  ResetRun run_;
};

}  // namespace carrovan
