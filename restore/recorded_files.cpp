#include "restore/recorded_files.h"

#include "platform/path_text.h"
#include "restore/recorded_change.h"

namespace carrovan {

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

SystemCode RecordedFiles::AppendBytes(const std::wstring& path, std::string_view bytes) {
  return MakeRecorded(recorder_, path, [&] { return ForwardingFiles::AppendBytes(path, bytes); });
}

SystemCode RecordedFiles::CopyOver(const std::wstring& source, const std::wstring& target) {
  return MakeRecorded(recorder_, target, [&] { return ForwardingFiles::CopyOver(source, target); });
}

SystemCode RecordedFiles::MoveTo(const std::wstring& source, const std::wstring& target) {
  if (recorder_.IsScratch(source) && recorder_.IsScratch(target)) {
    return ForwardingFiles::MoveTo(source, target);
  }
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
