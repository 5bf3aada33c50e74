#pragma once

#include "environment/wizard_flow.h"
#include "package/import_run.h"

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
