#include "restore/journal_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "platform/file_operations.h"
#include "platform/forwarding_ports.h"
#include "tests/support/memory_files.h"

namespace carrovan {
namespace {

constexpr wchar_t kJournal[] = L"C:\\point\\journal";

// Counts what is appended, and fails once.
class AppendingFiles : public ForwardingFiles {
 public:
  using ForwardingFiles::ForwardingFiles;

  SystemCode OpenToAppend(const std::wstring& path,
                          std::unique_ptr<FileAppender>& appender) override {
    std::unique_ptr<FileAppender> file;
    const SystemCode code = ForwardingFiles::OpenToAppend(path, file);
    if (code == kSystemOk) appender = std::make_unique<Appender>(*this, std::move(file));
    return code;
  }

  std::size_t longest = 0;
  int appended = 0;
  int failing = 0;

 private:
  class Appender : public FileAppender {
   public:
    Appender(AppendingFiles& files, std::unique_ptr<FileAppender> file)
        : files_(files), file_(std::move(file)) {}

    SystemCode Append(std::string_view bytes) override {
      files_.longest = std::max(files_.longest, bytes.size());
      if (++files_.appended != files_.failing) return file_->Append(bytes);
      // A full disk takes a part of it.
      static_cast<void>(file_->Append(bytes.substr(0, bytes.size() / 2)));
      return kSystemDiskFull;
    }
    SystemCode FlushToDisk() override { return file_->FlushToDisk(); }

   private:
    AppendingFiles& files_;
    std::unique_ptr<FileAppender> file_;
  };
};

class JournalWriterTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(MakeFolderPath(memory_, L"C:\\point"), kSystemOk); }

  static KeyChanged Long(const std::wstring& key) {
    const RegistryValue value{L"v", kRegBinary, RegistryData::Bytes(300'000, 200)};
    return {RegistryHive::kCurrentUser, key, {true, {value}}};
  }

  std::vector<JournalRecord> Written() {
    std::string bytes;
    EXPECT_EQ(files_.ReadBytes(kJournal, bytes), kSystemOk);
    std::vector<JournalRecord> records;
    std::string_view rest = bytes;
    for (auto end = rest.find('\n'); end != rest.npos; end = rest.find('\n')) {
      if (auto line = DecodeRecord(rest.substr(0, end))) records.push_back(line->record);
      rest.remove_prefix(end + 1);
    }
    return records;
  }

  MemoryFiles memory_;
  AppendingFiles files_{memory_};
  const std::vector<JournalRecord> records_ = {ScratchMade{L"C:\\a"}, Long(L"K"),
                                               ScratchMade{L"C:\\b"}, RunEnded{}};
};

TEST_F(JournalWriterTest, WritesALongLineInParts) {
  JournalWriter journal(files_, kJournal, 0);
  for (const JournalRecord& record : records_) journal.Add(record);
  ASSERT_EQ(journal.Write(), kSystemOk);
  EXPECT_EQ(Written(), records_);
  EXPECT_LT(files_.longest, std::size_t{1'150'000});
}

TEST_F(JournalWriterTest, WritesAgainWhatADiskThatWasFullCutShort) {
  for (int failing = 1; failing < 7; ++failing) {
    static_cast<void>(memory_.RemoveFile(kJournal));
    files_.appended = 0;
    files_.failing = failing;
    JournalWriter journal(files_, kJournal, 0);
    for (const JournalRecord& record : records_) journal.Add(record);
    static_cast<void>(journal.Write());
    ASSERT_EQ(journal.Write(), kSystemOk);
    ASSERT_EQ(Written(), records_) << failing;
  }
}

TEST_F(JournalWriterTest, KeepsFewLinesWaiting) {
  JournalWriter journal(files_, kJournal, 0);
  for (int i = 0; i < 8'000; ++i) journal.Add(ScratchMade{std::wstring(200, L'x')});
  EXPECT_GT(files_.appended, 0);
}

}  // namespace
}  // namespace carrovan
