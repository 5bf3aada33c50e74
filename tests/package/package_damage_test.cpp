#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "package/package_inspection.h"
#include "package/package_verification.h"
#include "package/package_writer.h"
#include "platform/machine.h"
#include "tests/support/registry_bytes.h"
#include "tests/support/temporary_folder.h"
#include "tests/zip/raw_zip.h"
#include "tests/zip/zip_test_files.h"
#include "text/text.h"

// What a package is taken for when a disk, a network or a copy that is still going on has changed
// it: whatever passes for sound reads back as it was written.

namespace carrovan {
namespace {

// Name and content of every item, in order.
using Contents = std::vector<std::pair<std::wstring, std::string>>;

const std::string kDescription =
    "[Base]\nCOMPANY=V\nINTERNAL VERSION=28.0\nRELEASE VERSION=2026\nPRODUCT=V\n";

Contents Settings(const std::string& number) {
  return {{L"config.ini", kDescription},
          {L"Options\\a.reg",
           RegistryFileBytes("[HKEY_CURRENT_USER\\SOFTWARE\\V]\r\n\"a\"=\"" + number + "\"\r\n")},
          {L"Local\\V\\\x87BA\x6813.xml", "<a>" + number + "</a>"},
          {L"Roaming\\V\\\x00E4", std::string(100, number.front())}};
}

std::string OwnPackage(const Contents& contents) {
  const TempFolder folder;
  std::vector<NamedFile> files;
  for (const auto& [name, bytes] : contents) files.push_back({name, bytes});
  WriteArchive(folder / L"a.ucex", files);
  return *FileBytes(folder / L"a.ucex");
}

// As other programs make them: folders are items, slashes go forward, nothing is compressed.
std::string OtherProgramsPackage() {
  return RawZip({{"config.ini", kDescription}, {"Local/V/", ""}, {"Local/V/\xC3\xA4", "1", 0x800}});
}

class DamagedPackage : public testing::Test {
 protected:
  // Nothing for what is no archive; else what is read from it.
  std::unique_ptr<ArchiveExaminer> Open(const std::string& bytes) {
    PutHostFile(folder_.Path() / "a.ucex", bytes);
    return files_->Examine(folder_.Text() + L"a.ucex");
  }

  static Contents Read(ArchiveExaminer& archive) {
    Contents contents;
    while (const auto item = archive.Item(contents.size())) {
      const auto bytes = archive.Read(contents.size(), 100'000);
      contents.emplace_back(item->name, bytes ? std::string(bytes->begin(), bytes->end())
                                              : std::string("unreadable"));
    }
    return contents;
  }

  static bool IsSound(ArchiveExaminer& archive) {
    ArchiveFiles files(archive);
    return VerifyPackage(archive, *OpenXmlDom(files), false).IsSound();
  }

  static bool PassesInspection(ArchiveExaminer& archive) {
    const PackageInspection found = InspectPackage(archive, false);
    return found.refused.empty() && found.untrusted.empty();
  }

  // Fails when the package passes for good though it holds none of these.
  void ExpectFoundOrHarmless(const std::string& bytes, const std::vector<Contents>& good,
                             const std::string& what) {
    const auto archive = Open(bytes);
    if (!archive || std::ranges::find(good, Read(*archive)) != good.end()) return;
    EXPECT_FALSE(IsSound(*archive)) << what << " passes verification";
    EXPECT_FALSE(PassesInspection(*archive)) << what << " passes inspection";
  }

  const TemporaryFolder folder_;
  const std::unique_ptr<HostFiles> files_ = OpenHostFiles();
};

TEST_F(DamagedPackage, WholeOneIsSound) {
  for (const std::string& bytes : {OwnPackage(Settings("1")), OtherProgramsPackage()}) {
    const auto archive = Open(bytes);
    ASSERT_NE(archive, nullptr);
    EXPECT_TRUE(IsSound(*archive));
    EXPECT_TRUE(PassesInspection(*archive));
  }
}

TEST_F(DamagedPackage, WithABitTurnedIsFoundOrReadsBackTheSame) {
  for (const std::string& whole : {OwnPackage(Settings("1")), OtherProgramsPackage()}) {
    const std::vector<Contents> good = {Read(*Open(whole))};
    for (std::size_t bit = 0; bit < 8 * whole.size(); ++bit) {
      std::string bytes = whole;
      bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ (1 << bit % 8));
      ExpectFoundOrHarmless(bytes, good, "bit " + std::to_string(bit));
    }
  }
}

TEST_F(DamagedPackage, CutShortAtAnyByteIsNoPackage) {
  for (const std::string& whole : {OwnPackage(Settings("1")), OtherProgramsPackage()}) {
    for (std::size_t length = 0; length < whole.size(); ++length) {
      EXPECT_EQ(Open(whole.substr(0, length)), nullptr) << length;
      // As a copy looks whose place was made before its bytes came.
      ExpectFoundOrHarmless(whole.substr(0, length) + std::string(whole.size() - length, '\0'),
                            {Read(*Open(whole))}, std::to_string(length) + " bytes of it");
    }
  }
}

TEST_F(DamagedPackage, WrittenOverAnotherOneIsOneOfTheTwo) {
  const std::string before = OwnPackage(Settings("1"));
  const std::string after = OwnPackage(Settings("2"));
  const std::vector<Contents> good = {Settings("1"), Settings("2")};
  for (std::size_t length = 0; length < std::min(before.size(), after.size()); ++length) {
    ExpectFoundOrHarmless(after.substr(0, length) + before.substr(length), good,
                          std::to_string(length) + " bytes of the newer");
  }
}

// Users keep packages among their settings.
TEST_F(DamagedPackage, CutShortBehindAPackageWithinIsNotTakenForThatOne) {
  const std::string inner = OwnPackage(Settings("1"));
  Contents contents = Settings("2");
  contents.emplace_back(L"Local\\V\\kept.ucex", inner);
  contents.emplace_back(L"Local\\V\\z.txt", RandomBytes(200));
  std::vector<RawItem> items;
  for (const auto& [name, bytes] : contents) items.push_back({ToUtf8(name), bytes, 0x800});
  const std::string whole = RawZip(items);
  const std::size_t end = whole.find(inner) + inner.size();
  for (std::size_t length = end; length < whole.size(); ++length) {
    ExpectFoundOrHarmless(whole.substr(0, length), {contents}, std::to_string(length));
  }
}

}  // namespace
}  // namespace carrovan
