#include "platform/registry_tool.h"

#include <gtest/gtest.h>

#include "tests/support/fakes.h"

namespace carrovan {
namespace {

using Commands = std::vector<std::wstring>;

TEST(InterpretedRegistryTool, ExportsWithThisCommandLine) {
  RecordingInterpreter interpreter;
  EXPECT_NE(interpreter.tool.ExportKey(L"HKEY_CURRENT_USER\\K L", L"C:\\T\\Point Snap.reg"),
            nullptr);
  EXPECT_EQ(interpreter.started,
            Commands{L"/C reg export \"HKEY_CURRENT_USER\\K L\" \"C:\\T\\Point Snap.reg\" /y"});
}

TEST(InterpretedRegistryTool, ImportsWithThisCommandLine) {
  RecordingInterpreter interpreter;
  EXPECT_NE(interpreter.tool.ImportFile(L"C:\\T\\Point Snap.reg"), nullptr);
  EXPECT_EQ(interpreter.started, Commands{L"/C reg import \"C:\\T\\Point Snap.reg\""});
}

TEST(InterpretedRegistryTool, IsNotStartedWithoutAnInterpreter) {
  RecordingInterpreter interpreter;
  interpreter.canStart = false;
  EXPECT_EQ(interpreter.tool.ExportKey(L"K", L"x.reg"), nullptr);
  EXPECT_EQ(interpreter.tool.ImportFile(L"x.reg"), nullptr);
}

}  // namespace
}  // namespace carrovan
