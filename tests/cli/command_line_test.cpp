#include "cli/command_line.h"

#include <gtest/gtest.h>

#include "tests/cli/recording_console.h"

namespace carrovan {
namespace {

using Arguments = std::vector<std::wstring>;

class CommandLine : public testing::Test {
 protected:
  ExitStatus Run(const Arguments& arguments) { return RunCommandLine(arguments, console_); }

  RecordingConsole console_;
};

bool Holds(const std::wstring& text, const wchar_t* part) {
  return text.find(part) != std::wstring::npos;
}

TEST_F(CommandLine, HelpNamesEveryVerbAndTheExitStatuses) {
  EXPECT_EQ(Run({L"--help"}), ExitStatus::kDone);
  for (const wchar_t* part :
       {L"versions", L"export", L"inspect", L"verify", L"extract", L"diff", L"fleet", L"rewrite",
        L"retarget", L"migrate-options", L"--root", L"Examples:", L"Exit status: 0 done"}) {
    EXPECT_TRUE(Holds(console_.out, part)) << testing::PrintToString(part);
  }
  EXPECT_EQ(console_.err, L"");
}

TEST_F(CommandLine, HelpOfAVerbExplainsItsOptions) {
  EXPECT_EQ(Run({L"export", L"--help"}), ExitStatus::kDone);
  for (const wchar_t* part : {L"--version YEAR", L"--all", L"--category LABEL", L"--output FILE"}) {
    EXPECT_TRUE(Holds(console_.out, part)) << testing::PrintToString(part);
  }
}

TEST_F(CommandLine, VersionIsPrintedAlone) {
  EXPECT_EQ(Run({L"--version"}), ExitStatus::kDone);
  EXPECT_TRUE(console_.out.starts_with(L"carrovan-cli "));
}

TEST_F(CommandLine, WrongUsageIsStatusTwoWithAWordOnStandardError) {
  const Arguments kWrong[] = {
      {},
      {L"fly"},
      {L"--root"},
      {L"inspect"},
      {L"verify"},
      {L"diff", L"only-one"},
      {L"extract", L"only-one"},
      {L"export", L"--version", L"2026", L"--output", L"x.ucex"},
      {L"export", L"--all", L"--output", L"x.ucex"},
      {L"export", L"--version", L"2026", L"--all"},
      {L"export", L"--version", L"2026", L"--all", L"--category", L"Options", L"--output",
       L"x.ucex"},
      {L"export", L"--version", L"2026", L"--category", L"--output", L"x.ucex"},
      {L"versions", L"--fast"},
      {L"rewrite", L"folder"},
      {L"rewrite", L"--product", L"P", L"--package-release", L"2025", L"--package-internal",
       L"27.0", L"--target-release", L"2026", L"--target-internal", L"28.0", L"--drafting-folder",
       L"x"},
      {L"retarget", L"file", L"KEY"},
      {L"retarget", L"file", L"KEY", L"x27"},
      {L"retarget", L"file", L"", L"27.0"},
      {L"migrate-options", L"file", L"company"},
  };
  for (const Arguments& arguments : kWrong) {
    console_ = {};
    EXPECT_EQ(Run(arguments), ExitStatus::kUsage) << testing::PrintToString(arguments);
    EXPECT_NE(console_.err, L"") << testing::PrintToString(arguments);
    EXPECT_EQ(console_.out, L"") << testing::PrintToString(arguments);
  }
}

TEST_F(CommandLine, UnknownCategoryIsWrongUsageAndTheLabelsAreListed) {
  EXPECT_EQ(Run({L"export", L"--version", L"2026", L"--category", L"Options", L"Colours",
                 L"--output", L"x.ucex"}),
            ExitStatus::kUsage);
  EXPECT_TRUE(Holds(console_.err, L"no category \"Colours\""));
  EXPECT_TRUE(Holds(console_.err, L"\"2D Draft Settings\""));
}

TEST_F(CommandLine, PackageNameMustBeThatOfAPackage) {
  EXPECT_EQ(Run({L"export", L"--version", L"2026", L"--all", L"--output", L"x.zip"}),
            ExitStatus::kUsage);
  EXPECT_TRUE(Holds(console_.err, L".ucex"));
}

TEST_F(CommandLine, ResultThatNobodyReceivedIsAFailure) {
  console_.outIsWhole = false;
  EXPECT_EQ(Run({L"--version"}), ExitStatus::kFailed);
  EXPECT_EQ(console_.err, L"Standard output was not written\n");
}

TEST_F(CommandLine, MissingSandboxIsAFailureOnOneLine) {
  EXPECT_EQ(Run({L"--root", L"no-such-folder", L"versions"}), ExitStatus::kFailed);
  EXPECT_EQ(console_.err.find(L'\n'), console_.err.size() - 1);
  EXPECT_EQ(console_.out, L"");
}

TEST_F(CommandLine, ArgumentThatBeginsWithASlashIsNoOption) {
  EXPECT_EQ(Run({L"inspect", L"/no such package.ucex"}), ExitStatus::kFailed);
  EXPECT_TRUE(Holds(console_.err, L"/no such package.ucex"))
      << testing::PrintToString(console_.err);
}

TEST_F(CommandLine, MissingPackageIsAFailureOnOneLine) {
  for (const Arguments& arguments :
       {Arguments{L"inspect", L"no-such.ucex"}, Arguments{L"verify", L"no-such.ucex"},
        Arguments{L"extract", L"no-such.ucex", L"folder"}}) {
    console_ = {};
    EXPECT_EQ(Run(arguments), ExitStatus::kFailed);
    EXPECT_EQ(console_.err, L"no-such.ucex is missing\n");
  }
}

}  // namespace
}  // namespace carrovan
