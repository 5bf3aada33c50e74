// What the engine may rely on, whatever machine it runs on.
#include <gtest/gtest.h>

#include <memory>
#include <numeric>

#include "tests/support/contract_machines.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr RegistryHive kUser = RegistryHive::kCurrentUser;

class RegistryToolContract : public ContractTest {
 protected:
  std::wstring Key(const std::wstring& rest = {}) const {
    return L"SOFTWARE\\Vantric\\" + machine_->product.productName + rest;
  }

  bool Export(const std::wstring& key) {
    const auto tool =
        machine_->Ports().registryTool->ExportKey(L"HKEY_CURRENT_USER\\" + key, file_);
    return tool && tool->WaitForEnd();
  }
  bool Import() {
    const auto tool = machine_->Ports().registryTool->ImportFile(file_);
    return tool && tool->WaitForEnd();
  }

  void Put(const std::wstring& text) {
    const auto bytes = EncodeText({text, true});
    machine_->PutFile(file_, std::string(bytes.begin(), bytes.end()));
  }

  // The text of the file, which begins with the mark of UTF-16.
  std::wstring FileText() const {
    const std::string bytes = machine_->FileBytes(file_).value_or("");
    EXPECT_TRUE(bytes.starts_with("\xFF\xFE"));
    return DecodeText(std::vector<std::uint8_t>(bytes.begin(), bytes.end())).text;
  }

  std::wstring file_ = machine_->ScratchFolder() + L"one key.reg";
};

std::vector<RegistryValue> ValuesOfEveryType() {
  std::vector<std::uint8_t> bytes(300);
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
  const std::wstring emoji = FromUtf8("\xF0\x9F\x98\x80");
  return {
      MakeStringValue(L"", L"default"),
      MakeStringValue(L"a text", L"plain"),
      MakeStringValue(L"b empty", L""),
      MakeStringValue(L"c \"path\"", L"C:\\Users\\\"u\"\\x"),
      MakeStringValue(L"d \x4E2D\x6587", L"\x4E2D" + emoji),
      MakeStringValue(L"e expand", L"%USERPROFILE%\\x", kRegExpandSz),
      {L"f multi", kRegMultiSz, {0x61, 0, 0, 0, 0x62, 0, 0, 0, 0, 0}},
      MakeDwordValue(L"g number", 0x1234ABCD),
      {L"h big endian", kRegDwordBigEndian, {0x12, 0x34, 0xAB, 0xCD}},
      {L"i quad", kRegQword, {1, 2, 3, 4, 5, 6, 7, 8}},
      {L"j none", kRegNone, {1, 2}},
      {L"k none at all", kRegNone, {}},
      {L"l binary", kRegBinary, bytes},
      {L"m no binary", kRegBinary, {}},
      {L"n unknown", 0x1234, {0xDE, 0xAD}},
  };
}

// An overlay does not export; nothing that it is for needs that.
INSTANTIATE_TEST_SUITE_P(Machines, RegistryToolContract,
                         testing::Values(ContractMachine::kOwn, ContractMachine::kRecorded),
                         NameOfContractMachine);

TEST_P(RegistryToolContract, CarriesEveryTypeOfValueThroughAFile) {
  const std::wstring key = Key(L"\\With blanks\\\x4E2D");
  for (const RegistryValue& value : ValuesOfEveryType()) machine_->PutValue(kUser, key, value);
  Export(Key(L"\\With blanks"));
  ASSERT_TRUE(machine_->Ports().files->Exists(file_));
  const auto other = NewTestMachine();
  const std::wstring text =
      ReplaceAll(FileText(), machine_->product.productName, other->product.productName);
  const auto bytes = EncodeText({text, true});
  const std::wstring file = other->ScratchFolder() + L"from another machine.reg";
  other->PutFile(file, std::string(bytes.begin(), bytes.end()));
  EXPECT_TRUE(other->Ports().registryTool->ImportFile(file)->WaitForEnd());
  const std::wstring otherKey =
      L"SOFTWARE\\Vantric\\" + other->product.productName + L"\\With blanks\\\x4E2D";
  for (const RegistryValue& value : ValuesOfEveryType()) {
    EXPECT_EQ(other->Value(kUser, otherKey, value.name), value) << ToUtf8(value.name);
  }
}

TEST_P(RegistryToolContract, WritesAFileOfTheToolsForm) {
  machine_->PutValue(kUser, Key(L"\\K"), MakeStringValue(L"", L"d"));
  machine_->PutValue(kUser, Key(L"\\K"), MakeDwordValue(L"a", 26));
  machine_->PutValue(kUser, Key(L"\\K"), {L"b", kRegBinary, std::vector<std::uint8_t>(30, 0xAB)});
  machine_->PutKey(kUser, Key(L"\\K\\Sub b"));
  machine_->PutKey(kUser, Key(L"\\K\\sub a"));
  Export(Key(L"\\K"));
  std::wstring bytes;
  for (int i = 0; i < 23; ++i) bytes += L"ab,";
  const std::wstring key = L"[HKEY_CURRENT_USER\\" + Key(L"\\K");
  EXPECT_EQ(FileText(), L"Windows Registry Editor Version 5.00\r\n\r\n" + key +
                            L"]\r\n@=\"d\"\r\n\"a\"=dword:0000001a\r\n\"b\"=hex:" + bytes +
                            L"\\\r\n  ab,ab,ab,ab,ab,ab,ab\r\n\r\n" + key + L"\\sub a]\r\n\r\n" +
                            key + L"\\Sub b]\r\n\r\n");
}

TEST_P(RegistryToolContract, OverwritesAnOlderExport) {
  machine_->PutFile(file_, std::string(10'000, 'x'));
  machine_->PutKey(kUser, Key(L"\\K"));
  Export(Key(L"\\K"));
  EXPECT_EQ(FileText(), L"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\" +
                            Key(L"\\K") + L"]\r\n\r\n");
}

TEST_P(RegistryToolContract, LeavesNoFileForAMissingKey) {
  EXPECT_FALSE(Export(Key(L"\\Missing")));
  EXPECT_FALSE(machine_->Ports().files->Exists(file_));
}

TEST_P(RegistryToolContract, ImportsIntoWhatIsThere) {
  machine_->PutValue(kUser, Key(L"\\K"), MakeStringValue(L"keep", L"1"));
  machine_->PutValue(kUser, Key(L"\\K"), MakeStringValue(L"gone", L"1"));
  machine_->PutKey(kUser, Key(L"\\K\\Gone\\Sub"));
  Put(L"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\" + Key(L"\\K") +
      L"]\r\n\"new\"=dword:00000002\r\n\"gone\"=-\r\n\r\n[-HKEY_CURRENT_USER\\" +
      Key(L"\\K\\Gone") + L"]\r\n\r\n");
  Import();
  EXPECT_EQ(machine_->Value(kUser, Key(L"\\K"), L"keep"), MakeStringValue(L"keep", L"1"));
  EXPECT_EQ(machine_->Value(kUser, Key(L"\\K"), L"new"), MakeDwordValue(L"new", 2));
  EXPECT_EQ(machine_->Value(kUser, Key(L"\\K"), L"gone"), std::nullopt);
  EXPECT_FALSE(machine_->Ports().registry->CanOpenKey(kUser, Key(L"\\K\\Gone")));
}

TEST_P(RegistryToolContract, ImportsTheLinesBesideABadOne) {
  machine_->PutKey(kUser, Key(L"\\K"));
  Put(L"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\" + Key(L"\\K") +
      L"]\r\n\"a\"=\"1\"\r\n\"bad\"=\"never ends\r\n\"z\"=\"2\"\r\n");
  Import();
  EXPECT_EQ(machine_->Value(kUser, Key(L"\\K"), L"a"), MakeStringValue(L"a", L"1"));
  EXPECT_EQ(machine_->Value(kUser, Key(L"\\K"), L"bad"), std::nullopt);
  EXPECT_EQ(machine_->Value(kUser, Key(L"\\K"), L"z"), MakeStringValue(L"z", L"2"));
}

TEST_P(RegistryToolContract, ImportsNothingFromAFileOfAnotherKind) {
  machine_->PutKey(kUser, Key(L"\\K"));
  Put(L"Not a registry file\r\n\r\n[HKEY_CURRENT_USER\\" + Key(L"\\K") + L"]\r\n\"a\"=\"1\"\r\n");
  Import();
  EXPECT_EQ(machine_->Value(kUser, Key(L"\\K"), L"a"), std::nullopt);
}

TEST_P(RegistryToolContract, ImportOfAMissingFileFails) { EXPECT_FALSE(Import()); }

}  // namespace
}  // namespace carrovan
