#pragma once

#include <memory>

#include "wizard/wizard_flow.h"
#include "wizard/wizard_frame.h"

namespace carrovan {

// What the work works on; everything outlives it.
struct WizardRunParts {
  ProductContext& context;
  WizardState& state;
  const Machine& machine;
  RegistryTool& registryTool;
  WizardFrame& frame;
};

// The work behind the import and reset pages.
class WizardRuns {
 public:
  explicit WizardRuns(const WizardRunParts& parts);
  ~WizardRuns();
  WizardRuns(const WizardRuns&) = delete;
  WizardRuns& operator=(const WizardRuns&) = delete;

  ImportSteps& Import();
  ResetSteps& Reset();

  // The button of the path page.
  void SelectFile(PathPageView& page);

 private:
  struct Parts;

  std::unique_ptr<Parts> parts_;
};

}  // namespace carrovan
