#include "environment/installed_versions.h"

#include <gtest/gtest.h>

#include <climits>

namespace carrovan {
namespace {

TEST(VersionForms, YearFormAddsTheFirstReleaseYear) {
  EXPECT_EQ(YearForm(L"27.0"), L"2025");
  EXPECT_EQ(YearForm(L"28.0"), L"2026");
}

TEST(VersionForms, YearFormCutsTheFraction) {
  EXPECT_EQ(YearForm(L"27.9"), L"2025");
  EXPECT_EQ(YearForm(L"-0.5"), L"1998");
}

TEST(VersionForms, YearFormOfTextWithoutANumberIsTheFirstYear) {
  EXPECT_EQ(YearForm(L""), L"1998");
  EXPECT_EQ(YearForm(L"New User Settings"), L"1998");
}

TEST(VersionForms, InternalFormHasOneDecimal) {
  EXPECT_EQ(InternalForm(L"2025"), L"27.0");
  EXPECT_EQ(InternalForm(L"2026"), L"28.0");
}

TEST(VersionForms, InternalFormOfForeignTextReadsAsYearZero) {
  EXPECT_EQ(InternalForm(L"foreign"), L"-1998.0");
  EXPECT_EQ(InternalForm(L""), L"-1998.0");
}

TEST(VersionForms, HugeNumbersStayInRange) {
  EXPECT_EQ(InternalForm(L"99999999999999999999"), L"2147481649.0");
  EXPECT_EQ(YearForm(L"99999999999999999999"), L"2147483647");
  EXPECT_EQ(YearForm(L"1e999"), L"1998");
}

struct NumberRow {
  const wchar_t* text;
  double number;
  int integer;
};

TEST(VersionForms, NumbersAreReadFromTheFrontAsTheCLibraryDoes) {
  constexpr NumberRow kRows[] = {
      {L"27.0", 27, 27},
      {L"  27.5 beta", 27.5, 27},
      {L"+20.1", 20.1, 20},
      {L"-3", -3, -3},
      {L".5", 0.5, 0},
      {L"5.", 5, 5},
      {L"27.0.1", 27, 27},
      {L"20-25", 20, 20},
      {L"2e1", 20, 2},
      {L"", 0, 0},
      {L"x27", 0, 0},
      {L"inf", 0, 0},
      {L"nan", 0, 0},
      {L"--1", 0, 0},
      {L"二〇", 0, 0},
      {L"99999999999", 99999999999., INT_MAX},
      {L"-99999999999", -99999999999., INT_MIN},
  };
  for (const NumberRow& row : kRows) {
    EXPECT_DOUBLE_EQ(LeadingNumber(row.text), row.number) << testing::PrintToString(row.text);
    EXPECT_EQ(LeadingInteger(row.text), row.integer) << testing::PrintToString(row.text);
  }
}

TEST(VersionForms, BlanksOfEveryKindMayStandInFront) {
  EXPECT_EQ(YearForm(L"\t\n\v\f\r 27.0"), L"2025");
  EXPECT_EQ(InternalForm(L"\r\n2025"), L"27.0");
  EXPECT_EQ(YearForm(L"\b27.0"), L"1998");
  EXPECT_EQ(YearForm(L"\x0E"
                     L"27.0"),
            L"1998");
}

}  // namespace
}  // namespace carrovan
