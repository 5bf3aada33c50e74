#include "restore/restore_point.h"

#include <algorithm>
#include <map>

#include "platform/path_text.h"
#include "platform/registry_path.h"
#include "platform/text.h"
#include "reset/folder_wipe.h"
#include "restore/restore_folder.h"

namespace carrovan {
namespace {

using Places = std::map<std::wstring, std::size_t, NameLess>;

// Puts a journal's records together, one after another.
class PointReader {
 public:
  explicit PointReader(RestorePoint& point) : point_(point) {}

  void operator()(const PointBegun& about) {
    point_.about = about;
    begun_ = true;
  }

  void operator()(const FileChanging& change) {
    const auto [place, added] = files_.try_emplace(change.path, point_.files.size());
    // The first record of a path says what was there; without that nothing can be put back.
    if (added && !change.before) return void(files_.erase(place));
    if (added) {
      point_.files.push_back({change.path, *change.before, CopyPath(change), {}, {}, false, {}});
    }
    FileHistory& file = point_.files[place->second];
    file.unfinished = true;
    if (!change.part.empty()) {
      file.parts.push_back(RemoveFileSpec(change.path) + L"\\" + change.part);
    }
  }

  void operator()(const FileChanged& change) {
    const auto found = files_.find(change.path);
    if (found == files_.end()) return;
    FileHistory& file = point_.files[found->second];
    if (file.after) file.earlier.push_back(*file.after);
    file.after = change.after;
    file.unfinished = false;
    file.parts.clear();
  }

  void operator()(const KeyChanging& change) {
    const std::wstring name = FullKeyPath(change.hive, change.keyPath);
    const auto [place, added] = keys_.try_emplace(name, point_.keys.size());
    if (added && !change.before) return void(keys_.erase(place));
    if (added) {
      point_.keys.push_back({change.hive, change.keyPath, *change.before, {}, false, {}});
    }
    KeyHistory& key = point_.keys[place->second];
    key.unfinished = true;
    key.set.insert(key.set.end(), change.setting.begin(), change.setting.end());
  }

  void operator()(const KeyChanged& change) {
    const auto found = keys_.find(FullKeyPath(change.hive, change.keyPath));
    if (found == keys_.end()) return;
    point_.keys[found->second].after = change.after;
    point_.keys[found->second].unfinished = false;
  }

  void operator()(const ScratchMade& made) { point_.scratch.push_back(made.path); }
  void operator()(const RunEnded&) { point_.state = PointState::kFinished; }
  void operator()(const Undone& undone) {
    point_.state = undone.whole ? PointState::kUndone : PointState::kPartlyUndone;
  }

  bool HasBegun() const { return begun_; }

 private:
  std::wstring CopyPath(const FileChanging& change) const {
    return change.copy.empty() ? std::wstring() : point_.folder + L"\\" + change.copy;
  }

  RestorePoint& point_;
  Places files_;
  Places keys_;
  bool begun_ = false;
};

}  // namespace

std::vector<std::wstring> RestorePointIds(const FileReader& files, const std::wstring& root) {
  std::vector<std::wstring> ids;
  for (const FolderEntry& entry : files.ListFolder(root)) {
    if (entry.isFolder && !entry.isLink && IsRestorePointId(entry.name)) ids.push_back(entry.name);
  }
  // A longer name is a later run of the same second.
  std::ranges::sort(ids, [](const std::wstring& a, const std::wstring& b) {
    constexpr std::size_t kTimeLength = 18;
    const int order = a.compare(0, kTimeLength, b, 0, kTimeLength);
    if (order != 0) return order > 0;
    return a.size() != b.size() ? a.size() > b.size() : a > b;
  });
  return ids;
}

std::optional<RestorePoint> ReadRestorePoint(const FileReader& files, const std::wstring& root,
                                             const std::wstring& id) {
  std::string journal;
  RestorePoint point;
  point.id = id;
  point.folder = root + L"\\" + id;
  if (!IsRestorePointId(id) || !files.IsFolder(point.folder)) return std::nullopt;
  // Whatever lies behind a link, no run has put there.
  if (files.IsLink(point.folder)) return std::nullopt;
  const std::wstring path = point.folder + L"\\" + kJournalName;
  if (files.Exists(path) && files.ReadBytes(path, journal) != kSystemOk) return std::nullopt;
  if (journal.find('\n') == std::string::npos) return point;
  PointReader reader(point);
  std::string_view rest = journal;
  for (auto end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
    if (const auto record = DecodeRecord(rest.substr(0, end))) std::visit(reader, *record);
    rest.remove_prefix(end + 1);
  }
  return reader.HasBegun() ? std::optional(std::move(point)) : std::nullopt;
}

std::vector<std::wstring> PruneRestorePoints(FileSystem& files, const std::wstring& root,
                                             std::size_t keep, std::vector<std::wstring>& failed) {
  std::vector<std::wstring> pruned;
  const std::vector<std::wstring> ids = RestorePointIds(files, root);
  for (std::size_t i = keep; i < ids.size(); ++i) {
    std::vector<std::wstring>& list = WipeFolder(files, root + L"\\" + ids[i]) ? pruned : failed;
    list.push_back(ids[i]);
  }
  return pruned;
}

}  // namespace carrovan
