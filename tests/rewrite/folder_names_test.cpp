#include "rewrite/package_tree.h"

#include <gtest/gtest.h>

#include "tests/support/memory_files.h"
#include "text/text.h"

namespace carrovan {
namespace {

TEST(VersionComponentOf, GivesTheFirstVersionOfAPath) {
  const struct {
    const wchar_t* path;
    const wchar_t* version;
  } kRows[] = {
      {L"C:\\a\\27.0\\28.0", L"27.0"},
      {L"27.0", L"27.0"},
      {L"C:\\a\\1.5\\", L"1.5"},
      {L"C:\\2025\\.5\\5.\\1.2.3", L""},
      {L"C:\\v27.0\\27.0b", L""},
      {L"C:/27.0/x", L""},
      {L"", L""},
      {L"\\\\", L""},
      {L"C:\\a\\12345.6789", L"12345.6789"},
      {L"C:\\..\\.\\x", L""},
      {L"C:\\\xFF12.5", L""},
  };
  for (const auto& row : kRows) EXPECT_EQ(VersionComponentOf(row.path), row.version);
}

class RenameFolder : public testing::Test {
 protected:
  // The path after renaming a folder of this name; its file shows that it is the same folder.
  std::wstring Renamed(const std::wstring& name, const std::wstring& oldText,
                       const std::wstring& newText) {
    std::wstring path = L"C:\\27.0\\" + name;
    files.Put(path + L"\\sub\\file", "x");
    RenameFolderPart(path, oldText, newText, files);
    EXPECT_TRUE(files.Has(path + L"\\sub\\file")) << ToUtf8(path);
    return path;
  }

  MemoryFiles files;
};

TEST_F(RenameFolder, ReplacesInTheLastComponentOnly) {
  EXPECT_EQ(Renamed(L"v27.0-27.0", L"27.0", L"28.0"), L"C:\\27.0\\v28.0-28.0");
  EXPECT_FALSE(files.Has(L"C:\\27.0\\v27.0-27.0"));
}

TEST_F(RenameFolder, DoesNothingWithoutTheOldText) {
  EXPECT_EQ(Renamed(L"other", L"27.0", L"28.0"), L"C:\\27.0\\other");
  EXPECT_EQ(Renamed(L"V27", L"v27", L"x"), L"C:\\27.0\\V27");
  EXPECT_EQ(Renamed(L"any", L"", L"x"), L"C:\\27.0\\any");
  EXPECT_TRUE(files.changes.empty());
}

TEST_F(RenameFolder, KeepsThePathWhenTheNameIsTaken) {
  files.PutFolder(L"C:\\27.0\\28.0");
  EXPECT_EQ(Renamed(L"27.0", L"27.0", L"28.0"), L"C:\\27.0\\27.0");
}

TEST_F(RenameFolder, DraftingFolderOf2025BecomesThatOf2024) {
  const std::wstring name = L"ORMA CAD TVRN-INT-VANTRIC 2023 (x64)";
  EXPECT_EQ(Renamed(name, L"2023", L"2025"), L"C:\\27.0\\ORMA CAD TVRN-INT-VANTRIC 2024 (x64)");
}

TEST_F(RenameFolder, DraftingFolderOf2026KeepsItsYear) {
  const std::wstring name = L"ORMA CAD TVRN-INT-VANTRIC 2023 (x64)";
  EXPECT_EQ(Renamed(name, L"2023", L"2026"), L"C:\\27.0\\ORMA CAD TVRN-INT-VANTRIC 2026 (x64)");
}

TEST_F(RenameFolder, FolderInsideOneOf2025StaysWhenThereIsNoneOf2024) {
  std::wstring path = L"C:\\ORMA CAD TVRN-INT-VANTRIC 2025 (x64)\\27.0";
  files.PutFolder(path);
  RenameFolderPart(path, L"27.0", L"28.0", files);
  EXPECT_EQ(path, L"C:\\ORMA CAD TVRN-INT-VANTRIC 2025 (x64)\\27.0");
  EXPECT_TRUE(files.IsFolder(path));
}

}  // namespace
}  // namespace carrovan
