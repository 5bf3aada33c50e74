// What the engine may rely on, whatever machine it runs on.
#include <gtest/gtest.h>

#include "platform/sandbox/sandbox_facts.h"
#include "tests/support/test_machine.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

TEST(UserIdentityContract, TellsTheNameAndAProfileThatIsThere) {
  const auto machine = NewTestMachine();
  const Machine ports = machine->Ports();
  const auto name = ports.user->UserName();
  const auto profile = ports.user->ProfileFolder();
  ASSERT_TRUE(name && profile);
  EXPECT_FALSE(name->empty());
  EXPECT_EQ(name->find(L'\0'), std::wstring::npos);
  EXPECT_TRUE(ports.files->IsFolder(*profile));
  EXPECT_TRUE(ports.folders->LocalAppData().value().starts_with(*profile));
}

TEST(UserIdentityContract, HostTellsAName) {
  const auto name = OpenHostUser()->UserName();
  ASSERT_TRUE(name);
  EXPECT_FALSE(name->empty());
}

TEST(OwnProcessContract, NamesTheRunningProgram) {
  const ProcessFacts facts = NewTestMachine()->Ports().self->Facts();
  EXPECT_EQ(facts.program, L"carrovan_tests");
  EXPECT_NE(facts.id, 0u);
  EXPECT_EQ(OpenHostProcess()->Facts().id, facts.id);
}

TEST(SandboxUser, TellsNothingThatDoesNotFitTheSystemsBuffers) {
  EXPECT_EQ(SandboxUser(std::wstring(255, L'n')).UserName(), std::wstring(255, L'n'));
  EXPECT_EQ(SandboxUser(std::wstring(256, L'n')).UserName(), std::nullopt);
  EXPECT_EQ(SandboxUser(L"").UserName(), std::nullopt);
  const std::size_t room = kFixedPathBuffer - 1 - std::wstring(L"C:\\Users\\").size();
  EXPECT_TRUE(SandboxUser(std::wstring(room, L'n')).ProfileFolder());
  EXPECT_EQ(SandboxUser(std::wstring(room + 1, L'n')).ProfileFolder(), std::nullopt);
}

TEST(CodePageContract, GivesEveryByteBack) {
  const auto machine = NewTestMachine();
  const CodePage& codePage = *machine->Ports().codePage;
  std::string bytes;
  for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<char>(i));
  for (const std::string& each :
       {std::string(), std::string("plain \r\n\0 text", 14), bytes, "\xE4" + bytes,
        std::string("\xE4\xB8\xAD\xE4\xB8"), std::string("\xF0\x9F\x98\x80\x80\xFF"),
        std::string("\xD6\xD0\xCE\xC4\x5C")}) {
    EXPECT_EQ(codePage.Encode(codePage.Decode(each)), each) << testing::PrintToString(each);
  }
}

TEST(CodePageContract, BytesOfAsciiAreThatCharacter) {
  const auto machine = NewTestMachine();
  for (int i = 0; i < 128; ++i) {
    EXPECT_EQ(machine->Ports().codePage->Decode(std::string(1, static_cast<char>(i))),
              std::u16string(1, static_cast<char16_t>(i)));
  }
}

TEST(CodePageContract, EncodesTextBetweenBytesThatAreNone) {
  const auto machine = NewTestMachine();
  const CodePage& codePage = *machine->Ports().codePage;
  EXPECT_EQ(codePage.Encode(u"a\xDCFF"
                            u"b\xDC80"),
            "a\xFF"
            "b\x80");
}

}  // namespace
}  // namespace carrovan
