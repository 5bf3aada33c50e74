#pragma once

#include "environment/string_table.h"
#include "environment/wizard_state.h"
#include "package/run_report.h"
#include "platform/console.h"
#include "platform/machine.h"
#include "wizard/wizard_frame.h"

namespace carrovan {

// What the wizard works with; everything outlives the flow.
struct WizardParts {
  ProductContext& context;
  WizardState& state;
  Machine machine;
  HostFiles& packages;  // the machine's files, for looking into a package before it is opened
  const TextSource& texts;
  LineLog& log;  // of merges and rewrites
  WizardFrame& frame;
};

// What the steps of the wizard have in common.

inline void ShowMessage(const WizardParts& parts, StringId id) {
  parts.frame.ShowMessage(parts.texts.Text(id));
}

// In the style that belongs to the refusal.
void ShowRefusal(const WizardParts& parts, RunRefusal refusal);

// One message for each item that was not unpacked.
void ShowUnextracted(const WizardParts& parts, const std::vector<std::wstring>& paths);

// Says that another run, which is described so, keeps this one from changing anything.
void ShowAnotherRun(const WizardParts& parts, const std::wstring& otherRun);

// True when there is a staging folder, made anew where it had been deleted by a run or by somebody
// who cleans up.
bool HasStagingFolder(const WizardParts& parts);

// The same; when there is none the user has been shown why.
bool EnsureStagingFolder(const WizardParts& parts);

// True when the product does not run. Otherwise the user has been asked to close it.
bool EnsureProductEnded(const WizardParts& parts);

}  // namespace carrovan
