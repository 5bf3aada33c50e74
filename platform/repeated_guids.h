#pragma once

#include <cstddef>
#include <vector>

#include "platform/guid_source.h"

namespace carrovan {

// Notes the GUIDs that another source gives.
class NotedGuids : public GuidSource {
 public:
  // The source outlives this.
  explicit NotedGuids(GuidSource& source) : source_(source) {}

  std::optional<std::wstring> NewGuid() override {
    auto guid = source_.NewGuid();
    if (guid) noted.push_back(*guid);
    return guid;
  }

  std::vector<std::wstring> noted;

 private:
  GuidSource& source_;
};

// Gives these GUIDs first, in their order, and then those of another source. They are fresh when
// what they were made for left nothing behind.
class RepeatedGuids : public GuidSource {
 public:
  // The source outlives this.
  RepeatedGuids(std::vector<std::wstring> guids, GuidSource& source)
      : guids_(std::move(guids)), source_(source) {}

  std::optional<std::wstring> NewGuid() override {
    return next_ < guids_.size() ? guids_[next_++] : source_.NewGuid();
  }

 private:
  std::vector<std::wstring> guids_;
  std::size_t next_ = 0;
  GuidSource& source_;
};

}  // namespace carrovan
