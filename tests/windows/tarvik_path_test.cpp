#include "platform/windows/tarvik_library.h"

#include <gtest/gtest.h>

#include "platform/windows/module_loading.h"
#include "registry_text/registry_key.h"
#include "tests/support/test_machine.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

// A program's folder, a product's folder and a key of the setup that no other test uses.
class TarvikPlacesTest : public testing::Test {
 protected:
  void NoteProductFolder(const std::wstring& folder, std::uint32_t type = kRegSz) {
    machine_->PutValue(RegistryHive::kCurrentUser, places_.settingsKey,
                       MakeStringValue(L"ProductFolder", folder, type));
  }

  const std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  const TarvikPlaces places_{machine_->ScratchFolder() + L"Carrovan",
                             L"SOFTWARE\\Vantric\\" + machine_->product.productName};
  const std::wstring product_ = machine_->ScratchFolder() + L"产品 with blank\\Bin";
  const std::wstring besideProgram_ = places_.programFolder + L"\\tarvik.dll";
};

TEST_F(TarvikPlacesTest, LibraryBesideTheProgramIsTaken) {
  machine_->PutFile(besideProgram_, "any");
  EXPECT_EQ(FindTarvik(places_), besideProgram_);
}

TEST_F(TarvikPlacesTest, LibraryBesideTheProgramComesBeforeTheProducts) {
  machine_->PutFile(besideProgram_, "any");
  machine_->PutFile(product_ + L"\\tarvik.dll", "any");
  NoteProductFolder(product_);
  EXPECT_EQ(FindTarvik(places_), besideProgram_);
}

TEST_F(TarvikPlacesTest, LibraryInTheNotedFolderIsTakenWhenNoneLiesBesideTheProgram) {
  machine_->PutFile(product_ + L"\\tarvik.dll", "any");
  NoteProductFolder(product_);
  EXPECT_EQ(FindTarvik(places_), product_ + L"\\tarvik.dll");
}

TEST_F(TarvikPlacesTest, TrailingBackslashOfTheNotedFolderIsNotDoubled) {
  NoteProductFolder(product_ + L"\\");
  EXPECT_EQ(FindTarvik(places_), product_ + L"\\tarvik.dll");
}

TEST_F(TarvikPlacesTest, NotedFolderIsNamedAlsoWhenItHasNoLibrary) {
  NoteProductFolder(product_);
  EXPECT_EQ(FindTarvik(places_), product_ + L"\\tarvik.dll");
}

TEST_F(TarvikPlacesTest, WithoutAKeyThePathIsTheOneBesideTheProgram) {
  EXPECT_EQ(FindTarvik(places_), besideProgram_);
}

TEST_F(TarvikPlacesTest, KeyWithoutAFolderIsNoKey) {
  machine_->PutKey(RegistryHive::kCurrentUser, places_.settingsKey);
  EXPECT_EQ(FindTarvik(places_), besideProgram_);
  NoteProductFolder(L"");
  EXPECT_EQ(FindTarvik(places_), besideProgram_);
  NoteProductFolder(product_, kRegBinary);
  EXPECT_EQ(FindTarvik(places_), besideProgram_);
}

TEST(TarvikPath, IsBesideThisProgram) {
  EXPECT_EQ(TarvikPath(), RemoveFileSpec(ProgramPath()) + L"\\tarvik.dll");
  const TarvikOrReason tarvik = LoadTarvik(TarvikPath());
  EXPECT_NE(tarvik.object, nullptr) << ToUtf8(tarvik.reason);
}

}  // namespace
}  // namespace carrovan
