#include "platform/posix/path_mapper.h"

#include <gtest/gtest.h>

#include "platform/posix/host_access.h"
#include "tests/support/temporary_folder.h"
#include "text/text.h"

namespace carrovan {
namespace {

namespace fs = std::filesystem;

class DrivePathMapperTest : public testing::Test {
 protected:
  // The host path below the root, with forward slashes.
  std::string Mapped(const std::wstring& path) const {
    return mapper_.ToHost(path).value().lexically_relative(folder_.Path()).generic_string();
  }

  void Put(const std::string& path) { PutHostFile(folder_.Path() / path, ""); }

  TemporaryFolder folder_;
  DrivePathMapper mapper_{folder_.Path()};
};

TEST_F(DrivePathMapperTest, PutsADriveBelowTheRoot) {
  const struct {
    const wchar_t* path;
    const char* host;
  } kRows[] = {
      {L"C:", "C"},
      {L"C:\\", "C"},
      {L"C:\\Users\\a b\\c.txt", "C/Users/a b/c.txt"},
      {L"C:/Users/c.txt", "C/Users/c.txt"},
      {L"C:\\Users\\\\c.txt\\", "C/Users/c.txt"},
      {L"C:\\.\\Users\\.\\c.txt", "C/Users/c.txt"},
      {L"C:c.txt", "C/c.txt"},
      {L"d:\\x", "D/x"},
      {L"C:\\\x4E2D\x6587", "C/\xE4\xB8\xAD\xE6\x96\x87"},
      // The system drops blanks and dots at the end of a name.
      {L"C:\\Users.\\c.txt. ", "C/Users/c.txt"},
      {L"C:\\...\\Users", "C/Users"},
      {L"C:\\Users\\D:x", "C/Users/D:x"},
  };
  for (const auto& row : kRows) EXPECT_EQ(Mapped(row.path), row.host) << ToUtf8(row.path);
}

TEST_F(DrivePathMapperTest, NeverLeavesTheDrive) {
  Put("C/Users/x");
  const struct {
    const wchar_t* path;
    const char* host;
  } kRows[] = {
      {L"C:\\..", "C"},
      {L"C:\\..\\..\\..\\etc\\passwd", "C/etc/passwd"},
      {L"C:../../etc", "C/etc"},
      {L"C:\\Users\\..\\..\\registry", "C/registry"},
      {L"C:\\Users\\.. \\..  \\registry", "C/registry"},
      {L"C:\\missing\\..\\Users", "C/Users"},
      {L"C:\\Users\\..\\..\\D\\x", "C/D/x"},
  };
  for (const auto& row : kRows) EXPECT_EQ(Mapped(row.path), row.host) << ToUtf8(row.path);
}

TEST_F(DrivePathMapperTest, FindsNamesWithoutRegardToCase) {
  Put("C/Users/\xC3\x84pfel/ReadMe.txt");
  const std::string host = "C/Users/\xC3\x84pfel/ReadMe.txt";
  EXPECT_TRUE(fs::equivalent(folder_.Path() / Mapped(L"c:\\USERS\\\x00E4PFEL\\readme.TXT"),
                             folder_.Path() / host));
  EXPECT_TRUE(fs::equivalent(folder_.Path() / Mapped(L"C:\\Users\\\x00C4pfel\\ReadMe.txt."),
                             folder_.Path() / host));
}

TEST_F(DrivePathMapperTest, TakesWhatIsMissingAsItIsWritten) {
  Put("C/Users/x");
  EXPECT_TRUE(Mapped(L"C:\\USERS\\New\\fiLe").ends_with("/New/fiLe"));
}

TEST_F(DrivePathMapperTest, HasNoPathForATextWithAZero) {
  EXPECT_EQ(mapper_.ToHost(std::wstring(L"C:\\a\0b", 6)), std::nullopt);
  EXPECT_EQ(mapper_.ToHost(std::wstring(L"/a\0b", 4)), std::nullopt);
  EXPECT_EQ(mapper_.ToHost(L""), std::nullopt);
}

TEST_F(DrivePathMapperTest, LeavesOtherPathsToTheHost) {
  const fs::path file = folder_.Path() / "x.txt";
  EXPECT_EQ(mapper_.ToHost(folder_.Text() + L"x.txt"), file);
  EXPECT_EQ(mapper_.ToHost(L"relative"), fs::path("relative"));
}

TEST_F(DrivePathMapperTest, KnowsTheCharactersThatNoNewFileHas) {
  for (const wchar_t* path : {L"C:\\a<b", L"C:\\a>b", L"C:\\a:b", L"C:\\a\"b", L"C:\\a|b",
                              L"C:\\a?b", L"C:\\*", L"C:\\x?y\\a", L"C:\\x\\a\tb"}) {
    EXPECT_FALSE(mapper_.MayBeMade(path)) << ToUtf8(path);
  }
  for (const wchar_t* path : {L"C:\\a b", L"C:\\", L"C:\\\x4E2D", L"C:\\a\\"}) {
    EXPECT_TRUE(mapper_.MayBeMade(path)) << ToUtf8(path);
  }
}

TEST(HostPathMapper, TakesBothSeparators) {
  const HostPathMapper mapper;
  EXPECT_EQ(mapper.ToHost(L"a\\b/c")->generic_string(), "a/b/c");
}

TEST(HostPathMapper, DropsASeparatorAtTheEnd) {
  const HostPathMapper mapper;
  EXPECT_EQ(mapper.ToHost(L"a/b/")->generic_string(), "a/b");
  EXPECT_EQ(mapper.ToHost(L"/")->generic_string(), "/");
}

}  // namespace
}  // namespace carrovan
