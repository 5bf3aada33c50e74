#include "platform/command_interpreter.h"

#include <gtest/gtest.h>

namespace carrovan {
namespace {

TEST(RegistryCommand, NamesTheFileThatItImports) {
  EXPECT_EQ(ImportedFile(RegImportCommand(L"C:\\T\\Point Snap.reg")), L"C:\\T\\Point Snap.reg");
  EXPECT_EQ(ImportedFile(RegImportCommand(L"")), L"");
}

TEST(RegistryCommand, OtherCommandsImportNothing) {
  for (const wchar_t* command :
       {L"", L"/C reg import \"", L"/C reg import \"x.reg", L"/C reg import x.reg\"",
        L"/C reg import \"a\" \"b\"", L"/c reg import \"x.reg\"", L" /C reg import \"x.reg\""}) {
    EXPECT_FALSE(ImportedFile(command)) << testing::PrintToString(command);
  }
  EXPECT_FALSE(ImportedFile(RegExportCommand(L"HKEY_CURRENT_USER\\K", L"x.reg")));
}

}  // namespace
}  // namespace carrovan
