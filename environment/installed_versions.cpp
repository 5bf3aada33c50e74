#include "environment/installed_versions.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "environment/version_folders.h"
#include "text/text.h"

namespace carrovan {
namespace {

bool IsBlank(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r'); }
bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// The longest front part that could be a decimal number, as plain characters. Words such as "inf",
// which number parsers also take, hold none of its characters at the front and give an empty text.
std::string NumberCharacters(std::wstring_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  std::string characters;
  if (!text.empty() && (text.front() == L'-' || text.front() == L'+')) {
    if (text.front() == L'-') characters.push_back('-');
    text.remove_prefix(1);
  }
  if (text.empty() || !(IsDigit(text.front()) || text.front() == L'.')) return {};
  for (const wchar_t c : text) {
    const bool plain = IsDigit(c) || std::wstring_view(L".eE+-").find(c) != std::wstring_view::npos;
    if (!plain) break;
    characters.push_back(static_cast<char>(c));
  }
  return characters;
}

// As "%d" prints a number that was cast to int, without the cast's undefined range.
int TruncateToInt(double number) {
  constexpr double kLowest = std::numeric_limits<int>::min();
  constexpr double kHighest = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(std::trunc(number), kLowest, kHighest));
}

}  // namespace

double LeadingNumber(std::wstring_view text) {
  const std::string characters = NumberCharacters(text);
  double number = 0;
  std::from_chars(characters.data(), characters.data() + characters.size(), number);
  return number;
}

int LeadingInteger(std::wstring_view text) {
  std::string characters = NumberCharacters(text);
  characters.resize(std::min(characters.find_first_of(".eE+"), characters.size()));
  int number = 0;
  const auto result =
      std::from_chars(characters.data(), characters.data() + characters.size(), number);
  if (result.ec != std::errc::result_out_of_range) return number;
  return characters.front() == '-' ? std::numeric_limits<int>::min()
                                   : std::numeric_limits<int>::max();
}

std::wstring YearForm(std::wstring_view internalForm) {
  constexpr int kHighest = std::numeric_limits<int>::max() - kFirstReleaseYear;
  const int release = std::min(TruncateToInt(LeadingNumber(internalForm)), kHighest);
  return std::to_wstring(release + kFirstReleaseYear);
}

std::wstring InternalForm(std::wstring_view yearForm) {
  const long long release = static_cast<long long>(LeadingInteger(yearForm)) - kFirstReleaseYear;
  return std::to_wstring(release) + L".0";
}

namespace {

// Versions up to this one keep their settings in a form of their own.
constexpr double kLastUnsupportedVersion = 20.0;

std::wstring MachineKey(const ProductContext& context) {
  return L"SOFTWARE\\" + context.companyShortName + L"\\" + context.productName;
}

}  // namespace

void EnumerateInstalledVersions(ProductContext& context, const RegistryReader& registry) {
  context.installedVersions.clear();
  const auto names = registry.SubkeyNames(RegistryHive::kLocalMachine, MachineKey(context));
  for (const std::wstring& name : names.value_or(std::vector<std::wstring>())) {
    if (name.empty()) continue;
    if (name == context.productVersion) break;
    if (LeadingNumber(name) > kLastUnsupportedVersion) context.installedVersions.push_back({name});
  }
  context.installedVersions.push_back({context.productVersion});
}

bool HasBeenRun(const ProductContext& context, const RegistryReader& registry) {
  return registry.CanOpenKey(RegistryHive::kCurrentUser, LiveKey(context));
}

bool HasBeenRun(const std::wstring& company, const std::wstring& product,
                const std::wstring& version, const RegistryReader& registry) {
  const std::wstring key = L"SOFTWARE\\" + company + L"\\" + product;
  const auto opens = [&](const std::wstring& path) {
    return registry.CanOpenKey(RegistryHive::kCurrentUser, path);
  };
  return opens(key + L" " + version) || opens(key + L"\\" + version);
}

namespace {

constexpr wchar_t kProductExecutable[] = L"VANTRIC.exe";

}  // namespace

bool IsProductRunning(const ProcessList& processes) {
  return std::ranges::any_of(processes.ExecutableNames(), [](const std::wstring& name) {
    return EqualsIgnoringAsciiCase(name, kProductExecutable);
  });
}

}  // namespace carrovan
