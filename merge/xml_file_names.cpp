#include "merge/xml_file_names.h"

#include "merge/file_system_error.h"
#include "platform/path_text.h"
#include "platform/text.h"

namespace carrovan {

bool UnitOrder::operator()(const std::wstring& a, const std::wstring& b) const {
  return ToUtf16(a) < ToUtf16(b);
}

bool IsXmlFile(const FolderEntry& entry) {
  constexpr std::wstring_view kExtension = L".xml";
  return IsContentFile(entry) && entry.name.size() > kExtension.size() &&
         entry.name.ends_with(kExtension);
}

FileNameSet ListXmlFileNames(const FileReader& files, const std::wstring& folder) {
  if (!files.IsFolder(folder)) return {};
  FileNameSet names;
  for (const FolderEntry& entry : EntriesOf(files, folder)) {
    if (IsXmlFile(entry)) names.insert(entry.name);
  }
  return names;
}

std::vector<FolderEntry> EntriesOf(const FileReader& files, const std::wstring& folder) {
  std::vector<FolderEntry> entries;
  const SystemCode code = files.ReadFolder(folder, entries);
  if (code != kSystemOk) throw FileSystemError(code, folder);
  return entries;
}

std::wstring JoinPath(const std::wstring& folder, const std::wstring& name) {
  return WithTrailingBackslash(folder) + name;
}

}  // namespace carrovan
