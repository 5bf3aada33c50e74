#pragma once

#include "platform/forwarding_files.h"
#include "restore/change_recorder.h"

namespace carrovan {

// A file system that has each change noted before it is made.
class RecordedFiles : public ForwardingFiles {
 public:
  RecordedFiles(FileSystem& files, ChangeRecorder& recorder)
      : ForwardingFiles(files), recorder_(recorder) {}

  SystemCode CreateFolder(const std::wstring& path) override;
  SystemCode CreateEmptyFile(const std::wstring& path) override;
  SystemCode RemoveFile(const std::wstring& path) override;
  SystemCode RemoveFolder(const std::wstring& path) override;
  SystemCode WriteBytes(const std::wstring& path, std::string_view bytes) override;
  SystemCode BeginReplacement(const std::wstring& path, std::uint64_t expectedBytes,
                              std::unique_ptr<FileReplacement>& replacement) override;
  SystemCode AppendBytes(const std::wstring& path, std::string_view bytes) override;
  SystemCode HoldFile(const std::wstring& path, FileHold hold) override;
  SystemCode CopyOver(const std::wstring& source, const std::wstring& target) override;
  SystemCode MoveTo(const std::wstring& source, const std::wstring& target) override;

 private:
  ChangeRecorder& recorder_;
};

}  // namespace carrovan
