#include "restore/point_check.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>

#include "environment/product_context.h"
#include "platform/listed_kinds.h"
#include "registry_text/registry_key.h"
#include "restore/restore_point.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

using Reason = std::optional<std::wstring>;

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

bool IsMaker(std::wstring_view name) {
  return std::ranges::any_of(
      kMakerFolders, [name](std::wstring_view maker) { return CompareNames(maker, name) == 0; });
}

// "28.0". A folder of that name directly in a half belongs to the 2D drafting settings.
bool IsVersionName(std::wstring_view name) {
  const std::size_t dot = name.find(L'.');
  return dot != 0 && dot != std::wstring_view::npos && dot + 1 < name.size() &&
         std::ranges::all_of(name.substr(0, dot), IsDigit) &&
         std::ranges::all_of(name.substr(dot + 1), IsDigit);
}

// "~carrovan0.part"
bool IsPartName(std::wstring_view name) {
  constexpr std::wstring_view kStart = L"~carrovan";
  constexpr std::wstring_view kEnd = L".part";
  return name.size() > kStart.size() + kEnd.size() && name.starts_with(kStart) &&
         name.ends_with(kEnd) &&
         std::ranges::all_of(name.substr(kStart.size(), name.size() - kStart.size() - kEnd.size()),
                             IsDigit);
}

std::vector<std::wstring> NamesOf(std::wstring_view path) {
  std::vector<std::wstring> names;
  for (;;) {
    const std::size_t end = path.find(L'\\');
    names.emplace_back(path.substr(0, end));
    if (end == std::wstring_view::npos) return names;
    path.remove_prefix(end + 1);
  }
}

class PointCheck {
 public:
  PointCheck(const RestorePoint& point, bool trusted, const Machine& machine)
      : point_(point), trusted_(trusted), machine_(machine), kinds_(*machine.files) {
    ListHalves();
    for (const FileHistory& file : point.files) {
      if (file.before.kind == FileKind::kLink) restoredLinks_.insert(file.path);
    }
  }

  std::vector<std::wstring> Run() {
    if (!point_.damage.empty()) refusals_.push_back(point_.damage);
    if (machine_.files->IsLink(point_.folder + L"\\" + kCopiesFolder)) {
      refusals_.push_back(L"its copies lie behind a link");
    }
    for (const std::wstring& folder : point_.scratch) {
      if (!IsScratchPath(*machine_.folders, folder)) {
        Refuse(folder, std::wstring(L"is no folder of a run's own"));
      }
    }
    for (const FileHistory& file : point_.files) Refuse(file.path, RefusalOfFile(file));
    for (const KeyHistory& key : point_.keys) {
      Refuse(FullKeyPath(key.hive, key.keyPath), RefusalOfKey(key));
    }
    return std::move(refusals_);
  }

 private:
  void Refuse(const std::wstring& name, const Reason& reason) {
    if (reason) refusals_.push_back(name + L" " + *reason);
  }

  // A package is laid over the folders beside the Local one, wherever the Roaming one is.
  void ListHalves() {
    const auto local = machine_.folders->LocalAppData();
    const auto roaming = machine_.folders->RoamingAppData();
    if (roaming) halves_.push_back(TidyPath(*roaming));
    if (!local) return;
    halves_.push_back(TidyPath(*local));
    const std::wstring parent = RemoveFileSpec(TidyPath(*local));
    halves_.push_back(WithTrailingBackslash(parent) + L"Local");
    halves_.push_back(WithTrailingBackslash(parent) + L"Roaming");
  }

  const std::wstring* HalfOf(const std::wstring& path) const {
    const auto found = std::ranges::find_if(
        halves_, [&](const std::wstring& half) { return IsAtOrBelow(path, half); });
    return found == halves_.end() ? nullptr : &*found;
  }

  bool IsAroundHalf(const std::wstring& path) const {
    return std::ranges::any_of(halves_,
                               [&](const std::wstring& half) { return IsAtOrBelow(half, path); });
  }

  // Folders that a run made on the way to its own.
  static bool IsFolderOnly(const FileHistory& file) {
    return file.copy.empty() && file.parts.empty() &&
           (file.before.kind == FileKind::kFolder || file.before.kind == FileKind::kAbsent) &&
           (!file.after || file.after->kind == FileKind::kFolder ||
            file.after->kind == FileKind::kAbsent);
  }

  Reason RefusalOfFile(const FileHistory& file) {
    if (Reason refusal = RefusalOfPlace(file)) return refusal;
    if (Reason refusal = RefusalOfCopy(file)) return refusal;
    for (const std::wstring& part : file.parts) {
      const std::wstring folder = RemoveFileSpec(file.path) + L"\\";
      if (!part.starts_with(folder) || !IsPartName(part.substr(folder.size()))) {
        return L"has a file beside it that no run makes: " + part;
      }
    }
    return std::nullopt;
  }

  Reason RefusalOfPlace(const FileHistory& file) {
    const std::wstring& path = file.path;
    if (path.find(L'/') != std::wstring::npos) return L"is no plain path";
    if (IsAroundHalf(path) && IsFolderOnly(file)) return std::nullopt;
    const std::wstring* const half = HalfOf(path);
    if (half == nullptr || path.size() <= half->size() + 1) {
      return L"lies outside the user's application data";
    }
    const std::wstring below = path.substr(half->size() + 1);
    if (const Reason refusal = RefusalOfStoredName(below)) return L"is a path that " + *refusal;
    const auto root = RestoreRoot(*machine_.folders);
    if (root && IsAtOrBelow(path, TidyPath(*root))) return L"lies among the restore points";
    const std::vector<std::wstring> names = NamesOf(below);
    if (!trusted_ && !IsMaker(names[0]) && !IsVersionName(names[0])) {
      return L"lies in a folder of another program";
    }
    return RefusalOfLinks(*half, names);
  }

  Reason RefusalOfLinks(std::wstring folder, const std::vector<std::wstring>& names) {
    for (std::size_t i = 0; i + 1 < names.size(); ++i) {
      folder += L"\\" + names[i];
      if (!IsLink(folder) || restoredLinks_.contains(folder)) continue;
      if (!trusted_ && !MayStandForFolder(names, i)) return L"lies behind the link " + folder;
    }
    return std::nullopt;
  }

  // Many files lie in one folder.
  bool IsLink(const std::wstring& folder) {
    const auto [place, added] = links_.try_emplace(folder, false);
    if (added) place->second = machine_.files->IsLink(folder);
    return place->second;
  }

  // A user may keep the product's folders on another disk.
  bool MayStandForFolder(const std::vector<std::wstring>& names, std::size_t level) const {
    if (level == 0) return IsMaker(names[0]);
    constexpr std::wstring_view kDrafting = L"ORMA CAD TVRN-INT";
    if (level == 1 && names[1].starts_with(kDrafting)) return true;
    if (CompareNames(names[1], machine_.product->ProductName()) != 0) return false;
    return level == 1 || (level == 2 && IsVersionName(names[2])) ||
           (level == 3 && IsVersionName(names[2]) && IsLanguageTag(names[3]));
  }

  // What lies in the restore point must be what the journal says, or gone back to its place.
  Reason RefusalOfCopy(const FileHistory& file) {
    if (file.copy.empty()) return std::nullopt;
    const std::wstring folder = point_.folder + L"\\" + kCopiesFolder + L"\\";
    const std::wstring name =
        file.copy.starts_with(folder) ? file.copy.substr(folder.size()) : std::wstring();
    const bool isOwn = !name.empty() && std::ranges::all_of(name, IsDigit);
    const FileKind kind = isOwn ? kinds_.At(file.copy) : FileKind::kAbsent;
    if (!isOwn || (kind != FileKind::kAbsent && kind != file.before.kind)) {
      return L"has a copy that no run keeps: " + file.copy;
    }
    return file.before.kind == FileKind::kFile ? RefusalOfContent(file, kind) : std::nullopt;
  }

  // Of what is as it was no copy is needed: it may have been about to be made.
  Reason RefusalOfContent(const FileHistory& file, FileKind copyKind) const {
    if (copyKind == FileKind::kAbsent && file.unfinished) return std::nullopt;
    FileImage copy;
    FileImage now;
    const bool isWhole = copyKind == FileKind::kFile &&
                         ReadFileImage(*machine_.files, file.copy, copyKind, copy) == kSystemOk &&
                         copy == file.before;
    if (isWhole ||
        (ReadFileImage(*machine_.files, file.path, now) == kSystemOk && now == file.before)) {
      return std::nullopt;
    }
    return L"cannot be put back, as its copy is damaged or missing: " + file.copy;
  }

  Reason RefusalOfKey(const KeyHistory& key) const {
    if (trusted_) return std::nullopt;
    const std::vector<std::wstring> names = NamesOf(key.keyPath);
    const bool plain = std::ranges::none_of(names, &std::wstring::empty);
    const bool isUsers =
        key.hive == RegistryHive::kCurrentUser && plain && CompareNames(names[0], L"SOFTWARE") == 0;
    if (isUsers && names.size() > 1 && IsMaker(names[1])) return std::nullopt;
    // A run may have made the key around those of the makers.
    const bool isEmpty = key.before.values.empty() && key.set.empty();
    if (isUsers && names.size() == 1 && isEmpty) return std::nullopt;
    return L"is not a key of the product";
  }

  const RestorePoint& point_;
  const bool trusted_;
  const Machine& machine_;
  ListedKinds kinds_;
  std::map<std::wstring, bool, NameLess> links_;  // by folder
  std::vector<std::wstring> halves_;
  std::set<std::wstring, NameLess> restoredLinks_;
  std::vector<std::wstring> refusals_;
};

}  // namespace

std::vector<std::wstring> RefusalsOfPoint(const RestorePoint& point, bool trusted,
                                          const Machine& machine) {
  return PointCheck(point, trusted, machine).Run();
}

}  // namespace carrovan
