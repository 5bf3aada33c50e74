#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace carrovan {

// Makes 16-bit units of a registry file's bytes: UTF-16 behind the mark FF FE, which is no unit, or
// 8-bit text, whose bytes are units.
class RegistryFileUnits {
 public:
  // The file's bytes in their order; `take` gets each unit.
  template <typename TakeUnit>
  void Take(std::string_view part, TakeUnit take) {
    for (const char byte : part) {
      if (encodingKnown_) {
        TakeByte(byte, take);
      } else {
        mark_.push_back(byte);
        if (mark_.size() == 2) LearnEncoding(take);
      }
    }
  }

  // Gives what was too short to tell the encoding. Called once, when all bytes were taken.
  template <typename TakeUnit>
  void Finish(TakeUnit take) {
    if (!encodingKnown_) LearnEncoding(take);
  }

  bool IsUtf16() const { return isUtf16_; }

  // The bytes end within a unit.
  bool IsCutShort() const { return firstHalf_.has_value(); }

 private:
  template <typename TakeUnit>
  void LearnEncoding(TakeUnit take) {
    encodingKnown_ = true;
    isUtf16_ = mark_ == "\xFF\xFE";
    if (isUtf16_) return;
    for (const char early : mark_) TakeByte(early, take);
  }

  template <typename TakeUnit>
  void TakeByte(char byte, TakeUnit& take) {
    const auto value = static_cast<unsigned char>(byte);
    if (!isUtf16_) return take(static_cast<char16_t>(value));
    if (!firstHalf_) {
      firstHalf_ = value;
      return;
    }
    const auto unit = static_cast<char16_t>(*firstHalf_ | value << 8);
    firstHalf_.reset();
    take(unit);
  }

  std::string mark_;  // the first bytes, until they tell the encoding
  bool encodingKnown_ = false;
  bool isUtf16_ = false;
  std::optional<unsigned char> firstHalf_;
};

}  // namespace carrovan
