#include "package/registry_file_scan.h"

#include <algorithm>
#include <utility>

#include "registry_text/registry_file_parser.h"
#include "registry_text/registry_key.h"
#include "text/text.h"

namespace carrovan {
namespace {

// Longer than any key can be; a line of bytes or a piece of a text is rarely as long.
constexpr std::size_t kLongestKeptLine = kMostKeyLevels * (kLongestKeyName + 1) + 256;

// Enough to recognize a key by.
constexpr std::size_t kLongestShownKey = 200;

constexpr std::wstring_view kAllowedRoot = L"HKEY_CURRENT_USER\\SOFTWARE\\";
constexpr std::wstring_view kNotUnderstood =
    L"could be taken for a key, but not for one that can be understood";

// Takes a name off the front of a path in plain spelling: one backslash between two names.
std::wstring_view TakePlainName(std::wstring_view& path) {
  const std::wstring_view name = path.substr(0, path.find(L'\\'));
  path.remove_prefix(std::min(name.size() + 1, path.size()));
  return name;
}

bool IsAllowedKey(std::wstring_view path, std::wstring_view company) {
  return HiveOfRoot(TakePlainName(path)) == RegistryHive::kCurrentUser &&
         CompareNames(TakePlainName(path), L"SOFTWARE") == 0 &&
         CompareNames(TakePlainName(path), company) == 0;
}

bool IsPlainlySpelled(std::wstring_view path) {
  return !path.empty() && !path.starts_with(L'\\') && !path.ends_with(L'\\') &&
         path.find(L"\\\\") == std::wstring_view::npos;
}

bool IsBlankOrComment(std::wstring_view text) {
  const std::size_t first = text.find_first_not_of(L" \t");
  return first == std::wstring_view::npos || text[first] == L';';
}

bool HoldsRootName(std::wstring_view line) {
  constexpr std::wstring_view kStart = L"HKEY_";
  for (std::size_t at = 0; at + kStart.size() <= line.size(); ++at) {
    if (EqualsIgnoringAsciiCase(line.substr(at, kStart.size()), kStart)) return true;
  }
  return false;
}

std::wstring KeyOutside(std::wstring_view path, std::wstring_view company) {
  std::wstring shown(path.substr(0, kLongestShownKey));
  if (path.size() > kLongestShownKey) shown += L"...";
  return L"names the key " + shown + L", which lies outside " + std::wstring(kAllowedRoot) +
         std::wstring(company);
}

// What is wrong with a line that begins with a bracket. Tools may end the key at the first closing
// bracket or at the last one, so that both keys must be allowed.
std::optional<std::wstring> RefusalOfKeyLine(std::wstring_view line, std::wstring_view company) {
  const std::size_t last = line.rfind(L']');
  if (last == std::wstring_view::npos || !IsBlankOrComment(line.substr(last + 1))) {
    return std::wstring(kNotUnderstood);
  }
  for (const std::size_t close : {line.find(L']'), last}) {
    std::wstring_view path = line.substr(1, close - 1);
    if (path.starts_with(L'-')) path.remove_prefix(1);
    if (!IsPlainlySpelled(path)) return std::wstring(kNotUnderstood);
    if (!IsAllowedKey(path, company)) return KeyOutside(path, company);
  }
  return std::nullopt;
}

}  // namespace

RegistryFileScan::RegistryFileScan(std::wstring company) : company_(std::move(company)) {}

void RegistryFileScan::Take(std::string_view part) {
  if (refusal_) return;
  units_.Take(part, [this](char16_t unit) { TakeUnit(unit); });
}

std::optional<std::wstring> RegistryFileScan::Finish() {
  units_.Finish([this](char16_t unit) { TakeUnit(unit); });
  EndLine(LineEnd::kPlain);
  return refusal_;
}

// Every control character but the tab ends a line here, since one tool or another stops reading at
// it. So UTF-16 without its mark ends a line at every second byte and is not understood.
void RegistryFileScan::TakeUnit(char16_t unit) {
  if (refusal_) return;
  const bool behindReturn = std::exchange(behindReturn_, unit == u'\r');
  if (behindReturn && unit != u'\n') EndLine(LineEnd::kOdd);
  if (unit == u'\r') return;
  if (unit < u' ' && unit != u'\t') {
    EndLine(unit == u'\n' ? LineEnd::kPlain : LineEnd::kOdd);
    if (unit == u'\n') ++lineNumber_;
    return;
  }
  if (line_ == Line::kBlank && unit != u' ' && unit != u'\t') {
    const bool passed = unit == u'"' || unit == u'@' || unit == u';';
    line_ = passed ? Line::kPassed : Line::kKept;
  }
  if (line_ != Line::kKept) return;
  kept_.push_back(unit);
  if (kept_.size() > kLongestKeptLine) Refuse(L"is too long to be understood");
}

void RegistryFileScan::EndLine(LineEnd end) {
  if (line_ == Line::kKept && !refusal_) Judge(KeptText(), end);
  line_ = Line::kBlank;
  kept_.clear();
}

// Headers, bytes that go on and lines within a text are none of this class's business.
void RegistryFileScan::Judge(std::wstring_view line, LineEnd end) {
  const bool isHeader = line.front() == L'[';
  if (isHeader && end != LineEnd::kOdd) {
    if (const auto refusal = RefusalOfKeyLine(line, company_)) Refuse(*refusal);
  } else if (isHeader || line.find(L'[') != std::wstring_view::npos || HoldsRootName(line)) {
    Refuse(kNotUnderstood);
  }
}

void RegistryFileScan::Refuse(std::wstring_view problem) {
  refusal_ = L"line " + std::to_wstring(lineNumber_) + L" " + std::wstring(problem);
}

std::wstring RegistryFileScan::KeptText() const {
  if (units_.IsUtf16()) return FromUtf16(kept_);
  std::string bytes;
  for (const char16_t unit : kept_) bytes.push_back(static_cast<char>(unit));
  return FromUtf8(bytes);
}

namespace {

// More than any header has.
constexpr std::size_t kLongestHeader = 64;

bool IsBlank(char16_t unit) { return unit == u' ' || unit == u'\t' || unit == u'\r'; }

bool IsHeader(std::u16string_view line) {
  while (!line.empty() && IsBlank(line.front())) line.remove_prefix(1);
  if (line.ends_with(u'\r')) line.remove_suffix(1);
  return IsRegistryFileHeader(FromUtf16(line));
}

}  // namespace

void RegistryFileCheck::Take(std::string_view part) {
  bytes_ += part.size();
  units_.Take(part, [this](char16_t unit) { TakeUnit(unit); });
}

std::optional<std::wstring> RegistryFileCheck::Finish() {
  if (bytes_ == 0) return L"is empty";
  if (units_.IsCutShort()) return L"ends within a character";
  if (!HasHeader()) return L"does not begin as a registry file";
  if (inHeader_) return L"ends without the end of its last line";
  switch (place_) {
    case Place::kLineStart:
      if (lastUnit_ == u'\n') return std::nullopt;
      return L"ends without the end of its last line";
    case Place::kLine:
    case Place::kBehindText:
      return L"ends without the end of its last line";
    default:
      return L"ends inside a value";
  }
}

bool RegistryFileCheck::HasHeader() const { return IsHeader(header_); }

void RegistryFileCheck::TakeUnit(char16_t unit) {
  lastUnit_ = unit;
  if (inHeader_) {
    inHeader_ = unit != u'\n';
    if (inHeader_ && header_.size() < kLongestHeader) header_.push_back(unit);
    return;
  }
  switch (place_) {
    case Place::kLineStart:
      return TakeLineStart(unit);
    case Place::kName:
      return TakeQuoted(unit, Place::kBehindName);
    case Place::kText:
      return TakeQuoted(unit, Place::kBehindText);
    case Place::kBehindName:
    case Place::kValue:
    case Place::kContinued:
      return TakeValueUnit(unit);
    case Place::kLine:
    case Place::kBehindText:
      if (unit == u'\n') place_ = Place::kLineStart;
      return;
  }
}

void RegistryFileCheck::TakeLineStart(char16_t unit) {
  if (IsBlank(unit) || unit == u'\n') return;
  if (unit == u'"') {
    place_ = Place::kName;
  } else {
    place_ = unit == u'@' ? Place::kBehindName : Place::kLine;
  }
}

void RegistryFileCheck::TakeQuoted(char16_t unit, Place behind) {
  if (escaped_) {
    escaped_ = false;
  } else if (unit == u'\\') {
    escaped_ = true;
  } else if (unit == u'"') {
    place_ = behind;
  }
}

// A line of numbers that ends in a backslash goes on.
void RegistryFileCheck::TakeValueUnit(char16_t unit) {
  if (unit == u'\n') {
    const bool goesOn = place_ == Place::kValue && lastInk_ == u'\\';
    place_ = goesOn ? Place::kContinued : Place::kLineStart;
    lastInk_ = u'\0';
  } else if (place_ == Place::kBehindName && unit == u'"') {
    place_ = Place::kText;
  } else if (!IsBlank(unit)) {
    if (place_ != Place::kBehindName || unit != u'=') place_ = Place::kValue;
    lastInk_ = unit;
  }
}

std::optional<std::wstring> WhatRegistryFileLacks(const FileReader& files,
                                                  const std::wstring& path) {
  RegistryFileCheck check;
  const SystemCode code = files.ReadInParts(path, [&check](std::string_view part, std::uint64_t) {
    check.Take(part);
    return true;
  });
  if (code != kSystemOk) return L"cannot be read: " + DescribeSystemCode(code);
  return check.Finish();
}

}  // namespace carrovan
