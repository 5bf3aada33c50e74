#include "text/profile_text.h"

#include <gtest/gtest.h>

#include "text/text.h"

namespace carrovan {
namespace {

// The expected texts of the two tables are those of the system's own functions, except where a row
// says otherwise.

struct ReadRow {
  const char* what;
  const wchar_t* text;
  const wchar_t* section;
  const wchar_t* key;
  const wchar_t* value;
};

constexpr ReadRow kReadRows[] = {
    {"names in other case", L"[S]\r\nk=v\r\n", L"s", L"K", L"v"},
    {"missing key", L"[S]\r\nk=v\r\n", L"S", L"x", L""},
    {"missing section", L"[S]\r\nk=v\r\n", L"T", L"k", L""},
    {"empty text", L"", L"S", L"k", L""},
    {"blanks around", L"[S]\r\n k =  v w  \r\n", L"S", L"k", L"v w"},
    {"tabs around", L"[S]\r\n\tk\t=\tv\t\r\n", L"S", L"k", L"v"},
    {"blanks asked for", L"[S]\r\nk=1\r\n", L" S ", L" k ", L"1"},
    {"blanks in the brackets", L"[ S ]\r\nk=1\r\n", L"S", L"k", L"1"},
    {"equals signs in the value", L"[S]\r\nk==1=2\r\n", L"S", L"k", L"=1=2"},
    {"semicolon in the value", L"[S]\r\nk=v ; c\r\n", L"S", L"k", L"v ; c"},
    {"double quotes", L"[S]\r\nk=\"v\"\r\n", L"S", L"k", L"v"},
    {"single quotes", L"[S]\r\nk='v'\r\n", L"S", L"k", L"v"},
    {"quotes around blanks", L"[S]\r\nk=\"  v  \"\r\n", L"S", L"k", L"  v  "},
    {"two pairs of quotes", L"[S]\r\nk=\"\"v\"\"\r\n", L"S", L"k", L"\"v\""},
    {"nothing in quotes", L"[S]\r\nk=\"\"\r\n", L"S", L"k", L""},
    {"two kinds of quotes", L"[S]\r\nk='v\"\r\n", L"S", L"k", L"'v\""},
    {"quote at the front only", L"[S]\r\nk=\"v\r\n", L"S", L"k", L"\"v"},
    {"quote at the end only", L"[S]\r\nk=v\"\r\n", L"S", L"k", L"v\""},
    {"one quote", L"[S]\r\nk=\"\r\n", L"S", L"k", L"\""},
    {"text behind quotes", L"[S]\r\nk=\"v\" ; c\r\n", L"S", L"k", L"\"v\" ; c"},
    {"key without a value", L"[S]\r\nk\r\nk=2\r\n", L"S", L"k", L""},
    {"key twice", L"[S]\r\nk=1\r\nk=2\r\n", L"S", L"k", L"1"},
    {"section twice", L"[S]\r\nk=1\r\n[S]\r\nk=2\r\n", L"S", L"k", L"1"},
    {"key in the second of two sections", L"[S]\r\na=1\r\n[T]\r\n[S]\r\nk=2\r\n", L"S", L"k", L""},
    {"text behind the section", L"[S]junk\r\nk=1\r\n", L"S", L"k", L"1"},
    {"bracket in the section", L"[S]]\r\nk=1\r\n", L"S]", L"k", L"1"},
    {"section without its bracket", L"[S\r\nk=1\r\n", L"S", L"k", L""},
    {"in front of the first section", L"k=1\r\n[S]\r\n", L"", L"k", L"1"},
    {"key without a name", L"[S]\r\n=5\r\nk=1", L"S", L"", L"5"},
    {"line feeds only, no last one", L"[S]\nk=1\nb=2", L"S", L"b", L"2"},
    {"carriage returns only", L"[S]\rk=1\rb=2\r", L"S", L"k", L"1"},
    {"end-of-file mark", L"[S]\r\nk=1\r\n\x1A\r\nb=2\r\n", L"S", L"b", L"2"},
    {"form feeds around", L"[S]\r\n\fk\v=\fv\v\r\n", L"S", L"k", L"v"},
    // The system would find a key that is commented out under a name with the semicolon.
    {"comment", L"[S]\r\n;k=1\r\n  ; k=2\r\nk=3\r\n", L"S", L"k", L"3"},
    {"comment asked for", L"[S]\r\n;k=1\r\n", L"S", L";k", L""},
    {"letters of other alphabets", L"[\x00E4]\r\n\x0411=1\r\n", L"\x00C4", L"\x0431", L"1"},
};

TEST(ProfileText, ReadsValues) {
  for (const ReadRow& row : kReadRows) {
    EXPECT_EQ(ProfileValue(row.text, row.section, row.key), row.value) << row.what;
  }
}

struct WriteRow {
  const char* what;
  const wchar_t* text;
  const wchar_t* section;
  const wchar_t* key;
  const wchar_t* value;
  const wchar_t* expected;
};

constexpr WriteRow kWriteRows[] = {
    {"first key", L"", L"S", L"k", L"v", L"[S]\r\nk=v\r\n"},
    {"key of an early section", L"[A]\r\nx=1\r\n[B]\r\ny=1\r\n", L"A", L"k", L"v",
     L"[A]\r\nx=1\r\nk=v\r\n[B]\r\ny=1\r\n"},
    {"new section", L"[S]\r\na=1\r\n", L"T", L"k", L"v", L"[S]\r\na=1\r\n[T]\r\nk=v\r\n"},
    {"names keep their spelling", L"[Sec]\r\nKey=1\r\n", L"sEC", L"kEY", L"v",
     L"[Sec]\r\nKey=v\r\n"},
    {"comments stay", L"; top\r\n[S]\r\n; c\r\nk=1\r\n;k=2\r\n", L"S", L"k", L"v",
     L"; top\r\n[S]\r\n; c\r\nk=v\r\n;k=2\r\n"},
    {"new key behind a comment", L"; top\r\n[S]\r\n; c\r\na=1\r\n; end\r\n", L"S", L"k", L"v",
     L"; top\r\n[S]\r\n; c\r\na=1\r\n; end\r\nk=v\r\n"},
    {"no last line end", L"[S]\r\na=1", L"S", L"k", L"v", L"[S]\r\na=1\r\nk=v\r\n"},
    {"no last line end, changed", L"[S]\r\na=1", L"S", L"a", L"v", L"[S]\r\na=v\r\n"},
    {"no last line end, new section", L"[S]\r\na=1", L"T", L"k", L"v",
     L"[S]\r\na=1\r\n[T]\r\nk=v\r\n"},
    {"line feeds only", L"[S]\na=1\nb=2\n", L"S", L"a", L"v", L"[S]\r\na=v\r\nb=2\r\n"},
    {"carriage returns only", L"[S]\ra=1\rb=2\r", L"S", L"a", L"v", L"[S]\r\na=v\r\nb=2\r\n"},
    {"line that is no key", L"[S]\r\nfoo\r\nbar=1\r\n", L"S", L"k", L"v",
     L"[S]\r\nfoo\r\nbar=1\r\nk=v\r\n"},
    {"key without a value", L"[S]\r\nfoo\r\nbar=1\r\n", L"S", L"foo", L"v",
     L"[S]\r\nfoo=v\r\nbar=1\r\n"},
    {"section as asked with blanks", L"[S]\r\na=1\r\n", L" S ", L"k", L"v",
     L"[S]\r\na=1\r\nk=v\r\n"},
    {"two brackets", L"[S]x]\r\na=1\r\n", L"S", L"k", L"v", L"[S]x]\r\na=1\r\n[S]\r\nk=v\r\n"},
    {"section without its bracket", L"[S\r\na=1\r\n", L"S", L"k", L"v",
     L"[S\r\na=1\r\n[S]\r\nk=v\r\n"},
    {"in front of the first section", L"a=1\r\n", L"", L"k", L"v", L"a=1\r\nk=v\r\n"},
    {"section twice", L"[S]\r\na=1\r\n[T]\r\nt=1\r\n[s]\r\nb=2\r\n", L"S", L"b", L"v",
     L"[S]\r\na=1\r\nb=v\r\n[T]\r\nt=1\r\n[s]\r\nb=2\r\n"},
    {"key twice", L"[S]\r\na=1\r\nA=2\r\n", L"S", L"a", L"v", L"[S]\r\na=v\r\nA=2\r\n"},
    {"blanks around the value", L"", L"S", L"k", L"  v  ", L"[S]\r\nk=v  \r\n"},
    {"quotes stay", L"", L"S", L"k", L"\" v \"", L"[S]\r\nk=\" v \"\r\n"},
    {"empty value", L"", L"S", L"k", L"", L"[S]\r\nk=\r\n"},
    {"equals signs in the value", L"", L"S", L"k", L"a=b=c", L"[S]\r\nk=a=b=c\r\n"},
    {"same value", L"[S]\n k = v \n\n", L"S", L"k", L"v", L"[S]\n k = v \n\n"},
    {"same value in quotes", L"[S]\r\nk=\"v\"\r\n", L"S", L"k", L"v", L"[S]\r\nk=v\r\n"},
    {"blanks around the changed key", L"[S]\r\n  a  =  1  \r\n", L"S", L"a", L"v",
     L"[S]\r\na=v\r\n"},
    // From here on the system of the tests drops the blank lines and the blanks around other lines,
    // and others keep them; here nothing is lost.
    {"blank lines stay", L"\r\n[S]\r\na=1\r\n\r\n[T]\r\nb=1\r\n", L"S", L"k", L"v",
     L"\r\n[S]\r\na=1\r\nk=v\r\n\r\n[T]\r\nb=1\r\n"},
    {"blank lines at the end", L"[S]\r\na=1\r\n\r\n\r\n", L"T", L"k", L"v",
     L"[S]\r\na=1\r\n\r\n\r\n[T]\r\nk=v\r\n"},
    {"blanks around others stay", L"[S]\r\n  a  =  1  \r\n", L"S", L"k", L"v",
     L"[S]\r\n  a  =  1  \r\nk=v\r\n"},
    {"blanks around the key", L"", L"S", L"  k  ", L"v", L"[S]\r\nk=v\r\n"},
};

TEST(ProfileText, WritesValues) {
  for (const WriteRow& row : kWriteRows) {
    EXPECT_EQ(WithProfileValue(row.text, row.section, row.key, row.value), row.expected)
        << row.what;
  }
}

TEST(ProfileText, ListsTheKeysOfTheFirstSectionOfAName) {
  using Keys = std::vector<std::wstring>;
  const wchar_t* kText =
      L"early=1\r\n[S]\r\n b = 1\r\n; c=1\r\n\r\na\r\nB=2\r\n[T]\r\nd=1\r\n[s]\r\ne=1\r\n";
  EXPECT_EQ(ProfileKeys(kText, L" s "), (Keys{L"b", L"a", L"B"}));
  EXPECT_EQ(ProfileKeys(kText, L"T"), (Keys{L"d"}));
  EXPECT_EQ(ProfileKeys(kText, L""), (Keys{L"early"}));
  EXPECT_EQ(ProfileKeys(kText, L"U"), Keys());
  EXPECT_EQ(ProfileKeys(L"", L"S"), Keys());
}

TEST(ProfileText, BuildsAFileSectionBySection) {
  std::wstring text;
  text = WithProfileValue(text, L"Selected", L"Options", L"1");
  text = WithProfileValue(text, L"Selected", L"Interface layout", L"1");
  text = WithProfileValue(text, L"Base", L"COMPANY", L"Vantric");
  EXPECT_EQ(text,
            L"[Selected]\r\nOptions=1\r\nInterface layout=1\r\n[Base]\r\nCOMPANY=Vantric\r\n");
}

TEST(ProfileText, ReadsBackWhatItWrote) {
  for (const wchar_t* value : {L"v", L"\x4E2D\x6587", L"a=b", L"; x", L"[x]", L"'", L"it's"}) {
    const std::wstring text = WithProfileValue(L"[S]\r\na=1\r\n", L"S", L"k", value);
    EXPECT_EQ(ProfileValue(text, L"S", L"k"), value);
    EXPECT_EQ(ProfileValue(text, L"S", L"a"), L"1");
  }
}

TEST(ProfileText, EndOfFileMarkBehindAValueIsNoPartOfIt) {
  EXPECT_EQ(ProfileValue(L"[S]\r\na=1\x1A", L"S", L"a"), L"1");
}

}  // namespace
}  // namespace carrovan
