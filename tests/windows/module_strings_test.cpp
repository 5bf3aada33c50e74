#include <windows.h>

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <utility>

#include "platform/windows/module_loading.h"
#include "platform/windows/resource_module.h"
#include "resources/resource.h"
#include "tests/support/text_lists.h"
#include "text/path_text.h"

namespace carrovan {
namespace {

TEST(ModuleStrings, ResourcesHoldEveryTextOfTheTableUnderItsNumber) {
  for (const ListedText& entry : kEnglishTexts) {
    EXPECT_EQ(LoadModuleString(static_cast<unsigned>(entry.number)), entry.text) << entry.number;
  }
}

TEST(ModuleStrings, NumberWithoutATextIsEmpty) { EXPECT_EQ(LoadModuleString(105), L""); }

// The wizard's library of a language, as the build has made it.
ModuleHandle LanguageLibrary(const std::wstring& language) {
  const std::wstring programs = RemoveFileSpec(RemoveFileSpec(ProgramPath()));
  ModuleHandle library;
  EXPECT_EQ(LoadModule(programs + L"\\" + language + L"\\MevrinLg.DLL", library), kSystemOk);
  return library;
}

void ExpectTexts(const std::wstring& language, std::span<const ListedText> expected) {
  const ResourceModule resources(LanguageLibrary(language));
  for (const ListedText& entry : expected) {
    EXPECT_EQ(resources.Text(entry.number), entry.text) << entry.number;
  }
}

TEST(ModuleStrings, LibraryOfALanguageHoldsItsList) {
  ExpectTexts(L"en-us", kEnglishTexts);
  ExpectTexts(L"zh-cn", kChineseTexts);
}

TEST(ModuleStrings, LibraryHoldsNothingInAnotherLanguage) {
  constexpr LANGID kEnglish = 0x0409;
  constexpr LANGID kChinese = 0x0804;
  const ModuleHandle library = LanguageLibrary(L"zh-cn");
  const std::pair<const wchar_t*, int> kResources[] = {
      {RT_STRING, 7}, {RT_DIALOG, IDD_WIZARD}, {RT_DIALOG, IDD_ABOUT}};
  for (const auto& [type, number] : kResources) {
    const wchar_t* name = MAKEINTRESOURCEW(number);
    EXPECT_NE(FindResourceExW(library.Get(), type, name, kChinese), nullptr) << number;
    EXPECT_EQ(FindResourceExW(library.Get(), type, name, kEnglish), nullptr) << number;
  }
}

}  // namespace
}  // namespace carrovan
