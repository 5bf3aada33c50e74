#include "report/fleet_folder.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "report/page_markup.h"
#include "text/text.h"

namespace carrovan {
namespace {

// More users than any workstation has.
constexpr std::size_t kMostAnswers = 1000;

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

const FolderEntry* FindEntry(const std::vector<FolderEntry>& entries, const std::wstring& name) {
  const auto found = std::ranges::find(entries, name, &FolderEntry::name);
  return found == entries.end() ? nullptr : &*found;
}

// Why an entry is no file to read; empty when it is one.
std::wstring ReasonAgainst(const FolderEntry& entry) {
  if (entry.isLink) return L" is a link, which is not followed";
  if (entry.isFolder) return L" is a folder";
  return entry.isSpecial ? L" is no file with content" : L"";
}

std::wstring ReasonAgainstFolder(const FolderEntry& entry) {
  if (entry.isLink) return L" is a link, which is not followed";
  return entry.isFolder ? L"" : L" is no folder";
}

// 0 for a name that is no answer's.
int AnswerNumber(const std::wstring& name) {
  constexpr std::size_t kMostDigits = 6;
  if (name.empty() || name.size() > kMostDigits || name.front() == L'0') return 0;
  int number = 0;
  for (const wchar_t digit : name) {
    if (digit < L'0' || digit > L'9') return 0;
    number = number * 10 + (digit - L'0');
  }
  return number;
}

std::wstring TextOfLimit(std::uint64_t bytes) {
  constexpr std::uint64_t kMegabyte = std::uint64_t{1} << 20;
  return bytes < kMegabyte ? std::to_wstring(bytes) + L" bytes"
                           : std::to_wstring(bytes / kMegabyte) + L" MB";
}

}  // namespace

FleetFolder::FleetFolder(const FileReader& files, const std::wstring& root,
                         std::uint64_t longestFile)
    : files_(files), root_(root), longestFile_(longestFile) {
  const SystemCode code = files.ReadFolder(root, entries_);
  if (code != kSystemOk) problem_ = root + L": " + DescribeSystemCode(code);
}

FleetFile FleetFolder::Read(const std::wstring& name) const {
  return ReadIn(root_, entries_, name);
}

std::vector<std::wstring> FleetFolder::Folders() const {
  std::vector<std::wstring> names;
  for (const FolderEntry& entry : entries_) {
    if (entry.isFolder) names.push_back(entry.name);
  }
  return names;
}

std::vector<FolderEntry> FleetFolder::EntriesOf(const std::wstring& folder,
                                                const std::wstring& name,
                                                std::wstring& problem) const {
  std::vector<FolderEntry> entries;
  const SystemCode code = files_.ReadFolder(folder, entries);
  if (code != kSystemOk) problem = name + L" cannot be read: " + DescribeSystemCode(code);
  return entries;
}

FleetFile FleetFolder::ReadIn(const std::wstring& folder, const std::vector<FolderEntry>& entries,
                              const std::wstring& name) const {
  FleetFile file;
  const FolderEntry* const entry = FindEntry(entries, name);
  if (entry == nullptr) return file;
  file.isThere = true;
  if (const std::wstring reason = ReasonAgainst(*entry); !reason.empty()) {
    file.problem = name + reason;
    return file;
  }
  bool isTooLong = false;
  const auto take = [&](std::string_view part, std::uint64_t size) {
    isTooLong = std::max<std::uint64_t>(size, file.bytes.size() + part.size()) > longestFile_;
    if (!isTooLong) file.bytes.append(part);
    return !isTooLong;
  };
  const SystemCode code = files_.ReadInParts(folder + L"\\" + name, take);
  if (isTooLong) file.problem = name + L" is larger than " + TextOfLimit(longestFile_);
  if (code != kSystemOk) file.problem = name + L" cannot be read: " + DescribeSystemCode(code);
  if (!file.problem.empty()) file.bytes.clear();
  return file;
}

FleetHostFolder FleetFolder::ReadHost(const std::wstring& host) const {
  FleetHostFolder read;
  const FolderEntry* const entry = FindEntry(entries_, host);
  if (entry == nullptr) return read;
  if (const std::wstring reason = ReasonAgainstFolder(*entry); !reason.empty()) {
    read.problem = L"what should be its folder" + reason;
    return read;
  }
  const std::wstring folder = root_ + L"\\" + host;
  const std::vector<FolderEntry> entries = EntriesOf(folder, L"its folder", read.problem);
  read.failure = ReadIn(folder, entries, L"failure.txt");
  const FolderEntry* const answers = FindEntry(entries, L"answers");
  if (answers == nullptr) return read;
  if (const std::wstring reason = ReasonAgainstFolder(*answers); !reason.empty()) {
    read.problem = L"answers" + reason;
  } else {
    ListAnswers(folder + L"\\answers", read);
  }
  return read;
}

void FleetFolder::ListAnswers(const std::wstring& folder, FleetHostFolder& host) const {
  for (const FolderEntry& answer : EntriesOf(folder, L"answers", host.problem)) {
    const int number = AnswerNumber(answer.name);
    if (number == 0) continue;
    FleetAnswerFiles& added = host.answers.emplace_back();
    added.number = number;
    const std::wstring reason = ReasonAgainstFolder(answer);
    if (!reason.empty()) added.problem = L"answers/" + answer.name + reason;
  }
  std::ranges::sort(host.answers, {}, &FleetAnswerFiles::number);
  if (host.answers.size() <= kMostAnswers) return;
  host.answers.resize(kMostAnswers);
  host.problem = L"it has more than " + std::to_wstring(kMostAnswers) + L" answers";
}

FleetAnswerFiles FleetFolder::ReadAnswer(const std::wstring& host, int number) const {
  const std::wstring name = L"answers/" + std::to_wstring(number);
  const std::wstring folder = root_ + L"\\" + host + L"\\answers\\" + std::to_wstring(number);
  FleetAnswerFiles answer;
  answer.number = number;
  const std::vector<FolderEntry> entries = EntriesOf(folder, name, answer.problem);
  answer.output = ReadIn(folder, entries, L"output.json");
  answer.errors = ReadIn(folder, entries, L"errors.txt");
  answer.status = ReadIn(folder, entries, L"status.txt");
  answer.user = ReadIn(folder, entries, L"user.txt");
  return answer;
}

bool CanBeHostFolder(const std::wstring& name) {
  if (name.empty() || name == L"." || name == L"..") return false;
  return std::ranges::none_of(
      name, [](wchar_t c) { return c == L'/' || c == L'\\' || c < L' ' || c == L'\x7F'; });
}

std::vector<std::wstring> FleetLines(const std::string& bytes, std::size_t mostLines,
                                     std::size_t mostCharacters, std::size_t& omitted) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  std::string_view rest = bytes;
  if (rest.starts_with(kMark)) rest.remove_prefix(kMark.size());
  std::vector<std::wstring> lines;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    const std::string_view line = Trimmed(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (line.empty()) continue;
    if (lines.size() == mostLines) {
      ++omitted;
    } else {
      lines.push_back(CutText(FromUtf8(line), mostCharacters));
    }
  }
  return lines;
}

std::optional<int> FleetNumber(const std::string& bytes) {
  const std::string_view digits = Trimmed(bytes);
  int number = 0;
  const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  const bool isNumber =
      !digits.empty() && error == std::errc() && stop == digits.data() + digits.size();
  return isNumber ? std::optional(number) : std::nullopt;
}

}  // namespace carrovan
