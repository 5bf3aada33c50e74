#include "rewrite/path_walk.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "registry_text/registry_file_writer.h"
#include "registry_text/registry_key.h"
#include "rewrite/document_text.h"
#include "rewrite/path_search.h"
#include "text/text.h"

namespace carrovan {
namespace {

// Asks the map about each path of one file and reports it.
class PathMapper {
 public:
  PathMapper(const PathMap& map, const ReportPath& report) : map_(map), report_(report) {}

  // True when the text was changed. A path becomes `longest` units at most, and nothing that
  // `canSpell` denies.
  using CanSpell = std::function<bool(std::u16string_view text)>;
  bool Map(std::u16string& text, PathSpelling spelling, const PathPlace& place, std::size_t longest,
           const CanSpell& canSpell) {
    return ReplacePaths(text, spelling,
                        [&](const SpelledPath& found) -> std::optional<NewBeginning> {
                          const PathMapping* mapping = Visit(found, place, longest, canSpell);
                          if (mapping == nullptr) return std::nullopt;
                          return NewBeginning{ToUtf16(mapping->from).size(), ToUtf16(mapping->to)};
                        });
  }

 private:
  const PathMapping* Visit(const SpelledPath& found, const PathPlace& place, std::size_t longest,
                           const CanSpell& canSpell) {
    WalkedPath walked{FromUtf16(found.path), place, PathOutcome::kStays, {}};
    const PathMapping* mapping = map_.Find(walked.path);
    if (mapping != nullptr) {
      const std::u16string to = ToUtf16(mapping->to);
      const std::u16string rest = found.path.substr(ToUtf16(mapping->from).size());
      walked.becomes = FromUtf16(to + rest);
      walked.outcome = to.size() + rest.size() > longest ? PathOutcome::kTooLong
                       : canSpell(to)                    ? PathOutcome::kMapped
                                                         : PathOutcome::kUnspelled;
    }
    if (report_) report_(walked);
    return walked.outcome == PathOutcome::kMapped ? mapping : nullptr;
  }

  const PathMap& map_;
  const ReportPath& report_;
};

bool IsBlank(char16_t c) { return c == u' ' || (c >= u'\t' && c <= u'\r'); }

std::u16string_view Trimmed(std::u16string_view text) {
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  return text;
}

// The quote that ends a string whose content begins at `from`; the text's end when there is none.
std::size_t QuoteBehind(std::u16string_view text, std::size_t from) {
  for (; from < text.size() && text[from] != u'"'; ++from) {
    if (text[from] == u'\\') ++from;
  }
  return std::min(from, text.size());
}

// As a value's name or text stands for itself.
std::wstring Unescaped(std::u16string_view text) {
  std::u16string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == u'\\' && i + 1 < text.size()) ++i;
    plain.push_back(text[i]);
  }
  return FromUtf16(plain);
}

std::optional<std::uint8_t> DigitOf(char16_t c) {
  const char16_t lower = c | 0x20;
  if (c >= u'0' && c <= u'9') return static_cast<std::uint8_t>(c - u'0');
  if (lower >= u'a' && lower <= u'f') return static_cast<std::uint8_t>(lower - u'a' + 10);
  return std::nullopt;
}

// The bytes of a list such as "43,00,\" and its further lines.
std::string BytesOfList(std::u16string_view list) {
  std::string bytes;
  std::uint8_t high = 0;
  bool hasHigh = false;
  for (const char16_t c : list) {
    const auto digit = DigitOf(c);
    if (!digit) continue;
    if (hasHigh) bytes.push_back(static_cast<char>(high << 4 | *digit));
    high = *digit;
    hasHigh = !hasHigh;
  }
  return bytes;
}

// The parts of a line that sets a value.
struct ValueLine {
  std::size_t nameBegin = 0;  // between the quotes
  std::size_t nameEnd = 0;
  std::size_t data = 0;  // behind "="
};

std::optional<ValueLine> ReadValueLine(std::u16string_view line) {
  ValueLine parts;
  std::size_t at = 0;
  while (at < line.size() && IsBlank(line[at])) ++at;
  if (at == line.size() || (line[at] != u'"' && line[at] != u'@')) return std::nullopt;
  if (line[at] == u'"') {
    parts.nameBegin = at + 1;
    parts.nameEnd = at = QuoteBehind(line, parts.nameBegin);
  }
  do {
    ++at;
  } while (at < line.size() && IsBlank(line[at]));
  if (at >= line.size() || line[at] != u'=') return std::nullopt;
  do {
    ++at;
  } while (at < line.size() && IsBlank(line[at]));
  parts.data = std::min(at, line.size());
  return parts;
}

// Whether data are a string or strings as bytes: REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ. Gives where
// the list begins.
std::optional<std::size_t> TextListAt(std::u16string_view line, std::size_t data) {
  for (const std::u16string_view type : {u"hex(1):", u"hex(2):", u"hex(7):"}) {
    if (line.substr(data).starts_with(type)) return data + type.size();
  }
  return std::nullopt;
}

// A registry file that comes in parts.
class RegistryPathWalk {
 public:
  RegistryPathWalk(const PathMap& map, const ReportPath& report, const CodePage& codePage)
      : mapper_(map, report), codePage_(codePage) {}

  void Take(std::string_view part) {
    std::size_t searched = form_ ? pending_.size() : 0;
    pending_.append(part);
    if (!form_ && pending_.size() >= 2) Begin();
    if (!form_) return;
    searched -= searched % form_->UnitBytes();
    const std::size_t end = LastLineEnd(pending_, searched, form_->UnitBytes());
    TakeLines(std::string_view(pending_).substr(0, end));
    pending_.erase(0, end);
  }

  void Finish() {
    if (!form_) Begin();
    const std::size_t whole = pending_.size() - pending_.size() % form_->UnitBytes();
    TakeLines(std::string_view(pending_).substr(0, whole));
    EndList();
    output_.append(pending_, whole);
  }

  // The file's new bytes since the last call.
  std::string TakeOutput() { return std::exchange(output_, {}); }

 private:
  void Begin() {
    form_.emplace(pending_, codePage_);
    output_ = form_->Mark(pending_);
    pending_.erase(0, output_.size());
  }

  void TakeLines(std::string_view lines) {
    while (!lines.empty()) TakeLine(TakeWholeLines(lines, 0, form_->UnitBytes()));
  }

  void TakeLine(std::string_view bytes) {
    std::u16string line = form_->Decode(bytes);
    if (++lineNumber_ == 1) isOldForm_ = Trimmed(line) == u"REGEDIT4";
    if (!list_.empty()) return GoOnWithList(line, bytes);
    if (insideText_) return GoOnWithText(std::move(line), bytes);
    const std::u16string_view trimmed = Trimmed(line);
    if (trimmed.starts_with(u'[')) {
      place_.key = FromUtf16(trimmed.substr(1, trimmed.rfind(u']') - 1));
    } else if (const auto value = ReadValueLine(line)) {
      return TakeValue(std::move(line), *value, bytes);
    }
    output_.append(bytes);
  }

  void TakeValue(std::u16string line, const ValueLine& value, std::string_view bytes) {
    place_.name = Unescaped(
        std::u16string_view(line).substr(value.nameBegin, value.nameEnd - value.nameBegin));
    place_.line = lineNumber_;
    if (TextListAt(line, value.data)) {
      list_ = std::move(line);
      listBytes_ = bytes;
      if (!GoesOn(list_)) EndList();
      return;
    }
    bool changed = false;
    if (value.data < line.size() && line[value.data] == u'"') {
      const std::size_t end = QuoteBehind(line, value.data + 1);
      insideText_ = end == line.size();
      changed = MapPart(line, value.data + 1, end, kLongestPath);
    }
    changed = MapPart(line, value.nameBegin, value.nameEnd, kLongestValueName) || changed;
    Emit(line, bytes, changed);
  }

  // A string with a line end in it.
  void GoOnWithText(std::u16string line, std::string_view bytes) {
    const std::size_t end = QuoteBehind(line, 0);
    insideText_ = end == line.size();
    const bool changed = MapPart(line, 0, end, kLongestPath);
    Emit(line, bytes, changed);
  }

  static bool GoesOn(std::u16string_view line) { return Trimmed(line).ends_with(u'\\'); }

  void GoOnWithList(std::u16string_view line, std::string_view bytes) {
    list_.append(line);
    listBytes_.append(bytes);
    if (!GoesOn(line)) EndList();
  }

  // The value whose bytes came on the lines before.
  void EndList() {
    if (list_.empty()) return;
    std::u16string line = std::exchange(list_, {});
    const std::string bytes = std::exchange(listBytes_, {});
    // The name comes first, since the list is wrapped behind it.
    const ValueLine before = *ReadValueLine(line);
    const bool inName = MapPart(line, before.nameBegin, before.nameEnd, kLongestValueName);
    // Such a line has been read before.
    const ValueLine value = *ReadValueLine(line);
    const std::size_t at = *TextListAt(line, value.data);
    std::u16string text = TextOfList(std::u16string_view(line).substr(at));
    place_.asBytes = true;
    const bool inData = mapper_.Map(text, PathSpelling::kPlain, place_, kLongestPath,
                                    [&](auto to) { return !isOldForm_ || form_->CanHold(to); });
    place_.asBytes = false;
    if (inData) line = WithList(line, at, text);
    Emit(line, bytes, inData || inName);
  }

  std::u16string TextOfList(std::u16string_view list) const {
    const std::string bytes = BytesOfList(list);
    if (isOldForm_) return form_->Decode(bytes);
    std::u16string text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
      text.push_back(static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                           static_cast<unsigned char>(bytes[i + 1]) << 8));
    }
    return text;
  }

  std::u16string WithList(std::u16string_view line, std::size_t at,
                          std::u16string_view text) const {
    std::vector<std::uint8_t> data;
    if (isOldForm_) {
      for (const char byte : form_->Encode(text)) data.push_back(static_cast<std::uint8_t>(byte));
    } else {
      for (const char16_t unit : text) {
        data.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        data.push_back(static_cast<std::uint8_t>(unit >> 8));
      }
    }
    std::wstring list = FromUtf16(line.substr(0, at));
    AppendHexList(list, data);
    const std::size_t end = Trimmed(line).size() + (line.size() - TrimmedFront(line).size());
    return ToUtf16(list) + std::u16string(line.substr(end));
  }

  static std::u16string_view TrimmedFront(std::u16string_view line) {
    while (!line.empty() && IsBlank(line.front())) line.remove_prefix(1);
    return line;
  }

  bool MapPart(std::u16string& line, std::size_t begin, std::size_t end, std::size_t longest) {
    std::u16string part = line.substr(begin, end - begin);
    const bool changed = mapper_.Map(part, PathSpelling::kRegistry, place_, longest,
                                     [&](auto to) { return form_->CanHold(to); });
    if (changed) line.replace(begin, end - begin, part);
    return changed;
  }

  void Emit(std::u16string_view line, std::string_view bytes, bool changed) {
    if (changed) {
      form_->AppendEncoded(line, output_);
    } else {
      output_.append(bytes);
    }
  }

  PathMapper mapper_;
  const CodePage& codePage_;
  std::optional<TextForm> form_;  // known from the first bytes
  std::string pending_;           // the beginning of a line
  std::string output_;
  PathPlace place_;
  std::size_t lineNumber_ = 0;
  bool isOldForm_ = false;   // REGEDIT4, whose lists of bytes are 8-bit text
  bool insideText_ = false;  // a string goes on on the next line
  std::u16string list_;      // the lines of a list of bytes, so far
  std::string listBytes_;
};

// Shows the paths of a document; gives its new text when one is mapped.
std::optional<std::u16string> WalkDocument(std::u16string_view text, bool holdsAnyCharacter,
                                           const PathMap& map, const ReportPath& report) {
  const PathSpelling spelling =
      holdsAnyCharacter ? PathSpelling::kDocument : PathSpelling::kAsciiDocument;
  PathMapper mapper(map, report);
  PathPlace place;
  std::u16string result;
  bool changed = false;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(u'\n'), text.size() - 1) + 1;
    std::u16string line(text.substr(0, end));
    text.remove_prefix(end);
    ++place.line;
    changed = mapper.Map(line, spelling, place, kLongestPath, [](auto) { return true; }) || changed;
    result.append(line);
  }
  return changed ? std::optional(std::move(result)) : std::nullopt;
}

bool IsRegistryFile(const std::wstring& file) { return EndsWithIgnoringAsciiCase(file, L".reg"); }

SystemCode WalkRegistryFile(const std::wstring& file, const FileReader& files,
                            const CodePage& codePage, const PathMap& map,
                            const ReportPath& report) {
  RegistryPathWalk walk(map, report, codePage);
  const SystemCode code = files.ReadInParts(file, [&](std::string_view part, std::uint64_t) {
    walk.Take(part);
    static_cast<void>(walk.TakeOutput());
    return true;
  });
  if (code == kSystemOk) walk.Finish();
  return code;
}

SystemCode EditRegistryFile(const std::wstring& file, FileSystem& files, const CodePage& codePage,
                            const PathMap& map) {
  std::unique_ptr<FileReplacement> replacement;
  SystemCode written = files.BeginReplacement(file, files.FileBytes(file), replacement);
  if (written != kSystemOk) return written;
  const ReportPath nobody;
  RegistryPathWalk walk(map, nobody, codePage);
  const SystemCode read = files.ReadInParts(file, [&](std::string_view part, std::uint64_t) {
    walk.Take(part);
    written = replacement->Append(walk.TakeOutput());
    return written == kSystemOk;
  });
  if (read != kSystemOk || written != kSystemOk) return read != kSystemOk ? read : written;
  walk.Finish();
  written = replacement->Append(walk.TakeOutput());
  return written == kSystemOk ? replacement->Complete() : written;
}

}  // namespace

bool IsWalkedFile(const std::wstring& file) {
  return IsRegistryFile(file) || EndsWithIgnoringAsciiCase(file, L".xml");
}

SystemCode WalkPaths(const std::wstring& file, const FileReader& files, const CodePage& codePage,
                     const PathMap& map, const ReportPath& report) {
  if (IsRegistryFile(file)) return WalkRegistryFile(file, files, codePage, map, report);
  std::string bytes;
  std::u16string text;
  bool holdsAnyCharacter = false;
  if (const SystemCode code = files.ReadBytes(file, bytes); code != kSystemOk) return code;
  const SystemCode code = DecodeDocument(bytes, codePage, text, holdsAnyCharacter);
  if (code == kSystemOk) WalkDocument(text, holdsAnyCharacter, map, report);
  return code;
}

SystemCode MapPaths(const std::wstring& file, FileSystem& files, const CodePage& codePage,
                    const PathMap& map, const ReportPath& report) {
  if (!IsRegistryFile(file)) {
    DocumentText document(files, codePage);
    if (const SystemCode code = document.Load(file); code != kSystemOk) return code;
    const auto text = WalkDocument(document.Text(), document.HoldsAnyCharacter(), map, report);
    return text ? document.Save(*text) : kSystemOk;
  }
  bool anyMapped = false;
  const SystemCode code =
      WalkRegistryFile(file, files, codePage, map, [&](const WalkedPath& walked) {
        anyMapped = anyMapped || walked.outcome == PathOutcome::kMapped;
        report(walked);
      });
  return code == kSystemOk && anyMapped ? EditRegistryFile(file, files, codePage, map) : code;
}

}  // namespace carrovan
