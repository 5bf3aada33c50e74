#include "package/trusted_registry_tool.h"

#include <string_view>

#include "package/registry_file_scan.h"
#include "registry_text/registry_file_form.h"
#include "text/path_text.h"

namespace carrovan {

std::unique_ptr<RunningTool> TrustedRegistryTool::ImportFile(const std::wstring& filePath) {
  return MayBeImported(filePath) ? ForwardingRegistryTool::ImportFile(filePath) : nullptr;
}

bool TrustedRegistryTool::MayBeImported(const std::wstring& filePath) const {
  if (filePath.find(L'"') != std::wstring::npos || !IsPlainToInterpreter(FileNameOf(filePath))) {
    return false;
  }
  RegistryFileScan keys(company_);
  RegistryFormScan form;
  const auto take = [&](std::string_view part, std::uint64_t) {
    keys.Take(part);
    form.Take(part);
    return true;
  };
  return files_.ReadInParts(filePath, take) == kSystemOk && !keys.Finish() && !form.Finish();
}

std::unique_ptr<RunningTool> NotingRegistryTool::ImportFile(const std::wstring& filePath) {
  RegistryFormScan form;
  const auto take = [&form](std::string_view part, std::uint64_t) {
    form.Take(part);
    return true;
  };
  const SystemCode code = files_.ReadInParts(filePath, take);
  const auto problem = code == kSystemOk ? form.Finish() : DescribeSystemCode(code);
  if (problem) notUnderstood_.push_back(filePath + L" changes: " + *problem);
  return ForwardingRegistryTool::ImportFile(filePath);
}

void PackageRegistryTool::ReportUnforeseen(RunReport& report) const {
  for (const std::wstring& line : noting_.NotUnderstood()) {
    report.problems.push_back(L"Neither foreseen nor undone is what " + line);
  }
}

}  // namespace carrovan
