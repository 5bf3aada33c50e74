#include "registry_text/registry_file_form.h"

#include "registry_text/registry_file_parser.h"
#include "registry_text/registry_key.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr std::u16string_view kHeader = u"Windows Registry Editor Version 5.00";

// Longer than any key can be.
constexpr std::size_t kLongestKeyLine = kMostKeyLevels * (kLongestKeyName + 1) + 64;

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

bool IsHexDigit(char16_t unit) {
  return (unit >= u'0' && unit <= u'9') || (unit >= u'a' && unit <= u'f') ||
         (unit >= u'A' && unit <= u'F');
}

bool IsControl(char16_t unit) { return unit < u' ' && unit != u'\t'; }

// Why what stands between a line's brackets is not understood.
const wchar_t* ProblemOfKey(std::u16string_view path) {
  const std::u16string_view root = path.substr(0, path.find(u'\\'));
  const std::wstring rootName = FromUtf16(root);
  if (!HiveOfRoot(rootName) || rootName.size() < std::wstring_view(L"HKEY_").size()) {
    return L"a key below a root that is not known";
  }
  std::size_t levels = 0;
  for (path.remove_prefix(root.size()); !path.empty(); ++levels) {
    path.remove_prefix(1);
    const std::u16string_view name = path.substr(0, path.find(u'\\'));
    if (name.empty()) return L"a key with an empty name";
    if (name.size() > kLongestKeyName) return L"a key name is too long";
    path.remove_prefix(name.size());
  }
  return levels > kMostKeyLevels ? L"a key below too many others" : nullptr;
}

}  // namespace

void RegistryFormScan::Take(std::string_view part) {
  for (const char byte : part) {
    if (refusal_) return;
    TakeByte(static_cast<std::uint8_t>(byte));
  }
}

std::optional<std::wstring> RegistryFormScan::Finish() {
  if (!refusal_ && state_ == State::kMark) Refuse(L"8-bit text");
  if (!refusal_ && (state_ != State::kLineStart || lowByte_))
    Refuse(L"the file ends inside a line");
  return refusal_;
}

void RegistryFormScan::TakeByte(std::uint8_t byte) {
  if (state_ == State::kMark) {
    mark_.push_back(static_cast<char>(byte));
    if (mark_ == kUtf16Mark) {
      state_ = State::kHeader;
    } else if (mark_ == kUtf8Mark) {
      Refuse(L"UTF-8 behind its mark, which the registry tool refuses");
    } else if (!kUtf16Mark.starts_with(mark_) && !kUtf8Mark.starts_with(mark_)) {
      Refuse(L"8-bit text");
    }
    return;
  }
  if (!lowByte_) {
    lowByte_ = byte;
    return;
  }
  const auto unit = static_cast<char16_t>(*lowByte_ | byte << 8);
  lowByte_.reset();
  TakeUnit(unit);
}

void RegistryFormScan::TakeUnit(char16_t unit) {
  switch (state_) {
    case State::kMark:
      return;
    case State::kHeader:
      return TakeHeader(unit);
    case State::kLineStart:
      return BeginLine(unit);
    case State::kKey:
      return TakeKey(unit);
    case State::kName:
      return TakeQuoted(unit, State::kEquals);
    case State::kEquals:
      if (unit != u'=') return Refuse(L"a value name without an equals sign");
      state_ = State::kData;
      return;
    case State::kData:
      return BeginData(unit);
    case State::kText:
      return TakeQuoted(unit, State::kEnd);
    case State::kWord:
      return TakeWord(unit);
    case State::kNumber:
      return TakeNumber(unit);
    case State::kHex:
      return BehindHex(unit);
    case State::kHexType:
      return TakeHexType(unit);
    case State::kGoesOn:
      if (unit != u'\r') return Refuse(L"more text behind a line that goes on");
      return EndLine(State::kContinued);
    case State::kEnd:
      if (unit != u'\r') return Refuse(L"more text behind a value");
      return EndLine(State::kLineStart);
    case State::kLineFeed:
      if (unit != u'\n') return Refuse(L"a line that does not end in CR LF");
      ++lineNumber_;
      state_ = behind_;
      return;
    default:
      return TakeListUnit(unit);
  }
}

void RegistryFormScan::TakeHeader(char16_t unit) {
  if (taken_ == kHeader.size() && unit == u'\r') return EndLine(State::kLineStart);
  if (taken_ == kHeader.size() || unit != kHeader[taken_]) {
    return Refuse(L"not the header of a registry file");
  }
  ++taken_;
}

void RegistryFormScan::BeginLine(char16_t unit) {
  taken_ = 0;
  if (unit == u'\r') return EndLine(State::kLineStart);
  if (unit == u'[') {
    line_.clear();
    state_ = State::kKey;
  } else if (!insideKey_ && (unit == u'@' || unit == u'"')) {
    Refuse(L"a value that belongs to no key");
  } else if (unit == u'@') {
    state_ = State::kEquals;
  } else if (unit == u'"') {
    state_ = State::kName;
  } else {
    Refuse(L"neither a key nor a value");
  }
}

void RegistryFormScan::TakeKey(char16_t unit) {
  if (unit == u'\r') return EndKey();
  const bool isClosed = line_.ends_with(u']');
  if (IsControl(unit) || unit == u'[' || isClosed) return Refuse(L"a key with odd characters");
  line_.push_back(unit);
  if (line_.size() > kLongestKeyLine) Refuse(L"a key is too long");
}

void RegistryFormScan::EndKey() {
  if (!line_.ends_with(u']')) return Refuse(L"a key without its closing bracket");
  line_.pop_back();
  if (line_.starts_with(u'-')) return Refuse(L"the removal of a key");
  if (const wchar_t* const problem = ProblemOfKey(line_)) return Refuse(problem);
  insideKey_ = true;
  EndLine(State::kLineStart);
}

// Of the escapes, a tool takes a backslash and a quote as they are and may know line ends.
void RegistryFormScan::TakeQuoted(char16_t unit, State behind) {
  if (IsControl(unit)) return Refuse(L"a text with a control character");
  const bool isName = behind == State::kEquals;
  if (isEscaped_) {
    constexpr std::u16string_view kKnown = u"\\\"nr";
    if (kKnown.find(unit) == std::u16string_view::npos) return Refuse(L"an unknown escape");
    isEscaped_ = false;
  } else if (unit == u'\\') {
    isEscaped_ = true;
    return;
  } else if (unit == u'"') {
    // The default value is written in another way.
    if (isName && taken_ == 0) return Refuse(L"a value name that is empty");
    state_ = behind;
    return;
  }
  if (++taken_ > kLongestValueName && isName) Refuse(L"a value name is too long");
}

void RegistryFormScan::BeginData(char16_t unit) {
  taken_ = 0;
  if (unit == u'"') {
    state_ = State::kText;
  } else if (unit == u'd') {
    Expect(u"word:", State::kNumber);
  } else if (unit == u'h') {
    Expect(u"ex", State::kHex);
  } else {
    Refuse(L"a value of unknown kind");
  }
}

void RegistryFormScan::Expect(std::u16string_view word, State behind) {
  word_ = word;
  behind_ = behind;
  state_ = State::kWord;
}

void RegistryFormScan::TakeWord(char16_t unit) {
  if (unit != word_.front()) return Refuse(L"a value of unknown kind");
  word_.remove_prefix(1);
  if (word_.empty()) state_ = behind_;
}

void RegistryFormScan::TakeNumber(char16_t unit) {
  if (!IsHexDigit(unit)) return Refuse(L"a number that is not of eight hexadecimal digits");
  if (++taken_ == 8) state_ = State::kEnd;
}

void RegistryFormScan::BehindHex(char16_t unit) {
  if (unit == u':') {
    state_ = State::kFirstByte;
  } else if (unit == u'(') {
    state_ = State::kHexType;
  } else {
    Refuse(L"a value of unknown kind");
  }
}

void RegistryFormScan::TakeHexType(char16_t unit) {
  if (unit == u')' && taken_ > 0) return Expect(u":", State::kFirstByte);
  if (!IsHexDigit(unit) || ++taken_ > 8) Refuse(L"a type that is not a number");
}

void RegistryFormScan::TakeListUnit(char16_t unit) {
  const bool mayEnd = state_ == State::kFirstByte || state_ == State::kBehindByte;
  const bool mayGoOn = state_ == State::kFirstByte || state_ == State::kNextByte;
  if (unit == u'\r' && mayEnd) return EndLine(State::kLineStart);
  if (unit == u'\\' && mayGoOn) {
    state_ = State::kGoesOn;
    return;
  }
  if (state_ == State::kContinued && unit == u' ') return;
  if (state_ == State::kBehindByte) {
    if (unit != u',') return Refuse(L"bytes that are not two digits each");
    state_ = State::kNextByte;
    return;
  }
  if (!IsHexDigit(unit)) return Refuse(L"bytes that are not hexadecimal");
  state_ = state_ == State::kByteEnd ? State::kBehindByte : State::kByteEnd;
}

void RegistryFormScan::EndLine(State next) {
  behind_ = next;
  state_ = State::kLineFeed;
}

void RegistryFormScan::Refuse(std::wstring_view problem) {
  refusal_ =
      L"line " + std::to_wstring(lineNumber_) + L" is not understood: " + std::wstring(problem);
}

}  // namespace carrovan
