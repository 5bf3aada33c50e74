// What the engine may rely on, whatever machine it runs on.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "tests/support/contract_machines.h"

namespace carrovan {
namespace {

constexpr RegistryHive kUser = RegistryHive::kCurrentUser;

class RegistryContract : public ContractTest {
 protected:
  std::wstring Key(const std::wstring& rest = {}) const {
    return L"SOFTWARE\\Vantric\\" + machine_->product.productName + rest;
  }
  const RegistryReader& Registry() { return *machine_->Ports().registry; }
};

TEST_P(RegistryContract, OpensKeysThatAreThere) {
  machine_->PutKey(kUser, Key(L"\\General\\Sub key"));
  EXPECT_TRUE(Registry().CanOpenKey(kUser, Key()));
  EXPECT_TRUE(Registry().CanOpenKey(kUser, Key(L"\\General")));
  EXPECT_TRUE(Registry().CanOpenKey(kUser, Key(L"\\General\\Sub key")));
  EXPECT_FALSE(Registry().CanOpenKey(kUser, Key(L"\\General\\Sub")));
  EXPECT_FALSE(Registry().CanOpenKey(kUser, Key(L" 28.0")));
}

TEST_P(RegistryContract, KeepsTheHivesApart) {
  machine_->PutKey(RegistryHive::kLocalMachine, Key(L"\\28.0"));
  EXPECT_TRUE(Registry().CanOpenKey(RegistryHive::kLocalMachine, Key(L"\\28.0")));
  EXPECT_FALSE(Registry().CanOpenKey(kUser, Key(L"\\28.0")));
}

TEST_P(RegistryContract, FindsKeysWithoutRegardToCase) {
  machine_->PutKey(kUser, Key(L"\\General"));
  EXPECT_TRUE(Registry().CanOpenKey(kUser, Key(L"\\GENERAL")));
  EXPECT_TRUE(Registry().CanOpenKey(kUser, L"software\\VANTRIC\\" + machine_->product.productName));
}

// The few characters between "Z" and "a" are left out: Wine compares lower-case names and puts them
// elsewhere than Windows does.
TEST_P(RegistryContract, ListsSubkeysInTheRegistrysOrder) {
  for (const wchar_t* name : {L"28.0", L"Beta", L"25.0", L"alpha", L"26.0", L"sub key"}) {
    machine_->PutKey(kUser, Key(L"\\" + std::wstring(name)));
  }
  EXPECT_EQ(Registry().SubkeyNames(kUser, Key()),
            (std::vector<std::wstring>{L"25.0", L"26.0", L"28.0", L"alpha", L"Beta", L"sub key"}));
}

TEST_P(RegistryContract, ReadsEveryValueOfAKey) {
  const std::vector<RegistryValue> values = {MakeStringValue(L"z", L"\x4E2D"),
                                             MakeStringValue(L"", L"default", kRegExpandSz),
                                             MakeDwordValue(L"a", 7),
                                             {L"Bytes", kRegBinary, {0, 1, 255}},
                                             {L"Nothing", kRegBinary, {}},
                                             {L"odd type", 99, {1}},
                                             {std::wstring(300, L'n'), kRegSz, {}}};
  for (const RegistryValue& value : values) machine_->PutValue(kUser, Key(), value);
  machine_->PutValue(kUser, Key(L"\\Sub"), MakeDwordValue(L"below", 1));
  const auto read = Registry().Values(kUser, Key());
  ASSERT_TRUE(read);
  EXPECT_TRUE(std::is_permutation(read->begin(), read->end(), values.begin(), values.end()));
}

TEST_P(RegistryContract, TellsAKeyWithoutValuesFromAMissingOne) {
  machine_->PutKey(kUser, Key(L"\\Empty"));
  EXPECT_EQ(Registry().Values(kUser, Key(L"\\Empty")), std::vector<RegistryValue>());
  EXPECT_EQ(Registry().Values(kUser, Key(L"\\Missing")), std::nullopt);
}

TEST_P(RegistryContract, TellsAnEmptyKeyFromAMissingOne) {
  machine_->PutKey(kUser, Key(L"\\Empty"));
  EXPECT_EQ(Registry().SubkeyNames(kUser, Key(L"\\Empty")), std::vector<std::wstring>());
  EXPECT_EQ(Registry().SubkeyNames(kUser, Key(L"\\Missing")), std::nullopt);
}

TEST_P(RegistryContract, KeepsNamesInEveryScript) {
  machine_->PutKey(kUser, Key(L"\\\x4E2D\x6587"));
  EXPECT_TRUE(Registry().CanOpenKey(kUser, Key(L"\\\x4E2D\x6587")));
  EXPECT_EQ(Registry().SubkeyNames(kUser, Key()), std::vector<std::wstring>{L"\x4E2D\x6587"});
}

TEST_P(RegistryContract, ListsAKeyWithTheLongestName) {
  const std::wstring longest(255, L'n');
  machine_->PutKey(kUser, Key(L"\\" + longest));
  EXPECT_EQ(Registry().SubkeyNames(kUser, Key()), std::vector<std::wstring>{longest});
}

TEST_P(RegistryContract, CannotOpenAKeyThatTheUserMayNotRead) {
  machine_->PutKey(kUser, Key(L"\\Closed"));
  if (!machine_->MakeKeyUnreadable(kUser, Key(L"\\Closed"))) {
    GTEST_SKIP() << "this system cannot close a key";
  }
  EXPECT_FALSE(Registry().CanOpenKey(kUser, Key(L"\\Closed")));
  EXPECT_EQ(Registry().SubkeyNames(kUser, Key(L"\\Closed")), std::nullopt);
  EXPECT_EQ(Registry().SubkeyNames(kUser, Key()), std::vector<std::wstring>{L"Closed"});
}

CARROVAN_CONTRACT(RegistryContract);

}  // namespace
}  // namespace carrovan
