#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <new>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "support/zip/archive_layout.h"
#include "support/zip/work_ahead.h"
#include "support/zip/zip_reader.h"
#include "support/zip/zip_writer.h"
#include "tests/zip/zip_test_files.h"

// What several threads pack and unpack is what one does. A test that would wait for a thread for
// ever is ended by the time limit of the runner.

namespace carrovan {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kThreadCounts[] = {1, 2, 3, 8};

// Files of a tree in the order of their names, each with the name of its entry.
struct Source {
  std::wstring name;
  fs::path path;
};

// Many small files, empty ones, some that do not compress, large ones and some that are not there.
std::vector<Source> MakeTree(const TempFolder& folder, std::uint32_t seed) {
  std::mt19937 random(seed);
  std::vector<Source> sources;
  for (int i = 0; i < 300; ++i) {
    const std::wstring name = L"d" + std::to_wstring(i % 7) + L"/f" + std::to_wstring(i);
    const std::size_t size = random() % (i % 50 == 0 ? 500'000 : 10'000);
    switch (random() % 8) {
      case 0:
        sources.push_back({name, folder.Put(name, "")});
        break;
      case 1:
        sources.push_back({name, folder / (name + L" missing")});
        break;
      case 2:
        sources.push_back({name, folder.Put(name, RandomBytes(size, static_cast<unsigned>(i)))});
        break;
      default:
        sources.push_back({name, folder.Put(name, SettingsText(size))});
    }
    if (fs::exists(sources.back().path)) SetModifiedSeconds(sources.back().path, 1'600'000'000 + i);
  }
  return sources;
}

// What became of each file.
using Results = std::vector<ArchiveResult>;

// Files that are expected are `ahead` of the one that is added.
Results Write(const fs::path& archive, const std::vector<Source>& sources, unsigned threads) {
  constexpr std::size_t kAhead = 100;
  Results results;
  const auto writer = ZipWriter::Create(archive);
  writer->UseThreads(threads);
  for (std::size_t i = 0; i < sources.size() + kAhead; ++i) {
    if (i < sources.size()) writer->Expect(sources[i].path);
    if (i < kAhead) continue;
    const Source& source = sources[i - kAhead];
    results.push_back(writer->Add(source.name, source.path));
  }
  results.push_back(writer->Close());
  return results;
}

Results Extract(const fs::path& archive, const fs::path& folder, unsigned threads) {
  Results results;
  const auto reader = ZipReader::Open(archive);
  reader->UseThreads(threads);
  for (std::size_t i = 0; reader->Item(i); ++i) reader->Expect(i);
  for (std::size_t i = 0; const auto item = reader->Item(i); ++i) {
    std::wstring name = item->name;
    std::ranges::replace(name, L'\\', L'/');
    results.push_back(reader->Extract(i, folder / fs::path(name)));
  }
  return results;
}

// Names, content and times.
std::vector<std::string> Describe(const TempFolder& folder) {
  std::vector<std::string> lines;
  for (const std::wstring& name : folder.Listing()) {
    const fs::path path = folder / name;
    lines.push_back(path.filename().string());
    if (fs::is_directory(path)) continue;
    lines.push_back(std::to_string(ModifiedSeconds(path)) + " " + *FileBytes(path));
  }
  return lines;
}

TEST(ZipThreads, AnyNumberWritesTheSameBytesAndNamesTheSameFailures) {
  for (const std::uint32_t seed : {1U, 2U}) {
    const TempFolder folder;
    const auto sources = MakeTree(folder, seed);
    const Results expected = Write(folder / L"1.zip", sources, 1);
    ASSERT_EQ(std::ranges::count(expected, ArchiveResult::kDone) > 200, true);
    ASSERT_NE(std::ranges::count(expected, ArchiveResult::kSourceMissing), 0);
    for (const unsigned threads : kThreadCounts) {
      EXPECT_EQ(Write(folder / L"n.zip", sources, threads), expected) << threads;
      EXPECT_TRUE(FileBytes(folder / L"n.zip") == FileBytes(folder / L"1.zip"))
          << "seed " << seed << ", threads " << threads;
    }
  }
}

TEST(ZipThreads, AnyNumberUnpacksTheSameFiles) {
  const TempFolder folder;
  static_cast<void>(Write(folder / L"a.zip", MakeTree(folder, 3), 1));
  const TempFolder first;
  const Results expected = Extract(folder / L"a.zip", first.Path(), 1);
  for (const unsigned threads : {2U, 8U}) {
    const TempFolder other;
    EXPECT_EQ(Extract(folder / L"a.zip", other.Path(), threads), expected) << threads;
    EXPECT_TRUE(Describe(other) == Describe(first)) << threads;
  }
}

// Files on both sides of the size up to which they are packed in one call, too large to be packed
// at the same time.
TEST(ZipThreads, LargeFilesComeOutTheSame) {
  const TempFolder folder;
  std::vector<Source> sources;
  for (const std::size_t size : {kBufferBytes - 1, kBufferBytes + 1, std::size_t{10}}) {
    const std::wstring name = std::to_wstring(sources.size());
    sources.push_back({name, folder.Put(name, std::string(size, 'x'))});
  }
  static_cast<void>(Write(folder / L"1.zip", sources, 1));
  static_cast<void>(Write(folder / L"3.zip", sources, 3));
  EXPECT_TRUE(FileBytes(folder / L"1.zip") == FileBytes(folder / L"3.zip"));
  const TempFolder other;
  EXPECT_EQ(Extract(folder / L"1.zip", other.Path(), 3), Results(3, ArchiveResult::kDone));
  for (const Source& source : sources) {
    EXPECT_EQ(fs::file_size(other / source.name), fs::file_size(source.path));
  }
}

TEST(ZipThreads, WhatWasExpectedAndIsNotAddedIsPassedOver) {
  const TempFolder folder;
  const auto sources = MakeTree(folder, 4);
  const fs::path late = folder.Put(L"late", "unexpected");
  const auto add = [&](const fs::path& archive, unsigned threads) {
    const auto writer = ZipWriter::Create(archive);
    writer->UseThreads(threads);
    for (const Source& source : sources) writer->Expect(source.path);
    // Every third one, then one that nobody expected.
    for (std::size_t i = 0; i < sources.size(); i += 3) {
      static_cast<void>(writer->Add(sources[i].name, sources[i].path));
    }
    EXPECT_EQ(writer->Add(L"late", late), ArchiveResult::kDone);
    EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  };
  add(folder / L"1.zip", 1);
  add(folder / L"3.zip", 3);
  EXPECT_TRUE(FileBytes(folder / L"1.zip") == FileBytes(folder / L"3.zip"));
}

TEST(ZipThreads, WhatWasExpectedAndIsNotExtractedIsPassedOver) {
  const TempFolder folder;
  std::vector<NamedFile> files;
  for (int i = 0; i < 60; ++i) {
    files.push_back({std::to_wstring(i), "content of " + std::to_string(i)});
  }
  WriteArchive(folder / L"a.zip", files);
  const auto reader = ZipReader::Open(folder / L"a.zip");
  reader->UseThreads(3);
  for (std::size_t i = 0; i < files.size(); ++i) reader->Expect(i);
  // Every third one, then one of those that were passed over.
  for (std::size_t i = 0; i < files.size(); i += 3) {
    ASSERT_EQ(reader->Extract(i, folder / L"target"), ArchiveResult::kDone);
    EXPECT_EQ(FileBytes(folder / L"target"), files[i].bytes);
  }
  ASSERT_EQ(reader->Extract(1, folder / L"target"), ArchiveResult::kDone);
  EXPECT_EQ(FileBytes(folder / L"target"), files[1].bytes);
}

TEST(ZipThreads, AWriterAndAReaderThatAreGivenUpEndTheirThreads) {
  const TempFolder folder;
  const auto sources = MakeTree(folder, 5);
  {
    const auto writer = ZipWriter::Create(folder / L"a.zip");
    writer->UseThreads(8);
    for (const Source& source : sources) writer->Expect(source.path);
  }
  EXPECT_FALSE(fs::exists(folder / L"a.zip"));
  static_cast<void>(Write(folder / L"a.zip", sources, 1));
  const auto reader = ZipReader::Open(folder / L"a.zip");
  reader->UseThreads(8);
  for (std::size_t i = 0; reader->Item(i); ++i) reader->Expect(i);
}

TEST(ZipThreads, DamagedItemsFailForTheSameReasonAndTheOthersComeOut) {
  const TempFolder folder;
  static_cast<void>(Write(folder / L"a.zip", MakeTree(folder, 6), 1));
  std::string bytes = *FileBytes(folder / L"a.zip");
  // The directory at the end stays whole.
  for (std::size_t at = 1000; at < bytes.size() * 9 / 10; at += bytes.size() / 40) {
    bytes[at] = static_cast<char>(~bytes[at]);
  }
  folder.Put(L"damaged.zip", bytes);
  const TempFolder first;
  const Results expected = Extract(folder / L"damaged.zip", first.Path(), 1);
  ASSERT_NE(std::ranges::count(expected, ArchiveResult::kDamaged), 0);
  ASSERT_NE(std::ranges::count(expected, ArchiveResult::kDone), 0);
  for (const unsigned threads : {2U, 8U}) {
    const TempFolder other;
    EXPECT_EQ(Extract(folder / L"damaged.zip", other.Path(), threads), expected) << threads;
    EXPECT_TRUE(Describe(other) == Describe(first)) << threads;
  }
}

// Counts the memory that tasks have at a time.
struct MemoryCount {
  std::mutex mutex;
  std::size_t now = 0;
  std::size_t most = 0;

  void Add(std::size_t bytes) {
    const std::lock_guard lock(mutex);
    now += bytes;
    most = std::max(most, now);
  }
  void Remove(std::size_t bytes) {
    const std::lock_guard lock(mutex);
    now -= bytes;
  }
};

// Fills its memory with its number and leaves half of it as its result.
class FillingTask : public WorkAhead::Task {
 public:
  FillingTask(std::uint8_t number, std::size_t bytes, MemoryCount& count)
      : number_(number), bytes_(bytes), count_(count) {}

  std::size_t Prepare() override { return bytes_; }
  std::size_t Run(std::span<std::uint8_t> memory) override {
    count_.Add(memory.size());
    std::ranges::fill(memory, number_);
    count_.Remove(memory.size());
    return memory.size() / 2;
  }

 private:
  std::uint8_t number_;
  std::size_t bytes_;
  MemoryCount& count_;
};

TEST(WorkAhead, ResultsComeInOrderAndMemoryIsNeverSharedOrExceeded) {
  constexpr std::size_t kMemory = 1000;
  for (const unsigned threads : kThreadCounts) {
    std::mt19937 random(threads);
    MemoryCount count;
    std::vector<std::size_t> sizes;
    WorkAhead work(threads, kMemory);
    for (std::size_t i = 0; i < 2000; ++i) {
      sizes.push_back(random() % (i % 10 == 0 ? kMemory + 1 : 100));
      work.Add(std::make_unique<FillingTask>(static_cast<std::uint8_t>(i), sizes[i], count));
    }
    for (std::size_t i = 0; i < sizes.size(); ++i) {
      if (i % 5 == 3) {
        work.DropFirst();
        continue;
      }
      const auto result = work.FinishFirst();
      ASSERT_EQ(result.size(), sizes[i] / 2);
      ASSERT_TRUE(std::ranges::all_of(result, [&](std::uint8_t byte) {
        return byte == static_cast<std::uint8_t>(i);
      })) << i;
      work.DropFirst();
    }
    EXPECT_LE(count.most, kMemory);
  }
}

class ThrowingTask : public WorkAhead::Task {
 public:
  explicit ThrowingTask(bool inPrepare) : inPrepare_(inPrepare) {}
  std::size_t Prepare() override {
    if (inPrepare_) throw std::runtime_error("prepare");
    return 10;
  }
  std::size_t Run(std::span<std::uint8_t>) override { throw std::runtime_error("run"); }

 private:
  bool inPrepare_;
};

TEST(WorkAhead, WhatATaskThrowsReachesWhoeverAsksForItAndNoOtherTask) {
  for (const unsigned threads : kThreadCounts) {
    MemoryCount count;
    WorkAhead work(threads, 1000);
    for (int i = 0; i < 60; ++i) {
      if (i % 3 == 0) {
        work.Add(std::make_unique<ThrowingTask>(i % 2 == 0));
      } else {
        // One of them wants more than there is.
        work.Add(std::make_unique<FillingTask>(1, i == 31 ? 1001 : 300, count));
      }
    }
    for (int i = 0; i < 60; ++i) {
      if (i % 3 == 0) {
        EXPECT_THROW(work.FinishFirst(), std::runtime_error);
      } else if (i == 31) {
        EXPECT_THROW(work.FinishFirst(), std::bad_alloc);
      } else {
        EXPECT_EQ(work.FinishFirst().size(), 150U);
      }
      work.DropFirst();
    }
  }
}

// Waits half a minute at most until as many of its kind are running.
class MeetingTask : public WorkAhead::Task {
 public:
  struct Meeting {
    std::mutex mutex;
    std::condition_variable changed;
    int present = 0;
    int wanted = 0;
    bool hasMet = false;
    bool isOver = false;
  };

  explicit MeetingTask(Meeting& meeting) : meeting_(meeting) {}
  std::size_t Prepare() override { return 1; }
  std::size_t Run(std::span<std::uint8_t>) override {
    std::unique_lock lock(meeting_.mutex);
    ++meeting_.present;
    if (meeting_.present == meeting_.wanted && !meeting_.isOver) meeting_.hasMet = true;
    meeting_.changed.notify_all();
    const auto isEnough = [this] { return meeting_.hasMet || meeting_.isOver; };
    const bool isInTime = meeting_.changed.wait_for(lock, std::chrono::seconds(30), isEnough);
    if (!isInTime) meeting_.isOver = true;
    return 0;
  }

 private:
  Meeting& meeting_;
};

TEST(WorkAhead, AsManyTasksRunAtATimeAsThereAreThreads) {
  MeetingTask::Meeting meeting;
  meeting.wanted = 4;
  WorkAhead work(4, 100);
  for (int i = 0; i < 40; ++i) work.Add(std::make_unique<MeetingTask>(meeting));
  // Asked for no result, as whoever asks may do a task too.
  std::unique_lock lock(meeting.mutex);
  meeting.changed.wait_for(lock, std::chrono::minutes(1),
                           [&] { return meeting.hasMet || meeting.isOver; });
  EXPECT_TRUE(meeting.hasMet);
}

}  // namespace
}  // namespace carrovan
