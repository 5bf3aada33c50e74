#include "package/trusted_interpreter.h"

#include <string_view>
#include <utility>

#include "package/registry_file_scan.h"
#include "platform/path_text.h"
#include "platform/text.h"

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
  // The command interpreter would make another command, or another file's name, of these.
  if (path.find(L'"') != std::wstring::npos) return false;
  if (FileNameOf(path).find(L'%') != std::wstring::npos) return false;
  RegistryFileScan scan(company_);
  const auto take = [&scan](std::string_view part, std::uint64_t) {
    scan.Take(part);
    return true;
  };
  return files_.ReadInParts(path, take) == kSystemOk && !scan.Finish();
}

}  // namespace carrovan
