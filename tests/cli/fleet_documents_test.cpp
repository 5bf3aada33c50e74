#include "cli/fleet_documents.h"

#include <gtest/gtest.h>

#include "cli/fleet_verb.h"
#include "tests/support/memory_files.h"

namespace carrovan {
namespace {

std::optional<FleetDocument> Read(const std::string& bytes, const std::wstring& job,
                                  std::wstring& reason, const FleetLimits& limits = {}) {
  reason.clear();
  return ReadFleetDocument(bytes, job, 0, limits, reason);
}

TEST(FleetDocumentTest, TakesWhatARunSays) {
  std::wstring reason;
  const auto document = Read(
      R"({"verb":"import","exitStatus":0,"version":"2026","restorePoint":null,
          "categories":[{"label":"Options","outcome":"imported"}],
          "dropped":[{"file":"f","key":"k","name":"n","why":"w"}],
          "verification":{"items":2,"differences":["d"]},"further":[{}]})",
      L"import", reason);
  ASSERT_TRUE(document) << testing::PrintToString(reason);
  EXPECT_EQ(document->version, L"2026");
  EXPECT_EQ(document->restorePoint, L"");
  ASSERT_EQ(document->categories.size(), 1u);
  EXPECT_EQ(document->categories[0].outcome, L"imported");
  EXPECT_EQ(document->dropped.at(0).why, L"w");
  EXPECT_EQ(document->differences, std::vector<std::wstring>{L"d"});
}

TEST(FleetDocumentTest, DryRunNamesWhatWouldChangeAndBeDropped) {
  std::wstring reason;
  const auto document = Read(
      R"({"verb":"import","dryRun":true,
          "categories":[{"label":"Options","dropped":[{"key":"k"},{"key":"l"}]}]})",
      L"import", reason);
  ASSERT_TRUE(document) << testing::PrintToString(reason);
  EXPECT_TRUE(document->dryRun);
  EXPECT_EQ(document->categories.at(0).outcome, L"would change");
  EXPECT_EQ(document->droppedCount, 2u);
}

TEST(FleetDocumentTest, ListsAndTextsAreCutAtTheLimits) {
  std::wstring reason;
  const FleetLimits limits{.items = 2, .characters = 3};
  const auto document = Read(R"({"verb":"undo","kept":["abcd","b","c"],"dropped":[{},{},{},{}]})",
                             L"undo", reason, limits);
  ASSERT_TRUE(document) << testing::PrintToString(reason);
  EXPECT_EQ(document->kept, (std::vector<std::wstring>{L"abc\x2026 (4 characters)", L"b"}));
  EXPECT_EQ(document->dropped.size(), 2u);
  EXPECT_EQ(document->droppedCount, 4u);
  EXPECT_EQ(document->omitted, 3u);
}

TEST(FleetDocumentTest, DepthAndNumberOfValuesAreBounded) {
  std::wstring reason;
  const FleetLimits limits{.depth = 3, .values = 20};
  EXPECT_TRUE(Read(R"({"verb":"undo","a":[[1]]})", L"undo", reason, limits));
  EXPECT_FALSE(Read(R"({"verb":"undo","a":[[[1]]]})", L"undo", reason, limits));
  EXPECT_EQ(reason, L"it nests deeper than 3 levels");
  std::string many = R"({"verb":"undo","a":[0)";
  for (int i = 0; i < 20; ++i) many += ",0";
  EXPECT_FALSE(Read(many + "]}", L"undo", reason, limits));
  EXPECT_EQ(reason, L"it holds more than 20 values");
}

TEST(FleetDocumentTest, JobOfAnotherWordTakesAnyDocumentOfTheProgram) {
  std::wstring reason;
  for (const char* document :
       {R"({"verb":"import"})", R"({"versions":[]})", R"({"sound":true})", R"({"same":true})"}) {
    EXPECT_TRUE(Read(document, L"roll-out", reason)) << document;
  }
  for (const char* document : {"{}", R"({"verb":"dance"})", R"({"verb":7})"}) {
    EXPECT_FALSE(Read(document, L"roll-out", reason)) << document;
  }
  EXPECT_FALSE(Read(R"({"versions":[]})", L"import", reason));
}

TEST(FleetListTest, HostThatIsRepeatedIsThereOnce) {
  std::wstring reason;
  const auto list = ReadFleetList(R"({"job":"undo","hosts":["b","a","b","b"],"x":1})", reason);
  ASSERT_TRUE(list) << testing::PrintToString(reason);
  EXPECT_EQ(list->job, L"undo");
  EXPECT_EQ(list->hosts, (std::vector<std::wstring>{L"b", L"a"}));
  EXPECT_EQ(list->repeated, std::vector<std::wstring>{L"b"});
}

TEST(FleetTest, TextsOfAllHostsTogetherAreBounded) {
  MemoryFiles files;
  std::string lines;
  for (int i = 0; i < 20; ++i) lines += std::string(40, 'x') + "\n";
  std::string hosts;
  for (int i = 0; i < 8; ++i) {
    const std::wstring folder = L"C:\\r\\" + std::to_wstring(i) + L"\\answers\\1\\";
    files.Put(folder + L"errors.txt", lines);
    files.Put(folder + L"status.txt", "1");
    hosts += (i > 0 ? ",\"" : "\"") + std::to_string(i) + "\"";
  }
  files.Put(L"C:\\r\\fleet.json", R"({"job":"undo","hosts":[)" + hosts + "]}");
  std::wstring reason;
  const auto report = ReadFleet(files, L"C:\\r", {.allCharacters = 4000}, reason);
  ASSERT_TRUE(report) << testing::PrintToString(reason);
  EXPECT_EQ(report->hosts.front().answers[0].errors.size(), 20u);
  EXPECT_EQ(report->hosts.back().answers[0].errors.size(), 1u);
  EXPECT_EQ(report->hosts.back().answers[0].omittedErrors, 19u);
  EXPECT_EQ(report->hosts.back().result, FleetResult::kFailed);
}

}  // namespace
}  // namespace carrovan
