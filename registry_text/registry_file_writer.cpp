#include "registry_text/registry_file_writer.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "text/text.h"

namespace carrovan {
namespace {

// A line of bytes is wrapped once it is longer than this; with its last byte, comma and backslash
// it stays within 80 columns.
constexpr std::size_t kWrapBehindColumn = 76;

constexpr std::u16string_view kHeader = u"Windows Registry Editor Version 5.00\r\n";
constexpr std::u16string_view kLineEnd = u"\r\n";
constexpr std::u16string_view kContinuation = u"\\\r\n  ";

// Hands a text on in parts, so that it is never in memory as a whole.
class PartWriter {
 public:
  explicit PartWriter(const TakeRegistryUnits& take) : take_(take) {}

  void Add(char16_t unit) {
    part_.push_back(unit);
    if (part_.size() >= kMostUnits) HandOn();
  }
  void Add(std::u16string_view text) {
    for (const char16_t unit : text) Add(unit);
  }
  void Add(std::wstring_view text) { Add(ToUtf16(text)); }
  void HandOn() {
    if (!part_.empty()) take_(part_);
    part_.clear();
  }

 private:
  static constexpr std::size_t kMostUnits = std::size_t{1} << 15;

  const TakeRegistryUnits& take_;
  std::u16string part_;
};

template <typename Add>
void AddHex(std::uint32_t number, int digits, Add add) {
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
    add(u"0123456789abcdef"[number >> shift & 0xF]);
  }
}

int HexDigitsOf(std::uint32_t number) {
  int digits = 1;
  while (number >>= 4) ++digits;
  return digits;
}

// Gives the units of a list of bytes whose line has come to that column.
template <typename Add>
void AddHexList(std::span<const std::uint8_t> data, std::size_t column, bool wraps, Add add) {
  for (std::size_t i = 0; i < data.size(); ++i) {
    AddHex(data[i], 2, add);
    if (i + 1 == data.size()) break;
    add(u',');
    column += 3;
    if (!wraps || column <= kWrapBehindColumn) continue;
    for (const char16_t unit : kContinuation) add(unit);
    column = 2;
  }
}

template <typename Add>
void AddEscaped(char16_t unit, Add add) {
  if (unit == u'\\' || unit == u'"') add(u'\\');
  if (unit == u'\r' || unit == u'\n') {
    add(u'\\');
    add(unit == u'\r' ? u'r' : u'n');
  } else {
    add(unit);
  }
}

char16_t UnitAt(const RegistryValue& value, std::size_t index) {
  return static_cast<char16_t>(value.data[2 * index] | value.data[2 * index + 1] << 8);
}

// Of the text, up to its first zero.
std::size_t UnitsOfText(const RegistryValue& value) {
  std::size_t units = 0;
  while (2 * units + 1 < value.data.size() && UnitAt(value, units) != 0) ++units;
  return units;
}

std::uint32_t NumberOf(const RegistryValue& value) {
  std::uint32_t number = 0;
  for (std::size_t i = value.data.size(); i > 0; --i) number = (number << 8) | value.data[i - 1];
  return number;
}

std::u16string NameAndEquals(const std::wstring& name) {
  if (name.empty()) return u"@=";
  std::u16string line = u"\"";
  for (const char16_t unit : ToUtf16(name)) {
    AddEscaped(unit, [&line](char16_t each) { line.push_back(each); });
  }
  return line + u"\"=";
}

// Gives the units of what stands behind a value's name, which has come to that column.
template <typename Add>
void AddData(const RegistryValue& value, RegistryFileForm form, std::size_t column, bool wraps,
             Add add) {
  const auto addText = [&add](std::u16string_view text) {
    for (const char16_t unit : text) add(unit);
  };
  if (value.type == kRegSz) {
    const std::size_t units = UnitsOfText(value);
    // Quotes hold a text with its terminating zero and nothing behind it.
    if (form == RegistryFileForm::kExport || 2 * units + 2 == value.data.size()) {
      add(u'"');
      for (std::size_t i = 0; i < units; ++i) AddEscaped(UnitAt(value, i), add);
      return add(u'"');
    }
  } else if (value.type == kRegDword && value.data.size() == sizeof(std::uint32_t)) {
    addText(u"dword:");
    return AddHex(NumberOf(value), 8, add);
  }
  const auto counted = [&](char16_t unit) {
    add(unit);
    ++column;
  };
  for (const char16_t unit : std::u16string_view(u"hex")) counted(unit);
  if (value.type != kRegBinary) {
    counted(u'(');
    AddHex(value.type, HexDigitsOf(value.type), counted);
    counted(u')');
  }
  counted(u':');
  AddHexList(value.data, column, wraps, add);
}

void AddValueLine(const RegistryValue& value, RegistryFileForm form, PartWriter& text) {
  const std::u16string name = NameAndEquals(value.name);
  text.Add(name);
  AddData(value, form, name.size(), true, [&text](char16_t unit) { text.Add(unit); });
  text.Add(kLineEnd);
}

void AddKeyLine(std::wstring_view path, bool remove, PartWriter& text) {
  text.Add(kLineEnd);
  text.Add(remove ? std::u16string_view(u"[-") : std::u16string_view(u"["));
  text.Add(path);
  text.Add(u']');
  text.Add(kLineEnd);
}

// The whole text of what a function hands on in parts.
template <typename Write>
std::wstring WholeText(Write write) {
  std::u16string text;
  write([&text](std::u16string_view part) { text.append(part); });
  return FromUtf16(text);
}

}  // namespace

void AppendHexList(std::wstring& line, std::span<const std::uint8_t> data) {
  AddHexList(data, ToUtf16(line).size(), true,
             [&line](char16_t unit) { line.push_back(static_cast<wchar_t>(unit)); });
}

std::wstring RegistryValueText(const RegistryValue& value, std::size_t longest) {
  std::u16string text;
  AddData(value, RegistryFileForm::kLossless, 0, false, [&](char16_t unit) {
    if (text.size() < longest) text.push_back(unit);
  });
  return FromUtf16(text);
}

void WriteRegistryFile(RegistryHive hive, const std::wstring& keyPath, const RegistryKey& key,
                       RegistryFileForm form, const TakeRegistryUnits& take) {
  PartWriter text(take);
  text.Add(kHeader);
  const std::wstring root = RootName(hive);
  std::vector<std::pair<std::wstring, const RegistryKey*>> pending;
  pending.emplace_back(keyPath.empty() ? root : root + L"\\" + keyPath, &key);
  while (!pending.empty()) {
    const auto [path, current] = std::move(pending.back());
    pending.pop_back();
    AddKeyLine(path, false, text);
    for (const RegistryValue* value : current->AllValues()) AddValueLine(*value, form, text);
    // The last one goes on the pile first.
    const RegistryKey::Subkeys& subkeys = current->AllSubkeys();
    for (auto subkey = subkeys.rbegin(); subkey != subkeys.rend(); ++subkey) {
      pending.emplace_back(path + L"\\" + subkey->first, subkey->second.get());
    }
  }
  text.Add(kLineEnd);
  text.HandOn();
}

std::wstring WriteRegistryFile(RegistryHive hive, const std::wstring& keyPath,
                               const RegistryKey& key, RegistryFileForm form) {
  return WholeText(
      [&](const TakeRegistryUnits& take) { WriteRegistryFile(hive, keyPath, key, form, take); });
}

std::wstring WriteRegistryChanges(const RegistryFile& file, RegistryHive hive) {
  return WholeText([&](const TakeRegistryUnits& take) {
    PartWriter text(take);
    text.Add(kHeader);
    for (const RegistryKeyChange& key : file.keys) {
      if (key.hive != hive) continue;
      const std::wstring root = RootName(hive);
      AddKeyLine(key.keyPath.empty() ? root : root + L"\\" + key.keyPath, key.remove, text);
      for (const RegistryValueChange& change : key.values) {
        if (!change.remove) {
          AddValueLine(change.value, RegistryFileForm::kLossless, text);
          continue;
        }
        text.Add(NameAndEquals(change.value.name));
        text.Add(u'-');
        text.Add(kLineEnd);
      }
    }
    text.HandOn();
  });
}

}  // namespace carrovan
