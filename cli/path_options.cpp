#include "cli/path_options.h"

#include <algorithm>
#include <span>

#include "text/text.h"

namespace carrovan {
namespace {

std::wstring_view Trimmed(std::wstring_view text) {
  constexpr std::wstring_view kBlanks = L" \t\r";
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::wstring_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

// Adds a mapping; gives why it is none.
std::optional<std::wstring> Add(std::wstring_view text, const std::wstring& where,
                                std::vector<PathMapping>& mappings) {
  const ParsedMapping parsed = ParsePathMapping(text);
  if (!parsed.mapping) {
    return where + L" is to be OLD=NEW with two absolute paths: " + parsed.problem;
  }
  mappings.push_back(*parsed.mapping);
  return std::nullopt;
}

std::optional<std::wstring> AddLines(std::wstring_view text, const std::wstring& file,
                                     std::vector<PathMapping>& mappings) {
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find(L'\n'), text.size() - 1) + 1;
    const std::wstring_view line = Trimmed(text.substr(0, text.substr(0, end).find(L'\n')));
    text.remove_prefix(end);
    if (line.empty() || line.starts_with(L'#')) continue;
    const std::wstring where = file + L", line " + std::to_wstring(number) + L",";
    if (auto problem = Add(line, where, mappings)) return problem;
  }
  return std::nullopt;
}

}  // namespace

PathRulesOrRefusal RulesOf(const PathOptions& options, const FileReader& files) {
  PathRulesOrRefusal result;
  result.rules.keepsDeadPaths = options.keepDeadPaths;
  std::vector<PathMapping> mappings;
  for (const std::wstring& text : options.maps) {
    result.misuse = Add(text, L"--map \"" + text + L"\"", mappings);
    if (result.misuse) return result;
  }
  if (!options.mapFile.empty()) {
    std::string bytes;
    const SystemCode code = files.ReadBytes(options.mapFile, bytes);
    if (code != kSystemOk) {
      result.refusal = options.mapFile + L" cannot be read: " + DescribeSystemCode(code);
      return result;
    }
    const auto* begin = static_cast<const std::uint8_t*>(static_cast<const void*>(bytes.data()));
    const DecodedText decoded = DecodeText(std::span(begin, bytes.size()));
    result.misuse = AddLines(decoded.text, options.mapFile, mappings);
    if (result.misuse) return result;
  }
  if (const auto contradiction = PathMap::Contradiction(mappings)) {
    result.misuse = L"Two maps contradict each other: " + *contradiction;
    return result;
  }
  result.rules.map = PathMap(std::move(mappings));
  return result;
}

}  // namespace carrovan
