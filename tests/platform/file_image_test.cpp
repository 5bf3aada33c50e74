#include "platform/file_operations.h"

#include <gtest/gtest.h>

#include "platform/forwarding_ports.h"
#include "tests/support/memory_files.h"

namespace carrovan {
namespace {

class FileImageTest : public testing::Test {
 protected:
  FileImage Image(const std::wstring& path) {
    FileImage image;
    EXPECT_EQ(ReadFileImage(files, path, image), kSystemOk);
    return image;
  }

  MemoryFiles files;
};

TEST_F(FileImageTest, TellsFileFolderAndNothingApart) {
  files.Put(L"C:\\d\\a", "");
  EXPECT_EQ(Image(L"C:\\d").kind, FileKind::kFolder);
  EXPECT_EQ(Image(L"C:\\d\\a"), (FileImage{FileKind::kFile, 0, 0}));
  EXPECT_EQ(Image(L"C:\\d\\b").kind, FileKind::kAbsent);
}

TEST_F(FileImageTest, IsTheSameForTheSameContentInPartsOfAnySize) {
  files.Put(L"C:\\a", "123456789");
  files.partBytes = 2;
  EXPECT_EQ(Image(L"C:\\a"), (FileImage{FileKind::kFile, 9, 0xCBF43926}));
  EXPECT_EQ(Image(L"C:\\a"), ImageOfBytes("123456789"));
}

TEST_F(FileImageTest, DiffersWhenOneByteDiffers) {
  EXPECT_NE(ImageOfBytes("abc"), ImageOfBytes("abd"));
  EXPECT_NE(ImageOfBytes("abc"), ImageOfBytes(std::string_view("abc\0", 4)));
}

TEST_F(FileImageTest, StaysAsItIsWhenTheFileCannotBeRead) {
  files.Put(L"C:\\a", "x");
  files.fault = [](const std::string&, const std::wstring&) { return kAccessDenied; };
  FileImage image = ImageOfBytes("before");
  EXPECT_EQ(ReadFileImage(files, L"C:\\a", image), kAccessDenied);
  EXPECT_EQ(image, ImageOfBytes("before"));
}

TEST(FileImageOfALink, IsNeitherAFileNorAFolder) {
  class Links : public ForwardingFiles {
   public:
    using ForwardingFiles::ForwardingFiles;
    bool IsLink(const std::wstring& path) const override { return path.ends_with(L"link"); }
  };
  MemoryFiles files;
  files.Put(L"C:\\link", "behind it");
  files.PutFolder(L"C:\\folder link");
  const Links links(files);
  for (const wchar_t* path : {L"C:\\link", L"C:\\folder link"}) {
    FileImage image;
    EXPECT_EQ(ReadFileImage(links, path, image), kSystemOk);
    EXPECT_EQ(image, FileImage{FileKind::kLink}) << testing::PrintToString(path);
  }
}

TEST(TreeBytesTest, AsksOfAFileInAListedFolderItsSizeAlone) {
  class CountedLooks : public ForwardingFiles {
   public:
    using ForwardingFiles::ForwardingFiles;
    mutable std::size_t looks = 0;
    bool IsLink(const std::wstring& path) const override {
      ++looks;
      return ForwardingFiles::IsLink(path);
    }
    bool IsFolder(const std::wstring& path) const override {
      ++looks;
      return ForwardingFiles::IsFolder(path);
    }
  };
  MemoryFiles files;
  for (int i = 0; i < 20; ++i) files.Put(L"C:\\d\\sub\\" + std::to_wstring(i), "1234");
  CountedLooks counted(files);
  EXPECT_EQ(TreeBytes(counted, L"C:\\d"), 80u);
  EXPECT_EQ(counted.looks, 2u);
}

}  // namespace
}  // namespace carrovan
