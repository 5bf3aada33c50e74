#include <gtest/gtest.h>

#include <limits>

#include "merge/names_and_numbers.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr int kMax = std::numeric_limits<std::int32_t>::max();
constexpr int kMin = std::numeric_limits<std::int32_t>::min();

struct NumberRow {
  const char* text;
  std::optional<int> whole;
  int lenient;
};

TEST(IntegerText, ReadsWholeAndLeniently) {
  const NumberRow rows[] = {
      {"12", 12, 12},
      {" 12", 12, 12},
      {"\t\n\v\f\r 12", 12, 12},
      {"12 ", std::nullopt, 12},
      {"12a", std::nullopt, 12},
      {"-7", -7, -7},
      {"+7", 7, 7},
      {"007", 7, 7},
      {"", std::nullopt, 0},
      {"  ", std::nullopt, 0},
      {"-", std::nullopt, 0},
      {"- 1", std::nullopt, 0},
      {"--1", std::nullopt, 0},
      {"three", std::nullopt, 0},
      {"1.5", std::nullopt, 1},
      {"0x10", std::nullopt, 0},
      {"2147483647", kMax, kMax},
      {"-2147483648", kMin, kMin},
      {"2147483648", std::nullopt, kMax},
      {"-2147483649", std::nullopt, kMin},
      {"99999999999999999999999999", std::nullopt, kMax},
      {"\xC2\xA0"
       "12",
       std::nullopt, 0},
      {"\xEF\xBC\x91", std::nullopt, 0},
  };
  for (const NumberRow& row : rows) {
    const std::wstring wide = FromUtf8(row.text);
    EXPECT_EQ(ReadWholeInteger(std::string_view(row.text)), row.whole) << row.text;
    EXPECT_EQ(ReadWholeInteger(std::wstring_view(wide)), row.whole) << row.text;
    EXPECT_EQ(ReadLenientInteger(std::string_view(row.text)), row.lenient) << row.text;
    EXPECT_EQ(ReadLenientInteger(std::wstring_view(wide)), row.lenient) << row.text;
  }
}

TEST(IntegerText, SumsWrapAround) {
  EXPECT_EQ(WrappingSum(1, 2), 3);
  EXPECT_EQ(WrappingSum(kMax, 1), kMin);
  EXPECT_EQ(WrappingSum(kMin, -1), kMax);
}

struct NameRow {
  const char* name;
  const char* base;
  std::optional<int> suffix;
  ContainerKind kind;
};

TEST(ElementNames, ReadsBaseNameSuffixAndKind) {
  constexpr ContainerKind kNone = ContainerKind::kNone;
  const NameRow rows[] = {
      {"EyeCustomRibbonPanel-3", "EyeCustomRibbonPanel", 3, ContainerKind::kPanel},
      {"EyeCustomRibbonPanel", "EyeCustomRibbonPanel", std::nullopt, ContainerKind::kPanel},
      {"EyeCustomRibbonCategory-x", "EyeCustomRibbonCategory", std::nullopt,
       ContainerKind::kCategory},
      {"EyeRibbonState-", "EyeRibbonState", std::nullopt, ContainerKind::kState},
      {"EyeRibbonState-1-2", "EyeRibbonState-1", 2, kNone},
      {"EyeRibbonStates", "EyeRibbonStates", std::nullopt, kNone},
      {"eyeRibbonState", "eyeRibbonState", std::nullopt, kNone},
      {"p:EyeRibbonState", "p:EyeRibbonState", std::nullopt, kNone},
      {"ID", "ID", std::nullopt, kNone},
      {"-5", "", 5, kNone},
      {"12", "12", 12, kNone},
      {"", "", std::nullopt, kNone},
  };
  for (const NameRow& row : rows) {
    EXPECT_EQ(ElementBaseName(row.name), row.base) << row.name;
    EXPECT_EQ(SuffixNumber(row.name), row.suffix) << row.name;
    EXPECT_EQ(ContainerKindOf(row.name), row.kind) << row.name;
    const bool numbers = row.kind == ContainerKind::kState || row.kind == ContainerKind::kCategory;
    EXPECT_EQ(HoldsNumberedContainers(row.name), numbers) << row.name;
  }
}

TEST(ElementNames, KnowsTheValueElements) {
  EXPECT_TRUE(IsValueElementName("Size"));
  EXPECT_TRUE(IsValueElementName("IsAutoFindPanelIcon"));
  for (const char* other : {"", "size", "Sizes", "Caption", "ID-1"}) {
    EXPECT_FALSE(IsValueElementName(other)) << other;
  }
}

}  // namespace
}  // namespace carrovan
