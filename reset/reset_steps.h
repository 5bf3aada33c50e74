#pragma once

#include "environment/wizard_flow.h"
#include "reset/reset_run.h"

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
