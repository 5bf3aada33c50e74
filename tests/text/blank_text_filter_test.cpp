#include "text/xml_text.h"

#include <gtest/gtest.h>

namespace carrovan {
namespace {

constexpr std::nullopt_t kNoSpace = std::nullopt;

// The views of the filter hold until its next call only.
std::string Taken(BlankTextFilter<char>& filter, std::string_view piece) {
  return std::string(filter.Take(piece));
}

TEST(BlankTextFilter, HoldsWhiteSpaceBackUntilOtherTextFollows) {
  BlankTextFilter<char> filter;
  filter.EnterElement(kNoSpace);
  EXPECT_EQ(Taken(filter, " \t"), "");
  EXPECT_EQ(Taken(filter, "\r\n"), "");
  EXPECT_EQ(Taken(filter, " x"), " \t\r\n x");
  EXPECT_EQ(Taken(filter, " "), " ");
  EXPECT_EQ(Taken(filter, "y"), "y");
}

TEST(BlankTextFilter, ForgetsWhiteSpaceAtTheNextNode) {
  BlankTextFilter<char> filter;
  filter.EnterElement(kNoSpace);
  EXPECT_EQ(Taken(filter, " "), "");
  filter.EnterElement(kNoSpace);
  EXPECT_EQ(Taken(filter, "2"), "2");
  EXPECT_EQ(Taken(filter, " "), " ");
  filter.LeaveElement();
  EXPECT_EQ(Taken(filter, " "), "");
  filter.EndText();
  EXPECT_EQ(Taken(filter, "x"), "x");
  filter.EndText();
  EXPECT_EQ(Taken(filter, "\n"), "");
  filter.LeaveElement();
  EXPECT_EQ(Taken(filter, "y"), "y");
}

TEST(BlankTextFilter, OnlyTheFourBlanksOfXmlAreBlank) {
  for (const wchar_t c : {L'\xA0', L'\x2003', L'\x3000', L'\v', L'\f', L'0'}) {
    BlankTextFilter<wchar_t> filter;
    filter.EnterElement(kNoSpace);
    EXPECT_EQ(filter.Take(std::wstring_view(&c, 1)).size(), 1u) << static_cast<int>(c);
  }
  BlankTextFilter<wchar_t> filter;
  filter.EnterElement(kNoSpace);
  EXPECT_TRUE(filter.Take(L" \t\r\n").empty());
}

TEST(BlankTextFilter, KeepsWhiteSpaceWhereItIsPreserved) {
  BlankTextFilter<char> filter;
  filter.EnterElement("preserve");
  EXPECT_EQ(Taken(filter, " "), " ");
  filter.EnterElement(kNoSpace);
  EXPECT_EQ(Taken(filter, "\n"), "\n");
  filter.EnterElement("default");
  EXPECT_EQ(Taken(filter, "\n"), "");
  filter.EnterElement("Preserve");
  EXPECT_EQ(Taken(filter, "\n"), "");
  filter.LeaveElement();
  filter.LeaveElement();
  EXPECT_EQ(Taken(filter, " "), " ");
  filter.EnterElement("other");
  EXPECT_EQ(Taken(filter, " "), " ");
  filter.LeaveElement();
  filter.LeaveElement();
  filter.LeaveElement();
  EXPECT_EQ(Taken(filter, " "), "");
}

}  // namespace
}  // namespace carrovan
