#pragma once

#include <functional>
#include <memory>

#include "environment/wizard_flow.h"
#include "platform/path_page_view.h"

namespace carrovan {

// The work behind the import and reset pages.
struct WizardRuns {
  std::unique_ptr<ImportSteps> importSteps;
  std::unique_ptr<ResetSteps> resetSteps;
  std::function<void(PathPageView&)> selectFile;  // the button of the path page
};

// What the work works on; everything outlives it.
struct WizardRunParts {
  ProductContext& context;
  WizardState& state;
  Machine machine;
  RegistryTool& registryTool;
  WizardFrame& frame;
};

WizardRuns MakeWizardRuns(const WizardRunParts& parts);

}  // namespace carrovan
