#pragma once

#include <optional>
#include <string>

#include "cli/session.h"
#include "report/report_page.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace carrovan {

// "--report FILE.html"
CLI::Option* AddReport(CLI::App& verb, std::wstring& path);

// What a page says of the program that made it.
std::wstring NameOfProgram();

// The page that a verb was asked to write besides what it prints; none for an empty path.
class ReportFile {
 public:
  // Both outlive it.
  ReportFile(const Session& session, const std::wstring& path) : session_(session), path_(path) {}

  bool IsWanted() const { return !path_.empty(); }

  // Why the page could not be written, to be asked before anything changes: a missing folder, a
  // read-only file. Nothing when it can or is not wanted. Leaves what is there as it is.
  std::optional<std::wstring> Refusal() const;

  // Writes the page, in one step, and gives the verb's status. When that fails, which is reported,
  // what is done stays done: in part.
  ExitStatus Write(const ReportPage& page, ExitStatus status) const;

 private:
  std::wstring NotWritten(SystemCode code) const;

  const Session& session_;
  const std::wstring& path_;
};

}  // namespace carrovan
