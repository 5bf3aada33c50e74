#pragma once

#include <string>

#include "cli/fleet_documents.h"
#include "cli/verbs.h"
#include "platform/file_system.h"
#include "report/fleet_report.h"

namespace carrovan {

// What many workstations answered to one job, for whoever looks after them.
struct FleetOptions {
  std::wstring folder;  // of the collected answers
  bool json = false;
  std::wstring report;  // a page to write about it; empty for none
};
ExitStatus RunFleetVerb(const Session& session, const FleetOptions& options);

// Reads and judges what was collected. Nothing, with the reason, when the folder or its list of
// hosts cannot be read. Whatever a host left there is at worst not understood.
std::optional<FleetReport> ReadFleet(const FileReader& files, const std::wstring& folder,
                                     const FleetLimits& limits, std::wstring& reason);

// The options outlive the application object.
void AddFleet(CLI::App& app, FleetOptions& options, Verb& chosen);

}  // namespace carrovan
