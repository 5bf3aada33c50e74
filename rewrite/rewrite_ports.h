#pragma once

#include <string>
#include <vector>

#include "platform/console.h"
#include "platform/file_system.h"
#include "platform/system_facts.h"

namespace carrovan {

// A line that was taken out of a registry file, with the key line above it; both trimmed.
struct DroppedLine {
  std::wstring file;
  std::wstring keyLine;
  std::wstring line;
};

// What the rewriting of a package's files works on. Reports go to the log.
struct RewritePorts {
  FileSystem& files;
  const UserIdentity& user;
  const CodePage& codePage;
  LineLog& log;
  std::vector<DroppedLine>* dropped = nullptr;  // gets every line that was dropped
  bool keepsDeadPaths = false;                  // no line is dropped
  // Beginnings of paths that were mapped. Behind such a path a value may go on with something else.
  std::vector<std::wstring> mappedTo = {};
  // As they are spelled in files. They are the user's own words and are not rewritten.
  std::vector<std::u16string> stay = {};
};

}  // namespace carrovan
