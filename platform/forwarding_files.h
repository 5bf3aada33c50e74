#pragma once

#include "platform/file_system.h"

namespace carrovan {

// Passes everything to another file system, which outlives it. What wraps a file system derives
// from it and overrides what shall differ.
class ForwardingFiles : public FileSystem {
 public:
  explicit ForwardingFiles(FileSystem& files) : files_(files) {}

  bool Exists(const std::wstring& path) const override { return files_.Exists(path); }
  bool IsFolder(const std::wstring& path) const override { return files_.IsFolder(path); }
  bool IsLink(const std::wstring& path) const override { return files_.IsLink(path); }
  bool IsReadOnly(const std::wstring& path) const override { return files_.IsReadOnly(path); }
  std::vector<FolderEntry> ListFolder(const std::wstring& folder) const override {
    return files_.ListFolder(folder);
  }
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
  SystemCode AppendBytes(const std::wstring& path, std::string_view bytes) override {
    return files_.AppendBytes(path, bytes);
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

 private:
  FileSystem& files_;
};

}  // namespace carrovan
