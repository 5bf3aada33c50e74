// What the engine may rely on, whatever machine it runs on.
#include <gtest/gtest.h>

#include <memory>

#include "tests/support/contract_machines.h"
#include "text/text.h"

namespace carrovan {
namespace {

class ProfileFileContract : public ContractTest {
 protected:
  void Write(const std::wstring& section, const std::wstring& key, const std::wstring& value) {
    EXPECT_TRUE(machine_->Ports().profiles->WriteValue(section, key, value, file_));
  }
  std::wstring Read(const std::wstring& section, const std::wstring& key) {
    return machine_->Ports().profiles->ReadValue(section, key, file_);
  }
  std::optional<std::string> Bytes() const { return machine_->FileBytes(file_); }
  void Put(const std::string& bytes) { machine_->PutFile(file_, bytes); }

  std::wstring file_ = machine_->ScratchFolder() + L"config.ini";
};

std::string Utf16(const std::wstring& text) {
  std::string bytes = "\xFF\xFE";
  for (const char16_t unit : ToUtf16(text)) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  }
  return bytes;
}

TEST_P(ProfileFileContract, WritesTheExactBytes) {
  Write(L"Selected", L"Options", L"1");
  Write(L"Selected", L"Interface layout", L"1");
  Write(L"Base", L"COMPANY", L"Vantric");
  Write(L"Base", L"INTERNAL VERSION", L"28.0");
  Write(L"Selected", L"Shortcut key", L"1");
  EXPECT_EQ(Bytes(),
            "[Selected]\r\nOptions=1\r\nInterface layout=1\r\nShortcut key=1\r\n"
            "[Base]\r\nCOMPANY=Vantric\r\nINTERNAL VERSION=28.0\r\n");
}

TEST_P(ProfileFileContract, ChangesAValueInItsPlace) {
  Put("[S]\r\nFirst=1\r\nSecond=2\r\n[T]\r\nx=y\r\n");
  Write(L"s", L"FIRST", L"changed");
  EXPECT_EQ(Bytes(), "[S]\r\nFirst=changed\r\nSecond=2\r\n[T]\r\nx=y\r\n");
}

TEST_P(ProfileFileContract, AddsAKeyBehindAMissingLineEnd) {
  Put("; comment\r\n[S]\r\na=1");
  Write(L"S", L"b", L"2");
  Write(L"T", L"c", L"3");
  EXPECT_EQ(Bytes(), "; comment\r\n[S]\r\na=1\r\nb=2\r\n[T]\r\nc=3\r\n");
}

TEST_P(ProfileFileContract, ReadsWhatItWrote) {
  Write(L"Base", L"PRODUCT", L"VANTRIC CAD");
  EXPECT_EQ(Read(L"Base", L"PRODUCT"), L"VANTRIC CAD");
  EXPECT_EQ(Read(L"base", L"product"), L"VANTRIC CAD");
}

TEST_P(ProfileFileContract, CutsBlanksAndOnePairOfQuotes) {
  Put("[ S ]\r\n a =  v w  \r\nb=\"  q  \"\r\nc='q'\r\nd=\"\"q\"\"\r\ne='x\"\r\n");
  EXPECT_EQ(Read(L"S", L"a"), L"v w");
  EXPECT_EQ(Read(L"S", L"b"), L"  q  ");
  EXPECT_EQ(Read(L"S", L"c"), L"q");
  EXPECT_EQ(Read(L"S", L"d"), L"\"q\"");
  EXPECT_EQ(Read(L"S", L"e"), L"'x\"");
}

TEST_P(ProfileFileContract, ReadsNothingFromWhatIsMissing) {
  EXPECT_EQ(Read(L"S", L"k"), L"");
  Put("[S]\r\nk=v\r\n");
  EXPECT_EQ(Read(L"S", L"x"), L"");
  EXPECT_EQ(Read(L"T", L"k"), L"");
}

TEST_P(ProfileFileContract, ReadsAnyLineEnd) {
  Put("[S]\nk=1\nb=2");
  EXPECT_EQ(Read(L"S", L"k"), L"1");
  EXPECT_EQ(Read(L"S", L"b"), L"2");
}

TEST_P(ProfileFileContract, ReadsAtMost255Characters) {
  Put("[S]\r\nexact=" + std::string(255, 'x') + "\r\nlonger=" + std::string(300, 'x') + "\r\n");
  EXPECT_EQ(Read(L"S", L"exact"), std::wstring(255, L'x'));
  EXPECT_EQ(Read(L"S", L"longer"), std::wstring(255, L'x'));
}

TEST_P(ProfileFileContract, KeepsAUtf16FileAsIs) {
  Put(Utf16(L"[S]\r\na=\x4E2D\r\n"));
  Write(L"S", L"b", L"\x6587" + FromUtf8("\xF0\x9F\x98\x80"));
  EXPECT_EQ(Read(L"S", L"a"), L"\x4E2D");
  EXPECT_EQ(Read(L"S", L"b"), L"\x6587" + FromUtf8("\xF0\x9F\x98\x80"));
  EXPECT_EQ(Bytes(),
            Utf16(L"[S]\r\na=\x4E2D\r\nb=\x6587" + FromUtf8("\xF0\x9F\x98\x80") + L"\r\n"));
}

TEST_P(ProfileFileContract, FailsInAMissingFolder) {
  const std::wstring file = machine_->ScratchFolder() + L"none\\config.ini";
  EXPECT_FALSE(machine_->Ports().profiles->WriteValue(L"S", L"k", L"v", file));
  EXPECT_FALSE(machine_->Ports().files->Exists(machine_->ScratchFolder() + L"none"));
}

CARROVAN_CONTRACT(ProfileFileContract);

}  // namespace
}  // namespace carrovan
