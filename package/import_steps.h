#pragma once

#include "package/import_run.h"
#include "wizard/wizard_flow.h"

namespace carrovan {

// The import behind the wizard's steps.
class PackageImport : public ImportSteps {
 public:
  explicit PackageImport(ImportRun run) : run_(run) {}

  Entry EnterCategories(EditableCategoryTree& tree) override;
  void Apply(EditableCategoryTree& tree) override;
  void ApplyLegacy() override;

 private:
  ImportRun run_;
};

}  // namespace carrovan
