#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "registry_text/registry_key.h"

namespace carrovan {

// Makes the units that ParseRegistryUnits takes of a registry file's bytes: UTF-16 behind the mark
// FF FE, or 8-bit text, as DecodeText reads it.
class RegistryTextUnits {
 public:
  // For a file of so many bytes, which are about to come.
  void Expect(std::uint64_t fileBytes) { expectedBytes_ = fileBytes; }

  // The file's bytes in their order.
  void Take(std::string_view part);

  // Called once, when all bytes were taken.
  std::u16string Finish();

 private:
  void Begin();
  void TakeUtf16(std::string_view part);
  void TakeUtf8(bool isWhole);

  std::uint64_t expectedBytes_ = 0;
  bool isKnown_ = false;
  bool isUtf16_ = false;
  std::string pending_;  // not yet known or not whole
  std::u16string units_;
};

// The same for a file that was read whole.
std::u16string RegistryTextOf(std::vector<std::uint8_t> bytes);

// Registry text files as the system's registry tool writes them ("Windows Registry Editor Version
// 5.00") and those of its forerunner ("REGEDIT4").

struct RegistryValueChange {
  RegistryValue value;  // only the name counts for a removal
  bool remove = false;
};

struct RegistryKeyChange {
  RegistryHive hive = RegistryHive::kCurrentUser;
  std::wstring keyPath;  // relative to the hive; empty for the hive itself
  bool remove = false;   // with everything below it
  std::vector<RegistryValueChange> values;
};

// A line that says nothing that can be done.
struct RegistryFileProblem {
  std::size_t line = 0;  // from 1
  std::wstring text;
};

struct RegistryFile {
  std::vector<RegistryKeyChange> keys;        // in the order of the file
  std::vector<RegistryFileProblem> problems;  // the first hundred
};

// True for the line with which a registry file begins.
bool IsRegistryFileHeader(std::wstring_view line);

// Nothing when the text is not a registry file. A line with a problem is left out and the rest is
// read, as the system's tool does; the values below a key line with a problem are left out too.
std::optional<RegistryFile> ParseRegistryFile(std::wstring_view text);

// The same for a text that is in 16-bit units already, of which no other copy is made.
std::optional<RegistryFile> ParseRegistryUnits(std::u16string_view text);

// The same key by key, so that they are never in memory together: each comes when its values are
// known. Gives the problems.
using TakeRegistryKey = std::function<void(RegistryKeyChange key)>;
std::optional<std::vector<RegistryFileProblem>> ParseRegistryKeys(std::u16string_view text,
                                                                  const TakeRegistryKey& take);

// The hive that a root name means ("HKEY_CURRENT_USER" or "HKCU", in any case).
std::optional<RegistryHive> HiveOfRoot(std::wstring_view name);

}  // namespace carrovan
