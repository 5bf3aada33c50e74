#pragma once

#include <functional>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "registry_text/registry_file_parser.h"
#include "tests/support/memory_machine.h"

namespace carrovan {

// A machine in memory that keeps apart what was flushed. When its power goes, of all the rest any
// part may be lost: contents and lengths of files, names that were made, changed or removed,
// changes of the registry, each apart from the others.

// After a number of operations that change or flush something no more is done and everything fails,
// as nothing comes after the loss.
class Power {
 public:
  explicit Power(std::size_t lastOperation) : last_(lastOperation) {}

  bool IsGone() const { return operations_ > last_; }
  std::size_t Operations() const { return operations_; }

  // One more operation; false when it is not done any more.
  bool Lasts() { return ++operations_ <= last_; }

 private:
  std::size_t last_;
  std::size_t operations_ = 0;
};

class LossyFiles : public FileSystem {
 public:
  // Everything that is there at the beginning is safe.
  LossyFiles(const MemoryFiles& start, Power& power);

  // What is left after the loss, and without one.
  void Lose(std::mt19937& random, MemoryFiles& left) const;
  void Keep(MemoryFiles& left) const;

  // As WriteBytes, but with the content on the disk before the name is, as archives are kept.
  SystemCode WriteSafely(const std::wstring& path, std::string_view bytes);

  bool Exists(const std::wstring& path) const override;
  bool IsFolder(const std::wstring& path) const override;
  bool IsLink(const std::wstring&) const override { return false; }
  bool IsReadOnly(const std::wstring& path) const override;
  SystemCode ReadFolder(const std::wstring& folder,
                        std::vector<FolderEntry>& entries) const override;
  SystemCode ReadBytes(const std::wstring& path, std::string& bytes) const override;
  SystemCode ReadInParts(const std::wstring& path, const TakePart& take) const override;
  std::uint64_t FileBytes(const std::wstring& path) const override;
  std::optional<std::uint64_t> FreeBytes(const std::wstring&) const override {
    return std::nullopt;
  }
  SystemCode CreateFolder(const std::wstring& path) override;
  SystemCode CreateEmptyFile(const std::wstring& path) override;
  SystemCode RemoveFile(const std::wstring& path) override;
  SystemCode RemoveFolder(const std::wstring& path) override;
  SystemCode WriteBytes(const std::wstring& path, std::string_view bytes) override;
  SystemCode BeginReplacement(const std::wstring& path, std::uint64_t expectedBytes,
                              std::unique_ptr<FileReplacement>& replacement) override;
  SystemCode OpenToAppend(const std::wstring& path,
                          std::unique_ptr<FileAppender>& appender) override;
  SystemCode HoldFile(const std::wstring& path, FileHold hold) override;
  SystemCode CopyOver(const std::wstring& source, const std::wstring& target) override;
  SystemCode MoveTo(const std::wstring& source, const std::wstring& target) override;
  SystemCode Flush(std::span<const std::wstring> paths) override;

 private:
  class Replacement;
  class Appender;

  struct Name {
    std::wstring spelled;
    std::size_t node = 0;
  };
  using Names = std::map<std::u16string, Name>;  // by folded name

  // A file or a folder, which lives on without a name.
  struct Node {
    bool isFolder = false;
    bool isReadOnly = false;
    std::string bytes;
    std::string safeBytes;
    Names names;
    Names safeNames;
    std::map<std::u16string, std::size_t> safeSince;  // the operation that a safe name is of
  };

  // One name of a folder that an operation gave or took away.
  struct NameChange {
    std::size_t folder = 0;
    std::u16string folded;
    std::optional<Name> name;
  };
  // What one operation did to names happens as a whole or not at all.
  struct NameOperation {
    std::size_t number = 0;
    std::vector<NameChange> changes;
  };

  struct Place {
    std::size_t folder = 0;
    std::u16string folded;
    std::wstring spelled;
    std::optional<std::size_t> node;
  };

  std::optional<Place> Find(const std::wstring& path) const;
  const Node* NodeAt(const std::wstring& path) const;
  SystemCode MissingCode(const std::wstring& path) const;
  SystemCode MayStore(const std::wstring& path) const;
  SystemCode Store(const std::wstring& path, std::string_view bytes, bool isSafe);
  std::size_t NewNode(bool isFolder);
  void ChangeNames(std::vector<NameChange> changes);
  static void MakeSafe(std::vector<Node>& nodes, const NameOperation& operation);
  void FlushFolder(std::size_t folder);
  void Take(const MemoryFiles& start, const std::wstring& path, std::size_t node);
  static void Give(const std::vector<Node>& nodes, std::size_t node, const std::wstring& path,
                   MemoryFiles& left);

  Power& power_;
  std::vector<Node> nodes_;  // the first is the root
  std::vector<NameOperation> waiting_;
  std::size_t nameOperations_ = 0;
  std::set<std::u16string> held_;
};

class LossyRegistry : public ForwardingRegistry {
 public:
  LossyRegistry(MemoryRegistry& registry, Power& power);

  void Lose(std::mt19937& random, MemoryRegistry& left) const;

  // Does what a registry file says, key by key.
  bool Merge(const RegistryFile& file);

  SystemCode SetValues(RegistryHive hive, const std::wstring& keyPath,
                       const std::vector<RegistryValue>& values) override;
  SystemCode CreateKey(RegistryHive hive, const std::wstring& keyPath) override;
  SystemCode DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                         const std::wstring& name) override;
  SystemCode DeleteTree(RegistryHive hive, const std::wstring& keyPath) override;
  SystemCode CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                      RegistryHive targetHive, const std::wstring& targetPath) override;
  SystemCode Flush(RegistryHive hive) override;

 private:
  using Change = std::function<void(RegistryKey& root)>;
  struct HiveChange {
    RegistryHive hive;
    Change change;
  };

  void Make(RegistryHive hive, Change change);

  MemoryRegistry& registry_;
  Power& power_;
  std::array<RegistryKey, 2> safe_;  // by RegistryHive
  std::vector<HiveChange> waiting_;
};

// Stands in for a random machine until the power goes, and leaves in it what is left then.
class LossyMachine {
 public:
  // The machine outlives this.
  LossyMachine(MemoryMachine& machine, std::size_t lastOperation);

  Machine Ports();
  const Power& Supply() const { return power_; }
  LossyFiles& Files() { return files_; }

  // The power goes, at the latest now.
  void Lose(std::mt19937& random);

  // It does not, and nothing is lost.
  void Keep();

 private:
  class Tool;

  MemoryMachine& machine_;
  Power power_;
  LossyFiles files_;
  LossyRegistry registry_;
  MemoryProfiles profiles_{files_};
  MemoryArchives archives_;
  std::unique_ptr<RegistryTool> tool_;
};

}  // namespace carrovan
