#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "report/fleet_report.h"

namespace carrovan {

// The JSON documents in a folder of collected answers, which may hold anything.

// How much of a document, and of all that the hosts said, is taken and kept.
struct FleetLimits {
  std::size_t depth = 64;          // of arrays and objects in each other
  std::size_t values = 2'000'000;  // of a document
  std::size_t items = 2000;        // kept of a list
  std::size_t characters = 4000;   // kept of a text
  // Kept of all texts together, so that no fleet fills the memory. Of an answer behind that only
  // the first item of each list is kept.
  std::size_t allCharacters = std::size_t{32} << 20;
};

// Which hosts were asked for what.
struct FleetList {
  std::wstring job;
  std::vector<std::wstring> hosts;     // each once, in the order of the list
  std::vector<std::wstring> repeated;  // those that are there more than once
};

// Nothing, with the reason, for what is no such document.
std::optional<FleetList> ReadFleetList(const std::string& bytes, std::wstring& reason);

// What carrovan-cli answered to a job that ended with this status. Nothing, with the reason, for
// anything but one whole document of it, of that job and that status, with members of the types
// that they have.
std::optional<FleetDocument> ReadFleetDocument(const std::string& bytes, const std::wstring& job,
                                               int exitStatus, const FleetLimits& limits,
                                               std::wstring& reason);

}  // namespace carrovan
