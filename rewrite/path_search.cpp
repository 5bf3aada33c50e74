#include "rewrite/path_search.h"

#include <algorithm>
#include <utility>

#include "rewrite/path_map.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr std::size_t kNowhere = std::u16string_view::npos;

bool IsSeparator(char16_t c) { return c == u'\\' || c == u'/'; }
bool IsLetter(char16_t c) { return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z'); }
bool IsBlank(char16_t c) { return c == u' ' || c == u'\t'; }

// A character with which a word goes on, so that no path begins behind it.
bool IsWord(char16_t c) {
  return IsLetter(c) || (c >= u'0' && c <= u'9') || c == u'_' || c >= 0x80;
}

bool IsDocument(PathSpelling spelling) {
  return spelling == PathSpelling::kDocument || spelling == PathSpelling::kAsciiDocument;
}

std::size_t RunLength(std::u16string_view text) {
  std::size_t length = 0;
  while (length < text.size() && IsSeparator(text[length])) ++length;
  return length;
}

// What a reference at the front of a document's text stands for.
struct Reference {
  std::size_t length = 0;  // 0: there is none
  char32_t character = 0;
};

Reference NumberedReference(std::u16string_view digits, std::size_t length) {
  const bool isHex = digits.starts_with(u'x');
  if (isHex) digits.remove_prefix(1);
  char32_t number = 0;
  for (const char16_t c : digits) {
    const char16_t lower = c | 0x20;
    const bool isDigit = c >= u'0' && c <= u'9';
    if (!isDigit && !(isHex && lower >= u'a' && lower <= u'f')) return {};
    number = number * (isHex ? 16 : 10) + (isDigit ? c - u'0' : lower - u'a' + 10);
    if (number > 0x10FFFF) return {};
  }
  return {digits.empty() ? 0 : length, number};
}

Reference ReferenceAt(std::u16string_view text) {
  constexpr std::size_t kLongest = 12;
  if (!text.starts_with(u'&')) return {};
  const std::size_t end = text.substr(0, kLongest).find(u';');
  if (end == kNowhere) return {};
  const std::u16string_view name = text.substr(1, end - 1);
  if (name.starts_with(u'#')) return NumberedReference(name.substr(1), end + 1);
  constexpr std::pair<std::u16string_view, char32_t> kNamed[] = {
      {u"amp", U'&'}, {u"apos", U'\''}, {u"quot", U'"'}, {u"lt", U'<'}, {u"gt", U'>'}};
  for (const auto& [known, character] : kNamed) {
    if (name == known) return {end + 1, character};
  }
  return {};
}

// Where a path begins, which kind it is.
enum class Start { kNone, kDrive, kServer, kVariable };

Start StartAt(std::u16string_view text, std::size_t at, PathSpelling spelling) {
  const char16_t before = at == 0 ? u' ' : text[at - 1];
  const std::u16string_view rest = text.substr(at);
  if (rest[0] == u'%') return VariableLength(rest) > 0 ? Start::kVariable : Start::kNone;
  if (IsLetter(rest[0])) {
    const bool onDrive = rest.size() > 2 && rest[1] == u':' && IsSeparator(rest[2]);
    return onDrive && !IsWord(before) ? Start::kDrive : Start::kNone;
  }
  if (!IsSeparator(rest[0]) || IsSeparator(before) || IsWord(before) || before == u':') {
    return Start::kNone;
  }
  const std::size_t lead = RunLength(rest);
  const bool isDoubled = spelling == PathSpelling::kRegistry && rest[0] == u'\\';
  if (lead < (isDoubled ? 4 : 2) || lead >= rest.size() || !IsWord(rest[lead])) return Start::kNone;
  std::size_t share = lead;
  while (share < rest.size() && (IsWord(rest[share]) || rest[share] == u'-' ||
                                 rest[share] == u'.' || rest[share] == u'$')) {
    ++share;
  }
  const std::size_t run = RunLength(rest.substr(share));
  const bool hasShare = run > 0 && share + run < rest.size() &&
                        (IsWord(rest[share + run]) || rest[share + run] == u'&');
  return hasShare ? Start::kServer : Start::kNone;
}

// A ";" or "," with another path or nothing behind it.
bool EndsList(std::u16string_view text, std::size_t at, PathSpelling spelling) {
  std::size_t next = at + 1;
  while (next < text.size() && IsBlank(text[next])) ++next;
  if (next == text.size() || text[next] == u'"' || text[next] == u'<') return true;
  return StartAt(text, next, spelling) != Start::kNone;
}

// An apostrophe that ends an attribute's value and is no letter's.
bool EndsAttribute(std::u16string_view text, std::size_t at) {
  const std::u16string_view behind = text.substr(at + 1);
  return behind.empty() || behind[0] <= u' ' ||
         std::u16string_view(u"/>?])\"").find(behind[0]) != kNowhere;
}

bool NoPathGoesOnWith(char32_t c) {
  return c < U' ' || std::u32string_view(U"\"<>|*?:").find(c) != std::u32string_view::npos;
}

// Takes the units of one path off a text.
class PathReader {
 public:
  PathReader(std::u16string_view text, std::size_t begin, PathSpelling spelling)
      : text_(text), spelling_(spelling), at_(begin) {
    found_.begin = begin;
  }

  SpelledPath Read(Start start) {
    if (start == Start::kDrive) TakeUnits(2);
    if (start == Start::kVariable) TakeUnits(VariableLength(text_.substr(at_)));
    if (start == Start::kServer) TakeLead();
    while (at_ < text_.size() && found_.path.size() <= kLongestPath && TakeNext()) {
    }
    TrimBlanks();
    found_.end = at_;
    found_.places.push_back(at_);
    return std::move(found_);
  }

 private:
  void Add(char16_t unit, std::size_t place) {
    found_.path.push_back(unit);
    found_.places.push_back(place);
  }

  void TakeUnits(std::size_t count) {
    for (; count > 0; --count, ++at_) Add(text_[at_], at_);
  }

  void TakeLead() {
    const std::size_t lead = RunLength(text_.substr(at_));
    Add(u'\\', at_);
    Add(u'\\', at_);
    at_ += lead;
  }

  // False where the path ends.
  bool TakeNext() {
    const char16_t c = text_[at_];
    if (IsSeparator(c)) return TakeSeparators();
    if (IsDocument(spelling_)) {
      if (const Reference reference = ReferenceAt(text_.substr(at_)); reference.length > 0) {
        return TakeCharacter(reference.character, reference.length);
      }
      if (c == u'\'' && EndsAttribute(text_, at_)) return false;
    }
    if ((c == u';' || c == u',') && EndsList(text_, at_, spelling_)) return false;
    if (StartAt(text_, at_, spelling_) == Start::kDrive) return false;
    return TakeCharacter(c, 1);
  }

  bool TakeCharacter(char32_t character, std::size_t length) {
    if (NoPathGoesOnWith(character)) return false;
    if (character >= 0x10000) {
      Add(static_cast<char16_t>(0xD7C0 + (character >> 10)), at_);
      Add(static_cast<char16_t>(0xDC00 + (character & 0x3FF)), at_);
    } else {
      Add(static_cast<char16_t>(character), at_);
    }
    at_ += length;
    return true;
  }

  bool TakeSeparators() {
    const std::u16string_view rest = text_.substr(at_);
    std::size_t run = RunLength(rest);
    // The last backslash in front of a quote is the quote's.
    const bool isEscape = spelling_ == PathSpelling::kRegistry && run % 2 == 1 &&
                          run < rest.size() && rest[run] == u'"';
    if (isEscape) --run;
    if (run == 0) return false;
    if (found_.separator.empty()) found_.separator = rest.substr(0, run);
    Add(u'\\', at_);
    at_ += run;
    return !isEscape;
  }

  void TrimBlanks() {
    while (!found_.path.empty() && IsBlank(found_.path.back()) && IsBlank(text_[at_ - 1])) {
      found_.path.pop_back();
      found_.places.pop_back();
      --at_;
    }
  }

  std::u16string_view text_;
  PathSpelling spelling_;
  std::size_t at_;
  SpelledPath found_;
};

}  // namespace

std::optional<SpelledPath> FindPath(std::u16string_view text, PathSpelling spelling,
                                    std::size_t from) {
  for (std::size_t at = from; at < text.size(); ++at) {
    const Start start = StartAt(text, at, spelling);
    if (start != Start::kNone) return PathReader(text, at, spelling).Read(start);
  }
  return std::nullopt;
}

namespace {

bool IsPair(std::u16string_view text) {
  return text.size() > 1 && (text[0] & 0xFC00) == 0xD800 && (text[1] & 0xFC00) == 0xDC00;
}

// A character of a document as a reference, where it needs one; nothing where it does not.
std::u16string ReferenceTo(std::u16string_view text, PathSpelling spelling) {
  if (text[0] == u'&') return u"&amp;";
  if (text[0] == u'\'') return u"&apos;";
  if (text[0] < 0x80 || spelling == PathSpelling::kDocument) return {};
  char32_t code = text[0];
  if (IsPair(text)) code = 0x10000 + ((code - 0xD800) << 10) + (text[1] - 0xDC00);
  return ToUtf16(L"&#" + std::to_wstring(static_cast<unsigned long>(code)) + L";");
}

}  // namespace

std::u16string SpelledLike(std::u16string_view tidy, const SpelledPath& found,
                           PathSpelling spelling) {
  std::u16string spelled;
  while (!tidy.empty()) {
    const std::u16string reference =
        IsDocument(spelling) ? ReferenceTo(tidy, spelling) : std::u16string();
    const std::size_t units = !reference.empty() && IsPair(tidy) ? 2 : 1;
    if (tidy[0] == u'\\') {
      spelled += found.separator;
    } else {
      spelled += reference.empty() ? std::u16string(tidy.substr(0, 1)) : reference;
    }
    tidy.remove_prefix(units);
  }
  return spelled;
}

bool ReplacePaths(std::u16string& text, PathSpelling spelling, const ReplaceBeginning& replace) {
  std::u16string result;
  std::size_t copied = 0;
  bool changed = false;
  for (auto found = FindPath(text, spelling); found; found = FindPath(text, spelling, found->end)) {
    const auto beginning = replace(*found);
    if (!beginning) continue;
    result.append(text, copied, found->begin - copied)
        .append(SpelledLike(beginning->path, *found, spelling));
    copied = found->places[beginning->units];
    changed = true;
  }
  if (!changed) return false;
  result.append(text, copied);
  text.swap(result);
  return true;
}

}  // namespace carrovan
