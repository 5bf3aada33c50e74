#include "package/trusted_interpreter.h"

#include <string_view>
#include <utility>

#include "package/registry_file_scan.h"
#include "platform/command_interpreter.h"
#include "registry_text/registry_file_form.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr std::wstring_view kImportCommand = L"/C reg import ";

}  // namespace

TrustedInterpreter::TrustedInterpreter(CommandInterpreter& interpreter, const FileReader& files,
                                       std::wstring company)
    : interpreter_(interpreter), files_(files), company_(std::move(company)) {}

std::unique_ptr<RunningCommand> TrustedInterpreter::Start(const std::wstring& parameters) {
  const std::wstring_view line = parameters;
  const bool imports =
      EqualsIgnoringAsciiCase(line.substr(0, kImportCommand.size()), kImportCommand);
  if (imports && !MayBeImported(line.substr(kImportCommand.size()))) return nullptr;
  return interpreter_.Start(parameters);
}

bool TrustedInterpreter::MayBeImported(std::wstring_view quotedPath) const {
  if (quotedPath.size() < 2 || !quotedPath.starts_with(L'"') || !quotedPath.ends_with(L'"')) {
    return false;
  }
  const std::wstring path(quotedPath.substr(1, quotedPath.size() - 2));
  if (path.find(L'"') != std::wstring::npos || !IsPlainToInterpreter(FileNameOf(path))) {
    return false;
  }
  RegistryFileScan keys(company_);
  RegFormScan form;
  const auto take = [&](std::string_view part, std::uint64_t) {
    keys.Take(part);
    form.Take(part);
    return true;
  };
  return files_.ReadInParts(path, take) == kSystemOk && !keys.Finish() && !form.Finish();
}

std::unique_ptr<RunningCommand> NotingInterpreter::Start(const std::wstring& parameters) {
  if (const auto path = ImportedFile(parameters)) {
    RegFormScan form;
    const auto take = [&form](std::string_view part, std::uint64_t) {
      form.Take(part);
      return true;
    };
    const SystemCode code = files_.ReadInParts(*path, take);
    const auto problem = code == kSystemOk ? form.Finish() : DescribeSystemCode(code);
    if (problem) notUnderstood_.push_back(*path + L" changes: " + *problem);
  }
  return interpreter_.Start(parameters);
}

}  // namespace carrovan
