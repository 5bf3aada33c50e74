#include "tests/support/text_lists.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "environment/setting_category.h"

namespace carrovan {
namespace {

// What follows each of these marks: "1" and "3" of "%1 and %3", "N" of "&Next" and of "下一步(&N)".
std::multiset<wchar_t> Behind(wchar_t mark, std::wstring_view text) {
  std::multiset<wchar_t> found;
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i - 1] == mark) found.insert(text[i]);
  }
  return found;
}

bool IsLabel(int number) {
  return std::ranges::any_of(CategoryTable(), [number](const CategoryRecord& record) {
    return static_cast<int>(record.label) == number;
  });
}

TEST(TextLists, EveryLanguageHasTheSameNumbersAndNames) {
  ASSERT_EQ(std::size(kChineseTexts), std::size(kEnglishTexts));
  for (std::size_t i = 0; i < std::size(kEnglishTexts); ++i) {
    EXPECT_EQ(kChineseTexts[i].number, kEnglishTexts[i].number);
    EXPECT_EQ(kChineseTexts[i].name, kEnglishTexts[i].name);
  }
}

TEST(TextLists, TranslationHasThePlacesAcceleratorsAndFiltersOfTheOriginal) {
  for (std::size_t i = 0; i < std::size(kEnglishTexts); ++i) {
    const std::wstring_view english = kEnglishTexts[i].text;
    const std::wstring_view chinese = kChineseTexts[i].text;
    for (const wchar_t mark : {L'%', L'|'}) {
      EXPECT_EQ(Behind(mark, chinese), Behind(mark, english)) << kEnglishTexts[i].name;
    }
    EXPECT_EQ(Behind(L'&', chinese).size(), Behind(L'&', english).size()) << kEnglishTexts[i].name;
  }
}

TEST(TextLists, NothingIsLeftEmptyAndNothingButLabelsUntranslated) {
  for (std::size_t i = 0; i < std::size(kEnglishTexts); ++i) {
    const auto& [number, name, text] = kChineseTexts[i];
    EXPECT_FALSE(text.empty()) << name;
    EXPECT_EQ(text == kEnglishTexts[i].text, IsLabel(number)) << name;
  }
}

}  // namespace
}  // namespace carrovan
