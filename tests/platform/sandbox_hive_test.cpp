// What a hive's log of changes is good for: a process that is killed has lost nothing.
#include "platform/sandbox/sandbox_hive.h"

#include <gtest/gtest.h>

#include <thread>

#include "platform/sandbox/sandbox_registry.h"
#include "registry_text/registry_file_writer.h"
#include "tests/support/temporary_folder.h"
#include "text/text.h"

namespace carrovan {
namespace {

namespace fs = std::filesystem;

constexpr RegistryHive kUser = RegistryHive::kCurrentUser;

using Bytes = std::vector<std::uint8_t>;

std::wstring TextOf(const SandboxRegistry& registry) {
  return WriteRegistryFile(kUser, L"", *registry.Find(kUser, L""), RegistryFileForm::kLossless);
}

Bytes FileOf(std::wstring_view body) {
  return EncodeText({L"Windows Registry Editor Version 5.00\r\n" + std::wstring(body), true});
}

std::string AsText(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

class SandboxHiveTest : public testing::Test {
 protected:
  fs::path Folder() const { return folder_.Path() / "registry"; }
  fs::path Hive() const { return Folder() / "HKEY_CURRENT_USER.reg"; }
  fs::path Log() const { return Folder() / "HKEY_CURRENT_USER.changes"; }

  static std::string BytesOf(const fs::path& path) { return HostFileBytes(path).value_or(""); }

  // What a process finds that comes after one that was killed now.
  std::wstring TextAfterAKill() {
    return TextOfFiles(HostFileBytes(Hive()), HostFileBytes(Log()).value_or(""));
  }

  std::wstring TextOfFiles(const std::optional<std::string>& hive, const std::string& log) {
    const fs::path copy = folder_.Path() / ("copy" + std::to_string(++copies_));
    if (hive) PutHostFile(copy / Hive().filename(), *hive);
    PutHostFile(copy / Log().filename(), log);
    std::wstring text;
    {
      SandboxRegistry registry(copy);
      EXPECT_EQ(registry.Load(), std::nullopt);
      text = TextOf(registry);
      EXPECT_FALSE(fs::exists(copy / Log().filename()));
    }
    SandboxRegistry again(copy);
    EXPECT_EQ(again.Load(), std::nullopt);
    EXPECT_EQ(TextOf(again), text);
    return text;
  }

  void Set(SandboxRegistry& registry, const std::wstring& name, const std::wstring& text) {
    ASSERT_EQ(registry.CreateKey(kUser, L"K"), kSystemOk);
    ASSERT_EQ(registry.SetValues(kUser, L"K", {MakeStringValue(name, text)}), kSystemOk);
  }

  std::vector<std::wstring> NamesOf(const SandboxRegistry& registry) {
    std::vector<std::wstring> names;
    const auto values = registry.Values(kUser, L"K").value();
    for (const RegistryValue& value : values) names.push_back(value.name);
    return names;
  }

  TemporaryFolder folder_;
  int copies_ = 0;
};

TEST_F(SandboxHiveTest, LosesNoChangeToAKill) {
  SandboxRegistry registry(Folder());
  ASSERT_EQ(registry.Load(), std::nullopt);
  const RegistryValue odd{L"o\"\\\r\nd", kRegSz, {0x61, 0, 0, 0, 0x62}};
  const auto file = ParseRegistryFile(
      L"REGEDIT4\r\n[HKCU\\New]\r\n\"n\"=dword:1\r\n[-HKCU\\K]\r\n[HKCU\\New]\r\n\"n\"=-\r\n"
      L"@=hex(7):61,00\r\n[HKLM\\Other]\r\n");
  const std::function<SystemCode()> changes[] = {
      [&] { return registry.CreateKey(kUser, L"K\\Sub ]x["); },
      [&] {
        return registry.SetValues(kUser, L"K", {odd, {L"", kRegDword, {1, 2}}});
      },
      [&] { return registry.SetValues(kUser, L"", {MakeStringValue(L"root's", L"\x4E2D")}); },
      [&] { return registry.DeleteValue(kUser, L"k", odd.name); },
      [&] { return registry.CopyTree(kUser, L"", kUser, L"K\\Copy"); },
      [&] { return registry.DeleteTree(kUser, L"K\\\\Sub ]x["); },
      [&] { return registry.Merge(*file) ? kSystemOk : kGeneralFailure; },
  };
  std::wstring before = TextOf(registry);
  for (const auto& change : changes) {
    ASSERT_EQ(change(), kSystemOk);
    EXPECT_NE(TextOf(registry), before);
    before = TextOf(registry);
    EXPECT_EQ(TextAfterAKill(), before);
  }
}

TEST_F(SandboxHiveTest, HasOneWholeFileWhenItIsClosed) {
  std::wstring text;
  {
    SandboxRegistry registry(Folder());
    ASSERT_EQ(registry.Load(), std::nullopt);
    Set(registry, L"a", L"1");
    text = TextOf(registry);
    EXPECT_TRUE(fs::exists(Log()));
  }
  EXPECT_FALSE(fs::exists(Log()));
  EXPECT_EQ(BytesOf(Hive()), AsText(EncodeText({text, true})));
}

TEST_F(SandboxHiveTest, TakesTheWholeRecordsOfALogThatEndsAnywhere) {
  SandboxRegistry registry(Folder());
  std::vector<std::pair<std::size_t, std::wstring>> states = {{0, TextOf(registry)}};
  for (const wchar_t* const name : {L"a", L"b", L"c"}) {
    ASSERT_EQ(registry.CreateKey(kUser, name), kSystemOk);
    states.emplace_back(BytesOf(Log()).size(), TextOf(registry));
  }
  const std::string log = BytesOf(Log());
  const auto expected = [&](const std::string& found) {
    std::wstring last;
    for (const auto& [bytes, text] : states) {
      if (found.starts_with(log.substr(0, bytes))) last = text;
    }
    return last;
  };
  for (std::size_t length = 0; length <= log.size(); ++length) {
    const std::string cut = log.substr(0, length);
    ASSERT_EQ(TextOfFiles(std::nullopt, cut), expected(cut)) << length;
    // A file may have grown on the disk without its content.
    const std::string grown = cut + std::string(log.size() - length, '\0');
    ASSERT_EQ(TextOfFiles(std::nullopt, grown), expected(grown)) << length;
  }
}

TEST_F(SandboxHiveTest, BelievesNoRecordThatWasSpoilt) {
  SandboxRegistry registry(Folder());
  std::vector<std::wstring> states = {TextOf(registry)};
  std::vector<std::size_t> ends;
  for (const wchar_t* const name : {L"a", L"b"}) {
    ASSERT_EQ(registry.CreateKey(kUser, name), kSystemOk);
    ends.push_back(BytesOf(Log()).size());
    states.push_back(TextOf(registry));
  }
  const std::string log = BytesOf(Log());
  for (std::size_t i = 0; i < log.size(); ++i) {
    std::string spoilt = log;
    spoilt[i] = static_cast<char>(spoilt[i] ^ 0x10);
    ASSERT_EQ(TextOfFiles(std::nullopt, spoilt), states[i < ends[0] ? 0 : 1]) << i;
  }
}

TEST_F(SandboxHiveTest, GoesOnBehindTheLastWholeRecordOfALog) {
  PutHostFile(Log(), AsText(ChangeRecord(FileOf(L"[HKEY_CURRENT_USER\\Old]\r\n"))) + "cut short");
  SandboxRegistry registry(Folder());
  ASSERT_EQ(registry.CreateKey(kUser, L"New"), kSystemOk);
  EXPECT_EQ(registry.SubkeyNames(kUser, L""), (std::vector<std::wstring>{L"New", L"Old"}));
  EXPECT_EQ(TextAfterAKill(), TextOf(registry));
}

// A log that is put into the file says beforehand what the file will be.
TEST_F(SandboxHiveTest, IsWholeWhenTheLogWasBeingPutIntoTheFile) {
  const Bytes before = FileOf(L"[HKEY_CURRENT_USER\\K]\r\n\"a\"=\"1\"\r\n\"b\"=\"1\"\r\n");
  const Bytes after =
      FileOf(L"[HKEY_CURRENT_USER\\K]\r\n\"b\"=\"1\"\r\n\"a\"=\"1\"\r\n\"c\"=\"1\"\r\n");
  const std::string changes = AsText(
      ChangeRecord(FileOf(L"[HKEY_CURRENT_USER\\K]\r\n\"a\"=-\r\n\"a\"=\"1\"\r\n\"c\"=\"1\"\r\n")));
  const std::string log = changes + AsText(SavedRecord(ImageOfHive(after)));
  // Done once more, the changes would put "a" behind "c".
  const std::wstring whole = TextOfFiles(AsText(after), "");
  EXPECT_EQ(TextOfFiles(AsText(before), log), whole);
  EXPECT_EQ(TextOfFiles(AsText(after), log), whole);
  const std::string more = log + AsText(ChangeRecord(FileOf(L"[HKEY_CURRENT_USER\\More]\r\n")));
  EXPECT_TRUE(Contains(TextOfFiles(AsText(after), more), L"More"));
  EXPECT_TRUE(Contains(TextOfFiles(AsText(before), more), L"\"c\""));
}

TEST_F(SandboxHiveTest, KeepsTheChangesOfALogOverAFileThatWasEdited) {
  PutHostFile(Log(), AsText(ChangeRecord(FileOf(L"[HKEY_CURRENT_USER\\Logged]\r\n"))));
  PutHostFile(Hive(), AsText(FileOf(L"[HKEY_CURRENT_USER\\Edited]\r\n")));
  SandboxRegistry registry(Folder());
  ASSERT_EQ(registry.Load(), std::nullopt);
  EXPECT_EQ(registry.SubkeyNames(kUser, L""), (std::vector<std::wstring>{L"Edited", L"Logged"}));
}

TEST_F(SandboxHiveTest, KeepsAnEditAndItsOwnChangesApartFromEachOther) {
  {
    SandboxRegistry registry(Folder());
    ASSERT_EQ(registry.CreateKey(kUser, L"First"), kSystemOk);
    PutHostFile(Hive(), AsText(FileOf(L"[HKEY_CURRENT_USER\\Edited]\r\n")));
    ASSERT_EQ(registry.CreateKey(kUser, L"Second"), kSystemOk);
    PutHostFile(Hive(), AsText(FileOf(L"[HKEY_CURRENT_USER\\Edited again]\r\n")));
  }
  SandboxRegistry again(Folder());
  ASSERT_EQ(again.Load(), std::nullopt);
  EXPECT_EQ(again.SubkeyNames(kUser, L""),
            (std::vector<std::wstring>{L"Edited again", L"First", L"Second"}));
}

TEST_F(SandboxHiveTest, KeepsItsChangesInTheLogWhenTheFileWasSpoiltMeanwhile) {
  {
    SandboxRegistry registry(Folder());
    ASSERT_EQ(registry.CreateKey(kUser, L"Mine"), kSystemOk);
    PutHostFile(Hive(), "spoilt");
  }
  EXPECT_EQ(BytesOf(Hive()), "spoilt");
  PutHostFile(Hive(), AsText(FileOf(L"")));
  SandboxRegistry again(Folder());
  ASSERT_EQ(again.Load(), std::nullopt);
  EXPECT_TRUE(again.CanOpenKey(kUser, L"Mine"));
}

TEST_F(SandboxHiveTest, WritesWhatAChangeSaysAndNotWhatTheHiveHolds) {
  constexpr std::size_t kChanges = 500;
  constexpr std::size_t kMostBytesOfAChange = 400;
  std::wstring keys;
  for (int i = 0; i < 3'000; ++i) {
    keys += L"[HKEY_CURRENT_USER\\Many\\Key " + std::to_wstring(i) + L"]\r\n\"v\"=\"1\"\r\n";
  }
  PutHostFile(Hive(), AsText(FileOf(keys)));
  const std::string before = BytesOf(Hive());
  ASSERT_GT(before.size(), kChanges * kMostBytesOfAChange);
  {
    SandboxRegistry registry(Folder());
    ASSERT_EQ(registry.Load(), std::nullopt);
    for (std::size_t i = 0; i < kChanges; ++i) Set(registry, std::to_wstring(i), L"text");
    EXPECT_EQ(BytesOf(Hive()), before);
    EXPECT_LT(BytesOf(Log()).size(), kChanges * kMostBytesOfAChange);
  }
  SandboxRegistry again(Folder());
  ASSERT_EQ(again.Load(), std::nullopt);
  EXPECT_EQ(NamesOf(again).size(), kChanges);
}

TEST_F(SandboxHiveTest, PutsALongLogIntoTheFile) {
  constexpr std::size_t kLongestLog = std::size_t{2} << 20;
  const std::wstring text(10'000, L'x');
  SandboxRegistry registry(Folder());
  std::size_t written = 0;
  std::uintmax_t longest = 0;
  for (int i = 0; i < 150; ++i) {
    Set(registry, L"same", text + std::to_wstring(i));
    written += text.size() * sizeof(char16_t);
    longest = std::max<std::uintmax_t>(longest, fs::file_size(Log()));
  }
  EXPECT_GT(written, kLongestLog);
  EXPECT_LT(longest, kLongestLog);
  EXPECT_EQ(TextAfterAKill(), TextOf(registry));
}

TEST_F(SandboxHiveTest, TakesAChangeThatIsLongerThanALog) {
  const std::wstring text(2'200'000, L'x');
  {
    SandboxRegistry registry(Folder());
    Set(registry, L"small", L"1");
    Set(registry, L"large", text);
    Set(registry, L"last", L"2");
  }
  SandboxRegistry again(Folder());
  ASSERT_EQ(again.Load(), std::nullopt);
  EXPECT_EQ(NamesOf(again), (std::vector<std::wstring>{L"small", L"large", L"last"}));
}

TEST_F(SandboxHiveTest, IsAsItWasWhenALongChangeCannotBeWritten) {
  const RegistryValue large = MakeStringValue(L"large", std::wstring(2'200'000, L'x'));
  SandboxRegistry registry(Folder());
  Set(registry, L"small", L"1");
  const std::wstring before = TextOf(registry);
  // Nothing can take the place of a folder.
  ASSERT_TRUE(fs::create_directories(Hive() / "in the way"));
  EXPECT_NE(registry.SetValues(kUser, L"K", {large}), kSystemOk);
  fs::remove_all(Hive());
  ASSERT_EQ(registry.CreateKey(kUser, L"L"), kSystemOk);
  EXPECT_EQ(NamesOf(registry), std::vector<std::wstring>{L"small"});
  EXPECT_TRUE(TextOf(registry).starts_with(before.substr(0, before.size() - 2)));
}

TEST_F(SandboxHiveTest, TakesNoKeyThatNoRegistryCanHaveInALongChange) {
  RegistryFile file;
  file.keys.push_back({kUser, L"K", false, {}});
  file.keys.back().values.push_back({MakeStringValue(L"v", std::wstring(2'200'000, L'x')), false});
  file.keys.push_back({kUser, std::wstring(kLongestKeyName + 1, L'n'), false, {}});
  SandboxRegistry registry(Folder());
  Set(registry, L"small", L"1");
  EXPECT_FALSE(registry.Merge(file));
  EXPECT_EQ(NamesOf(registry), std::vector<std::wstring>{L"small"});
}

TEST_F(SandboxHiveTest, IsReadAsItIsWhileAnotherProcessChangesIt) {
  SandboxRegistry writing(Folder());
  Set(writing, L"a", L"1");
  {
    SandboxRegistry reading(Folder());
    ASSERT_EQ(reading.Load(), std::nullopt);
    EXPECT_EQ(TextOf(reading), TextOf(writing));
  }
  EXPECT_TRUE(fs::exists(Log()));
  EXPECT_FALSE(fs::exists(Hive()));
}

TEST_F(SandboxHiveTest, WaitsForAnotherProcessAndChangesWhatThatLeft) {
  auto first = std::make_unique<SandboxRegistry>(Folder());
  Set(*first, L"a", L"1");
  std::thread second([this] {
    SandboxRegistry registry(Folder());
    EXPECT_EQ(registry.Load(), std::nullopt);
    Set(registry, L"b", L"1");
  });
  Set(*first, L"c", L"1");
  first.reset();
  second.join();
  SandboxRegistry again(Folder());
  ASSERT_EQ(again.Load(), std::nullopt);
  EXPECT_EQ(NamesOf(again), (std::vector<std::wstring>{L"a", L"c", L"b"}));
}

TEST_F(SandboxHiveTest, TakesNoKeyThatNoRegistryCanHave) {
  std::wstring deep = L"d";
  for (std::size_t i = 0; i < kMostKeyLevels; ++i) deep += L"\\d";
  SandboxRegistry registry(Folder());
  EXPECT_EQ(registry.CreateKey(kUser, deep), kInvalidName);
  EXPECT_EQ(registry.CreateKey(kUser, std::wstring(kLongestKeyName + 1, L'n')), kInvalidName);
  EXPECT_EQ(registry.DeleteTree(kUser, L"\\"), kInvalidName);
  EXPECT_EQ(TextAfterAKill(), TextOf(registry));
}

TEST_F(SandboxHiveTest, LeavesNothingBesideAHiveThatCannotBeChanged) {
  PutHostFile(Hive(), "spoilt");
  SandboxRegistry registry(Folder());
  EXPECT_EQ(registry.CreateKey(kUser, L"K"), kAccessDenied);
  EXPECT_FALSE(fs::exists(Log()));
}

}  // namespace
}  // namespace carrovan
