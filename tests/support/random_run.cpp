#include "tests/support/random_run.h"

#include "environment/installed_versions.h"
#include "environment/version_folders.h"
#include "package/import_steps.h"
#include "package/package_selection.h"
#include "package/staging_folder.h"
#include "reset/reset_run.h"
#include "wizard/category_checklist.h"

namespace carrovan {
namespace {

class SilentLog : public LineLog {
 public:
  void WriteLine(std::wstring_view) override {}
};

class PathPage : public PathPageView {
 public:
  explicit PathPage(const RandomMachine& plan) : plan_(plan) {}
  std::optional<std::wstring> ChooseOpenFile(const OpenFileQuestion&) override {
    return plan_.PackagePath();
  }
  void ShowPackagePath(const std::wstring&) override {}
  void ListVersions(const std::vector<std::wstring>&) override {}
  std::optional<std::wstring> SelectedVersion() const override { return plan_.TargetYear(); }

 private:
  const RandomMachine& plan_;
};

class Play {
 public:
  Play(const RandomMachine& plan, const Machine& ports, RunEnding& ending)
      : plan_(plan), ports_(ports), ending_(ending), dom_(OpenXmlDom(ports.files)) {}

  void Run() {
    ProductContext& context = ending_.context;
    if (!LoadProductContext(context, ports_, ending_.view)) return;
    EnumerateInstalledVersions(context, ports_.registry);
    InitializePackageState(state_.package, context, ports_);
    if (!RenewStagingFolder(context, ports_)) return ending_.view.ShowMessage(L"no staging folder");
    if (plan_.Kind() == RandomMachine::Run::kReset) {
      Reset();
    } else {
      Import();
    }
    DeleteStagingFolder(context, ports_);
  }

 private:
  void Import() {
    ImportRun run{ending_.context, state_.package, ports_,       tool_,
                  *dom_,           log_,           ending_.view, ending_.report};
    PathPage page(plan_);
    SelectPackage({run, state_, page});
    PackageImport steps(run);
    if (state_.package.path.empty()) return;
    if (plan_.Kind() == RandomMachine::Run::kLegacyImport) return steps.ApplyLegacy();
    CategoryChecklist tree;
    if (steps.EnterCategories(tree) != ImportSteps::Entry::kReady) return;
    Choose(tree);
    steps.Apply(tree);
  }

  void Reset() {
    if (!PrepareVersionFolders(ending_.context, ports_)) return;
    CategoryChecklist tree = CategoryChecklist::ForReset(ending_.context);
    Choose(tree);
    ending_.report = RunReset({ending_.context, state_.package, ports_, tool_, ending_.view}, tree);
  }

  void Choose(CategoryChecklist& tree) {
    tree.SetAllChecked(false);
    for (const CategoryRecord& record : CategoryTable()) {
      // One that is not offered cannot be chosen.
      if (plan_.IsChosen(record.category)) {
        static_cast<void>(tree.SetChecked(record.category, true));
      }
    }
  }

  const RandomMachine& plan_;
  const Machine& ports_;
  RunEnding& ending_;
  std::unique_ptr<XmlDom> dom_;
  RegistryTool tool_{ports_.interpreter, ports_.clock, RegistryToolPace::kWaitForEnd};
  SilentLog log_;
  WizardState state_;
};

}  // namespace

RunEnding PlayRandomRun(const RandomMachine& plan, const Machine& ports) {
  RunEnding ending;
  Play(plan, ports, ending).Run();
  return ending;
}

}  // namespace carrovan
