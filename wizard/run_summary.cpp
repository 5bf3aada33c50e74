#include "wizard/run_summary.h"

#include <algorithm>
#include <iterator>

namespace carrovan {
namespace {

std::wstring LabelOf(SettingCategory category) {
  return std::wstring(Text(FindCategory(static_cast<int>(category))->label));
}

StringId LineOf(const ExportReport& report, SettingCategory category) {
  const bool isEmpty =
      std::ranges::find(report.emptyCategories, category) != report.emptyCategories.end();
  return isEmpty ? StringId::kCategoryWithoutContent : StringId::kCategoryExported;
}

std::wstring NameOf(const DroppedValue& value) {
  return value.name.empty() ? value.key : value.key + L"\\" + value.name;
}

}  // namespace

std::wstring WhyNotWritten(const ExportReport& report) {
  if (!report.refusal.empty()) return report.refusal;
  const ArchiveResult outcome = report.package.outcome;
  return outcome == ArchiveResult::kDone ? L"" : DescribeArchiveResult(outcome);
}

std::vector<std::wstring> SummaryOfExport(const ExportReport& report, const CategorySet& offered,
                                          const CategorySet& chosen, const TextSource& texts) {
  const std::wstring why = WhyNotWritten(report);
  if (!why.empty()) return {texts.Filled(StringId::kPackageNotWritten, {why})};
  std::vector<std::wstring> lines;
  for (const SettingCategory category : offered) {
    const StringId line =
        chosen.contains(category) ? LineOf(report, category) : StringId::kCategoryLeftOut;
    lines.push_back(texts.Filled(line, {LabelOf(category)}));
  }
  for (const SkippedItem& item : report.package.skipped) {
    lines.push_back(
        texts.Filled(StringId::kNotStored, {item.path, DescribeArchiveResult(item.reason)}));
  }
  for (const MisplacedItem& item : report.package.misplaced) {
    lines.push_back(texts.Filled(StringId::kNotStored, {item.path, DescribeMisplaced(item)}));
  }
  for (const auto& [key, problem] : report.registryFileProblems) {
    lines.push_back(texts.Filled(StringId::kNotStored, {key, problem}));
  }
  for (const std::wstring& key : report.missingKeys) {
    if (report.registryFileProblems.contains(key)) continue;
    lines.push_back(texts.Filled(StringId::kKeyNotStored, {key}));
  }
  return lines;
}

std::vector<std::wstring> SummaryOfRun(const GuardReport& report, StringId done,
                                       const TextSource& texts) {
  const RunOutcome& outcome = report.outcome;
  std::vector<std::wstring> lines;
  for (const SettingCategory category : outcome.offered) {
    const StringId line = outcome.report.emptied.contains(category) ? StringId::kCategoryEmptied
                          : outcome.chosen.contains(category)       ? done
                                                                    : StringId::kCategoryLeftOut;
    lines.push_back(texts.Filled(line, {LabelOf(category)}));
  }
  if (const auto count = outcome.report.optionsSet) {
    lines.push_back(texts.Filled(StringId::kOptionsSet, {std::to_wstring(*count)}));
  }
  std::ranges::copy(outcome.report.problems, std::back_inserter(lines));
  for (const std::wstring& path : outcome.report.unextracted) {
    lines.push_back(TextOfUnextracted(path, texts));
  }
  for (const DroppedValue& value : outcome.report.dropped) {
    lines.push_back(texts.Filled(StringId::kValueLeftOut, {NameOf(value), value.why}));
  }
  return lines;
}

}  // namespace carrovan
