// What the engine may rely on, whatever machine it runs on.
#include <gtest/gtest.h>

#include <memory>

#include "tests/support/contract_machines.h"

namespace carrovan {
namespace {

constexpr RegistryHive kUser = RegistryHive::kCurrentUser;
constexpr RegistryHive kMachine = RegistryHive::kLocalMachine;

class RegistryEditorContract : public ContractTest {
 protected:
  std::wstring Key(const std::wstring& rest = {}) const {
    return L"SOFTWARE\\Vantric\\" + machine_->product.productName + rest;
  }
  RegistryEditor& Editor() { return *machine_->Ports().registry; }
  bool IsThere(RegistryHive hive, const std::wstring& key) const {
    return machine_->Ports().registry->CanOpenKey(hive, key);
  }
};

TEST_P(RegistryEditorContract, OpensKeysThatAreThereAndMakesNone) {
  machine_->PutKey(kUser, Key(L"\\Sub"));
  EXPECT_EQ(Editor().TryOpen(kUser, Key(L"\\SUB")), kSystemOk);
  EXPECT_EQ(Editor().TryOpen(kUser, Key(L"\\None")), kFileNotFound);
  EXPECT_EQ(Editor().TryOpen(kUser, Key(L"\\None\\None")), kFileNotFound);
  EXPECT_FALSE(IsThere(kUser, Key(L"\\None")));
}

TEST_P(RegistryEditorContract, CannotOpenAKeyThatTheUserMayNotUse) {
  machine_->PutKey(kUser, Key(L"\\Closed"));
  if (!machine_->MakeKeyUnreadable(kUser, Key(L"\\Closed"))) {
    GTEST_SKIP() << "this system cannot close a key";
  }
  EXPECT_EQ(Editor().TryOpen(kUser, Key(L"\\Closed")), kAccessDenied);
  EXPECT_EQ(Editor().ValueType(kUser, Key(L"\\Closed"), L"a"), std::nullopt);
  EXPECT_EQ(Editor().CopyTree(kUser, Key(L"\\Closed"), kUser, Key(L"\\Copy")), kAccessDenied);
  EXPECT_FALSE(IsThere(kUser, Key(L"\\Copy")));
}

TEST_P(RegistryEditorContract, TellsTheTypeOfAValue) {
  const RegistryValue values[] = {MakeStringValue(L"sz", L"x"),
                                  MakeStringValue(L"", L"default", kRegExpandSz),
                                  MakeDwordValue(L"number", 1),
                                  {L"bytes", kRegBinary, {}},
                                  {L"odd", 99, {1}}};
  for (const RegistryValue& value : values) machine_->PutValue(kUser, Key(), value);
  for (const RegistryValue& value : values) {
    EXPECT_EQ(Editor().ValueType(kUser, Key(), value.name), value.type);
  }
  EXPECT_EQ(Editor().ValueType(kUser, Key(), L"NUMBER"), kRegDword);
  EXPECT_EQ(Editor().ValueType(kUser, Key(), L"none"), std::nullopt);
  EXPECT_EQ(Editor().ValueType(kUser, Key(L"\\None"), L"sz"), std::nullopt);
}

TEST_P(RegistryEditorContract, SetsValuesOfAKeyThatIsThere) {
  machine_->PutValue(kUser, Key(), MakeStringValue(L"Old", L"x", kRegExpandSz));
  const std::vector<RegistryValue> values = {MakeStringValue(L"Old", L"\x4E2D"),
                                             MakeDwordValue(L"New", 7)};
  EXPECT_EQ(Editor().SetValues(kUser, Key(), values), kSystemOk);
  EXPECT_EQ(machine_->Value(kUser, Key(), L"Old"), values[0]);
  EXPECT_EQ(machine_->Value(kUser, Key(), L"New"), values[1]);
  EXPECT_EQ(Editor().SetValues(kUser, Key(), {}), kSystemOk);
}

TEST_P(RegistryEditorContract, SetsNothingInAMissingKey) {
  EXPECT_EQ(Editor().SetValues(kUser, Key(L"\\None"), {MakeDwordValue(L"a", 1)}), kFileNotFound);
  EXPECT_FALSE(IsThere(kUser, Key(L"\\None")));
}

TEST_P(RegistryEditorContract, CreatesAKeyWithThoseAbove) {
  machine_->PutValue(kUser, Key(L"\\There"), MakeDwordValue(L"a", 1));
  EXPECT_EQ(Editor().CreateKey(kUser, Key(L"\\A\\B")), kSystemOk);
  EXPECT_TRUE(IsThere(kUser, Key(L"\\A\\B")));
  EXPECT_EQ(Editor().CreateKey(kUser, Key(L"\\There")), kSystemOk);
  EXPECT_EQ(machine_->Value(kUser, Key(L"\\There"), L"a"), MakeDwordValue(L"a", 1));
}

TEST_P(RegistryEditorContract, DeletesOneValue) {
  machine_->PutValue(kUser, Key(), MakeDwordValue(L"a", 1));
  machine_->PutValue(kUser, Key(), MakeDwordValue(L"b", 2));
  machine_->PutValue(kUser, Key(), MakeStringValue(L"", L"default"));
  EXPECT_EQ(Editor().DeleteValue(kUser, Key(), L"A"), kSystemOk);
  EXPECT_EQ(Editor().DeleteValue(kUser, Key(), L""), kSystemOk);
  EXPECT_EQ(machine_->Value(kUser, Key(), L"a"), std::nullopt);
  EXPECT_EQ(machine_->Value(kUser, Key(), L""), std::nullopt);
  EXPECT_EQ(machine_->Value(kUser, Key(), L"b"), MakeDwordValue(L"b", 2));
  EXPECT_EQ(Editor().DeleteValue(kUser, Key(), L"a"), kFileNotFound);
  EXPECT_EQ(Editor().DeleteValue(kUser, Key(L"\\None"), L"a"), kFileNotFound);
}

TEST_P(RegistryEditorContract, DeletesAKeyWithWhatIsBelow) {
  machine_->PutValue(kUser, Key(L"\\A\\B\\C"), MakeDwordValue(L"a", 1));
  machine_->PutKey(kUser, Key(L"\\AB"));
  EXPECT_EQ(Editor().DeleteTree(kUser, Key(L"\\a")), kSystemOk);
  EXPECT_FALSE(IsThere(kUser, Key(L"\\A")));
  EXPECT_TRUE(IsThere(kUser, Key(L"\\AB")));
  EXPECT_EQ(Editor().DeleteTree(kUser, Key(L"\\A")), kFileNotFound);
  EXPECT_EQ(Editor().DeleteTree(kUser, L""), kInvalidName);
}

TEST_P(RegistryEditorContract, CopiesAWholeTreeToAnotherHive) {
  const RegistryValue deep{L"deep", kRegBinary, {1, 2, 3}};
  const RegistryValue plain = MakeStringValue(L"", L"default");
  machine_->PutValue(kMachine, Key(L"\\Source"), plain);
  machine_->PutValue(kMachine, Key(L"\\Source\\A\\B"), deep);
  machine_->PutKey(kMachine, Key(L"\\Source\\Empty"));
  EXPECT_EQ(Editor().CopyTree(kMachine, Key(L"\\Source"), kUser, Key(L"\\New\\Target")), kSystemOk);
  EXPECT_EQ(machine_->Value(kUser, Key(L"\\New\\Target"), L""), plain);
  EXPECT_EQ(machine_->Value(kUser, Key(L"\\New\\Target\\A\\B"), L"deep"), deep);
  EXPECT_TRUE(IsThere(kUser, Key(L"\\New\\Target\\Empty")));
  EXPECT_EQ(machine_->Value(kMachine, Key(L"\\Source\\A\\B"), L"deep"), deep);
}

TEST_P(RegistryEditorContract, CopiesOverWhatIsThere) {
  machine_->PutValue(kMachine, Key(L"\\Source"), MakeDwordValue(L"a", 1));
  machine_->PutValue(kUser, Key(L"\\Target"), MakeStringValue(L"a", L"x"));
  machine_->PutValue(kUser, Key(L"\\Target"), MakeDwordValue(L"b", 2));
  EXPECT_EQ(Editor().CopyTree(kMachine, Key(L"\\Source"), kUser, Key(L"\\Target")), kSystemOk);
  EXPECT_EQ(machine_->Value(kUser, Key(L"\\Target"), L"a"), MakeDwordValue(L"a", 1));
  EXPECT_EQ(machine_->Value(kUser, Key(L"\\Target"), L"b"), MakeDwordValue(L"b", 2));
}

TEST_P(RegistryEditorContract, CopiesNothingFromAMissingKey) {
  EXPECT_EQ(Editor().CopyTree(kMachine, Key(L"\\None"), kUser, Key(L"\\Target")), kFileNotFound);
  EXPECT_FALSE(IsThere(kUser, Key(L"\\Target")));
}

CARROVAN_CONTRACT(RegistryEditorContract);

}  // namespace
}  // namespace carrovan
