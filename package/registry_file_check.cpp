#include "package/registry_file_check.h"

#include "platform/reg_file_parser.h"
#include "platform/text.h"

namespace carrovan {
namespace {

// More than any header has.
constexpr std::size_t kLongestHeader = 64;

bool IsBlank(char16_t unit) { return unit == u' ' || unit == u'\t' || unit == u'\r'; }

bool IsHeader(std::u16string_view line) {
  while (!line.empty() && IsBlank(line.front())) line.remove_prefix(1);
  if (line.ends_with(u'\r')) line.remove_suffix(1);
  return IsRegFileHeader(FromUtf16(line));
}

}  // namespace

void RegistryFileCheck::Take(std::string_view part) {
  bytes_ += part.size();
  units_.Take(part, [this](char16_t unit) { TakeUnit(unit); });
}

std::optional<std::wstring> RegistryFileCheck::Finish() {
  if (bytes_ == 0) return L"is empty";
  if (units_.IsCutShort()) return L"ends within a character";
  if (!IsHeader(header_)) return L"does not begin as a registry file";
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
