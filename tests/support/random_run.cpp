#include "tests/support/random_run.h"

#include "environment/installed_versions.h"
#include "environment/version_folders.h"
#include "package/import_run.h"
#include "package/legacy_import.h"
#include "package/staging_folder.h"
#include "reset/reset_run.h"
#include "tests/support/category_checklist.h"
#include "tests/support/import_face.h"

namespace carrovan {
namespace {

class SilentLog : public LineLog {
 public:
  void WriteLine(std::wstring_view) override {}
};

class Play {
 public:
  Play(const RandomMachine& plan, const Machine& ports, RunEnding& ending)
      : plan_(plan), ports_(ports), ending_(ending), dom_(OpenXmlDom(*ports.files)) {}

  void Run() {
    ProductContext& context = ending_.context;
    if (!LoadProductContext(context, ports_)) return;
    EnumerateInstalledVersions(context, *ports_.registry);
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
    const ImportRun run{ending_.context, state_.package, ports_, tool_, *dom_, log_,
                        observer_,       ending_.report, &paths_};
    ImportFace face(run, ending_.view);
    if (plan_.Kind() == RandomMachine::Run::kLegacyImport) {
      if (TakeLegacyPackage(run, ending_.view, state_, plan_.PackagePath())) face.ApplyLegacy();
      return;
    }
    state_.package.path = plan_.PackagePath();
    SelectTargetVersion(state_, ending_.context, plan_.TargetYear());
    CategoryChecklist tree;
    if (face.EnterCategories(tree) != ImportFace::Entry::kReady) return;
    Choose(tree);
    face.Apply(tree);
  }

  void Reset() {
    if (!PrepareVersionFolders(ending_.context, ports_)) return;
    CategoryChecklist tree(OfferedOnReset(ending_.context));
    Choose(tree);
    ending_.report = RunReset({ending_.context, state_.package, ports_, tool_, observer_},
                              CheckedCategories(tree));
    ending_.view.finishText = ResetFinishText(ending_.context);
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
  PacedRegistryTool tool_{*ports_.registryTool, *ports_.clock, RegistryToolPace::kWaitForEnd};
  SilentLog log_;
  RunObserver observer_;
  PackagePaths paths_{plan_.Paths(), ports_};
  WizardState state_;
};

}  // namespace

RunEnding PlayRandomRun(const RandomMachine& plan, const Machine& ports) {
  RunEnding ending;
  Play(plan, ports, ending).Run();
  return ending;
}

}  // namespace carrovan
