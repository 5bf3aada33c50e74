#pragma once

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "guard/guarded_run.h"
#include "preview/preview_report.h"
#include "report/document_tree.h"
#include "report/report_page.h"
#include "restore/undo_run.h"

namespace carrovan {

// The pages of runs that change settings.

// What a run changes, as it was seen when the run was tried out.
struct SeenChanges {
  PreviewReport preview;
  std::map<std::wstring, DocumentTree> trees;  // of the merged files, by path
};

// Looks at a run that was tried out, as long as what it would write is there.
SeenChanges LookAt(const Trial& trial);

// What the page says of a run besides what it did.
struct RunFacts {
  PointBegun about;
  bool dryRun = false;
  bool verified = false;
  std::chrono::system_clock::time_point time;  // of the machine
  std::wstring program;
};

// "2026-03-04 05:06:07 UTC"
std::wstring ReadableTime(std::chrono::system_clock::time_point time);

// Of a run that was not begun: `refusals` says why.
ReportPage PageOfRefusal(const RunFacts& facts, const std::vector<std::wstring>& refusals);

// Of an import or a reset that was carried out or tried out.
ReportPage PageOfRun(const RunFacts& facts, const GuardReport& report, const SeenChanges& changes);

// Of the undo of the run that `facts` is about.
ReportPage PageOfUndo(const RunFacts& facts, const std::wstring& point, const UndoReport& report,
                      const PreviewReport& changes);

ReportPage PageOfRefusedUndo(const RunFacts& facts, const std::wstring& point,
                             const std::wstring& reason);

}  // namespace carrovan
