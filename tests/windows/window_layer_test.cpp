#include <gtest/gtest.h>

#include <algorithm>

#include "environment/string_table.h"
#include "platform/windows/module_loading.h"
#include "platform/windows/resource_module.h"
#include "platform/windows/windows_facts.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

TEST(WindowsProcessList, NamesThisProgramWithoutItsFolder) {
  const std::vector<std::wstring> names = WindowsProcessList().ExecutableNames();
  const std::wstring own = FileNameOf(ProgramPath());
  EXPECT_TRUE(std::ranges::any_of(
      names, [&](const std::wstring& name) { return EqualsIgnoringAsciiCase(name, own); }));
}

TEST(ModuleLoading, MissingLibraryGivesTheSystemsNumber) {
  ModuleHandle module;
  EXPECT_NE(LoadModule(ProgramPath() + L".dll", module), kSystemOk);
  EXPECT_FALSE(module);
}

TEST(ResourceModule, ProgramsOwnTextsServeWithoutALibrary) {
  const ResourceModule resources;
  EXPECT_EQ(resources.Text(static_cast<int>(StringId::kWizardCaption)),
            Text(StringId::kWizardCaption));
  EXPECT_EQ(resources.Text(105), L"");
}

TEST(ResourceModule, ProgramsOwnTextsServeWhereTheLibraryHasNone) {
  ModuleHandle library;
  const std::wstring tarvik = WithTrailingBackslash(RemoveFileSpec(ProgramPath())) + L"tarvik.dll";
  ASSERT_EQ(LoadModule(tarvik, library), kSystemOk);
  const ResourceModule resources(std::move(library));
  EXPECT_EQ(resources.Text(static_cast<int>(StringId::kSelectAll)), Text(StringId::kSelectAll));
}

TEST(ResourceModule, MissingPicturesAreEmpty) {
  const ResourceModule resources;
  EXPECT_FALSE(resources.Bitmap(1));
  EXPECT_FALSE(resources.Icon(1, 16));
}

TEST(ProgramVersion, ProgramWithoutAVersionHasNone) { EXPECT_EQ(ProgramVersion(), L""); }

}  // namespace
}  // namespace carrovan
