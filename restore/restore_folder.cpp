#include "restore/restore_folder.h"

#include <algorithm>

#include "platform/path_text.h"
#include "platform/text.h"

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

}  // namespace carrovan
