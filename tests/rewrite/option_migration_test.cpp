#include "rewrite/option_migration.h"

#include <gtest/gtest.h>

#include "platform/forwarding_ports.h"
#include "tests/merge/merge_support.h"
#include "tests/support/memory_machine.h"
#include "tests/support/test_machine.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr RegistryHive kUser = RegistryHive::kCurrentUser;

class OptionMigrationTest : public testing::Test {
 protected:
  std::wstring ProductKey() const { return machine->product.productName + L" 28.0"; }
  std::wstring Key(const std::wstring& rest = {}) const {
    return L"SOFTWARE\\Vantric\\" + ProductKey() + rest;
  }
  std::wstring Xml() const { return machine->ScratchFolder() + L"VANTRIC_Option_Config.xml"; }

  OptionMigration Migrate(const std::string& xml) {
    machine->PutFile(Xml(), xml);
    return MigrateFile();
  }

  OptionMigration MigrateFile() {
    const Machine ports = machine->Ports();
    const auto dom = OpenXmlDom(*ports.files);
    return MigrateOptionConfig(Xml(), L"Vantric", ProductKey(), *dom, *ports.registry, log);
  }

  void Put(const std::wstring& key, const RegistryValue& value) {
    machine->PutValue(kUser, Key(key), value);
  }
  std::optional<RegistryValue> Value(const std::wstring& key, const std::wstring& name) {
    return machine->Value(kUser, Key(key), name);
  }

  std::unique_ptr<TestMachine> machine = NewTestMachine();
  RecordingLog log;
};

TEST_F(OptionMigrationTest, ConvertsToTheTypeOfTheExistingValue) {
  Put(L"", MakeStringValue(L"Text", L"old"));
  Put(L"", MakeStringValue(L"Expand", L"%old%", kRegExpandSz));
  Put(L"", MakeDwordValue(L"Number", 1));
  Put(L"", {L"Bytes", kRegBinary, {1, 2}});
  const OptionMigration done = Migrate(
      "<r><Text value='2025'/><Expand value='a\xE4\xB8\xAD'/><Number value='2025'/>"
      "<Bytes value='5'/></r>");
  EXPECT_TRUE(done.started);
  EXPECT_EQ(done.written, 3u);
  EXPECT_EQ(Value(L"", L"Text"), MakeStringValue(L"Text", L"2026"));
  EXPECT_EQ(Value(L"", L"Expand"), MakeStringValue(L"Expand", L"a\x4E2D"));
  EXPECT_EQ(Value(L"", L"Number"), MakeDwordValue(L"Number", 2026));
  EXPECT_EQ(Value(L"", L"Bytes"), (RegistryValue{L"Bytes", kRegBinary, {1, 2}}));
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(OptionMigrationTest, TellsWhatItPassedOver) {
  Put(L"", {L"Bytes", kRegBinary, {1, 2}});
  const OptionMigration done =
      Migrate("<r><Bytes value='5'/><None value='1'/><Sub><Deep value='1'/></Sub></r>");
  ASSERT_EQ(done.passed.size(), 3u);
  EXPECT_EQ(done.passed[0].key, Key());
  EXPECT_EQ(done.passed[0].name, L"Bytes");
  EXPECT_EQ(done.passed[1].name, L"None");
  EXPECT_NE(done.passed[0].why, done.passed[1].why);
  EXPECT_EQ(done.passed[2].key, Key(L"\\Sub"));
  EXPECT_EQ(done.passed[2].name, L"");
}

TEST_F(OptionMigrationTest, WritesEmptyTextWithItsTerminatingZero) {
  Put(L"", MakeStringValue(L"Text", L"old"));
  Migrate("<r><Text value=''/></r>");
  EXPECT_EQ(Value(L"", L"Text"), (RegistryValue{L"Text", kRegSz, {0, 0}}));
}

TEST_F(OptionMigrationTest, MakesNoValuesAndNoKeys) {
  machine->PutKey(kUser, Key());
  const OptionMigration done = Migrate("<r><None value='1'/><Sub><Deep value='1'/></Sub></r>");
  EXPECT_TRUE(done.started);
  EXPECT_EQ(done.written, 0u);
  EXPECT_EQ(Value(L"", L"None"), std::nullopt);
  EXPECT_FALSE(machine->Ports().registry->CanOpenKey(kUser, Key(L"\\Sub")));
}

TEST_F(OptionMigrationTest, GoesThroughSubkeysAndSkipsMissingOnesWhole) {
  Put(L"\\General\\View", MakeDwordValue(L"Depth", 1));
  Put(L"\\Missing not\\Deep", MakeDwordValue(L"Depth", 1));
  Put(L"\\Last", MakeDwordValue(L"Depth", 1));
  const OptionMigration done = Migrate(
      "<r><General><View><Depth value='7'/></View></General>"
      "<Missing><Deep><Depth value='7'/></Deep></Missing><last><DEPTH value='9'/></last></r>");
  EXPECT_EQ(done.written, 2u);
  EXPECT_EQ(Value(L"\\General\\View", L"Depth"), MakeDwordValue(L"Depth", 7));
  EXPECT_EQ(Value(L"\\Missing not\\Deep", L"Depth"), MakeDwordValue(L"Depth", 1));
  EXPECT_EQ(Value(L"\\Last", L"Depth")->data, MakeDwordValue(L"", 9).data);
}

TEST_F(OptionMigrationTest, ElementWithAValueIsNoKeyAndOtherNodesPlayNoPart) {
  Put(L"", MakeDwordValue(L"A", 1));
  Put(L"\\A", MakeDwordValue(L"B", 1));
  Put(L"\\C", MakeDwordValue(L"B", 1));
  Migrate(
      "<r value='x'>text<!--c--><?A value='5'?><A value='5' other='2025'><B value='6'/></A>"
      "<C Value='2'><![CDATA[B]]><B value='8'/></C></r>");
  EXPECT_EQ(Value(L"", L"A"), MakeDwordValue(L"A", 5));
  EXPECT_EQ(Value(L"\\A", L"B"), MakeDwordValue(L"B", 1));
  EXPECT_EQ(Value(L"\\C", L"B"), MakeDwordValue(L"B", 8));
}

TEST_F(OptionMigrationTest, SaysWhyTheDocumentDidNotLoad) {
  machine->PutKey(kUser, Key());
  for (const char* xml : {"", "<r>", "<!DOCTYPE r><r/>"}) {
    log.lines.clear();
    EXPECT_FALSE(Migrate(xml).started) << xml;
    ASSERT_EQ(log.lines.size(), 1u) << xml;
    EXPECT_TRUE(log.lines[0].starts_with(L"XML loading failed: ")) << xml;
    EXPECT_GT(log.lines[0].size(), std::wstring(L"XML loading failed: ").size()) << xml;
  }
  machine->DeletePath(Xml());
  log.lines.clear();
  EXPECT_FALSE(MigrateFile().started);
  EXPECT_EQ(log.lines,
            std::vector<std::wstring>{L"XML loading failed: " + DescribeSystemCode(kFileNotFound)});
}

TEST_F(OptionMigrationTest, ReportsARootKeyThatDoesNotOpen) {
  EXPECT_FALSE(Migrate("<r/>").started);
  EXPECT_EQ(log.lines, std::vector<std::wstring>{L"Failed to open registry key " + Key() +
                                                 L"! Error code: 2"});
}

TEST_F(OptionMigrationTest, ReportsARootKeyThatMayNotBeOpened) {
  machine->PutKey(kUser, Key());
  if (!machine->MakeKeyUnreadable(kUser, Key())) GTEST_SKIP() << "this system cannot close a key";
  EXPECT_FALSE(Migrate("<r/>").started);
  EXPECT_EQ(log.lines, std::vector<std::wstring>{L"Failed to open registry key " + Key() +
                                                 L"! Error code: 5"});
}

TEST_F(OptionMigrationTest, IsSilentWithoutADom) {
  const auto dom = OpenXmlDom(*machine->Ports().files);
  FaultyDom faulty(*dom);
  faulty.documentsUntilFailure = 0;
  EXPECT_FALSE(
      MigrateOptionConfig(Xml(), L"Vantric", ProductKey(), faulty, *machine->Ports().registry, log)
          .started);
  EXPECT_TRUE(log.lines.empty());
}

// A registry in memory that notes what is asked of it and fails on demand.
class RecordingEditor : public ForwardingRegistry {
 public:
  using ForwardingRegistry::ForwardingRegistry;

  std::vector<std::wstring> calls;
  std::wstring failing;

  SystemCode TryOpen(RegistryHive, const std::wstring& keyPath) const override {
    return keyPath.ends_with(L"None") ? kFileNotFound : kSystemOk;
  }
  std::optional<std::uint32_t> ValueType(RegistryHive, const std::wstring&,
                                         const std::wstring&) const override {
    return kRegSz;
  }
  SystemCode SetValues(RegistryHive, const std::wstring& keyPath,
                       const std::vector<RegistryValue>& values) override {
    for (const RegistryValue& value : values) calls.push_back(keyPath + L" " + value.name);
    return keyPath == failing ? kAccessDenied : kSystemOk;
  }
};

class OptionOrder : public testing::Test {
 protected:
  OptionMigration Migrate(const std::string& xml) {
    bench.files.Put(L"C:\\d\\a.xml", xml);
    return MigrateOptionConfig(L"C:\\d\\a.xml", L"c", L"p", *bench.dom, editor, bench.log);
  }

  DomBench bench;
  MemoryRegistry registry;
  RecordingEditor editor{registry};
};

TEST_F(OptionOrder, WritesAllValuesOfALevelBeforeItsSubkeys) {
  Migrate(
      "<r><K><x value=''/><L><y value=''/></L><z value=''/></K><None><n value=''/></None>"
      "<a value=''/><M><b value=''/></M></r>");
  EXPECT_EQ(editor.calls, (std::vector<std::wstring>{
                              L"SOFTWARE\\c\\p a", L"SOFTWARE\\c\\p\\K x", L"SOFTWARE\\c\\p\\K z",
                              L"SOFTWARE\\c\\p\\K\\L y", L"SOFTWARE\\c\\p\\M b"}));
}

// A DOM may refuse a document that nests as deep as the second one.
TEST_F(OptionOrder, NestingDeepDoesNotExhaustTheStack) {
  for (const int depth : {200, 2000}) {
    std::string xml = "<r>";
    for (int i = 0; i < depth; ++i) xml += "<K>";
    xml += "<a value='1'/>";
    for (int i = 0; i < depth; ++i) xml += "</K>";
    const OptionMigration done = Migrate(xml + "</r>");
    EXPECT_TRUE(done.started || depth > 200);
    EXPECT_EQ(done.written, done.started ? 1u : 0u);
  }
}

TEST_F(OptionOrder, GoesOnAfterAFailedWriteAndNamesTheKey) {
  editor.failing = L"SOFTWARE\\c\\p\\K";
  const OptionMigration done = Migrate("<r><K><x value=''/></K><M><b value=''/></M></r>");
  EXPECT_EQ(done.failedKeys, std::vector<std::wstring>{L"SOFTWARE\\c\\p\\K"});
  EXPECT_EQ(done.written, 1u);
}

TEST(MigratedValue, FollowsTheExistingType) {
  EXPECT_EQ(MigratedValue(L"n", L"in 2025, 20251", kRegSz),
            MakeStringValue(L"n", L"in 2026, 20261"));
  const struct {
    const wchar_t* text;
    std::uint32_t number;
  } kRows[] = {{L"12", 12},
               {L" 12x", 12},
               {L"x12", 0},
               {L"", 0},
               {L"-1", 0xFFFFFFFF},
               {L"2025", 2026},
               {L"99999999999", 0x7FFFFFFF},
               {L"0x10", 0}};
  for (const auto& row : kRows) {
    EXPECT_EQ(MigratedValue(L"n", row.text, kRegDword), MakeDwordValue(L"n", row.number))
        << ToUtf8(row.text);
  }
  for (const std::uint32_t type :
       {kRegNone, kRegBinary, kRegDwordBigEndian, kRegMultiSz, kRegQword, std::uint32_t{99}}) {
    EXPECT_EQ(MigratedValue(L"n", L"1", type), std::nullopt) << type;
  }
}

}  // namespace
}  // namespace carrovan
