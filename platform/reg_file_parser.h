#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"
#include "platform/registry_value.h"

namespace carrovan {

// Registry text files as the system's registry tool writes them ("Windows Registry Editor Version
// 5.00") and those of its forerunner ("REGEDIT4").

struct RegValueChange {
  RegistryValue value;  // only the name counts for a removal
  bool remove = false;
};

struct RegKeyChange {
  RegistryHive hive = RegistryHive::kCurrentUser;
  std::wstring keyPath;  // relative to the hive; empty for the hive itself
  bool remove = false;   // with everything below it
  std::vector<RegValueChange> values;
};

// A line that says nothing that can be done.
struct RegFileProblem {
  std::size_t line = 0;  // from 1
  std::wstring text;
};

struct RegFile {
  std::vector<RegKeyChange> keys;  // in the order of the file
  std::vector<RegFileProblem> problems;
};

// True for the line with which a registry file begins.
bool IsRegFileHeader(std::wstring_view line);

// Nothing when the text is not a registry file. A line with a problem is left out and the rest is
// read, as the system's tool does; the values below a key line with a problem are left out too.
std::optional<RegFile> ParseRegFile(std::wstring_view text);

// The hive that a root name means ("HKEY_CURRENT_USER" or "HKCU", in any case).
std::optional<RegistryHive> HiveOfRoot(std::wstring_view name);

}  // namespace carrovan
