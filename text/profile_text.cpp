#include "text/profile_text.h"

#include <cstddef>
#include <optional>
#include <vector>

#include "text/text.h"

namespace carrovan {
namespace {

// The end-of-file mark of old editors counts as a blank.
constexpr std::wstring_view kBlanks = L" \t\v\f\r\n\x1A";

std::wstring_view WithoutLeadingBlanks(std::wstring_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  return first == std::wstring_view::npos ? std::wstring_view() : text.substr(first);
}

std::wstring_view Trimmed(std::wstring_view text) {
  const std::wstring_view rest = WithoutLeadingBlanks(text);
  return rest.substr(0, rest.find_last_not_of(kBlanks) + 1);
}

// Lines end in CR LF, LF or CR; what follows the last line end is a line when it is not empty.
std::vector<std::wstring_view> SplitLines(std::wstring_view text) {
  std::vector<std::wstring_view> lines;
  while (!text.empty()) {
    const std::size_t end = text.find_first_of(L"\r\n");
    lines.push_back(text.substr(0, end));
    if (end == std::wstring_view::npos) break;
    const bool pair = text.substr(end, 2) == L"\r\n";
    text.remove_prefix(end + (pair ? 2 : 1));
  }
  return lines;
}

// A section's name reaches to the last bracket of its line.
std::optional<std::wstring_view> SectionName(std::wstring_view line) {
  line = Trimmed(line);
  if (line.empty() || line.front() != L'[') return std::nullopt;
  const std::size_t close = line.rfind(L']');
  if (close == std::wstring_view::npos) return std::nullopt;
  return Trimmed(line.substr(1, close - 1));
}

bool IsKeyLine(std::wstring_view line) {
  line = Trimmed(line);
  return !line.empty() && line.front() != L';';
}

std::wstring_view KeyName(std::wstring_view line) {
  return Trimmed(line.substr(0, line.find(L'=')));
}

std::wstring_view KeyValue(std::wstring_view line) {
  const std::size_t equals = line.find(L'=');
  if (equals == std::wstring_view::npos) return {};
  return Trimmed(line.substr(equals + 1));
}

std::wstring_view WithoutQuotes(std::wstring_view value) {
  if (value.size() < 2 || value.front() != value.back()) return value;
  if (value.front() != L'"' && value.front() != L'\'') return value;
  return value.substr(1, value.size() - 2);
}

struct Place {
  bool sectionFound = false;
  std::optional<std::size_t> keyLine;
  std::size_t endOfSection = 0;  // behind its last line that is not blank
};

// Of sections and keys that are there twice, only the first counts. Lines in front of the first
// section belong to the section without a name.
Place FindKey(const std::vector<std::wstring_view>& lines, std::wstring_view section,
              std::wstring_view key) {
  section = Trimmed(section);
  key = Trimmed(key);
  Place place;
  place.sectionFound = section.empty();
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (const auto name = SectionName(lines[i])) {
      if (place.sectionFound) break;
      if (CompareNames(*name, section) != 0) continue;
      place.sectionFound = true;
      place.endOfSection = i + 1;
    } else if (place.sectionFound && !Trimmed(lines[i]).empty()) {
      place.endOfSection = i + 1;
      if (!IsKeyLine(lines[i]) || CompareNames(KeyName(lines[i]), key) != 0) continue;
      place.keyLine = i;
      break;
    }
  }
  return place;
}

std::wstring Joined(const std::vector<std::wstring_view>& lines) {
  std::wstring text;
  for (const std::wstring_view line : lines) text.append(line).append(L"\r\n");
  return text;
}

}  // namespace

std::wstring ProfileValue(std::wstring_view text, std::wstring_view section,
                          std::wstring_view key) {
  const std::vector<std::wstring_view> lines = SplitLines(text);
  const Place place = FindKey(lines, section, key);
  if (!place.keyLine) return {};
  return std::wstring(WithoutQuotes(KeyValue(lines[*place.keyLine])));
}

std::vector<std::wstring> ProfileKeys(std::wstring_view text, std::wstring_view section) {
  section = Trimmed(section);
  std::vector<std::wstring> keys;
  bool inside = section.empty();
  for (const std::wstring_view line : SplitLines(text)) {
    if (const auto name = SectionName(line)) {
      if (inside) break;
      inside = CompareNames(*name, section) == 0;
    } else if (inside && IsKeyLine(line)) {
      keys.emplace_back(KeyName(line));
    }
  }
  return keys;
}

std::wstring WithProfileValue(std::wstring_view text, std::wstring_view section,
                              std::wstring_view key, std::wstring_view value) {
  std::vector<std::wstring_view> lines = SplitLines(text);
  const Place place = FindKey(lines, section, key);
  value = WithoutLeadingBlanks(value);
  if (place.keyLine) {
    std::wstring_view& line = lines[*place.keyLine];
    if (KeyValue(line) == value) return std::wstring(text);
    const std::wstring changed = std::wstring(KeyName(line)).append(L"=").append(value);
    line = changed;
    return Joined(lines);
  }
  const std::wstring header = std::wstring(L"[").append(Trimmed(section)).append(L"]");
  const std::wstring added = std::wstring(Trimmed(key)).append(L"=").append(value);
  std::size_t position = place.endOfSection;
  if (!place.sectionFound) {
    lines.push_back(header);
    position = lines.size();
  }
  lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(position), added);
  return Joined(lines);
}

}  // namespace carrovan
