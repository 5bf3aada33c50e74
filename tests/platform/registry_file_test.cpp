#include "platform/registry_file.h"

#include <gtest/gtest.h>

#include "tests/support/memory_machine.h"

namespace carrovan {
namespace {

constexpr RegistryHive kUser = RegistryHive::kCurrentUser;

// A registry in which the keys of some names cannot be changed.
class GuardedRegistry : public MemoryRegistry {
 public:
  SystemCode CreateKey(RegistryHive hive, const std::wstring& path) override {
    return path == L"Denied" ? kAccessDenied : MemoryRegistry::CreateKey(hive, path);
  }
  SystemCode SetValues(RegistryHive hive, const std::wstring& path,
                       const std::vector<RegistryValue>& values) override {
    if (path == L"Full") return kSystemDiskFull;
    return MemoryRegistry::SetValues(hive, path, values);
  }
  SystemCode DeleteTree(RegistryHive hive, const std::wstring& path) override {
    return path == L"Held" ? kGeneralFailure : MemoryRegistry::DeleteTree(hive, path);
  }
};

RegistryKeyChange Setting(const std::wstring& path) {
  return {.hive = kUser, .keyPath = path, .values = {{.value = MakeDwordValue(L"n", 1)}}};
}

RegistryKeyChange Removal(const std::wstring& path) {
  return {.hive = kUser, .keyPath = path, .remove = true, .values = {}};
}

class RegistryFileApply : public testing::Test {
 protected:
  SystemCode Apply(std::vector<RegistryKeyChange> changes) {
    RegistryFile file;
    file.keys = std::move(changes);
    return ApplyRegistryFile(file, registry_);
  }

  GuardedRegistry registry_;
};

TEST_F(RegistryFileApply, ReportsTheFirstFailureAndGoesOn) {
  EXPECT_EQ(Apply({Setting(L"Denied"), Setting(L"Full"), Setting(L"Good")}), kAccessDenied);
  EXPECT_EQ(registry_.Values(kUser, L"Good"), (std::vector{MakeDwordValue(L"n", 1)}));
  EXPECT_EQ(Apply({Setting(L"Good"), Setting(L"Full"), Setting(L"Denied")}), kSystemDiskFull);
  EXPECT_EQ(Apply({Removal(L"Held")}), kGeneralFailure);
}

TEST_F(RegistryFileApply, NothingIsSetInAKeyThatCannotBeMade) {
  EXPECT_EQ(Apply({Setting(L"Denied")}), kAccessDenied);
  EXPECT_FALSE(registry_.CanOpenKey(kUser, L"Denied"));
}

TEST_F(RegistryFileApply, WhatIsGoneNeedsNoRemoval) {
  RegistryKeyChange change = Setting(L"Good");
  change.values.insert(change.values.begin(),
                       {.value = MakeDwordValue(L"gone", 1), .remove = true});
  EXPECT_EQ(Apply({Removal(L"Nowhere"), change}), kSystemOk);
  EXPECT_EQ(registry_.Values(kUser, L"Good"), (std::vector{MakeDwordValue(L"n", 1)}));
}

TEST_F(RegistryFileApply, AWholeHiveStays) {
  EXPECT_EQ(Apply({Setting(L"Good"), Removal(L"")}), kSystemOk);
  EXPECT_TRUE(registry_.CanOpenKey(kUser, L"Good"));
}

}  // namespace
}  // namespace carrovan
