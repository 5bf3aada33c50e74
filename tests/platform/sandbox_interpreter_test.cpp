#include "platform/sandbox/sandbox_interpreter.h"

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr RegistryHive kUser = RegistryHive::kCurrentUser;

class SandboxInterpreterTest : public testing::Test {
 protected:
  SandboxInterpreterTest() {
    std::filesystem::create_directory(folder_.Path() / "C");
    EXPECT_EQ(registry_.Load(), std::nullopt);
    EXPECT_TRUE(registry_.Change(kUser, [](RegistryKey& root) {
      root.Make(L"Software\\K").SetValue(MakeDwordValue(L"n", 1));
    }));
  }

  std::optional<std::string> Bytes(const std::string& name) const {
    return HostFileBytes(folder_.Path() / "C" / name);
  }

  void Put(const std::string& name, const std::string& bytes) {
    PutHostFile(folder_.Path() / "C" / name, bytes);
  }

  // What the registry's files hold, the logs of changes included.
  std::vector<std::optional<std::string>> RegistryBytes() const {
    std::vector<std::optional<std::string>> bytes;
    for (const char* name : {"HKEY_CURRENT_USER.reg", "HKEY_CURRENT_USER.changes",
                             "HKEY_LOCAL_MACHINE.reg", "HKEY_LOCAL_MACHINE.changes"}) {
      bytes.push_back(HostFileBytes(folder_.Path() / "registry" / name));
    }
    return bytes;
  }

  void Run(const std::wstring& parameters) {
    const auto command = interpreter_.Start(parameters);
    ASSERT_NE(command, nullptr) << ToUtf8(parameters);
    command->WaitForEnd();
  }

  TemporaryFolder folder_;
  DrivePathMapper paths_{folder_.Path()};
  SandboxRegistry registry_{folder_.Path() / "registry"};
  SandboxInterpreter interpreter_{registry_, paths_};
};

TEST_F(SandboxInterpreterTest, ExportsAKeyUnderTheRootInFull) {
  for (const wchar_t* key :
       {L"HKEY_CURRENT_USER\\Software\\K", L"HKCU\\Software\\K", L"hkcu\\Software\\K\\"}) {
    Put("k.reg", "old");
    Run(L"/C reg export \"" + std::wstring(key) + L"\" \"C:\\k.reg\" /y");
    const std::string bytes = Bytes("k.reg").value();
    const auto decoded = DecodeText(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
    EXPECT_TRUE(decoded.isUtf16);
    EXPECT_EQ(decoded.text,
              L"Windows Registry Editor Version 5.00\r\n\r\n"
              L"[HKEY_CURRENT_USER\\Software\\K]\r\n\"n\"=dword:00000001\r\n\r\n");
  }
}

TEST_F(SandboxInterpreterTest, ImportsATextWithLineEnds) {
  Put("i.reg", "REGEDIT4\r\n[HKCU\\I]\r\n\"a\"=\"1\r\n2\"\r\n\"z\"=\"3\"\r\n");
  Run(L"/C reg import \"C:\\i.reg\"");
  const RegistryKey* const key = registry_.Find(kUser, L"I");
  ASSERT_NE(key, nullptr);
  ASSERT_EQ(key->AllValues().size(), 2u);
  EXPECT_EQ(*key->AllValues()[0], MakeStringValue(L"a", L"1\r\n2"));
}

TEST_F(SandboxInterpreterTest, DoesNothingOnAnyOtherCommand) {
  const auto before = RegistryBytes();
  for (const wchar_t* parameters : {
           L"",
           L"/C",
           L"/C dir",
           L"/c reg export \"HKCU\\Software\\K\" \"C:\\k.reg\" /y",
           L"reg export \"HKCU\\Software\\K\" \"C:\\k.reg\" /y",
           L"/C reg export \"HKCU\\Software\\K\" \"C:\\k.reg\"",
           L"/C reg export \"HKCU\\Software\\K\" \"C:\\k.reg\" /y & dir",
           L"/C reg export HKCU\\Software\\K C:\\k.reg /y",
           L"/C  reg export \"HKCU\\Software\\K\" \"C:\\k.reg\" /y",
           L"/C reg export \"HKCU\\Software\\K\"  \"C:\\k.reg\" /y",
           L"/C reg export \"HKCR\\Software\\K\" \"C:\\k.reg\" /y",
           L"/C reg export \"\\HKCU\\Software\\Nope\" \"C:\\k.reg\" /y",
           L"/C reg export \"HKCU\\Software\\K\" \"C:\\missing\\k.reg\" /y",
           L"/C reg delete \"HKCU\\Software\\K\" /f",
           L"/C reg import \"C:\\missing.reg\"",
           L"/C reg import \"C:\\missing.reg",
           L"/C reg import \"C:\\missing.reg\" x",
           L"/C reg import \"\"",
       }) {
    Run(parameters);
    EXPECT_EQ(Bytes("k.reg"), std::nullopt) << ToUtf8(parameters);
  }
  EXPECT_EQ(RegistryBytes(), before);
}

TEST_F(SandboxInterpreterTest, LeavesTheFileAloneWhenTheKeyIsMissing) {
  Put("old.reg", "old");
  Run(L"/C reg export \"HKCU\\Software\\Nope\" \"C:\\old.reg\" /y");
  EXPECT_EQ(Bytes("old.reg"), "old");
}

TEST_F(SandboxInterpreterTest, LeavesAReadOnlyFileAlone) {
  Put("old.reg", "old");
  folder_.TakePermission(folder_.Path() / "C" / "old.reg", std::filesystem::perms::owner_write);
  Run(L"/C reg export \"HKCU\\Software\\K\" \"C:\\old.reg\" /y");
  EXPECT_EQ(Bytes("old.reg"), "old");
}

TEST_F(SandboxInterpreterTest, ImportsAFileInEveryEncoding) {
  const std::string text = "Windows Registry Editor Version 5.00\n[HKCU\\I]\n\"v\"=\"\xC3\xA4\"\n";
  std::string wide = "\xFF\xFE";
  for (const char16_t unit : ToUtf16(FromUtf8(text))) {
    wide.push_back(static_cast<char>(unit & 0xFF));
    wide.push_back(static_cast<char>(unit >> 8));
  }
  for (const std::string& bytes : {text, "\xEF\xBB\xBF" + text, wide}) {
    Put("i.reg", bytes);
    Run(L"/C reg import \"C:\\i.reg\"");
    const RegistryKey* key = registry_.Find(kUser, L"I");
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(*key->Value(L"v"), MakeStringValue(L"v", L"\x00E4"));
    ASSERT_TRUE(registry_.Change(kUser, [](RegistryKey& root) { root.Remove(L"I"); }));
  }
}

TEST_F(SandboxInterpreterTest, ImportsNothingFromAFileOfAnotherKind) {
  const auto before = RegistryBytes();
  for (const char* bytes :
       {"", "<xml/>", "[HKEY_CURRENT_USER\\I]\r\n\"v\"=\"1\"\r\n", "\xFF\xFE"}) {
    Put("i.reg", bytes);
    Run(L"/C reg import \"C:\\i.reg\"");
    EXPECT_EQ(RegistryBytes(), before);
  }
}

TEST_F(SandboxInterpreterTest, ImportsTheLinesBesideABadOne) {
  Put("i.reg", "REGEDIT4\r\n[HKCU\\I]\r\n\"a\"=\"1\"\r\n\"bad\"=\"1\r\n\"z\"=\"1\"\r\n");
  Run(L"/C reg import \"C:\\i.reg\"");
  const RegistryKey* key = registry_.Find(kUser, L"I");
  ASSERT_NE(key, nullptr);
  EXPECT_EQ(key->AllValues().size(), 2u);
}

}  // namespace
}  // namespace carrovan
