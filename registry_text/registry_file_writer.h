#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "registry_text/registry_file_parser.h"
#include "registry_text/registry_key.h"

namespace carrovan {

enum class RegistryFileForm {
  // As the system's tool exports a key, byte for byte. A string value loses what quotes cannot
  // hold:
  // text behind its first zero, a missing terminating zero, an odd last byte.
  kExport,
  // The same, but a string that would lose something is written as bytes.
  kLossless,
};

// Takes a text in parts, each of some ten thousand units at most.
using TakeRegistryUnits = std::function<void(std::u16string_view part)>;

// The text of a registry file with a key and everything below it. The key's path is relative to the
// hive and is written as it is given.
void WriteRegistryFile(RegistryHive hive, const std::wstring& keyPath, const RegistryKey& key,
                       RegistryFileForm form, const TakeRegistryUnits& take);
std::wstring WriteRegistryFile(RegistryHive hive, const std::wstring& keyPath,
                               const RegistryKey& key, RegistryFileForm form);

// The text of a registry file that says of this hive what the given one does, in the same order.
// Nothing is lost.
std::wstring WriteRegistryChanges(const RegistryFile& file, RegistryHive hive);

// Adds bytes to the line of a value that ends in "hex:" or the like, and goes on in further lines
// where the tool does.
void AppendHexList(std::wstring& line, std::span<const std::uint8_t> data);

// A value as it stands in such a file behind its name, on one line however long it is: "text",
// dword:00000001, hex:01,02. Nothing is lost but what comes behind so many 16-bit units.
std::wstring RegistryValueText(const RegistryValue& value,
                               std::size_t longest = std::wstring::npos);

}  // namespace carrovan
