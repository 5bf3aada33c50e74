#pragma once

#include <optional>
#include <string>

#include "platform/posix/host_facts.h"
#include "rewrite/rewrite_ports.h"
#include "tests/merge/merge_support.h"
#include "tests/support/memory_files.h"

namespace carrovan {

class FixedUser : public UserIdentity {
 public:
  std::optional<std::wstring> name = L"newuser";
  std::optional<std::wstring> profile = L"C:\\Users\\newuser";

  std::optional<std::wstring> UserName() const override { return name; }
  std::optional<std::wstring> ProfileFolder() const override { return profile; }
};

// Files in memory, a user, and a log, for what rewrites files.
class RewriteBench {
 public:
  MemoryFiles files;
  FixedUser user;
  Utf8CodePage codePage;
  RecordingLog log;

  RewriteBench() { files.PutFolder(L"C:\\d"); }

  RewritePorts Ports() { return {files, user, codePage, log}; }
};

// The bytes of a UTF-16 file, with its mark.
std::string Utf16File(const std::wstring& text);

}  // namespace carrovan
