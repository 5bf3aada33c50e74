#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/sandbox/change_log.h"
#include "platform/system_code.h"
#include "registry_text/registry_file_parser.h"
#include "registry_text/registry_key.h"

namespace carrovan {

// One hive of a machine in a folder: a registry file and, while a process changes it, a log of the
// changes beside it. A change costs what it says and not what the hive holds. The log is put into
// the file when it has grown long, when the hive is closed and, after a kill, when it is opened
// again, so that a log lies there only while somebody changes the hive.
class SandboxHive {
 public:
  SandboxHive(std::filesystem::path folder, RegistryHive hive);
  ~SandboxHive();
  SandboxHive(const SandboxHive&) = delete;
  SandboxHive& operator=(const SandboxHive&) = delete;

  // Nothing on success, otherwise one line that names the file and what is wrong with it. Until
  // then the hive is empty. A missing file is an empty hive.
  [[nodiscard]] std::optional<std::wstring> Load();

  // As it was loaded, with all changes that were made here and those that they were made over.
  const RegistryKey& Root() const { return root_; }

  // Both change the hive as the disk has it now, so that nothing is lost that somebody else wrote.
  // On failure the hive is as the disk has it; kSharingViolation when another process has been
  // changing the hive for too long.

  // Does what a registry file says of this hive; it is in the log when this returns.
  [[nodiscard]] SystemCode Apply(const RegistryFile& file);

  // Any change, for whoever fills the machine; the whole file is written.
  [[nodiscard]] SystemCode Rewrite(const std::function<void(RegistryKey&)>& change);

  // Waits until every change is where a loss of power cannot take it.
  [[nodiscard]] FileStatus Flush() const;

 private:
  // What shows that a file was replaced or edited.
  struct Stamp {
    std::uintmax_t sizeBytes = 0;
    std::filesystem::file_time_type modified;

    bool operator==(const Stamp&) const = default;
  };

  using Bytes = std::optional<std::vector<std::uint8_t>>;  // nothing of a missing file

  // What file and log hold together.
  struct State {
    RegistryKey root;
    std::optional<Stamp> stamp;  // of the file; nothing for one that is missing
    std::size_t fileBytes = 0;
    std::size_t logBytes = 0;
  };

  std::optional<std::wstring> Read(State& state) const;
  std::optional<std::wstring> ReadBytes(Bytes& file, Bytes& log) const;
  std::optional<std::wstring> PutTogether(Bytes file, Bytes log, State& state) const;
  std::optional<Stamp> StampNow() const;
  [[nodiscard]] bool Take(State state);
  [[nodiscard]] SystemCode Begin();
  [[nodiscard]] SystemCode SaveChange(const std::function<void(RegistryKey&)>& change);
  [[nodiscard]] FileStatus HoldLog();
  [[nodiscard]] bool Reload();
  [[nodiscard]] bool Save(const RegistryKey& root);
  void Close();
  void LetGo();

  const std::filesystem::path folder_;
  const RegistryHive hive_;
  const std::filesystem::path file_;
  ChangeLog log_;
  RegistryKey root_;
  std::optional<Stamp> stamp_;
  std::size_t fileBytes_ = 0;
};

}  // namespace carrovan
