#pragma once

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/archive_library.h"

namespace carrovan {

// An archive in memory whose items may be broken. Its own size is what its items take packed, which
// is half of their content.
class MemoryArchive : public ArchiveExaminer {
 public:
  int reads = 0;                                        // of contents, checks included
  std::map<std::wstring, std::wstring> headerProblems;  // by name

  void Add(std::wstring name, std::string content, ArchiveResult state = ArchiveResult::kDone) {
    const std::uint64_t sizeBytes = content.size();
    Put(std::move(name), sizeBytes, sizeBytes / 2, std::move(content), state);
  }

  // An item of which only the directory says.
  void Declare(std::wstring name, std::uint64_t sizeBytes, std::uint64_t packedSizeBytes) {
    Put(std::move(name), sizeBytes, packedSizeBytes, {}, ArchiveResult::kDamaged);
  }

  std::optional<ArchiveItem> Item(std::size_t index) const override {
    if (index >= items_.size()) return std::nullopt;
    return items_[index].item;
  }
  ArchiveResult Extract(std::size_t, const std::wstring&) override {
    ADD_FAILURE() << "looking into a package writes nothing";
    return ArchiveResult::kTargetNotWritable;
  }
  std::optional<std::vector<std::uint8_t>> Read(std::size_t index, std::size_t limit) override {
    ++reads;
    const Stored& stored = items_.at(index);
    if (stored.state != ArchiveResult::kDone || stored.content.size() > limit) return std::nullopt;
    return std::vector<std::uint8_t>(stored.content.begin(), stored.content.end());
  }
  ArchiveResult ReadInParts(std::size_t index, const TakePart& take) override {
    ++reads;
    const Stored& stored = items_.at(index);
    // Parts of odd sizes, so that no reader may rely on where one ends.
    for (std::size_t at = 0; at < stored.content.size(); at += 7) {
      take(std::string_view(stored.content).substr(at, 7));
    }
    return stored.state;
  }
  ArchiveResult Check(std::size_t index) override {
    ++reads;
    return items_.at(index).state;
  }
  std::optional<std::wstring> HeaderProblem(std::size_t index) override {
    const auto at = headerProblems.find(items_.at(index).item.name);
    return at == headerProblems.end() ? std::nullopt : std::optional(at->second);
  }
  std::uint64_t SizeBytes() const override { return sizeBytes_; }

 private:
  struct Stored {
    ArchiveItem item;
    std::string content;
    ArchiveResult state;
  };

  void Put(std::wstring name, std::uint64_t sizeBytes, std::uint64_t packedSizeBytes,
           std::string content, ArchiveResult state) {
    Stored stored;
    stored.item.name = std::move(name);
    stored.item.sizeBytes = sizeBytes;
    stored.item.packedSizeBytes = packedSizeBytes;
    stored.content = std::move(content);
    stored.state = state;
    items_.push_back(std::move(stored));
    sizeBytes_ += packedSizeBytes;
  }

  std::vector<Stored> items_;
  std::uint64_t sizeBytes_ = 22;
};

}  // namespace carrovan
