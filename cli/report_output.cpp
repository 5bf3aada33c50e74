#include "cli/report_output.h"

#include <CLI/CLI.hpp>

#include "cli/verbs.h"
#include "platform/file_system.h"
#include "text/text.h"

namespace carrovan {

CLI::Option* AddReport(CLI::App& verb, std::wstring& path) {
  return AddText(verb, "--report", path, "Also write a page about it, to be looked at in a browser")
      ->type_name("FILE.html")
      ->check([](const std::string& name) -> std::string {
        // A page in place of a package or of a setting would be a loss.
        if (EndsWithIgnoringAsciiCase(FromUtf8(name), L".html")) return {};
        return "the name of a page ends in .html";
      });
}

std::wstring NameOfProgram() { return L"carrovan-cli " + FromUtf8(CARROVAN_VERSION); }

std::wstring ReportFile::NotWritten(SystemCode code) const {
  return L"The report cannot be written: " + path_ + L": " + DescribeSystemCode(code);
}

std::optional<std::wstring> ReportFile::Refusal() const {
  if (!IsWanted()) return std::nullopt;
  const auto files = session_.OpenFiles();
  if (!files) return L"The report cannot be written: " + path_;
  FileSystem& system = files->Files();
  if (system.IsFolder(path_)) return L"The report cannot be written: " + path_ + L": is a folder";
  if (system.IsReadOnly(path_)) return NotWritten(kAccessDenied);
  // Given up at once.
  std::unique_ptr<FileReplacement> begun;
  const SystemCode code = system.BeginReplacement(path_, 0, begun);
  return code == kSystemOk ? std::nullopt : std::optional(NotWritten(code));
}

ExitStatus ReportFile::Write(const ReportPage& page, ExitStatus status) const {
  if (!IsWanted()) return status;
  const auto files = session_.OpenFiles();
  const SystemCode code = files ? files->Files().WriteBytes(path_, WritePage(page)) : kAccessDenied;
  if (code == kSystemOk) return status;
  session_.Complain(NotWritten(code));
  return status == ExitStatus::kDone ? ExitStatus::kPartly : status;
}

}  // namespace carrovan
