#include "package/registry_privacy.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "registry_text/registry_file_parser.h"
#include "text/text.h"

namespace carrovan {
namespace {

// A value's data takes six units for each byte at most, and the system takes a megabyte of it.
constexpr std::size_t kLongestPiece = std::size_t{8} << 20;

bool IsBlank(char16_t c) { return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n'; }

bool BeginsValue(std::wstring_view text) {
  return text.starts_with(L'"') || text.starts_with(L'@');
}

std::wstring_view Trimmed(std::wstring_view text) {
  constexpr std::wstring_view kBlanks = L" \t\r\n";
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

// The value that the lines set; nothing when they are not understood or set none.
std::optional<RegistryValue> ValueIn(const std::wstring& lines) {
  const auto file = ParseRegistryFile(
      L"Windows Registry Editor Version 5.00\r\n[HKEY_CURRENT_USER\\Key]\r\n" + lines);
  const bool isOne =
      file && file->problems.empty() && file->keys.size() == 1 && file->keys[0].values.size() == 1;
  return isOne ? std::optional(file->keys[0].values[0].value) : std::nullopt;
}

// Of 8-bit text each unit is a byte.
std::wstring TextOfPiece(std::u16string_view piece, bool isUtf16) {
  if (isUtf16) return FromUtf16(piece);
  std::string bytes;
  for (const char16_t unit : piece) bytes.push_back(static_cast<char>(unit));
  return FromUtf8(bytes);
}

}  // namespace

void RegistryFileSplit::Take(std::string_view part) {
  units_.Take(part, [this](char16_t unit) { TakeUnit(unit); });
}

void RegistryFileSplit::Finish() {
  units_.Finish([this](char16_t unit) { TakeUnit(unit); });
  if (!piece_.empty()) Give(true);
}

void RegistryFileSplit::TakeUnit(char16_t unit) {
  if (!hasInk_ && !IsBlank(unit)) {
    hasInk_ = true;
    isValue_ = unit == u'"' || unit == u'@';
  }
  piece_.push_back(unit);
  if (EndsHere(unit)) {
    Give(true);
  } else if (piece_.size() >= kLongestPiece) {
    Give(false);
  }
}

bool RegistryFileSplit::EndsHere(char16_t unit) {
  if (!isValue_) return unit == u'\n';
  if (inQuotes_) {
    inQuotes_ = isEscaped_ || unit != u'"';
    isEscaped_ = !isEscaped_ && unit == u'\\';
    return false;
  }
  if (unit == u'\n') return !std::exchange(goesOn_, false);
  inQuotes_ = unit == u'"';
  if (!IsBlank(unit)) goesOn_ = unit == u'\\';
  return false;
}

void RegistryFileSplit::Give(bool isWhole) {
  take_(piece_, isWhole && isWhole_);
  piece_.clear();
  isWhole_ = isWhole;
  if (!isWhole) return;
  hasInk_ = false;
  isValue_ = false;
  inQuotes_ = false;
  isEscaped_ = false;
  goesOn_ = false;
}

RegistryPrivacyFilter::RegistryPrivacyFilter(const PrivacyJudge& judge, std::wstring entry,
                                             std::vector<PrivateItem>& found, TakeBytes kept)
    : judge_(judge),
      entry_(std::move(entry)),
      found_(found),
      kept_(std::move(kept)),
      split_([this](std::u16string_view piece, bool isWhole) { TakePiece(piece, isWhole); }) {}

void RegistryPrivacyFilter::Finish() {
  split_.Finish();
  Keep({});
}

void RegistryPrivacyFilter::TakePiece(std::u16string_view piece, bool isWhole) {
  if (!IsPrivate(piece, isWhole)) Keep(piece);
}

bool RegistryPrivacyFilter::IsPrivate(std::u16string_view piece, bool isWhole) {
  const std::wstring text = TextOfPiece(piece, split_.IsUtf16());
  const std::wstring_view line = Trimmed(text);
  if (isWhole && line.starts_with(L'[')) return IsPrivateKey(line);
  if (keyIsPrivate_) return !line.empty();
  return (BeginsValue(line) || !isWhole) && IsPrivateValue(text, isWhole);
}

bool RegistryPrivacyFilter::IsPrivateKey(std::wstring_view line) {
  key_ = line.substr(1, line.rfind(L']') == line.npos ? line.npos : line.rfind(L']') - 1);
  if (key_.starts_with(L'-')) key_.erase(0, 1);
  const PrivacyRule* const rule = judge_.RuleForKey(key_);
  keyIsPrivate_ = rule != nullptr;
  if (rule != nullptr)
    found_.push_back({entry_, key_, L"", false, false, std::wstring(rule->reason)});
  return keyIsPrivate_;
}

bool RegistryPrivacyFilter::IsPrivateValue(const std::wstring& text, bool isWhole) {
  PrivateItem item{entry_, key_, L"", true, false, L"is too long to be looked into"};
  if (isWhole) {
    const auto value = ValueIn(text);
    const PrivacyRule* const rule =
        value ? judge_.RuleForValue(*value) : judge_.RuleForText(Trimmed(text));
    if (rule == nullptr) return false;
    if (value) item.name = value->name;
    item.reason = rule->reason;
  }
  // One that comes in pieces is found once.
  if (found_.empty() || isWhole || found_.back() != item) found_.push_back(std::move(item));
  return true;
}

void RegistryPrivacyFilter::Keep(std::u16string_view piece) {
  if (!kept_) return;
  std::string bytes;
  if (split_.IsUtf16() && !std::exchange(markIsKept_, true)) bytes = "\xFF\xFE";
  for (const char16_t unit : piece) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    if (split_.IsUtf16()) bytes.push_back(static_cast<char>(unit >> 8));
  }
  if (!bytes.empty()) kept_(bytes);
}

ProfileNameCollector::ProfileNameCollector(std::vector<std::wstring>& users)
    : users_(users), split_([this](std::u16string_view piece, bool isWhole) {
        const std::wstring text = TextOfPiece(piece, split_.IsUtf16());
        const auto value =
            isWhole && BeginsValue(Trimmed(text)) ? ValueIn(text) : std::optional<RegistryValue>();
        if (!value) return;
        TakeText(value->name);
        for (const std::wstring& data : TextsOf(*value)) TakeText(data);
      }) {}

void ProfileNameCollector::TakeText(std::wstring_view text) {
  constexpr std::size_t kMostUsers = 100;
  for (std::wstring& name : ProfileNamesIn(text)) {
    const bool isKnown = std::ranges::any_of(
        users_, [&name](const std::wstring& user) { return CompareNames(user, name) == 0; });
    if (!isKnown && users_.size() < kMostUsers) users_.push_back(std::move(name));
  }
}

}  // namespace carrovan
