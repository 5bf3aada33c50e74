#include "platform/sandbox/sandbox_registry.h"

#include <gtest/gtest.h>

#include "registry_text/registry_key.h"
#include "tests/support/temporary_folder.h"
#include "text/text.h"

namespace carrovan {
namespace {

namespace fs = std::filesystem;

constexpr RegistryHive kUser = RegistryHive::kCurrentUser;
constexpr RegistryHive kMachine = RegistryHive::kLocalMachine;

class SandboxRegistryTest : public testing::Test {
 protected:
  fs::path File(const std::string& root) const {
    return folder_.Path() / "registry" / (root + ".reg");
  }

  void PutHive(const std::string& root, const std::string& text) {
    PutHostFile(File(root), "Windows Registry Editor Version 5.00\r\n\r\n" + text);
  }

  // The hive's file as text.
  std::wstring HiveText(const std::string& root) const {
    const std::string bytes = HostFileBytes(File(root)).value_or("");
    EXPECT_TRUE(bytes.starts_with("\xFF\xFE"));
    return DecodeText(std::vector<std::uint8_t>(bytes.begin(), bytes.end())).text;
  }

  TemporaryFolder folder_;
  SandboxRegistry registry_{folder_.Path() / "registry"};
};

TEST_F(SandboxRegistryTest, TakesAMissingFileForAnEmptyHive) {
  EXPECT_EQ(registry_.Load(), std::nullopt);
  EXPECT_TRUE(registry_.CanOpenKey(kUser, L""));
  EXPECT_FALSE(registry_.CanOpenKey(kMachine, L"SOFTWARE"));
  EXPECT_FALSE(fs::exists(folder_.Path() / "registry"));
}

TEST_F(SandboxRegistryTest, ReadsBothHives) {
  PutHive("HKEY_CURRENT_USER", "[HKEY_CURRENT_USER\\Software\\K]\r\n\"a\"=\"\xC3\xA4\"\r\n");
  PutHive("HKEY_LOCAL_MACHINE", "[HKEY_LOCAL_MACHINE\\SOFTWARE\\M]\n");
  ASSERT_EQ(registry_.Load(), std::nullopt);
  EXPECT_EQ(*registry_.Find(kUser, L"software\\k")->Value(L"A"), MakeStringValue(L"a", L"\x00E4"));
  EXPECT_TRUE(registry_.CanOpenKey(kMachine, L"SOFTWARE\\M"));
  EXPECT_FALSE(registry_.CanOpenKey(kUser, L"SOFTWARE\\M"));
}

TEST_F(SandboxRegistryTest, SavesAHiveAsUtf16InItsOwnOrder) {
  ASSERT_EQ(registry_.Load(), std::nullopt);
  ASSERT_TRUE(registry_.Change(kUser, [](RegistryKey& root) {
    root.Make(L"K").SetValue(MakeStringValue(L"z", L"\x4E2D"));
    root.Make(L"K").SetValue(MakeDwordValue(L"a", 1));
    root.Make(L"A");
  }));
  EXPECT_EQ(HiveText("HKEY_CURRENT_USER"),
            L"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER]\r\n\r\n"
            L"[HKEY_CURRENT_USER\\A]\r\n\r\n[HKEY_CURRENT_USER\\K]\r\n"
            L"\"z\"=\"\x4E2D\"\r\n\"a\"=dword:00000001\r\n\r\n");
  EXPECT_TRUE(registry_.CanOpenKey(kUser, L"K"));
  EXPECT_FALSE(fs::exists(File("HKEY_LOCAL_MACHINE")));
}

TEST_F(SandboxRegistryTest, KeepsOddValuesThroughAFile) {
  const RegistryValue odd{L"odd", kRegSz, {0x61, 0x00, 0x00, 0x00, 0x62}};
  ASSERT_EQ(registry_.Load(), std::nullopt);
  ASSERT_TRUE(registry_.Change(kUser, [&](RegistryKey& root) { root.Make(L"K").SetValue(odd); }));
  SandboxRegistry again(folder_.Path() / "registry");
  ASSERT_EQ(again.Load(), std::nullopt);
  EXPECT_EQ(*again.Find(kUser, L"K")->Value(L"odd"), odd);
}

TEST_F(SandboxRegistryTest, ChangesWhatTheFileHoldsNow) {
  ASSERT_EQ(registry_.Load(), std::nullopt);
  PutHive("HKEY_CURRENT_USER", "[HKEY_CURRENT_USER\\FromOutside]\r\n");
  ASSERT_TRUE(registry_.Change(kUser, [](RegistryKey& root) { root.Make(L"Mine"); }));
  EXPECT_EQ(registry_.SubkeyNames(kUser, L""),
            (std::vector<std::wstring>{L"FromOutside", L"Mine"}));
}

TEST_F(SandboxRegistryTest, MergesAFileIntoBothHives) {
  PutHive("HKEY_CURRENT_USER",
          "[HKEY_CURRENT_USER\\K]\r\n\"keep\"=\"1\"\r\n\"gone\"=\"1\"\r\n\"new\"=\"1\"\r\n"
          "[HKEY_CURRENT_USER\\Gone\\Sub]\r\n");
  ASSERT_EQ(registry_.Load(), std::nullopt);
  const auto file = ParseRegistryFile(
      L"Windows Registry Editor Version 5.00\r\n[HKEY_CURRENT_USER\\k]\r\n\"NEW\"=\"2\"\r\n"
      L"\"gone\"=-\r\n[-HKEY_CURRENT_USER\\Gone]\r\n[HKEY_LOCAL_MACHINE\\M]\r\n");
  ASSERT_TRUE(file);
  ASSERT_TRUE(registry_.Merge(*file));
  const RegistryKey* key = registry_.Find(kUser, L"K");
  EXPECT_EQ(*key->Value(L"new"), MakeStringValue(L"new", L"2"));
  EXPECT_NE(key->Value(L"keep"), nullptr);
  EXPECT_EQ(key->Value(L"gone"), nullptr);
  EXPECT_FALSE(registry_.CanOpenKey(kUser, L"Gone"));
  EXPECT_TRUE(registry_.CanOpenKey(kMachine, L"M"));
}

TEST_F(SandboxRegistryTest, SaysWhatIsWrongWithAHive) {
  const struct {
    const char* text;
    const wchar_t* problem;
  } kRows[] = {
      {"not a registry file", L"HKEY_CURRENT_USER.reg: not a registry file"},
      {"", L"HKEY_CURRENT_USER.reg: not a registry file"},
      {"REGEDIT4\r\n[HKEY_CURRENT_USER\\K]\r\n\"a\"=junk\r\n",
       L"HKEY_CURRENT_USER.reg: line 3: a value of unknown kind"},
      {"REGEDIT4\r\n[HKEY_LOCAL_MACHINE\\K]\r\n", L"HKEY_CURRENT_USER.reg: keys of another root"},
  };
  for (const auto& row : kRows) {
    PutHostFile(File("HKEY_CURRENT_USER"), row.text);
    SandboxRegistry registry(folder_.Path() / "registry");
    EXPECT_EQ(registry.Load(), std::wstring(row.problem));
  }
}

TEST_F(SandboxRegistryTest, ChangesNothingThatCannotBeSaved) {
  PutHive("HKEY_CURRENT_USER", "[HKEY_CURRENT_USER\\K]\r\n");
  const auto before = HostFileBytes(File("HKEY_CURRENT_USER"));
  ASSERT_EQ(registry_.Load(), std::nullopt);
  folder_.TakePermission(File("HKEY_CURRENT_USER"), fs::perms::owner_write);
  EXPECT_FALSE(registry_.Change(kUser, [](RegistryKey& root) { root.Make(L"New"); }));
  EXPECT_FALSE(registry_.CanOpenKey(kUser, L"New"));
  EXPECT_TRUE(registry_.CanOpenKey(kUser, L"K"));
  EXPECT_EQ(HostFileBytes(File("HKEY_CURRENT_USER")), before);
}

TEST_F(SandboxRegistryTest, ChangesNothingOverAFileThatWasSpoilt) {
  ASSERT_EQ(registry_.Load(), std::nullopt);
  PutHostFile(File("HKEY_CURRENT_USER"), "spoilt");
  EXPECT_FALSE(registry_.Change(kUser, [](RegistryKey& root) { root.Make(L"New"); }));
  EXPECT_EQ(HostFileBytes(File("HKEY_CURRENT_USER")), "spoilt");
}

TEST_F(SandboxRegistryTest, HoldsManyKeysAndAVeryDeepOne) {
  constexpr int kCount = 5'000;
  std::string text;
  for (int i = 0; i < kCount; ++i) {
    text += "[HKEY_CURRENT_USER\\Many\\Key " + std::to_string(i) + "]\r\n\"v\"=\"1\"\r\n";
  }
  std::wstring deep;
  for (std::size_t i = 0; i < kMostKeyLevels; ++i) deep += L"\\d";
  PutHive("HKEY_CURRENT_USER", text + "[HKEY_CURRENT_USER" + ToUtf8(deep) + "]\r\n");
  ASSERT_EQ(registry_.Load(), std::nullopt);
  ASSERT_TRUE(registry_.Change(kUser, [](RegistryKey& root) { root.Remove(L"Many\\Key 0"); }));
  EXPECT_EQ(registry_.SubkeyNames(kUser, L"Many")->size(), kCount - 1u);
  EXPECT_TRUE(registry_.CanOpenKey(kUser, deep));
}

}  // namespace
}  // namespace carrovan
