#include "rewrite/xml_rewrite.h"

#include <gtest/gtest.h>

#include "tests/rewrite/rewrite_bench.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kFile[] = L"C:\\d\\a.xml";

TEST(ParseNumber, TakesOnlyAWholeNumber) {
  const struct {
    const wchar_t* text;
    double value;
  } kNumbers[] = {{L"27.0", 27}, {L"2025", 2025},   {L"5.", 5},     {L".5", 0.5},   {L" \t27", 27},
                  {L"+27", 27},  {L"-27.5", -27.5}, {L"1e3", 1000}, {L"0027.0", 27}};
  for (const auto& row : kNumbers) {
    double value = 0;
    EXPECT_TRUE(ParseNumber(row.text, value)) << ToUtf8(row.text);
    EXPECT_EQ(value, row.value) << ToUtf8(row.text);
  }
  for (const wchar_t* text : {L"",    L" ",   L".",    L"27.0 ",        L"27.0.1", L"..", L"abc",
                              L"27x", L"+-1", L"-+1",  L"--1",          L"++1",    L"1e", L"1e999",
                              L"inf", L"nan", L"0x1B", L"\xFF12\xFF17", L"1,5",    L"+",  L"-"}) {
    double value = 7;
    EXPECT_FALSE(ParseNumber(text, value)) << ToUtf8(text);
    EXPECT_EQ(value, 7) << ToUtf8(text);
  }
  double value = 7;
  EXPECT_FALSE(ParseNumber(std::wstring(400, L'9'), value));
}

class LegacyVersion : public testing::Test {
 protected:
  std::string Retargeted(const std::string& bytes, const std::wstring& key = L"VANTRIC",
                         const std::wstring& target = L"27.0") {
    bench.files.Put(kFile, bytes);
    EXPECT_EQ(RetargetLegacyVersion(kFile, key, target, bench.files, bench.codePage), kSystemOk);
    return bench.files.Bytes(kFile);
  }

  std::wstring TargetVersion(const std::string& xml) {
    bench.files.Put(kFile, xml);
    return ReadLegacyTargetVersion(kFile, *OpenXmlDom(bench.files));
  }

  RewriteBench bench;
};

TEST_F(LegacyVersion, ReplacesTheHighestVersionEverywhereAndNoOther) {
  EXPECT_EQ(Retargeted("VANTRIC2023 VANTRIC2024.1\nVANTRIC2024.1/x VANTRIC2024\n"),
            "VANTRIC2023 VANTRIC27.0\r\nVANTRIC27.0/x VANTRIC2024\r\n");
}

TEST_F(LegacyVersion, ComparesVersionsAsNumbers) {
  EXPECT_EQ(Retargeted("VANTRIC9 VANTRIC10"), "VANTRIC9 VANTRIC27.0\r\n");
  EXPECT_EQ(Retargeted("VANTRIC2023.0 VANTRIC2023"), "VANTRIC27.0 VANTRIC2023\r\n");
}

TEST_F(LegacyVersion, SkipsRunsThatAreNoNumber) {
  EXPECT_EQ(Retargeted("VANTRIC1.2.3 VANTRIC. VANTRIC VANTRIC5\r\n"),
            "VANTRIC1.2.3 VANTRIC. VANTRIC VANTRIC27.0\r\n");
  EXPECT_EQ(Retargeted("VANTRIC1.2.3\n"), "VANTRIC1.2.3\n");
}

TEST_F(LegacyVersion, GoesOnBehindARun) {
  EXPECT_EQ(Retargeted("11112 x", L"1", L"3"), "13 x\r\n");
}

TEST_F(LegacyVersion, ReplacesTheFrontOfALongerVersionToo) {
  EXPECT_EQ(Retargeted("VANTRIC5 VANTRIC5.0.1"), "VANTRIC27.0 VANTRIC27.0.0.1\r\n");
}

TEST_F(LegacyVersion, NoVersionOrNoNumberLeavesTheDocumentUntouched) {
  for (const wchar_t* target : {L"", L"x", L"27.0 ", L"27.0b"}) {
    EXPECT_EQ(Retargeted("VANTRIC2023\n", L"VANTRIC", target), "VANTRIC2023\n");
  }
  EXPECT_EQ(Retargeted("VANTRIC\n"), "VANTRIC\n");
  EXPECT_EQ(Retargeted("vantric2023\n"), "vantric2023\n");
  EXPECT_EQ(Retargeted("2023\n", L""), "2023\n");
  EXPECT_EQ(Retargeted(""), "");
  EXPECT_TRUE(bench.files.changes.empty());
}

TEST_F(LegacyVersion, RunEndsWithTheLine) {
  EXPECT_EQ(Retargeted("VANTRIC20\n24"), "VANTRIC27.0\r\n24\r\n");
  EXPECT_EQ(Retargeted("VANT\nRIC2024\n"), "VANT\nRIC2024\n");
}

TEST_F(LegacyVersion, KeepsUtf16) {
  EXPECT_EQ(Retargeted(Utf16File(L"\x4E2D VANTRIC2024\n")), Utf16File(L"\x4E2D VANTRIC27.0\r\n"));
}

TEST_F(LegacyVersion, SaysWhyTheDocumentWasNotRetargeted) {
  const auto retarget = [&] {
    return RetargetLegacyVersion(kFile, L"VANTRIC", L"27.0", bench.files, bench.codePage);
  };
  EXPECT_EQ(retarget(), kFileNotFound);
  bench.files.Put(kFile, "VANTRIC2023");
  bench.files.MakeReadOnly(kFile);
  EXPECT_EQ(retarget(), kAccessDenied);
  EXPECT_EQ(bench.files.Bytes(kFile), "VANTRIC2023");
}

TEST_F(LegacyVersion, ReadsTheTargetVersionOfTheFirstMatch) {
  EXPECT_EQ(TargetVersion("<r><a><Surface_Finish k='1'><x/>text<ImgDir0001 value='27.0'/>"
                          "<ImgDir0001 value='28.0'/></Surface_Finish></a>"
                          "<Surface_Finish><ImgDir0001 value='29.0'/></Surface_Finish></r>"),
            L"27.0");
  EXPECT_EQ(TargetVersion("<Surface_Finish><ImgDir0001 value='2025'/></Surface_Finish>"), L"2025");
  EXPECT_EQ(TargetVersion("<r><Surface_Finish><Surface_Finish><ImgDir0001 value='1'/>"
                          "</Surface_Finish><ImgDir0001 value='2'/></Surface_Finish></r>"),
            L"1");
}

TEST_F(LegacyVersion, HasNoTargetVersionWithoutElementOrAttribute) {
  for (const char* xml :
       {"<r/>", "<ImgDir0001 value='1'/>", "<r><ImgDir0001 value='1'/></r>",
        "<Surface_Finish><a><ImgDir0001 value='1'/></a></Surface_Finish>",
        "<Surface_Finish><ImgDir0001/><ImgDir0001 value='1'/></Surface_Finish>",
        "<Surface_Finish><ImgDir0001 Value='1'/></Surface_Finish>",
        "<Surface_Finish><ImgDir0002 value='1'/></Surface_Finish>",
        "<Surface_Finish><!--ImgDir0001 value='1'--></Surface_Finish>", "<r>", ""}) {
    EXPECT_EQ(TargetVersion(xml), L"") << xml;
  }
  EXPECT_EQ(ReadLegacyTargetVersion(L"C:\\d\\none.xml", *OpenXmlDom(bench.files)), L"");
}

TEST(LegacyTargetVersion, IsUnknownWhereNoDocumentCanBeMade) {
  class NoDocuments : public XmlDom {
   public:
    class Session : public XmlSession {
     public:
      bool Started() const override { return false; }
      std::unique_ptr<XmlDocument> NewDocument() override { return nullptr; }
    };
    std::unique_ptr<XmlSession> Begin() override { return std::make_unique<Session>(); }
  };
  NoDocuments dom;
  EXPECT_EQ(ReadLegacyTargetVersion(L"C:\\d\\a.xml", dom), L"");
}

}  // namespace
}  // namespace carrovan
