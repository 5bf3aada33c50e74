#include "app/wizard_runs.h"

#include "package/import_steps.h"
#include "package/package_selection.h"
#include "platform/console.h"
#include "reset/reset_steps.h"

namespace carrovan {
namespace {

// The log of merges goes to standard output, for those who start the wizard with one.
class StandardLog : public LineLog {
 public:
  explicit StandardLog(Console& console) : console_(console) {}

  void WriteLine(std::wstring_view line) override { console_.Out(std::wstring(line) + L"\n"); }

 private:
  Console& console_;
};

}  // namespace

struct WizardRuns::Parts {
  explicit Parts(const WizardRunParts& wizard)
      : machine(wizard.machine),
        importRun{wizard.context, wizard.state.package,
                  machine,        wizard.registryTool,
                  *dom,           log,
                  wizard.frame,   report},
        importSteps(importRun),
        resetSteps(
            {wizard.context, wizard.state.package, machine, wizard.registryTool, wizard.frame}),
        state(wizard.state) {}

  Machine machine;
  std::unique_ptr<XmlDom> dom = OpenXmlDom(machine.files);
  std::unique_ptr<Console> console = OpenConsole();
  StandardLog log{*console};
  ImportReport report;
  ImportRun importRun;
  PackageImport importSteps;
  CategoryReset resetSteps;
  WizardState& state;
};

WizardRuns::WizardRuns(const WizardRunParts& parts) : parts_(std::make_unique<Parts>(parts)) {}

WizardRuns::~WizardRuns() = default;

ImportSteps& WizardRuns::Import() { return parts_->importSteps; }

ResetSteps& WizardRuns::Reset() { return parts_->resetSteps; }

void WizardRuns::SelectFile(PathPageView& page) {
  SelectPackage({parts_->importRun, parts_->state, page});
}

}  // namespace carrovan
