#include "restore/restore_point.h"

#include <algorithm>
#include <functional>
#include <map>
#include <utility>

#include "registry_text/registry_key.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

// A digit stands for any digit.
constexpr std::wstring_view kShape = L"0000-00-00T000000Z";

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

std::wstring Padded(unsigned number, std::size_t digits) {
  std::wstring text = std::to_wstring(number);
  if (text.size() < digits) text.insert(0, digits - text.size(), L'0');
  return text;
}

bool FitsShape(wchar_t c, wchar_t shape) { return shape == L'0' ? IsDigit(c) : c == shape; }

}  // namespace

std::optional<std::wstring> RestoreRoot(const KnownFolders& folders) {
  const auto local = folders.LocalAppData();
  return local ? std::optional(*local + L"\\Carrovan\\Restore") : std::nullopt;
}

bool IsScratchPath(const KnownFolders& folders, const std::wstring& path) {
  const auto temporary = folders.TempPath();
  return temporary && IsGuid(FileNameOf(path)) &&
         CompareNames(RemoveFileSpec(path), TidyPath(*temporary)) == 0;
}

bool IsAtOrBelow(std::wstring_view path, std::wstring_view folder) {
  if (path.size() < folder.size()) return false;
  if (CompareNames(path.substr(0, folder.size()), folder) != 0) return false;
  return path.size() == folder.size() || path[folder.size()] == L'\\';
}

std::wstring RestorePointId(std::chrono::system_clock::time_point time) {
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(std::chrono::floor<std::chrono::seconds>(time - day));
  const auto part = [](auto count) { return Padded(static_cast<unsigned>(count), 2); };
  return Padded(static_cast<unsigned>(static_cast<int>(date.year())), 4) + L"-" +
         part(static_cast<unsigned>(date.month())) + L"-" +
         part(static_cast<unsigned>(date.day())) + L"T" + part(clock.hours().count()) +
         part(clock.minutes().count()) + part(clock.seconds().count()) + L"Z";
}

bool IsRestorePointId(const std::wstring& name) {
  if (name.size() < kShape.size()) return false;
  if (!std::equal(kShape.begin(), kShape.end(), name.begin(),
                  [](wchar_t shape, wchar_t c) { return FitsShape(c, shape); })) {
    return false;
  }
  const std::wstring_view rest = std::wstring_view(name).substr(kShape.size());
  return rest.empty() ||
         (rest.size() > 1 && rest[0] == L'-' && std::ranges::all_of(rest.substr(1), IsDigit));
}

namespace {

using Places = std::map<std::wstring, std::size_t, NameLess>;

// Puts a journal's records together, one after another.
class PointReader {
 public:
  explicit PointReader(RestorePoint& point) : point_(point) {}

  void Take(JournalLine line) {
    // Journals of the first format have no checksums in any line.
    if (point_.lines == 0) isChecked_ = line.isChecked;
    if (line.isChecked != isChecked_) return;
    if (line.flushedLines > point_.lines && point_.damage.empty()) {
      point_.damage = L"a line of its journal in front of line " +
                      std::to_wstring(point_.lines + 1) + L" is damaged or missing";
    }
    ++point_.lines;
    std::visit(*this, line.record);
  }

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
  bool isChecked_ = true;
};

}  // namespace

std::vector<std::wstring> RestorePointIds(const FileReader& files, const std::wstring& root) {
  std::vector<std::wstring> ids;
  for (const FolderEntry& entry : ListFolder(files, root)) {
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

namespace {

// Hands on a file's lines without their ends; what has no end is none.
class FileLines {
 public:
  using TakeLine = std::function<void(std::string_view line)>;

  explicit FileLines(TakeLine take) : take_(std::move(take)) {}

  [[nodiscard]] SystemCode Read(const FileReader& files, const std::wstring& path) {
    std::uint64_t taken = 0;
    return files.ReadInParts(path, [&](std::string_view part, std::uint64_t bytes) {
      taken += part.size();
      Take(part, bytes - std::min(bytes, taken));
      return true;
    });
  }

  std::size_t Count() const { return count_; }

 private:
  // The rest of the file is known, so that a long line need not grow step by step.
  void Take(std::string_view part, std::uint64_t rest) {
    for (auto end = part.find('\n'); end != std::string_view::npos; end = part.find('\n')) {
      line_.append(part.substr(0, end));
      ++count_;
      take_(line_);
      line_.clear();
      if (line_.capacity() > kLongLine) line_.shrink_to_fit();
      part.remove_prefix(end + 1);
    }
    const bool isLong = line_.size() + part.size() > kLongLine;
    if (isLong) line_.reserve(line_.size() + part.size() + static_cast<std::size_t>(rest));
    line_.append(part);
  }

  static constexpr std::size_t kLongLine = std::size_t{1} << 20;

  TakeLine take_;
  std::string line_;
  std::size_t count_ = 0;
};

}  // namespace

std::optional<RestorePoint> ReadRestorePoint(const FileReader& files, const std::wstring& root,
                                             const std::wstring& id) {
  RestorePoint point;
  point.id = id;
  point.folder = root + L"\\" + id;
  if (!IsRestorePointId(id) || !files.IsFolder(point.folder)) return std::nullopt;
  // Whatever lies behind a link, no run has put there.
  if (files.IsLink(point.folder)) return std::nullopt;
  const std::wstring path = point.folder + L"\\" + kJournalName;
  PointReader reader(point);
  FileLines lines([&reader](std::string_view text) {
    if (auto line = DecodeRecord(text)) reader.Take(std::move(*line));
  });
  if (files.Exists(path) && lines.Read(files, path) != kSystemOk) return std::nullopt;
  if (lines.Count() == 0) return point;
  // The first line is on the disk before a second one is written, and before anything changes.
  const bool hasNotBegun = point.lines == 0 && lines.Count() == 1;
  return reader.HasBegun() || hasNotBegun ? std::optional(std::move(point)) : std::nullopt;
}

}  // namespace carrovan
