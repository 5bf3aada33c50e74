#include "merge/ribbon_codec.h"

#include <cstdint>
#include <utility>

#include "text/text.h"

namespace carrovan {
namespace {

// The length of a string begins in one byte, and each escape value announces a wider field.
constexpr std::uint8_t kByteEscape = 0xFF;
constexpr std::uint16_t kUnicodeMark = 0xFFFE;
constexpr std::uint16_t kWordEscape = 0xFFFF;
constexpr std::uint32_t kDoubleWordEscape = 0xFFFFFFFF;

// kind, id, four empty strings of one byte, value2, value3 and the number of children.
constexpr std::size_t kSmallestRecord = 24;

class ArchiveWriting {
 public:
  void Write(const sRibbonElement& record) {
    WriteNumber(static_cast<std::uint32_t>(record.kind));
    WriteNumber(record.id);
    WriteText(record.text1);
    WriteNumber(record.value2);
    WriteText(record.text2);
    WriteNumber(static_cast<std::uint32_t>(record.value3));
    WriteText(record.text3);
    WriteText(record.text4);
    WriteNumber(static_cast<std::uint32_t>(record.children.size()));
    for (const sRibbonElement& child : record.children) Write(child);
  }

  std::wstring TakeText() { return std::move(hex_); }

 private:
  template <typename Unsigned>
  void WriteNumber(Unsigned value) {
    constexpr wchar_t kDigits[] = L"0123456789abcdef";
    for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
      const auto byte = static_cast<std::uint8_t>(std::uint64_t{value} >> (8 * i));
      hex_.push_back(kDigits[byte >> 4]);
      hex_.push_back(kDigits[byte & 0xF]);
    }
  }

  void WriteLength(std::uint64_t length) {
    if (length < kByteEscape) return WriteNumber(static_cast<std::uint8_t>(length));
    WriteNumber(kByteEscape);
    if (length < kUnicodeMark) return WriteNumber(static_cast<std::uint16_t>(length));
    WriteNumber(kWordEscape);
    if (length < kDoubleWordEscape) return WriteNumber(static_cast<std::uint32_t>(length));
    WriteNumber(kDoubleWordEscape);
    WriteNumber(length);
  }

  void WriteText(const RibbonText& text) {
    if (const std::string* const narrow = std::get_if<std::string>(&text)) {
      WriteLength(narrow->size());
      for (const char c : *narrow) WriteNumber(static_cast<std::uint8_t>(c));
      return;
    }
    const std::u16string units = ToUtf16(std::get<std::wstring>(text));
    WriteNumber(kByteEscape);
    WriteNumber(kUnicodeMark);
    WriteLength(units.size());
    for (const char16_t unit : units) WriteNumber(static_cast<std::uint16_t>(unit));
  }

  std::wstring hex_;
};

struct TextLength {
  std::uint64_t characters = 0;
  bool unicode = false;
};

// Every operation answers false when the bytes do not suffice, and nothing is allocated on the
// strength of a claimed length.
class ArchiveReading {
 public:
  explicit ArchiveReading(std::string_view bytes) : bytes_(bytes) {}

  [[nodiscard]] bool Read(sRibbonElement& record, int level) {
    std::uint32_t childCount = 0;
    if (level > kRibbonLevels || !ReadFields(record) || !ReadNumber(childCount)) return false;
    if (childCount > bytes_.size() / kSmallestRecord) return false;
    for (std::uint32_t i = 0; i < childCount; ++i) {
      if (!Read(record.children.emplace_back(), level + 1)) return false;
    }
    return true;
  }

 private:
  [[nodiscard]] bool ReadFields(sRibbonElement& record) {
    return ReadSigned(record.kind) && ReadNumber(record.id) && ReadText(record.text1) &&
           ReadNumber(record.value2) && ReadText(record.text2) && ReadSigned(record.value3) &&
           ReadText(record.text3) && ReadText(record.text4);
  }

  template <typename Unsigned>
  [[nodiscard]] bool ReadNumber(Unsigned& value) {
    if (bytes_.size() < sizeof(Unsigned)) return false;
    std::uint64_t read = 0;
    for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
      read |= std::uint64_t{static_cast<std::uint8_t>(bytes_[i])} << (8 * i);
    }
    value = static_cast<Unsigned>(read);
    bytes_.remove_prefix(sizeof(Unsigned));
    return true;
  }

  [[nodiscard]] bool ReadSigned(std::int32_t& value) {
    std::uint32_t bits = 0;
    if (!ReadNumber(bits)) return false;
    value = static_cast<std::int32_t>(bits);
    return true;
  }

  template <typename Unsigned>
  [[nodiscard]] bool ReadLengthField(std::uint64_t& length, Unsigned& field) {
    if (!ReadNumber(field)) return false;
    length = field;
    return true;
  }

  [[nodiscard]] bool ReadLength(TextLength& length) {
    std::uint8_t byte = 0;
    std::uint16_t word = 0;
    std::uint32_t doubleWord = 0;
    if (!ReadLengthField(length.characters, byte)) return false;
    if (byte < kByteEscape) return true;
    if (!ReadLengthField(length.characters, word)) return false;
    if (word == kUnicodeMark) {
      length.unicode = true;
      if (!ReadLengthField(length.characters, byte)) return false;
      if (byte < kByteEscape) return true;
      // Behind the mark the mark's own value is a length like any other.
      if (!ReadLengthField(length.characters, word)) return false;
    }
    if (word < kWordEscape) return true;
    if (!ReadLengthField(length.characters, doubleWord)) return false;
    return doubleWord < kDoubleWordEscape || ReadNumber(length.characters);
  }

  [[nodiscard]] bool ReadText(RibbonText& text) {
    TextLength length;
    if (!ReadLength(length)) return false;
    const std::size_t unitSize = length.unicode ? sizeof(char16_t) : 1;
    if (length.characters > bytes_.size() / unitSize) return false;
    const std::string_view stored =
        bytes_.substr(0, static_cast<std::size_t>(length.characters) * unitSize);
    bytes_.remove_prefix(stored.size());
    if (length.unicode) {
      text = FromUnits(stored);
    } else {
      text = std::string(stored);
    }
    return true;
  }

  static std::wstring FromUnits(std::string_view stored) {
    std::u16string units(stored.size() / 2, u'\0');
    for (std::size_t i = 0; i < units.size(); ++i) {
      const auto low = static_cast<std::uint8_t>(stored[2 * i]);
      const auto high = static_cast<std::uint8_t>(stored[2 * i + 1]);
      units[i] = static_cast<char16_t>(low | (high << 8));
    }
    return FromUtf16(units);
  }

  std::string_view bytes_;
};

int DigitValue(wchar_t c) {
  if (c >= L'0' && c <= L'9') return c - L'0';
  if (c >= L'a' && c <= L'f') return c - L'a' + 10;
  if (c >= L'A' && c <= L'F') return c - L'A' + 10;
  return -1;
}

std::optional<std::string> BytesFromHex(std::wstring_view text) {
  if (text.size() % 2 != 0) return std::nullopt;
  std::string bytes(text.size() / 2, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const int high = DigitValue(text[2 * i]);
    const int low = DigitValue(text[2 * i + 1]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes[i] = static_cast<char>(high * 16 + low);
  }
  return bytes;
}

}  // namespace

std::wstring RibbonElementToText(const sRibbonElement& record) {
  ArchiveWriting writing;
  writing.Write(record);
  return writing.TakeText();
}

bool RibbonElementFromText(std::wstring_view text, sRibbonElement& record) {
  record = {};
  const std::optional<std::string> bytes = BytesFromHex(text);
  if (!bytes) return false;
  sRibbonElement read;
  if (!ArchiveReading(*bytes).Read(read, 1)) return false;
  record = std::move(read);
  return true;
}

}  // namespace carrovan
