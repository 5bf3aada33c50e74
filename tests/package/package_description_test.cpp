#include "package/package_description.h"

#include <gtest/gtest.h>

#include "tests/support/test_machine.h"

namespace carrovan {
namespace {

class PackageDescription : public testing::Test {
 protected:
  PackageDescription() {
    context_.companyShortName = L"Vantric";
    context_.productName = L"VANTRIC";
    context_.productVersion = L"28.0";
    context_.humanReadableVersion = L"2026";
    context_.packageDescriptionPath = machine_->ScratchFolder() + L"config.ini";
  }

  std::string Write(const CategorySet& categories) {
    WritePackageDescription(context_, machine_->Ports(), categories);
    return machine_->FileBytes(context_.packageDescriptionPath).value_or("no file");
  }

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  ProductContext context_;
};

constexpr char kBase[] =
    "[Base]\r\nCOMPANY=Vantric\r\nINTERNAL VERSION=28.0\r\nRELEASE VERSION=2026\r\n"
    "PRODUCT=VANTRIC\r\n";

TEST_F(PackageDescription, MarksCheckedCategoriesThenTellsTheSource) {
  EXPECT_EQ(Write({SettingCategory::Options, SettingCategory::Bom3dConfiguration,
                   SettingCategory::PropertyTemplates}),
            std::string("[Selected]\r\nOptions=1\r\n3DBOM Configuration=1\r\n"
                        "Property Templates=1\r\n") +
                kBase);
}

TEST_F(PackageDescription, ReaderFindsTheBaseSectionInCapitals) {
  Write({SettingCategory::Options});
  EXPECT_EQ(
      machine_->Ports().profiles->ReadValue(L"BASE", L"product", context_.packageDescriptionPath),
      L"VANTRIC");
}

TEST_F(PackageDescription, WritingAgainForgetsTheEarlierChoice) {
  Write({SettingCategory::Options, SettingCategory::Register});
  EXPECT_EQ(Write({SettingCategory::ShortcutKey}),
            std::string("[Selected]\r\nShortcut key=1\r\n") + kBase);
}

TEST_F(PackageDescription, ValueThatIsNotACategoryGetsNoKey) {
  EXPECT_EQ(Write({SettingCategory::SelectAll, static_cast<SettingCategory>(15)}), kBase);
}

TEST_F(PackageDescription, ReadsBackOnlyWhenItIsWhole) {
  const CategorySet checked = {SettingCategory::Options, SettingCategory::ShortcutKey};
  const std::string whole = Write(checked);
  const auto isWritten = [&](const std::string& bytes) {
    machine_->PutFile(context_.packageDescriptionPath, bytes);
    return IsDescriptionWritten(context_, *machine_->Ports().profiles, checked);
  };
  EXPECT_TRUE(isWritten(whole));
  for (std::size_t length = 0; length < whole.size() - 2; ++length) {
    EXPECT_FALSE(isWritten(whole.substr(0, length))) << length;
  }
}

TEST_F(PackageDescription, OfAnotherChoiceOrSourceIsNotTheOneThatWasWritten) {
  const ProfileReader& profiles = *machine_->Ports().profiles;
  const CategorySet checked = {SettingCategory::Options};
  Write({SettingCategory::Options, SettingCategory::ShortcutKey});
  EXPECT_FALSE(IsDescriptionWritten(context_, profiles, checked));
  Write(checked);
  EXPECT_TRUE(IsDescriptionWritten(context_, profiles, checked));
  EXPECT_FALSE(IsDescriptionWritten(context_, profiles, {}));
  for (std::wstring ProductContext::*fact :
       {&ProductContext::companyShortName, &ProductContext::productName,
        &ProductContext::productVersion, &ProductContext::humanReadableVersion}) {
    ProductContext other = context_;
    other.*fact += L"x";
    EXPECT_FALSE(IsDescriptionWritten(other, profiles, checked));
  }
}

TEST_F(PackageDescription, TakesThePlaceOfAFolder) {
  machine_->PutFile(context_.packageDescriptionPath + L"\\x", "of an unpacked package");
  Write({SettingCategory::Options});
  EXPECT_TRUE(
      IsDescriptionWritten(context_, *machine_->Ports().profiles, {SettingCategory::Options}));
}

}  // namespace
}  // namespace carrovan
