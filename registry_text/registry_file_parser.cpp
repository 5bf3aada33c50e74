#include "registry_text/registry_file_parser.h"

#include <algorithm>
#include <utility>

#include "registry_text/registry_key.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr std::wstring_view kBlanks = L" \t";

std::wstring_view FirstLine(std::wstring_view text) {
  std::wstring_view line = text.substr(0, text.find(L'\n'));
  if (line.ends_with(L'\r')) line.remove_suffix(1);
  return line;
}

std::wstring_view WithoutLeadingBlanks(std::wstring_view text) {
  return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

std::optional<std::uint32_t> HexDigit(wchar_t c) {
  if (c >= L'0' && c <= L'9') return static_cast<std::uint32_t>(c - L'0');
  if (c >= L'a' && c <= L'f') return static_cast<std::uint32_t>(c - L'a' + 10);
  if (c >= L'A' && c <= L'F') return static_cast<std::uint32_t>(c - L'A' + 10);
  return std::nullopt;
}

std::optional<wchar_t> MeaningOfEscape(wchar_t c) {
  switch (c) {
    case L'\\':
    case L'"':
      return c;
    case L'n':
      return L'\n';
    case L'r':
      return L'\r';
    default:
      return std::nullopt;
  }
}

}  // namespace

bool RegistryLineReader::NextLine() {
  if (rest_.empty()) return false;
  line_ = WithoutLeadingBlanks(FirstLine(rest_));
  const std::size_t end = rest_.find(L'\n');
  rest_.remove_prefix(end == std::wstring_view::npos ? rest_.size() : end + 1);
  ++lineNumber_;
  return true;
}

wchar_t RegistryLineReader::PeekNextLine() const {
  const std::wstring_view next = WithoutLeadingBlanks(FirstLine(rest_));
  return next.empty() ? L'\0' : next.front();
}

bool RegistryLineReader::Take(std::wstring_view expected) {
  if (!line_.starts_with(expected)) return false;
  line_.remove_prefix(expected.size());
  SkipBlanks();
  return true;
}

std::optional<RegistryLineReader::Quoted> RegistryLineReader::ReadString(std::wstring_view text) {
  if (!text.starts_with(L'"')) return std::nullopt;
  Quoted quoted;
  for (std::size_t i = 1; i < text.size(); ++i) {
    wchar_t c = text[i];
    if (c == L'"') {
      quoted.length = i + 1;
      return quoted;
    }
    if (c == L'\\') {
      const auto meant = i + 1 < text.size() ? MeaningOfEscape(text[i + 1]) : std::nullopt;
      if (!meant) return std::nullopt;
      c = *meant;
      ++i;
    }
    quoted.text.push_back(c);
  }
  return std::nullopt;
}

// The system's tool writes line ends of a name or a text as they are.
std::optional<std::wstring> RegistryLineReader::TakeString(Behind behind) {
  if (auto quoted = ReadString(line_)) {
    line_.remove_prefix(quoted->length);
    SkipBlanks();
    return std::move(quoted->text);
  }
  const std::size_t length = static_cast<std::size_t>(rest_.data() - line_.data()) + rest_.size();
  auto quoted = ReadString({line_.data(), length});
  if (!quoted || !MoveBehind(quoted->length, behind)) return std::nullopt;
  return std::move(quoted->text);
}

// Moves to what stands that far behind the beginning of the line, on a later line, if it is what is
// expected there.
bool RegistryLineReader::MoveBehind(std::size_t length, Behind behind) {
  const std::wstring_view passed(line_.data(), length);
  std::wstring_view rest = rest_;
  rest.remove_prefix(length - static_cast<std::size_t>(rest_.data() - line_.data()));
  RegistryLineReader next(rest);
  next.NextLine();
  if (behind == Behind::kEquals ? !next.line_.starts_with(L'=') : !next.AtEnd()) return false;
  lineNumber_ += static_cast<std::size_t>(std::ranges::count(passed, L'\n'));
  line_ = next.line_;
  rest_ = next.rest_;
  return true;
}

std::optional<std::uint32_t> RegistryLineReader::TakeHex(std::size_t mostDigits) {
  std::uint32_t number = 0;
  std::size_t digits = 0;
  for (; digits < line_.size(); ++digits) {
    const auto digit = HexDigit(line_[digits]);
    if (!digit) break;
    if (digits == mostDigits) return std::nullopt;
    number = (number << 4) | *digit;
  }
  if (digits == 0) return std::nullopt;
  line_.remove_prefix(digits);
  SkipBlanks();
  return number;
}

void RegistryLineReader::SkipBlanks() { line_ = WithoutLeadingBlanks(line_); }

namespace {

constexpr std::wstring_view kHeader = L"Windows Registry Editor Version 5.00";
constexpr std::wstring_view kForerunnersHeader = L"REGEDIT4";

std::size_t LengthInUnits(std::wstring_view text) { return ToUtf16(text).size(); }

// In the forerunner's files a text of these types is 8-bit text.
bool IsTextType(std::uint32_t type) {
  return type == kRegSz || type == kRegExpandSz || type == kRegMultiSz;
}

std::vector<std::uint8_t> WidenedText(const std::vector<std::uint8_t>& bytes) {
  std::vector<std::uint8_t> wide;
  for (const char16_t unit : ToUtf16(FromUtf8(std::string(bytes.begin(), bytes.end())))) {
    wide.push_back(static_cast<std::uint8_t>(unit & 0xFF));
    wide.push_back(static_cast<std::uint8_t>(unit >> 8));
  }
  return wide;
}

class Parser {
 public:
  explicit Parser(std::wstring_view text) : reader_(text) {}

  std::optional<RegistryFile> Parse();

 private:
  bool TakeHeader();
  void ParseLine();
  void ParseKey();
  bool TakeKeyNames(std::wstring_view path, std::wstring& keyPath);
  void ParseValue();
  bool TakeValueName(std::wstring& name);
  bool TakeData(RegistryValueChange& change);
  bool TakeText(RegistryValue& value);
  bool TakeDword(RegistryValue& value);
  bool TakeHex(RegistryValue& value);
  bool TakeHexType(RegistryValue& value);
  bool TakeHexBytes(std::vector<std::uint8_t>& data);
  bool ContinueOnNextLine();

  // Returns false, for the caller to return.
  bool Report(const wchar_t* problem);

  RegistryLineReader reader_;
  RegistryFile file_;
  bool isForerunners_ = false;
  bool insideKey_ = false;
};

std::optional<RegistryFile> Parser::Parse() {
  if (!TakeHeader()) return std::nullopt;
  while (reader_.NextLine()) ParseLine();
  return std::move(file_);
}

bool Parser::TakeHeader() {
  if (!reader_.NextLine()) return false;
  isForerunners_ = reader_.Line() == kForerunnersHeader;
  return isForerunners_ || reader_.Line() == kHeader;
}

void Parser::ParseLine() {
  if (reader_.AtEnd()) return;
  if (reader_.Line().front() == L'[') {
    ParseKey();
  } else if (insideKey_) {
    ParseValue();
  } else {
    Report(L"a value that belongs to no key");
  }
}

void Parser::ParseKey() {
  insideKey_ = false;
  std::wstring_view path = reader_.Line();
  const std::size_t close = path.rfind(L']');
  if (close == std::wstring_view::npos) {
    Report(L"a key without its closing bracket");
    return;
  }
  path = path.substr(1, close - 1);
  RegistryKeyChange key;
  key.remove = path.starts_with(L'-');
  if (key.remove) path.remove_prefix(1);
  const auto hive = path.starts_with(L'\\') ? std::nullopt : HiveOfRoot(TakeKeyName(path));
  if (!hive) {
    Report(L"a key below an unknown root");
    return;
  }
  key.hive = *hive;
  if (!TakeKeyNames(path, key.keyPath)) return;
  if (key.remove && key.keyPath.empty()) {
    Report(L"a root cannot be removed");
    return;
  }
  insideKey_ = !key.remove;
  file_.keys.push_back(std::move(key));
}

bool Parser::TakeKeyNames(std::wstring_view path, std::wstring& keyPath) {
  std::size_t levels = 0;
  for (auto name = TakeKeyName(path); !name.empty(); name = TakeKeyName(path)) {
    if (++levels > kMostKeyLevels) return Report(L"a key below too many others");
    if (LengthInUnits(name) > kLongestKeyName) return Report(L"a key name is too long");
    if (!keyPath.empty()) keyPath.push_back(L'\\');
    keyPath.append(name);
  }
  return true;
}

void Parser::ParseValue() {
  RegistryValueChange change;
  if (!TakeValueName(change.value.name) || !TakeData(change)) return;
  if (!reader_.AtEnd()) {
    Report(L"more text behind a value");
    return;
  }
  file_.keys.back().values.push_back(std::move(change));
}

bool Parser::TakeValueName(std::wstring& name) {
  if (!reader_.Take(L"@")) {
    auto quoted = reader_.TakeString(RegistryLineReader::Behind::kEquals);
    if (!quoted) return Report(L"a value without a quoted name");
    name = std::move(*quoted);
  }
  if (LengthInUnits(name) > kLongestValueName) {
    return Report(L"a value name is too long");
  }
  return reader_.Take(L"=") || Report(L"a value name without an equals sign");
}

bool Parser::TakeData(RegistryValueChange& change) {
  change.remove = reader_.Take(L"-");
  if (change.remove) return true;
  if (reader_.Line().starts_with(L'"')) return TakeText(change.value);
  if (reader_.Take(L"dword:")) return TakeDword(change.value);
  if (reader_.Take(L"hex")) return TakeHex(change.value);
  return Report(L"a value of unknown kind");
}

bool Parser::TakeHex(RegistryValue& value) {
  if (!TakeHexType(value) || !TakeHexBytes(value.data)) return false;
  if (isForerunners_ && IsTextType(value.type)) value.data = WidenedText(value.data);
  return true;
}

bool Parser::TakeText(RegistryValue& value) {
  const auto text = reader_.TakeString(RegistryLineReader::Behind::kLineEnd);
  if (!text) return Report(L"a string that does not end or holds an unknown escape");
  value = MakeStringValue(std::move(value.name), *text);
  return true;
}

bool Parser::TakeDword(RegistryValue& value) {
  const auto number = reader_.TakeHex(8);
  if (!number) return Report(L"a number that is not hexadecimal or too long");
  value = MakeDwordValue(std::move(value.name), *number);
  return true;
}

bool Parser::TakeHexType(RegistryValue& value) {
  value.type = kRegBinary;
  if (reader_.Take(L":")) return true;
  if (reader_.Take(L"(")) {
    const auto type = reader_.TakeHex(8);
    value.type = type.value_or(kRegNone);
    if (type && reader_.Take(L"):")) return true;
  }
  return Report(L"a type that is not a number");
}

bool Parser::TakeHexBytes(std::vector<std::uint8_t>& data) {
  for (;;) {
    if (reader_.Take(L"\\")) {
      if (!reader_.AtEnd()) return Report(L"more text behind a line that goes on");
      if (!ContinueOnNextLine()) return Report(L"bytes that go on nowhere");
    }
    if (reader_.AtEnd()) return true;
    const auto byte = reader_.TakeHex(2);
    if (!byte) return Report(L"bytes that are not hexadecimal");
    data.push_back(static_cast<std::uint8_t>(*byte));
    if (!reader_.Take(L",")) return true;
  }
}

// A comment may stand between two lines of bytes. A line that begins something else is left alone.
bool Parser::ContinueOnNextLine() {
  while (reader_.PeekNextLine() == L';') reader_.NextLine();
  const wchar_t first = reader_.PeekNextLine();
  if (first == L'\0' || first == L'[' || first == L'"' || first == L'@') return false;
  return reader_.NextLine();
}

// A problem takes far more room than the shortest line that has one.
bool Parser::Report(const wchar_t* problem) {
  constexpr std::size_t kMostProblems = 100;
  if (file_.problems.size() < kMostProblems) {
    file_.problems.push_back({reader_.LineNumber(), problem});
  }
  return false;
}

}  // namespace

bool IsRegistryFileHeader(std::wstring_view line) {
  return line == kHeader || line == kForerunnersHeader;
}

std::optional<RegistryFile> ParseRegistryFile(std::wstring_view text) {
  return Parser(text).Parse();
}

std::optional<RegistryHive> HiveOfRoot(std::wstring_view name) {
  const auto is = [name](std::wstring_view root) { return EqualsIgnoringAsciiCase(name, root); };
  if (is(L"HKEY_CURRENT_USER") || is(L"HKCU")) return RegistryHive::kCurrentUser;
  if (is(L"HKEY_LOCAL_MACHINE") || is(L"HKLM")) return RegistryHive::kLocalMachine;
  return std::nullopt;
}

}  // namespace carrovan
