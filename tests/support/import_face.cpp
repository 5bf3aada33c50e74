#include "tests/support/import_face.h"

#include "environment/string_table.h"
#include "package/legacy_import.h"

namespace carrovan {
namespace {

class TreeFollower : public RunObserver {
 public:
  explicit TreeFollower(CategoryTree& tree) : tree_(tree) {}
  void OnCategory(SettingCategory category) override { ShowCategory(tree_, category); }

 private:
  CategoryTree& tree_;
};

CategorySet OfferedIn(const CategoryTree& tree) {
  CategorySet offered;
  for (auto item = tree.FirstChild(tree.Root()); item != CategoryTree::kNoItem;
       item = tree.NextSibling(item)) {
    if (const CategoryRecord* record = FindCategory(tree.ItemData(item))) {
      offered.insert(record->category);
    }
  }
  return offered;
}

}  // namespace

ImportFace::Entry ImportFace::EnterCategories(CategoryTree& tree) {
  OpenPackage(run_);
  ShowUnextracted(0);
  if (const auto refusal = CheckTarget(run_)) {
    view_.ShowMessage(TextOf(*refusal));
    return Entry::kRefused;
  }
  if (NeedsMending(run_)) view_.ShowMessage(std::wstring(Text(StringId::kKeepPathFiles)));
  const ImportPreparation preparation = RunImportPreparation(run_);
  BuildCategoryTree(tree, preparation.offered);
  if (!preparation.refusal) return Entry::kReady;
  view_.ShowMessage(TextOf(*preparation.refusal));
  return Entry::kEnded;
}

void ImportFace::Apply(CategoryTree& tree) {
  TreeFollower observer(tree);
  const std::size_t shown = run_.report.unextracted.size();
  ApplyPackage({run_.context, run_.package, run_.machine, run_.registryTool, run_.dom, run_.log,
                observer, run_.report},
               OfferedIn(tree), CheckedCategories(tree));
  ShowUnextracted(shown);
  view_.finishText = ImportFinishText(run_.context);
}

void ImportFace::ApplyLegacy() {
  ImportLegacyCustomization(run_);
  view_.finishText = ImportFinishText(run_.context);
}

void ImportFace::ShowUnextracted(std::size_t from) {
  const auto& paths = run_.report.unextracted;
  for (std::size_t i = from; i < paths.size(); ++i) view_.ShowMessage(TextOfUnextracted(paths[i]));
}

bool TakeLegacyPackage(const ImportRun& run, RecordingView& view, WizardState& state,
                       const std::wstring& path) {
  const LegacyOpening opening = OpenLegacyPackage(run, path);
  for (const std::wstring& target : opening.unextracted) {
    view.ShowMessage(TextOfUnextracted(target));
  }
  if (opening.refusal) {
    view.ShowMessage(TextOf(*opening.refusal));
    return false;
  }
  SelectTargetVersion(state, run.context, opening.targetText);
  return true;
}

}  // namespace carrovan
