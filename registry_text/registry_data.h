#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

namespace carrovan {

// The bytes of a registry value. Copies share them until one of the copies is changed, so that a
// large value that is kept in several places, before and after a change or in a report, is in
// memory once.
class RegistryData {
 public:
  using Bytes = std::vector<std::uint8_t>;
  using value_type = std::uint8_t;
  using const_iterator = const std::uint8_t*;
  using iterator = const_iterator;

  RegistryData() = default;
  RegistryData(Bytes bytes)  // NOLINT(google-explicit-constructor): it is what the bytes are
      : bytes_(bytes.empty() ? nullptr : std::make_shared<Bytes>(std::move(bytes))) {}
  RegistryData(std::initializer_list<std::uint8_t> bytes) : RegistryData(Bytes(bytes)) {}

  bool empty() const { return bytes_ == nullptr; }
  std::size_t size() const { return bytes_ == nullptr ? 0 : bytes_->size(); }
  const std::uint8_t* data() const { return bytes_ == nullptr ? nullptr : bytes_->data(); }
  const_iterator begin() const { return data(); }
  const_iterator end() const { return begin() + size(); }
  std::uint8_t operator[](std::size_t at) const { return (*bytes_)[at]; }

  void push_back(std::uint8_t byte) {
    if (bytes_ == nullptr) {
      bytes_ = std::make_shared<Bytes>();
    } else if (bytes_.use_count() > 1) {
      bytes_ = std::make_shared<Bytes>(*bytes_);
    }
    bytes_->push_back(byte);
  }

  friend bool operator==(const RegistryData& a, const RegistryData& b) {
    return a.bytes_ == b.bytes_ ||
           (a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin()));
  }

 private:
  std::shared_ptr<Bytes> bytes_;  // null for none
};

}  // namespace carrovan
