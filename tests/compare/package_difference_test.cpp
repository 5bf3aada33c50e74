#include "compare/package_difference.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/package/memory_archive.h"
#include "tests/support/registry_bytes.h"
#include "text/text.h"

namespace carrovan {
namespace {

using Texts = std::vector<std::wstring>;

struct Release {
  std::string year;
  std::string internal;
};

const Release k2026{"2026", "28.0"};
const Release k2025{"2025", "27.0"};

std::string Description(const Release& release, const std::string& marks) {
  return "[Selected]\r\n" + marks +
         "[Base]\r\nCOMPANY=Vantric\r\nINTERNAL VERSION=" + release.internal +
         "\r\nRELEASE VERSION=" + release.year + "\r\nPRODUCT=VANTRIC\r\n";
}

// A registry file of the release's key "General".
std::string General(const Release& release, const std::string& lines) {
  return RegistryFileBytes("[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC " + release.internal +
                           "\\General]\r\n" + lines);
}

const wchar_t kGeneral[] = L"Options\\General.reg";
const wchar_t kGeneralKey[] = L"HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC 28.0\\General";
const std::wstring kRibbon = L"Roaming\\Vantric\\VANTRIC\\28.0\\en-us\\Customization\\Ribbon.xml";

std::wstring MarkOf(Difference kind) {
  switch (kind) {
    case Difference::kOnlyInFirst:
      return L"-";
    case Difference::kOnlyInSecond:
      return L"+";
    case Difference::kReordered:
      return L"^";
    default:
      return L"~";
  }
}

std::wstring Both(const std::optional<std::wstring>& first,
                  const std::optional<std::wstring>& second) {
  return L" " + first.value_or(L"") + L"|" + second.value_or(L"");
}

// One line for each thing that is reported.
Texts LinesOf(const PackageDifference& difference) {
  Texts lines;
  for (const CategoryDifference& category : difference.categories) {
    lines.push_back(category.label + (category.marked ? MarkOf(*category.marked) : L""));
    for (const ItemDifference& item : category.items) {
      lines.push_back(MarkOf(item.kind) + L" " + item.firstName + L"|" + item.secondName +
                      (item.note.empty() ? L"" : L": " + item.note));
      for (const auto& key : item.keys) lines.push_back(MarkOf(key.kind) + L" " + key.key);
      for (const auto& value : item.values) {
        lines.push_back(MarkOf(value.kind) + L" " + value.key + L" " + value.name +
                        Both(value.first, value.second));
      }
      for (const auto& node : item.nodes) {
        const std::wstring at = node.attribute.empty() ? L"" : L"/@" + node.attribute;
        lines.push_back(MarkOf(node.kind) + L" " + node.path + at + Both(node.first, node.second));
      }
    }
  }
  return lines;
}

class PackageDifferenceTest : public testing::Test {
 protected:
  void Describe(const Release& first = k2026, const Release& second = k2026,
                const std::string& marks = "Options=1\r\n") {
    first_.Add(L"config.ini", Description(first, marks));
    second_.Add(L"config.ini", Description(second, marks));
  }

  PackageDifference Compare(MemoryArchive& first, MemoryArchive& second) {
    const auto inspection = InspectPackage(first, false);
    const auto other = InspectPackage(second, false);
    return ComparePackages({first, inspection}, {second, other});
  }

  Texts Lines() { return LinesOf(Compare(first_, second_)); }

  // Nodes of two documents that differ.
  Texts NodesOf(const std::string& first, const std::string& second) {
    Describe();
    first_.Add(kRibbon, first);
    second_.Add(kRibbon, second);
    Texts lines = Lines();
    if (!lines.empty()) lines.erase(lines.begin(), lines.begin() + 2);
    return lines;
  }

  MemoryArchive first_;
  MemoryArchive second_;
};

TEST_F(PackageDifferenceTest, SamePackagesHaveNone) {
  Describe();
  for (MemoryArchive* archive : {&first_, &second_}) {
    archive->Add(kGeneral, General(k2026, "\"a\"=dword:00000001\r\n"));
    archive->Add(kRibbon, "<a b='1'>text</a>");
    archive->Add(L"Local\\Vantric\\VANTRIC\\28.0\\en-us\\ToolBox\\a.prt", std::string(200000, 'x'));
  }
  EXPECT_EQ(Lines(), Texts());
}

TEST_F(PackageDifferenceTest, ItemsAndMarksOfOnlyOneAreUnderTheirCategory) {
  first_.Add(L"config.ini", Description(k2026, "Options=1\r\n"));
  second_.Add(L"config.ini", Description(k2026, "Shortcut key=1\r\n"));
  first_.Add(L"Local\\Vantric\\VANTRIC\\28.0\\zh-cn\\SheetMetal\\\x6298\x5F2F.txt", "x");
  second_.Add(L"Local\\Vantric\\VANTRIC\\28.0\\Customization\\keys.xml", "<a/>");
  second_.Add(L"Local\\Vantric\\VANTRIC\\28.0\\stray.txt", "x");
  first_.Add(L"Roaming\\ORMA\\ORMA CAD TVRN-INT-VANTRIC 2026 (x64)\\28.0\\vantric.UIK", "x");
  second_.Add(L"Register\\VANTRIC2026.reg", "");
  EXPECT_EQ(
      Lines(),
      (Texts{L"Options-", L"Register", L"+ |Register\\VANTRIC2026.reg", L"Shortcut key+",
             L"+ |Local\\Vantric\\VANTRIC\\28.0\\Customization\\keys.xml", L"2D Draft Settings",
             L"- Roaming\\ORMA\\ORMA CAD TVRN-INT-VANTRIC 2026 (x64)\\28.0\\vantric.UIK|",
             L"Sheet Metal Library",
             L"- Local\\Vantric\\VANTRIC\\28.0\\zh-cn\\SheetMetal\\\x6298\x5F2F.txt|", L"Other",
             L"+ |Local\\Vantric\\VANTRIC\\28.0\\stray.txt"}));
}

TEST_F(PackageDifferenceTest, RegistryFilesDifferByValues) {
  Describe();
  first_.Add(kGeneral, General(k2026,
                               "@=\"old\"\r\n\"same\"=hex:01\r\n\"gone\"=dword:00000001\r\n"
                               "\"Case\"=dword:00000001\r\n\"list\"=hex(7):61,00,00,00,00,00\r\n"));
  second_.Add(kGeneral,
              General(k2026,
                      "\"same\"=hex:01\r\n\"CASE\"=dword:00000001\r\n@=\"new \\\"x\\\"\"\r\n"
                      "\"list\"=hex(7):62,00,00,00,00,00\r\n\r\n"
                      "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC 28.0\\General\\More]\r\n"
                      "\"x\"=-\r\n"));
  const std::wstring key = kGeneralKey;
  EXPECT_EQ(
      Lines(),
      (Texts{L"Options", L"~ Options\\General.reg|Options\\General.reg", L"+ " + key + L"\\More",
             L"~ " + key + L"  \"old\"|\"new \\\"x\\\"\"", L"- " + key + L" gone dword:00000001|",
             L"~ " + key + L" list hex(7):61,00,00,00,00,00|hex(7):62,00,00,00,00,00",
             L"+ " + key + L"\\More x |-"}));
}

TEST_F(PackageDifferenceTest, OrderInARegistryFileIsNoDifference) {
  Describe();
  first_.Add(kGeneral, General(k2026, "\"a\"=dword:00000001\r\n\"b\"=dword:00000002\r\n"));
  second_.Add(kGeneral, General(k2026, "\"b\"=dword:00000002\r\n\"a\"=dword:00000001\r\n"));
  EXPECT_EQ(Lines(), Texts());
}

TEST_F(PackageDifferenceTest, ElementsAreFoundByTheirNumberAndName) {
  EXPECT_EQ(NodesOf("<root><panel ID='7' k='1'><a/></panel><panel ID='8'/><Item/><Item/>"
                    "<p><ID>3</ID><Style>1</Style></p></root>",
                    "<root><panel ID='9'/><panel ID='7' k='2' n=''><a>t</a></panel><Item/>"
                    "<p><ID>3</ID><Style>2</Style></p></root>"),
            (Texts{L"- /root/panel[@ID='8'] |", L"- /root/Item[2] |", L"+ /root/panel[@ID='9'] |",
                   L"~ /root/panel[@ID='7']/@k 1|2", L"+ /root/panel[@ID='7']/@n |",
                   L"~ /root/panel[@ID='7']/a |t", L"~ /root/p[ID='3']/Style 1|2"}));
}

TEST_F(PackageDifferenceTest, AnotherOrderOfElementsIsReportedOnce) {
  EXPECT_EQ(NodesOf("<r><a/><b/><c/></r>", "<r><c/><a/><b/></r>"), (Texts{L"^ /r |"}));
}

TEST_F(PackageDifferenceTest, AnotherRootIsAnotherDocument) {
  EXPECT_EQ(NodesOf("<r/>", "<s/>"), (Texts{L"- /r |", L"+ /s |"}));
}

TEST_F(PackageDifferenceTest, LayoutAndCommentsOfADocumentAreNoDifference) {
  EXPECT_EQ(NodesOf("<r a='1' b='2'><x/></r>",
                    "<?xml version='1.0'?><!-- c -->\r\n<r b='2' a='1'>\r\n  <x/>\r\n</r>"),
            Texts());
}

TEST_F(PackageDifferenceTest, WhatIsNotUnderstoodIsComparedByteByByteAndNamed) {
  Describe();
  first_.Add(L"Options\\bad.reg", "no registry file");
  second_.Add(L"Options\\bad.reg", General(k2026, ""));
  first_.Add(L"Options\\odd.reg", General(k2026, ""));
  second_.Add(L"Options\\odd.reg", General(k2026, "what\r\n"));
  first_.Add(L"Options\\same.reg", "no registry file");
  second_.Add(L"Options\\same.reg", "no registry file");
  const Texts lines = Lines();
  EXPECT_EQ(
      lines,
      (Texts{L"Options", L"~ Options\\bad.reg|Options\\bad.reg: the first is not a registry file",
             L"~ Options\\odd.reg|Options\\odd.reg: the second is not understood: line 4: a "
             L"value without a quoted name"}));
}

TEST_F(PackageDifferenceTest, IllFormedDocumentIsComparedByteByByteAndNamed) {
  Describe();
  first_.Add(kRibbon, "<r>");
  second_.Add(kRibbon, "<r/>");
  const Texts found = Lines();
  ASSERT_EQ(found.size(), 2U);
  EXPECT_TRUE(Contains(found[1], L": the first is no document: "))
      << testing::PrintToString(found[1]);
}

TEST_F(PackageDifferenceTest, DamagedItemIsADifferenceAndNamed) {
  Describe();
  first_.Add(L"Local\\Vantric\\a.txt", "x");
  second_.Add(L"Local\\Vantric\\a.txt", "x", ArchiveResult::kDamaged);
  EXPECT_EQ(Lines(), (Texts{L"Other",
                            L"~ Local\\Vantric\\a.txt|Local\\Vantric\\a.txt: the second "
                            L"cannot be read: the data is damaged"}));
}

// Settings of one release and the same settings of the next one.
void AddSettingsOf(const Release& release, MemoryArchive& archive) {
  const std::wstring year = FromUtf8(release.year);
  const std::wstring version = FromUtf8(release.internal);
  archive.Add(kGeneral, General(release, "\"Title\"=\"VANTRIC " + release.year +
                                             "\"\r\n\"Path\"=\"C:\\\\VANTRIC " + release.internal +
                                             "\\\\x\"\r\n"));
  archive.Add(L"Register\\VANTRIC" + year + L".reg", General(release, "\"a\"=dword:00000001\r\n"));
  archive.Add(L"Roaming\\Vantric\\VANTRIC\\" + version + L"\\en-us\\Customization\\Ribbon.xml",
              "<VANTRIC" + release.internal + "><Release>VANTRIC " + release.year +
                  "</Release></VANTRIC" + release.internal + ">");
  archive.Add(L"Local\\Vantric\\VANTRIC\\" + version + L"\\en-us\\ToolBox\\a.prt", "a");
  const std::wstring draftingYear = year == L"2025" ? L"2024" : year;
  const std::wstring draftingVersion = year == L"2025" ? L"25.0" : L"26.0";
  archive.Add(L"Local\\ORMA\\ORMA CAD TVRN-INT-VANTRIC " + draftingYear + L" (x64)\\" +
                  draftingVersion + L"\\vantric.ACC",
              "a");
}

TEST_F(PackageDifferenceTest, OwnVersionOfEachPackageMeansTheSame) {
  Describe(k2025, k2026);
  AddSettingsOf(k2025, first_);
  AddSettingsOf(k2026, second_);
  EXPECT_EQ(Lines(), Texts());
}

TEST_F(PackageDifferenceTest, ValueOfAnotherReleaseIsShownAsEachPackageHasIt) {
  Describe(k2025, k2026);
  first_.Add(kGeneral, General(k2025, "\"a\"=\"2025 x\"\r\n"));
  second_.Add(kGeneral, General(k2026, "\"a\"=\"2026 y\"\r\n"));
  EXPECT_EQ(Lines(), (Texts{L"Options", L"~ Options\\General.reg|Options\\General.reg",
                            L"~ HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC 27.0\\General a "
                            L"\"2025 x\"|\"2026 y\""}));
}

TEST_F(PackageDifferenceTest, VersionsInPackagesOfOneReleaseMeanWhatTheySay) {
  Describe();
  first_.Add(kGeneral, General(k2026, "\"a\"=\"2025\"\r\n"));
  second_.Add(kGeneral, General(k2026, "\"a\"=\"2026\"\r\n"));
  EXPECT_EQ(Lines().size(), 3U);
}

// The same with the sides exchanged.
Texts Mirrored(Texts lines) {
  for (std::wstring& line : lines) {
    for (wchar_t& c : line) c = c == L'-' ? L'+' : c == L'+' ? L'-' : c;
  }
  std::ranges::sort(lines);
  return lines;
}

TEST_F(PackageDifferenceTest, ComparingTheOtherWayRoundFindsTheSameItems) {
  Describe(k2025, k2026);
  AddSettingsOf(k2025, first_);
  AddSettingsOf(k2026, second_);
  first_.Add(L"Options\\Model.reg", General(k2025, "\"a\"=\"2025 2026\"\r\n\"b\"=-\r\n"));
  second_.Add(L"Options\\Model.reg", General(k2026, "\"a\"=\"2026 2026\"\r\n\"c\"=-\r\n"));
  first_.Add(L"Local\\only.txt", "");
  const auto marksOf = [](const PackageDifference& difference) {
    Texts marks;
    for (const std::wstring& line : LinesOf(difference)) marks.push_back(line.substr(0, 2));
    return marks;
  };
  Texts forth = marksOf(Compare(first_, second_));
  std::ranges::sort(forth);
  EXPECT_EQ(forth, Mirrored(marksOf(Compare(second_, first_))));
  EXPECT_EQ(forth.size(), 7U);
}

TEST_F(PackageDifferenceTest, ReportOfOneItemIsLimited) {
  std::string first = "<r>";
  for (std::size_t i = 0; i < ItemDifference::kMostDetails + 5; ++i) first += "<a/>";
  Describe();
  first_.Add(kRibbon, first + "</r>");
  second_.Add(kRibbon, "<r/>");
  const auto difference = Compare(first_, second_);
  ASSERT_EQ(difference.categories.size(), 1U);
  const ItemDifference& item = difference.categories[0].items.at(0);
  EXPECT_EQ(item.nodes.size(), ItemDifference::kMostDetails);
  EXPECT_EQ(item.omitted, 5U);
}

}  // namespace
}  // namespace carrovan
