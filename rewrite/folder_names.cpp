#include "rewrite/folder_names.h"

#include <algorithm>

#include "platform/text.h"

namespace carrovan {
namespace {

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

bool IsVersion(std::wstring_view component) {
  return component.size() >= 3 && IsDigit(component.front()) && IsDigit(component.back()) &&
         std::ranges::count(component, L'.') == 1 &&
         std::ranges::all_of(component, [](wchar_t c) { return IsDigit(c) || c == L'.'; });
}

}  // namespace

std::wstring VersionComponentOf(std::wstring_view path) {
  while (!path.empty()) {
    const std::size_t end = std::min(path.find(L'\\'), path.size());
    if (IsVersion(path.substr(0, end))) return std::wstring(path.substr(0, end));
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return {};
}

SystemCode RenameFolderPart(std::wstring& path, std::wstring_view oldText,
                            std::wstring_view newText, FileSystem& files) {
  // The drafting product of 2025 keeps its settings in the folder of 2024.
  constexpr std::wstring_view kDrafting2025 = L"ORMA CAD TVRN-INT-VANTRIC 2025 (x64)";
  constexpr std::wstring_view kDrafting2024 = L"ORMA CAD TVRN-INT-VANTRIC 2024 (x64)";
  const std::size_t nameAt = path.rfind(L'\\') + 1;
  const std::wstring name = path.substr(nameAt);
  if (!Contains(name, oldText)) return kSystemOk;
  std::wstring renamed = path.substr(0, nameAt) + ReplaceAll(name, oldText, newText);
  renamed = ReplaceAll(renamed, kDrafting2025, kDrafting2024);
  if (renamed == path) return kSystemOk;
  const SystemCode code = files.MoveTo(path, renamed);
  if (code == kSystemOk) path = renamed;
  return code;
}

}  // namespace carrovan
