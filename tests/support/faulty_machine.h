#pragma once

#include <memory>

#include "platform/machine.h"
#include "platform/xml_dom.h"
#include "tests/support/fakes.h"

namespace carrovan {

// The ports of a machine with a fault in one of them: chosen calls fail as their contract says that
// they may, and do nothing.

enum class FaultyPort {
  kFiles,
  kRegistryReader,
  kRegistryEditor,
  kFolders,
  kGuids,
  kProfiles,
  kArchives,
  kInterpreter,
  kUser,
  kDom,
};
inline constexpr FaultyPort kFaultyPorts[] = {
    FaultyPort::kFiles,    FaultyPort::kRegistryReader, FaultyPort::kRegistryEditor,
    FaultyPort::kFolders,  FaultyPort::kGuids,          FaultyPort::kProfiles,
    FaultyPort::kArchives, FaultyPort::kInterpreter,    FaultyPort::kUser,
    FaultyPort::kDom};

// Which calls of one port fail.
class Fault {
 public:
  Fault(FaultyPort port, std::size_t nth, bool lasts) : port_(port), nth_(nth), lasts_(lasts) {}

  // One call of a port; true when it shall fail.
  bool Strikes(FaultyPort port) {
    if (port != port_) return false;
    ++calls_;
    const bool strikes = lasts_ ? calls_ >= nth_ : calls_ == nth_;
    struck_ = struck_ || strikes;
    return strikes;
  }
  bool HasStruck() const { return struck_; }

 private:
  FaultyPort port_;
  std::size_t nth_;  // from 1
  bool lasts_;       // every call from the n-th on fails
  std::size_t calls_ = 0;
  bool struck_ = false;
};

class FaultyMachine {
 public:
  FaultyMachine(const Machine& machine, Fault& fault);
  ~FaultyMachine();
  FaultyMachine(const FaultyMachine&) = delete;
  FaultyMachine& operator=(const FaultyMachine&) = delete;

  Machine Ports();
  XmlDom& Dom();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace carrovan
