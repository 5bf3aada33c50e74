#include "restore/recorded_files.h"

#include "platform/path_text.h"
#include "restore/recorded_change.h"

namespace carrovan {
namespace {

// The second note is made when the file has taken its place, or has been given up.
class RecordedReplacement : public FileReplacement {
 public:
  RecordedReplacement(ChangeRecorder& recorder, std::wstring path,
                      std::unique_ptr<FileReplacement> file)
      : recorder_(recorder), path_(std::move(path)), file_(std::move(file)) {}
  ~RecordedReplacement() override {
    file_.reset();
    recorder_.FileChanged(path_);
  }
  RecordedReplacement(const RecordedReplacement&) = delete;
  RecordedReplacement& operator=(const RecordedReplacement&) = delete;

  SystemCode Append(std::string_view part) override { return file_->Append(part); }
  SystemCode Complete() override { return file_->Complete(); }

 private:
  ChangeRecorder& recorder_;
  std::wstring path_;
  std::unique_ptr<FileReplacement> file_;
};

}  // namespace

SystemCode RecordedFiles::CreateFolder(const std::wstring& path) {
  // Making a folder that is there changes nothing.
  if (Exists(path) || recorder_.IsScratch(path)) return ForwardingFiles::CreateFolder(path);
  const SystemCode code = recorder_.FolderMade(path);
  return code == kSystemOk ? ForwardingFiles::CreateFolder(path) : code;
}

SystemCode RecordedFiles::CreateEmptyFile(const std::wstring& path) {
  return MakeRecorded(recorder_, path, [&] { return ForwardingFiles::CreateEmptyFile(path); });
}

SystemCode RecordedFiles::RemoveFile(const std::wstring& path) {
  if (IsLink(path) && !recorder_.IsScratch(path)) return recorder_.TakeLink(path);
  return MakeRecorded(recorder_, path, [&] { return ForwardingFiles::RemoveFile(path); });
}

SystemCode RecordedFiles::RemoveFolder(const std::wstring& path) {
  if (IsLink(path) && !recorder_.IsScratch(path)) return recorder_.TakeLink(path);
  return MakeRecorded(recorder_, path, [&] { return ForwardingFiles::RemoveFolder(path); });
}

SystemCode RecordedFiles::WriteBytes(const std::wstring& path, std::string_view bytes) {
  return MakeRecorded(recorder_, path, [&] { return ForwardingFiles::WriteBytes(path, bytes); });
}

SystemCode RecordedFiles::BeginReplacement(const std::wstring& path, std::uint64_t expectedBytes,
                                           std::unique_ptr<FileReplacement>& replacement) {
  if (recorder_.IsScratch(path)) {
    return ForwardingFiles::BeginReplacement(path, expectedBytes, replacement);
  }
  if (const SystemCode code = recorder_.FileChanges(path); code != kSystemOk) return code;
  std::unique_ptr<FileReplacement> file;
  const SystemCode code = ForwardingFiles::BeginReplacement(path, expectedBytes, file);
  if (code != kSystemOk) {
    recorder_.FileChanged(path);
    return code;
  }
  replacement = std::make_unique<RecordedReplacement>(recorder_, path, std::move(file));
  return kSystemOk;
}

SystemCode RecordedFiles::AppendBytes(const std::wstring& path, std::string_view bytes) {
  return MakeRecorded(recorder_, path, [&] { return ForwardingFiles::AppendBytes(path, bytes); });
}

SystemCode RecordedFiles::HoldFile(const std::wstring& path, FileHold hold) {
  return MakeRecorded(recorder_, path, [&] { return ForwardingFiles::HoldFile(path, hold); });
}

SystemCode RecordedFiles::CopyOver(const std::wstring& source, const std::wstring& target) {
  return MakeRecorded(recorder_, target, [&] { return ForwardingFiles::CopyOver(source, target); });
}

SystemCode RecordedFiles::MoveTo(const std::wstring& source, const std::wstring& target) {
  if (recorder_.IsScratch(source) && recorder_.IsScratch(target)) {
    return ForwardingFiles::MoveTo(source, target);
  }
  // It would be taken into the restore point instead.
  if (IsLink(source)) return kAccessDenied;
  const std::wstring from = TidyPath(source);
  const std::wstring to = TidyPath(target);
  std::vector<std::wstring> moved;
  SystemCode code = recorder_.TreeChanges(from, moved);
  std::vector<std::wstring> noted = moved;
  for (const std::wstring& path : moved) {
    if (code != kSystemOk) break;
    noted.push_back(to + path.substr(from.size()));
    code = recorder_.FileChanges(noted.back());
  }
  if (code == kSystemOk) code = ForwardingFiles::MoveTo(source, target);
  for (const std::wstring& path : noted) recorder_.FileChanged(path);
  return code;
}

}  // namespace carrovan
