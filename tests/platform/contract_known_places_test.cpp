// What the engine may rely on, whatever machine it runs on.
#include <gtest/gtest.h>

#include <memory>
#include <set>

#include "tests/support/test_machine.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

TEST(KnownFoldersContract, NamesFoldersThatAreThere) {
  const auto machine = NewTestMachine();
  const Machine ports = machine->Ports();
  const auto local = ports.folders->LocalAppData();
  const auto roaming = ports.folders->RoamingAppData();
  const auto temp = ports.folders->TempPath();
  ASSERT_TRUE(local && roaming && temp);
  EXPECT_FALSE(EndsInSeparator(*local));
  EXPECT_FALSE(EndsInSeparator(*roaming));
  EXPECT_TRUE(temp->ends_with(L'\\'));
  EXPECT_LE(ToUtf16(*temp).size(), kFixedPathBuffer);
  EXPECT_NE(*local, *roaming);
  EXPECT_TRUE(ports.files->IsFolder(*local));
  EXPECT_TRUE(ports.files->IsFolder(*temp));
}

// Both lie side by side in the folder that an import unpacks into.
TEST(KnownFoldersContract, KeepsLocalAndRoamingTogether) {
  const auto machine = NewTestMachine();
  const Machine ports = machine->Ports();
  const std::wstring local = ports.folders->LocalAppData().value();
  const std::wstring roaming = ports.folders->RoamingAppData().value();
  EXPECT_EQ(FileNameOf(local), L"Local");
  EXPECT_EQ(FileNameOf(roaming), L"Roaming");
  EXPECT_EQ(RemoveFileSpec(local), RemoveFileSpec(roaming));
}

bool IsGuid(const std::wstring& text) {
  const std::wstring pattern = L"{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}";
  const std::wstring digits = L"0123456789ABCDEF";
  if (text.size() != pattern.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool fits =
        pattern[i] == L'X' ? Contains(digits, std::wstring(1, text[i])) : text[i] == pattern[i];
    if (!fits) return false;
  }
  return true;
}

TEST(GuidSourceContract, MakesGuidsInRegistryForm) {
  const auto machine = NewTestMachine();
  for (int i = 0; i < 50; ++i) {
    const std::wstring guid = machine->Ports().guids->NewGuid().value();
    EXPECT_TRUE(IsGuid(guid)) << ToUtf8(guid);
  }
}

TEST(GuidSourceContract, NeverMakesTheSameTwice) {
  const auto machine = NewTestMachine();
  std::set<std::wstring> guids;
  for (int i = 0; i < 500; ++i) guids.insert(machine->Ports().guids->NewGuid().value());
  EXPECT_EQ(guids.size(), 500u);
}

}  // namespace
}  // namespace carrovan
