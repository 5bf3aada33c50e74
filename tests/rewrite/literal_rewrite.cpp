#include "tests/rewrite/literal_rewrite.h"

#include <limits>
#include <vector>

#include "rewrite/xml_rewrite.h"
#include "text/text.h"

namespace carrovan {
namespace {

bool EndsSegment(char16_t c) { return c <= u' ' || c == u'\\' || c == u'/' || c == u'"'; }

std::u16string Trimmed(const std::u16string& text) {
  const char16_t* const blanks = u" \t\n\v\f\r";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::u16string::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::vector<std::u16string> Lines(const std::u16string& text) {
  std::vector<std::u16string> lines;
  std::size_t begin = 0;
  while (begin < text.size()) {
    const std::size_t end = std::min(text.find(u'\n', begin), text.size());
    lines.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return lines;
}

bool IsInvalid(const std::u16string& line, const FileReader& files) {
  if (line.starts_with(u"[")) return false;
  const std::size_t equals = line.find(u'=');
  if (equals == std::u16string::npos) return false;
  const std::u16string value = Trimmed(line.substr(equals + 1));
  if (value.size() < 2 || value.front() != u'"' || value.back() != u'"') return false;
  const std::u16string inner = value.substr(1, value.size() - 2);
  if (inner.size() < 3) return false;
  const bool drive = inner[1] == u':' && (inner[2] == u'\\' || inner[2] == u'/');
  const bool network = inner[0] == u'\\' && inner[1] == u'\\';
  if (!drive && !network) return false;
  return !files.Exists(ReplaceAll(FromUtf16(inner), L"\\\\", L"\\"));
}

// The lines of a document, each without LF or CR LF.
std::vector<std::u16string> DocumentLines(const std::u16string& text) {
  std::vector<std::u16string> lines = Lines(text);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const bool ended = i + 1 < lines.size() || text.ends_with(u'\n');
    if (ended && lines[i].ends_with(u'\r')) lines[i].pop_back();
  }
  return lines;
}

}  // namespace

std::u16string LiterallyReplaced(const std::u16string& text, const std::u16string& search,
                                 const std::u16string& replacement, std::size_t& count) {
  if (search.empty()) return text;
  std::u16string result;
  for (std::size_t at = 0; at < text.size();) {
    if (text.compare(at, search.size(), search) == 0) {
      result += replacement;
      at += search.size();
      ++count;
    } else {
      result += text[at++];
    }
  }
  return result;
}

std::u16string LiterallyWithUser(std::u16string text, const std::u16string& name,
                                 const std::u16string& profile, std::size_t& count) {
  for (const std::u16string prefix : {u"C:\\\\Users\\\\", u"C:/Users/", u"\\Users\\", u"/Users/"}) {
    for (std::size_t at = text.find(prefix); at != std::u16string::npos;
         at = text.find(prefix, at)) {
      at += prefix.size();
      const std::size_t behind = at + name.size();
      if (text.compare(at, name.size(), name) == 0 &&
          (behind == text.size() || EndsSegment(text[behind]))) {
        at = behind;
        continue;
      }
      std::size_t end = at;
      while (end < text.size() && !EndsSegment(text[end])) ++end;
      if (end == at) continue;
      text.replace(at, end - at, name);
      at += name.size();
      ++count;
    }
  }
  return profile.empty() ? text : LiterallyReplaced(text, u"%USERPROFILE%", profile, count);
}

std::u16string LiterallyWithoutInvalidPaths(const std::u16string& text, const FileReader& files,
                                            std::size_t& count) {
  std::u16string kept;
  for (const std::u16string& line : Lines(text)) {
    const std::u16string trimmed = Trimmed(line);
    if (IsInvalid(trimmed, files)) {
      ++count;
    } else {
      kept += trimmed + u"\r\n";
    }
  }
  return count == 0 ? text : kept;
}

std::u16string LiterallyRetargeted(const std::u16string& text, const std::u16string& key,
                                   const std::u16string& target) {
  double largest = std::numeric_limits<double>::lowest();
  std::u16string largestText;
  for (const std::u16string& line : DocumentLines(text)) {
    for (std::size_t at = line.find(key); at != std::u16string::npos; at = line.find(key, at)) {
      std::u16string run;
      for (at += key.size(); at < line.size(); ++at) {
        if (line[at] != u'.' && (line[at] < u'0' || line[at] > u'9')) break;
        run += line[at];
      }
      double number = 0;
      if (run.empty() || !ParseNumber(FromUtf16(run), number) || number <= largest) continue;
      largest = number;
      largestText = run;
    }
  }
  if (largestText.empty()) return text;
  std::u16string result;
  std::size_t count = 0;
  for (const std::u16string& line : DocumentLines(text)) {
    result += LiterallyReplaced(line, key + largestText, key + target, count) + u"\r\n";
  }
  return result;
}

}  // namespace carrovan
