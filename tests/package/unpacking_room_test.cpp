#include "package/unpacking_room.h"

#include <gtest/gtest.h>

#include "tests/support/memory_machine.h"

namespace carrovan {
namespace {

constexpr wchar_t kPackage[] = L"C:\\package.ucex";

// A package of 1500 bytes in two files.
class UnpackingRoomTest : public testing::Test {
 protected:
  UnpackingRoomTest() {
    machine_.files.Put(L"C:\\a", std::string(1000, 'a'));
    machine_.files.Put(L"C:\\b", std::string(500, 'b'));
    const auto archive = machine_.archives.Create(kPackage, ArchivePurpose::kKeep);
    EXPECT_EQ(archive->Add(L"a", L"C:\\a"), ArchiveResult::kDone);
    EXPECT_EQ(archive->Add(L"b", L"C:\\b"), ArchiveResult::kDone);
    EXPECT_EQ(archive->Close(), ArchiveResult::kDone);
  }

  std::optional<std::wstring> LackWith(std::optional<std::uint64_t> freeBytes) {
    machine_.files.freeBytes = freeBytes;
    return RoomThatLacksToUnpack(machine_.Ports(), kPackage);
  }

  MemoryMachine machine_;
};

TEST_F(UnpackingRoomTest, NamesWhatIsNeededAndWhatIsFree) {
  EXPECT_EQ(
      LackWith(2999),
      L"The import needs twice the 1500 bytes of the unpacked package, and 2999 are free in " +
          *machine_.folders.TempPath());
}

TEST_F(UnpackingRoomTest, IsContentWithJustEnough) { EXPECT_FALSE(LackWith(3000)); }

TEST_F(UnpackingRoomTest, IsContentWhenTheFreeRoomCannotBeTold) {
  EXPECT_FALSE(LackWith(std::nullopt));
}

TEST_F(UnpackingRoomTest, LeavesItToTheOpeningToSayThatThereIsNoPackage) {
  machine_.files.freeBytes = 0;
  EXPECT_FALSE(RoomThatLacksToUnpack(machine_.Ports(), L"C:\\missing.ucex"));
}

}  // namespace
}  // namespace carrovan
