#pragma once

#include "platform/file_system.h"
#include "platform/registry.h"
#include "platform/registry_tool.h"

namespace carrovan {

// Ports that pass everything to another one, which outlives them. What stands in front of a port
// derives from these and overrides what shall differ.

class ForwardingFiles : public FileSystem {
 public:
  explicit ForwardingFiles(FileSystem& files) : files_(files) {}

  bool Exists(const std::wstring& path) const override { return files_.Exists(path); }
  bool IsFolder(const std::wstring& path) const override { return files_.IsFolder(path); }
  bool IsLink(const std::wstring& path) const override { return files_.IsLink(path); }
  bool IsReadOnly(const std::wstring& path) const override { return files_.IsReadOnly(path); }
  SystemCode ReadFolder(const std::wstring& folder,
                        std::vector<FolderEntry>& entries) const override {
    return files_.ReadFolder(folder, entries);
  }
  SystemCode ReadBytes(const std::wstring& path, std::string& bytes) const override {
    return files_.ReadBytes(path, bytes);
  }
  SystemCode ReadInParts(const std::wstring& path, const TakePart& take) const override {
    return files_.ReadInParts(path, take);
  }
  std::uint64_t FileBytes(const std::wstring& path) const override {
    return files_.FileBytes(path);
  }
  std::optional<std::uint64_t> FreeBytes(const std::wstring& folder) const override {
    return files_.FreeBytes(folder);
  }
  SystemCode CreateFolder(const std::wstring& path) override { return files_.CreateFolder(path); }
  SystemCode CreateEmptyFile(const std::wstring& path) override {
    return files_.CreateEmptyFile(path);
  }
  SystemCode RemoveFile(const std::wstring& path) override { return files_.RemoveFile(path); }
  SystemCode RemoveFolder(const std::wstring& path) override { return files_.RemoveFolder(path); }
  SystemCode WriteBytes(const std::wstring& path, std::string_view bytes) override {
    return files_.WriteBytes(path, bytes);
  }
  SystemCode BeginReplacement(const std::wstring& path, std::uint64_t expectedBytes,
                              std::unique_ptr<FileReplacement>& replacement) override {
    return files_.BeginReplacement(path, expectedBytes, replacement);
  }
  SystemCode OpenToAppend(const std::wstring& path,
                          std::unique_ptr<FileAppender>& appender) override {
    return files_.OpenToAppend(path, appender);
  }
  SystemCode HoldFile(const std::wstring& path, FileHold hold) override {
    return files_.HoldFile(path, hold);
  }
  SystemCode CopyOver(const std::wstring& source, const std::wstring& target) override {
    return files_.CopyOver(source, target);
  }
  SystemCode MoveTo(const std::wstring& source, const std::wstring& target) override {
    return files_.MoveTo(source, target);
  }
  SystemCode Flush(std::span<const std::wstring> paths) override { return files_.Flush(paths); }
  void Announce(std::span<const std::wstring> paths, ComingChange change) override {
    files_.Announce(paths, change);
  }

 private:
  FileSystem& files_;
};

class ForwardingRegistry : public RegistryEditor {
 public:
  explicit ForwardingRegistry(RegistryEditor& registry) : registry_(registry) {}

  bool CanOpenKey(RegistryHive hive, const std::wstring& keyPath) const override {
    return registry_.CanOpenKey(hive, keyPath);
  }
  std::optional<std::vector<std::wstring>> SubkeyNames(RegistryHive hive,
                                                       const std::wstring& keyPath) const override {
    return registry_.SubkeyNames(hive, keyPath);
  }
  std::optional<std::vector<RegistryValue>> Values(RegistryHive hive,
                                                   const std::wstring& keyPath) const override {
    return registry_.Values(hive, keyPath);
  }
  SystemCode TryOpen(RegistryHive hive, const std::wstring& keyPath) const override {
    return registry_.TryOpen(hive, keyPath);
  }
  std::optional<std::uint32_t> ValueType(RegistryHive hive, const std::wstring& keyPath,
                                         const std::wstring& name) const override {
    return registry_.ValueType(hive, keyPath, name);
  }
  SystemCode SetValues(RegistryHive hive, const std::wstring& keyPath,
                       const std::vector<RegistryValue>& values) override {
    return registry_.SetValues(hive, keyPath, values);
  }
  SystemCode CreateKey(RegistryHive hive, const std::wstring& keyPath) override {
    return registry_.CreateKey(hive, keyPath);
  }
  SystemCode DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                         const std::wstring& name) override {
    return registry_.DeleteValue(hive, keyPath, name);
  }
  SystemCode DeleteTree(RegistryHive hive, const std::wstring& keyPath) override {
    return registry_.DeleteTree(hive, keyPath);
  }
  SystemCode CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                      RegistryHive targetHive, const std::wstring& targetPath) override {
    return registry_.CopyTree(sourceHive, sourcePath, targetHive, targetPath);
  }
  SystemCode Flush(RegistryHive hive) override { return registry_.Flush(hive); }

 private:
  RegistryEditor& registry_;
};

class ForwardingRegistryTool : public RegistryTool {
 public:
  explicit ForwardingRegistryTool(RegistryTool& tool) : tool_(tool) {}

  std::unique_ptr<RunningTool> ExportKey(const std::wstring& keyPath,
                                         const std::wstring& filePath) override {
    return tool_.ExportKey(keyPath, filePath);
  }
  std::unique_ptr<RunningTool> ImportFile(const std::wstring& filePath) override {
    return tool_.ImportFile(filePath);
  }

 private:
  RegistryTool& tool_;
};

}  // namespace carrovan
