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

constexpr std::wstring_view kHeader = L"Windows Registry Editor Version 5.00\r\n";
constexpr std::wstring_view kLineEnd = L"\r\n";
constexpr std::wstring_view kContinuation = L"\\\r\n  ";

std::wstring Hex(std::uint32_t number, std::size_t leastDigits) {
  std::wstring digits;
  for (; number != 0 || digits.size() < leastDigits; number >>= 4) {
    digits.insert(digits.begin(), L"0123456789abcdef"[number & 0xF]);
  }
  return digits;
}

std::wstring Quoted(std::wstring_view text) {
  std::wstring quoted = L"\"";
  for (const wchar_t c : text) {
    if (c == L'\\' || c == L'"') quoted.push_back(L'\\');
    if (c == L'\r') {
      quoted.append(L"\\r");
    } else if (c == L'\n') {
      quoted.append(L"\\n");
    } else {
      quoted.push_back(c);
    }
  }
  return quoted + L"\"";
}

// The text up to its first zero.
std::wstring TextOf(const RegistryValue& value) {
  std::u16string units;
  for (std::size_t i = 0; i + 1 < value.data.size(); i += 2) {
    const auto unit = static_cast<char16_t>(value.data[i] | (value.data[i + 1] << 8));
    if (unit == 0) break;
    units.push_back(unit);
  }
  return FromUtf16(units);
}

std::uint32_t NumberOf(const RegistryValue& value) {
  std::uint32_t number = 0;
  for (auto byte = value.data.rbegin(); byte != value.data.rend(); ++byte) {
    number = (number << 8) | *byte;
  }
  return number;
}

}  // namespace

void AppendHexList(std::wstring& line, std::span<const std::uint8_t> data) {
  std::size_t column = ToUtf16(line).size();
  for (std::size_t i = 0; i < data.size(); ++i) {
    line.append(Hex(data[i], 2));
    if (i + 1 == data.size()) break;
    line.push_back(L',');
    column += 3;
    if (column <= kWrapBehindColumn) continue;
    line.append(kContinuation);
    column = 2;
  }
}

namespace {

bool FitsQuotes(const RegistryValue& value, const std::wstring& text, RegistryFileForm form) {
  return form == RegistryFileForm::kExport || MakeStringValue(value.name, text).data == value.data;
}

std::wstring NameAndEquals(const std::wstring& name) {
  return name.empty() ? L"@=" : Quoted(name) + L"=";
}

std::wstring ValueLine(const RegistryValue& value, RegistryFileForm form) {
  std::wstring line = NameAndEquals(value.name);
  if (value.type == kRegSz) {
    const std::wstring text = TextOf(value);
    if (FitsQuotes(value, text, form)) return line + Quoted(text);
  } else if (value.type == kRegDword && value.data.size() == sizeof(std::uint32_t)) {
    return line + L"dword:" + Hex(NumberOf(value), 8);
  }
  line.append(value.type == kRegBinary ? L"hex:" : L"hex(" + Hex(value.type, 1) + L"):");
  AppendHexList(line, value.data);
  return line;
}

}  // namespace

std::wstring RegistryValueText(const RegistryValue& value) {
  const std::wstring line = ValueLine({L"", value.type, value.data}, RegistryFileForm::kLossless);
  return ReplaceAll(line.substr(line.find(L'=') + 1), kContinuation, L"");
}

std::wstring WriteRegistryFile(RegistryHive hive, const std::wstring& keyPath,
                               const RegistryKey& key, RegistryFileForm form) {
  std::wstring text(kHeader);
  const std::wstring root = RootName(hive);
  std::vector<std::pair<std::wstring, const RegistryKey*>> pending;
  pending.emplace_back(keyPath.empty() ? root : root + L"\\" + keyPath, &key);
  while (!pending.empty()) {
    const auto [path, current] = std::move(pending.back());
    pending.pop_back();
    text.append(kLineEnd).append(L"[").append(path).append(L"]").append(kLineEnd);
    for (const RegistryValue* value : current->AllValues()) {
      text.append(ValueLine(*value, form)).append(kLineEnd);
    }
    // The last one goes on the pile first.
    const RegistryKey::Subkeys& subkeys = current->AllSubkeys();
    for (auto subkey = subkeys.rbegin(); subkey != subkeys.rend(); ++subkey) {
      pending.emplace_back(path + L"\\" + subkey->first, subkey->second.get());
    }
  }
  return text.append(kLineEnd);
}

std::wstring WriteRegistryChanges(const RegistryFile& file, RegistryHive hive) {
  std::wstring text(kHeader);
  const std::wstring root = RootName(hive);
  for (const RegistryKeyChange& key : file.keys) {
    if (key.hive != hive) continue;
    text.append(kLineEnd).append(key.remove ? L"[-" : L"[").append(root);
    if (!key.keyPath.empty()) text.append(L"\\").append(key.keyPath);
    text.append(L"]").append(kLineEnd);
    for (const RegistryValueChange& change : key.values) {
      text.append(change.remove ? NameAndEquals(change.value.name) + L"-"
                                : ValueLine(change.value, RegistryFileForm::kLossless));
      text.append(kLineEnd);
    }
  }
  return text;
}

}  // namespace carrovan
