#pragma once

#include "cli/session.h"
#include "report/fleet_report.h"

namespace carrovan {

// What is known of a fleet, for people and programs. Nothing in either is obeyed by a terminal.

// A line for each host, then how many went how.
void PrintFleet(const Session& session, const FleetReport& report);

void PrintFleetJson(const Session& session, const FleetReport& report, ExitStatus status);

}  // namespace carrovan
