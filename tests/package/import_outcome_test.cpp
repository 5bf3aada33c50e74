// What an import reports of the files that it merged and the values that it dropped.
#include <gtest/gtest.h>

#include "environment/version_folders.h"
#include "tests/package/import_fixture.h"
#include "text/text.h"

namespace carrovan {
namespace {

class ImportOutcomeTest : public ImportFixture {
 protected:
  void AddRegistryFile(const std::wstring& name) {
    entries_[name] = "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\" + ToUtf8(LiveKey(context_)) +
                     "\\General]\r\n\"a \\\"b\\\"\"=\"Q:\\\\none\\\\x\"\r\n\"kept\"=\"text\"\r\n";
  }
};

TEST_F(ImportOutcomeTest, TellsWhichFilesOfTheProfileWereMerged) {
  Describe({"Interface layout", "Shortcut key"});
  const std::wstring below = L"en-us\\Customization\\";
  entries_[PackageRoaming(below + L"a.xml")] = "<r><Item ElementID=\"1\"/></r>";
  entries_[PackageRoaming(below + L"own.xml")] = "<r/>";
  machine_->PutFile(Roaming(below + L"a.xml"), "<r><Item ElementID=\"2\"/></r>");
  Import({SettingCategory::InterfaceLayout});
  EXPECT_EQ(report_.merged, std::vector<std::wstring>{Roaming(below + L"a.xml")});
}

TEST_F(ImportOutcomeTest, TellsWhichShortcutFilesWereMerged) {
  Describe({"Shortcut key"});
  const std::string table = ToUtf8(context_.productName) + "28.0";
  const auto keys = [&table](const std::string& command) {
    return "<r><" + table + "><Accels-0><Command>" + command + "</Command><Ctrl>1</Ctrl><Key>" +
           command + "</Key></Accels-0><Count>1</Count></" + table + "></r>";
  };
  entries_[PackageLocal(L"Customization\\a.xml")] = keys("1");
  entries_[PackageLocal(L"Customization\\same.xml")] = keys("1");
  machine_->PutFile(Local(L"Customization\\a.xml"), keys("2"));
  machine_->PutFile(Local(L"Customization\\same.xml"), keys("1"));
  Import({SettingCategory::ShortcutKey});
  EXPECT_EQ(report_.merged, std::vector<std::wstring>{Local(L"Customization\\a.xml")});
}

TEST_F(ImportOutcomeTest, TellsWhichValuesWereDropped) {
  Describe({"Options", "Register"}, "2025", "28.0");
  AddRegistryFile(L"Options\\General.reg");
  Import({SettingCategory::Options});
  ASSERT_EQ(report_.dropped.size(), 1u);
  const DroppedValue& dropped = report_.dropped.front();
  EXPECT_EQ(dropped.file, L"Options\\General.reg");
  EXPECT_EQ(dropped.key, L"HKEY_CURRENT_USER\\" + LiveKey(context_) + L"\\General");
  EXPECT_EQ(dropped.name, L"a \"b\"");
  EXPECT_TRUE(Contains(dropped.why, L"Q:\\\\none\\\\x")) << ToUtf8(dropped.why);
}

TEST_F(ImportOutcomeTest, ValuesOfACategoryThatIsLeftOutAreNotDropped) {
  Describe({"Options", "Register"}, "2025", "28.0");
  AddRegistryFile(L"Options\\General.reg");
  AddRegistryFile(L"Register\\x.reg");
  Import({SettingCategory::Register});
  ASSERT_EQ(report_.dropped.size(), 1u);
  EXPECT_EQ(report_.dropped.front().file, L"Register\\x.reg");
}

TEST_F(ImportOutcomeTest, DroppedDefaultValueHasNoName) {
  Describe({"Options"}, "2025", "28.0");
  entries_[L"Options\\General.reg"] = "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\" +
                                      ToUtf8(LiveKey(context_)) +
                                      "\\General]\r\n@=\"Q:\\\\none\\\\x\"\r\n";
  Import({SettingCategory::Options});
  ASSERT_EQ(report_.dropped.size(), 1u);
  EXPECT_EQ(report_.dropped.front().name, L"");
  EXPECT_TRUE(Contains(report_.dropped.front().why, L"Q:")) << ToUtf8(report_.dropped.front().why);
}

}  // namespace
}  // namespace carrovan
