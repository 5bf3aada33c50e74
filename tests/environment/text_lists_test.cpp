#include "tests/support/text_lists.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "environment/setting_category.h"

namespace carrovan {
namespace {

// What stands behind a mark: "1" and "3" in "%1 and %3", "N" in "&No" and in "否(&N)".
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
    for (const wchar_t mark : {L'%', L'&', L'|'}) {
      EXPECT_EQ(Behind(mark, kChineseTexts[i].text), Behind(mark, kEnglishTexts[i].text))
          << kEnglishTexts[i].name;
    }
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
