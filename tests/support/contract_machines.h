#pragma once

#include <gtest/gtest.h>

#include "tests/support/test_machine.h"

namespace carrovan {

// A contract holds for the system's own ports and for those that a preview or a restore point puts
// in front of them.
enum class ContractMachine { kOwn, kOverlay, kRecorded };

std::unique_ptr<TestMachine> NewContractMachine(ContractMachine kind);

// A test of a contract, with the machine that it is about.
class ContractTest : public testing::TestWithParam<ContractMachine> {
 protected:
  // True on a machine that does not try whether the system lets it, and so does not see a closed
  // folder.
  static bool CannotTry() { return GetParam() == ContractMachine::kOverlay; }

  std::unique_ptr<TestMachine> machine_ = NewContractMachine(GetParam());
};

inline std::string NameOfContractMachine(const testing::TestParamInfo<ContractMachine>& info) {
  constexpr const char* kNames[] = {"Own", "Overlay", "Recorded"};
  return kNames[static_cast<std::size_t>(info.param)];
}

// Runs a fixture that derives from ContractTest on each.
#define CARROVAN_CONTRACT(Fixture)                                                           \
  INSTANTIATE_TEST_SUITE_P(Machines, Fixture,                                                \
                           testing::Values(ContractMachine::kOwn, ContractMachine::kOverlay, \
                                           ContractMachine::kRecorded),                      \
                           NameOfContractMachine)

}  // namespace carrovan
