#include "platform/windows/tarvik_ports.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace carrovan {
namespace {

// The library's functions are plain C and have no place for a state of their own, so the archive
// that a handle points to carries the notes.
struct FakeArchive {
  std::vector<std::string> calls;
  bool isUnzip = false;
  std::uint32_t result = 0;
};

FakeArchive& ArchiveOf(EyeZipHandle zip) { return *reinterpret_cast<FakeArchive*>(zip); }

std::uint32_t Note(EyeZipHandle zip, const char* call) {
  ArchiveOf(zip).calls.emplace_back(call);
  return ArchiveOf(zip).result;
}

// The path is the address of the archive, written as a number.
EyeZipHandle HandleFromPath(const wchar_t* path, const char* password) {
  if (password != nullptr) return nullptr;
  return reinterpret_cast<EyeZipHandle>(std::stoull(path));  // NOLINT(performance-no-int-to-ptr)
}

TarvikFunctions FakeFunctions() {
  TarvikFunctions functions;
  functions.createZip = HandleFromPath;
  functions.openZip = HandleFromPath;
  functions.isZipHandleU = [](EyeZipHandle zip) { return ArchiveOf(zip).isUnzip ? 1 : 0; };
  functions.zipAdd = [](EyeZipHandle zip, const wchar_t* entryName, const wchar_t* sourcePath) {
    const bool expected =
        entryName == std::wstring(L"Local\\a") && sourcePath == std::wstring(L"C:\\a");
    return Note(zip, expected ? "ZipAdd" : "ZipAdd of something else");
  };
  functions.getZipItem = [](EyeZipHandle zip, std::uint32_t index, EyeZipEntry* entry) {
    *entry = {L"Local\\a", 10, 5};
    ArchiveOf(zip).calls.push_back("GetZipItem " + std::to_string(index));
    return ArchiveOf(zip).result;
  };
  functions.unzipItem = [](EyeZipHandle zip, std::uint32_t index, const wchar_t*) {
    return Note(zip, index == 3 ? "UnzipItem 3" : "UnzipItem of something else");
  };
  functions.closeZipZ = [](EyeZipHandle zip) { return Note(zip, "CloseZipZ"); };
  functions.closeZipU = [](EyeZipHandle zip) { return Note(zip, "CloseZipU"); };
  return functions;
}

using Calls = std::vector<std::string>;

class TarvikArchiveLibraryTest : public testing::Test {
 protected:
  std::wstring Path() const { return std::to_wstring(reinterpret_cast<std::uintptr_t>(&archive_)); }

  FakeArchive archive_;
  TarvikArchiveLibrary library_{FakeFunctions()};
};

TEST_F(TarvikArchiveLibraryTest, ClosesAWrittenArchiveAsSuch) {
  const auto writer = library_.Create(Path(), ArchivePurpose::kKeep);
  ASSERT_NE(writer, nullptr);
  EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  EXPECT_EQ(archive_.calls, Calls{"CloseZipZ"});
}

TEST_F(TarvikArchiveLibraryTest, ClosesAHandleThatIsAnUnzipHandleAsSuch) {
  archive_.isUnzip = true;
  const auto writer = library_.Create(Path(), ArchivePurpose::kKeep);
  ASSERT_NE(writer, nullptr);
  EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  EXPECT_EQ(archive_.calls, Calls{"CloseZipU"});
}

TEST_F(TarvikArchiveLibraryTest, ClosesOnce) {
  {
    const auto writer = library_.Create(Path(), ArchivePurpose::kKeep);
    EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  }
  EXPECT_EQ(archive_.calls.size(), 1u);
}

TEST_F(TarvikArchiveLibraryTest, GivesUpAnArchiveThatWasNotClosed) {
  { const auto writer = library_.Create(Path(), ArchivePurpose::kKeep); }
  EXPECT_EQ(archive_.calls, Calls{"CloseZipU"});
}

TEST_F(TarvikArchiveLibraryTest, PassesTheResultsOfWriting) {
  const auto writer = library_.Create(Path(), ArchivePurpose::kKeep);
  archive_.result = 3;
  EXPECT_EQ(writer->Add(L"Local\\a", L"C:\\a"), ArchiveResult::kSourceUnreadable);
  archive_.result = 9;
  EXPECT_EQ(writer->Close(), ArchiveResult::kDiskFull);
  EXPECT_EQ(archive_.calls, (Calls{"ZipAdd", "CloseZipZ"}));
}

TEST_F(TarvikArchiveLibraryTest, HasNoWriterAndNoReaderWithoutAHandle) {
  EXPECT_EQ(library_.Create(L"0", ArchivePurpose::kKeep), nullptr);
  EXPECT_EQ(library_.Open(L"0"), nullptr);
}

TEST_F(TarvikArchiveLibraryTest, ClosesAReadArchiveAtItsEnd) {
  { const auto reader = library_.Open(Path()); }
  EXPECT_EQ(archive_.calls, Calls{"CloseZipU"});
}

TEST_F(TarvikArchiveLibraryTest, PassesItems) {
  const auto reader = library_.Open(Path());
  const auto item = reader->Item(3);
  ASSERT_TRUE(item.has_value());
  EXPECT_EQ(item->name, L"Local\\a");
  EXPECT_EQ(item->sizeBytes, 10u);
  EXPECT_EQ(item->packedSizeBytes, 5u);
  EXPECT_EQ(reader->Extract(3, L"C:\\a"), ArchiveResult::kDone);
  EXPECT_EQ(archive_.calls, (Calls{"GetZipItem 3", "UnzipItem 3"}));
}

TEST_F(TarvikArchiveLibraryTest, TakesNoNameForAnEmptyOne) {
  TarvikFunctions functions = FakeFunctions();
  functions.getZipItem = [](EyeZipHandle, std::uint32_t, EyeZipEntry*) -> std::uint32_t {
    return 0;
  };
  const auto item = TarvikArchiveLibrary(functions).Open(Path())->Item(0);
  ASSERT_TRUE(item.has_value());
  EXPECT_EQ(item->name, L"");
}

TEST_F(TarvikArchiveLibraryTest, HasNoItemWhereTheLibraryReportsNone) {
  const auto reader = library_.Open(Path());
  archive_.result = 1;
  EXPECT_FALSE(reader->Item(0).has_value());
  EXPECT_EQ(reader->Extract(3, L"C:\\a"), ArchiveResult::kNoSuchItem);
}

TEST_F(TarvikArchiveLibraryTest, HasNoItemBeyondTheLibrarysNumbers) {
  const auto reader = library_.Open(Path());
  const std::size_t index = std::size_t{std::numeric_limits<std::uint32_t>::max()} + 1;
  EXPECT_FALSE(reader->Item(index).has_value());
  EXPECT_EQ(reader->Extract(index, L"C:\\a"), ArchiveResult::kNoSuchItem);
  EXPECT_TRUE(archive_.calls.empty());
}

}  // namespace
}  // namespace carrovan
