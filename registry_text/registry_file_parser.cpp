#include "registry_text/registry_file_parser.h"

#include <algorithm>
#include <utility>

#include "registry_text/registry_key.h"
#include "registry_text/registry_line_reader.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

bool GoesOnWithCharacter(char byte) { return (static_cast<std::uint8_t>(byte) & 0xC0) == 0x80; }

// How much of the bytes ends between two characters. No character has more than four bytes.
std::size_t WholeCharacters(std::string_view utf8) {
  constexpr std::size_t kLongest = 4;
  for (std::size_t i = 1; i <= std::min(kLongest, utf8.size()); ++i) {
    const std::size_t at = utf8.size() - i;
    if (!GoesOnWithCharacter(utf8[at])) return at;
  }
  return utf8.size();
}

}  // namespace

void RegistryTextUnits::Take(std::string_view part) {
  if (!isKnown_) {
    pending_.append(part);
    if (pending_.size() < kUtf8Mark.size()) return;
    Begin();
  } else if (isUtf16_) {
    TakeUtf16(part);
  } else {
    pending_.append(part);
    TakeUtf8(false);
  }
}

std::u16string RegistryTextUnits::Finish() {
  if (!isKnown_) Begin();
  if (!isUtf16_) TakeUtf8(true);
  return std::move(units_);
}

std::u16string RegistryTextOf(std::vector<std::uint8_t> bytes) {
  RegistryTextUnits units;
  units.Expect(bytes.size());
  const auto* const text = static_cast<const char*>(static_cast<const void*>(bytes.data()));
  units.Take({text, bytes.size()});
  return units.Finish();
}

void RegistryTextUnits::Begin() {
  isKnown_ = true;
  isUtf16_ = pending_.starts_with(kUtf16Mark);
  const std::size_t bytes = static_cast<std::size_t>(expectedBytes_);
  units_.reserve(isUtf16_ ? bytes / 2 : bytes);
  if (isUtf16_) {
    const std::string begun = std::exchange(pending_, {});
    TakeUtf16(std::string_view(begun).substr(kUtf16Mark.size()));
  } else if (pending_.starts_with(kUtf8Mark)) {
    pending_.erase(0, kUtf8Mark.size());
  }
}

// What waits is the first half of a unit.
void RegistryTextUnits::TakeUtf16(std::string_view part) {
  for (const char byte : part) {
    if (pending_.empty()) {
      pending_.push_back(byte);
      continue;
    }
    const auto low = static_cast<std::uint8_t>(pending_.front());
    units_.push_back(static_cast<char16_t>(low | static_cast<std::uint8_t>(byte) << 8));
    pending_.clear();
  }
}

void RegistryTextUnits::TakeUtf8(bool isWhole) {
  const std::size_t end = isWhole ? pending_.size() : WholeCharacters(pending_);
  units_.append(ToUtf16(FromUtf8(std::string_view(pending_).substr(0, end))));
  pending_.erase(0, end);
}

namespace {

constexpr std::u16string_view kHeader = u"Windows Registry Editor Version 5.00";
constexpr std::u16string_view kForerunnersHeader = u"REGEDIT4";

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
  Parser(std::u16string_view text, const TakeRegistryKey& take) : reader_(text), take_(take) {}

  std::optional<std::vector<RegistryFileProblem>> Parse();

 private:
  void HandOnKey();
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
  const TakeRegistryKey& take_;
  RegistryKeyChange key_;
  bool hasKey_ = false;
  std::vector<RegistryFileProblem> problems_;
  bool isForerunners_ = false;
  bool insideKey_ = false;
};

std::optional<std::vector<RegistryFileProblem>> Parser::Parse() {
  if (!TakeHeader()) return std::nullopt;
  while (reader_.NextLine()) ParseLine();
  HandOnKey();
  return std::move(problems_);
}

void Parser::HandOnKey() {
  if (std::exchange(hasKey_, false)) take_(std::exchange(key_, {}));
}

bool Parser::TakeHeader() {
  if (!reader_.NextLine()) return false;
  isForerunners_ = reader_.Line() == kForerunnersHeader;
  return isForerunners_ || reader_.Line() == kHeader;
}

void Parser::ParseLine() {
  if (reader_.AtEnd()) return;
  if (reader_.Line().front() == u'[') {
    ParseKey();
  } else if (insideKey_) {
    ParseValue();
  } else {
    Report(L"a value that belongs to no key");
  }
}

void Parser::ParseKey() {
  insideKey_ = false;
  const std::u16string_view line = reader_.Line();
  const std::size_t close = line.rfind(u']');
  if (close == std::u16string_view::npos) {
    Report(L"a key without its closing bracket");
    return;
  }
  const std::wstring names = FromUtf16(line.substr(1, close - 1));
  std::wstring_view path = names;
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
  HandOnKey();
  key_ = std::move(key);
  hasKey_ = true;
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
  key_.values.push_back(std::move(change));
}

bool Parser::TakeValueName(std::wstring& name) {
  if (!reader_.Take(u"@")) {
    const auto quoted = reader_.TakeString(RegistryLineReader::Behind::kEquals);
    if (!quoted) return Report(L"a value without a quoted name");
    name = quoted->Text();
  }
  if (LengthInUnits(name) > kLongestValueName) {
    return Report(L"a value name is too long");
  }
  return reader_.Take(u"=") || Report(L"a value name without an equals sign");
}

bool Parser::TakeData(RegistryValueChange& change) {
  change.remove = reader_.Take(u"-");
  if (change.remove) return true;
  if (reader_.Line().starts_with(u'"')) return TakeText(change.value);
  if (reader_.Take(u"dword:")) return TakeDword(change.value);
  if (reader_.Take(u"hex")) return TakeHex(change.value);
  return Report(L"a value of unknown kind");
}

bool Parser::TakeHex(RegistryValue& value) {
  RegistryData::Bytes data;
  if (!TakeHexType(value) || !TakeHexBytes(data)) return false;
  data.shrink_to_fit();
  value.data = isForerunners_ && IsTextType(value.type) ? WidenedText(data) : std::move(data);
  return true;
}

bool Parser::TakeText(RegistryValue& value) {
  const auto text = reader_.TakeString(RegistryLineReader::Behind::kLineEnd);
  if (!text) return Report(L"a string that does not end or holds an unknown escape");
  value.type = kRegSz;
  value.data = text->Data();
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
  if (reader_.Take(u":")) return true;
  if (reader_.Take(u"(")) {
    const auto type = reader_.TakeHex(8);
    value.type = type.value_or(kRegNone);
    if (type && reader_.Take(u"):")) return true;
  }
  return Report(L"a type that is not a number");
}

bool Parser::TakeHexBytes(std::vector<std::uint8_t>& data) {
  for (;;) {
    if (reader_.Take(u"\\")) {
      if (!reader_.AtEnd()) return Report(L"more text behind a line that goes on");
      if (!ContinueOnNextLine()) return Report(L"bytes that go on nowhere");
    }
    if (reader_.AtEnd()) return true;
    const auto byte = reader_.TakeHex(2);
    if (!byte) return Report(L"bytes that are not hexadecimal");
    data.push_back(static_cast<std::uint8_t>(*byte));
    if (!reader_.Take(u",")) return true;
  }
}

// A comment may stand between two lines of bytes. A line that begins something else is left alone.
bool Parser::ContinueOnNextLine() {
  while (reader_.PeekNextLine() == u';') reader_.NextLine();
  const char16_t first = reader_.PeekNextLine();
  if (first == u'\0' || first == u'[' || first == u'"' || first == u'@') return false;
  return reader_.NextLine();
}

// A problem takes far more room than the shortest line that has one.
bool Parser::Report(const wchar_t* problem) {
  constexpr std::size_t kMostProblems = 100;
  if (problems_.size() < kMostProblems) {
    problems_.push_back({reader_.LineNumber(), problem});
  }
  return false;
}

}  // namespace

bool IsRegistryFileHeader(std::wstring_view line) {
  const std::u16string units = ToUtf16(line);
  return units == kHeader || units == kForerunnersHeader;
}

std::optional<RegistryFile> ParseRegistryFile(std::wstring_view text) {
  return ParseRegistryUnits(ToUtf16(text));
}

std::optional<RegistryFile> ParseRegistryUnits(std::u16string_view text) {
  RegistryFile file;
  auto problems = ParseRegistryKeys(
      text, [&file](RegistryKeyChange key) { file.keys.push_back(std::move(key)); });
  if (!problems) return std::nullopt;
  file.problems = std::move(*problems);
  return file;
}

std::optional<std::vector<RegistryFileProblem>> ParseRegistryKeys(std::u16string_view text,
                                                                  const TakeRegistryKey& take) {
  return Parser(text, take).Parse();
}

std::optional<RegistryHive> HiveOfRoot(std::wstring_view name) {
  const auto is = [name](std::wstring_view root) { return EqualsIgnoringAsciiCase(name, root); };
  if (is(L"HKEY_CURRENT_USER") || is(L"HKCU")) return RegistryHive::kCurrentUser;
  if (is(L"HKEY_LOCAL_MACHINE") || is(L"HKLM")) return RegistryHive::kLocalMachine;
  return std::nullopt;
}

}  // namespace carrovan
