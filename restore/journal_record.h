#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/file_operations.h"
#include "platform/registry.h"

namespace carrovan {

// The lines of a restore point's journal. A change is noted before it is made, with what was there
// the first time, and once more when it has been made; a line that a killed program left unfinished
// says nothing.

// Which run a restore point belongs to.
struct PointBegun {
  std::wstring verb;     // "import" or "reset"
  std::wstring version;  // year form of the version that is changed
  std::wstring package;  // empty for a reset
  bool operator==(const PointBegun&) const = default;
};

// A file or folder is about to change.
struct FileChanging {
  std::wstring path;
  std::optional<FileImage> before;  // only where the journal names the path for the first time
  std::wstring copy;                // file of the restore point that holds it; empty without one
  std::wstring part;                // file beside it that holds the new content while it is written
  bool operator==(const FileChanging&) const = default;
};

struct FileChanged {
  std::wstring path;
  FileImage after;
  bool operator==(const FileChanged&) const = default;
};

// A key's own values; its subkeys have records of their own.
struct KeyImage {
  bool exists = false;
  std::vector<RegistryValue> values;
  bool operator==(const KeyImage&) const = default;
};

struct KeyChanging {
  RegistryHive hive = RegistryHive::kCurrentUser;
  std::wstring keyPath;
  std::optional<KeyImage> before;     // as for a file
  std::vector<std::wstring> setting;  // names of the values that are about to be set
  bool operator==(const KeyChanging&) const = default;
};

struct KeyChanged {
  RegistryHive hive = RegistryHive::kCurrentUser;
  std::wstring keyPath;
  KeyImage after;
  bool operator==(const KeyChanged&) const = default;
};

// A folder of the run's own in the temporary path. What happens in it is nobody's data.
struct ScratchMade {
  std::wstring path;
  bool operator==(const ScratchMade&) const = default;
};

// The run came to its end, whatever it did.
struct RunEnded {
  bool operator==(const RunEnded&) const = default;
};

// An undo put everything back, but for what it was asked to leave.
struct Undone {
  bool whole = false;  // nothing was left
  bool operator==(const Undone&) const = default;
};

using JournalRecord = std::variant<PointBegun, FileChanging, FileChanged, KeyChanging, KeyChanged,
                                   ScratchMade, RunEnded, Undone>;

// A line as it is read.
struct JournalLine {
  JournalRecord record;
  std::size_t flushedLines = 0;  // in front of it, that were safe when it was written
  bool isChecked = false;        // by its checksum; the first format of journals had none
  bool operator==(const JournalLine&) const = default;
};

// One line of JSON with a checksum and a line end. Every text comes back as it was, unpaired
// surrogates included.
std::string EncodeRecord(const JournalRecord& record, std::size_t flushedLines);

// The same in parts: the data of a value take three times their room and more in a line.
using TakeLinePart = std::function<void(std::string_view part)>;
void EncodeRecord(const JournalRecord& record, std::size_t flushedLines, const TakeLinePart& take);

// How many bytes of values a record holds.
std::size_t ValueBytes(const JournalRecord& record);

// Nothing for a line that is no record or is not as it was written; without its line end.
std::optional<JournalLine> DecodeRecord(std::string_view line);

// Names of files and keys may hold units that are no characters, which UTF-8 cannot say. In a
// journal such a unit, and the percent sign itself, is "%" and four hexadecimal digits.
std::string ToJournalText(std::wstring_view text);
std::wstring FromJournalText(std::string_view utf8);

}  // namespace carrovan
