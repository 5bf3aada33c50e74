#include "package/privacy_rules.h"

#include <algorithm>
#include <array>
#include <utility>

#include "environment/setting_category.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

using enum PrivacyRuleKind;

constexpr PrivacyRule kRules[] = {
    {kKeyName, L"recent*", L"a list of recent files"},
    {kKeyName, L"*mru*", L"a list of recent files"},
    {kKeyName, L"file history*", L"a list of recent files"},
    {kValueName, L"recent*", L"a recent file"},
    {kValueName, L"*mru*", L"a recent file"},
    {kValueName, L"last open*", L"a recent file"},
    {kValueName, L"lastopen*", L"a recent file"},
    {kValueName, L"last user*", L"says who the user is"},
    {kValueName, L"lastuser*", L"says who the user is"},
    {kValueName, L"user name", L"says who the user is"},
    {kValueName, L"username", L"says who the user is"},
    {kValueName, L"author", L"says who the user is"},
    {kValueName, L"e-mail*", L"says who the user is"},
    {kValueName, L"email*", L"says who the user is"},
    {kValueName, L"computer name", L"says which computer it is"},
    {kValueName, L"computername", L"says which computer it is"},
    {kValueName, L"machine name", L"says which computer it is"},
    {kValueName, L"host name", L"says which computer it is"},
    {kValueName, L"hostname", L"says which computer it is"},
    {kProfileFolder, L"", L"names a user's profile folder"},
    {kUserName, L"", L"names the user"},
    {kComputerName, L"", L"names the computer"},
    {kFileName, L"recent.*", L"a list of recent files"},
    {kFileName, L"recentfiles.*", L"a list of recent files"},
    {kFileName, L"recent files.*", L"a list of recent files"},
    {kFileName, L"*.mru", L"a list of recent files"},
    {kDocument, L"", L"names users' profile folders, which become those of Public"},
};

char16_t UpperCase(wchar_t ascii) {
  return static_cast<char16_t>(ascii >= L'a' && ascii <= L'z' ? ascii - L'a' + L'A' : ascii);
}

// Of a folded name. A pattern has few stars and is ASCII.
bool Matches(std::u16string_view name, std::wstring_view pattern) {
  if (pattern.empty()) return name.empty();
  if (pattern.front() != L'*') {
    return !name.empty() && name.front() == UpperCase(pattern.front()) &&
           Matches(name.substr(1), pattern.substr(1));
  }
  const std::wstring_view rest = pattern.substr(1);
  for (std::size_t skipped = 0; skipped <= name.size(); ++skipped) {
    if (Matches(name.substr(skipped), rest)) return true;
  }
  return false;
}

const PrivacyRule* RuleForName(PrivacyRuleKind kind, std::wstring_view name) {
  const std::u16string folded = FoldedName(name);
  const auto at = std::ranges::find_if(kRules, [&](const PrivacyRule& rule) {
    return rule.kind == kind && Matches(folded, rule.pattern);
  });
  return at == std::end(kRules) ? nullptr : &*at;
}

// Scripts that set no blanks between words.
bool NeedsNoBlanks(char16_t c) { return c >= 0x2E80; }

bool IsWordUnit(char16_t c) {
  if (c < 0x80) return (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'Z') || c == u'_';
  return c >= 0xC0 && c != 0xD7 && c != 0xF7 && c < 0x2000;
}

bool IsBoundary(char16_t inside, char16_t outside) {
  return NeedsNoBlanks(inside) || !IsWordUnit(outside) || !IsWordUnit(inside);
}

bool IsShort(const std::u16string& name) {
  return name.size() < 3 && std::ranges::none_of(name, NeedsNoBlanks);
}

bool IsSeparator(char16_t c) { return c == u'\\' || c == u'/'; }

// Characters that no folder's name holds, and what ends a name in markup.
bool EndsName(char16_t c) {
  constexpr std::u16string_view kEnds = u"\"<>|:*?=;\\/";
  return c < u' ' || kEnds.find(c) != kEnds.npos;
}

// Of a folded text. A quote ends an attribute, but not the front of O'Brien.
bool IsEndOfName(std::u16string_view text, std::size_t at) {
  const char16_t c = text[at];
  if (c == u'&') {
    const std::u16string_view rest = text.substr(at);
    return rest.starts_with(u"&QUOT;") || rest.starts_with(u"&LT;") || rest.starts_with(u"&GT;");
  }
  if (c != u'\'') return EndsName(c);
  return at + 1 == text.size() || text[at + 1] == u' ' || EndsName(text[at + 1]);
}

constexpr std::u16string_view kNobodies[] = {u"PUBLIC", u"DEFAULT", u"DEFAULT USER", u"ALL USERS"};
constexpr std::u16string_view kProfileRoots[] = {u"USERS", u"DOCUMENTS AND SETTINGS"};

bool IsNobody(std::u16string_view name) {
  return name.empty() || name.front() == u'%' ||
         std::ranges::find(kNobodies, name) != std::end(kNobodies);
}

// The name that begins here, whatever it is.
std::size_t LengthOfName(std::u16string_view text, std::size_t at) {
  constexpr std::size_t kLongestReference = 10;
  std::size_t end = at;
  while (end < text.size() && !IsEndOfName(text, end)) {
    // A reference has its own semicolon.
    const std::u16string_view reference = text.substr(end, kLongestReference);
    const std::size_t close = text[end] == u'&' ? reference.find(u';') : text.npos;
    end += close != text.npos ? close + 1 : 1;
  }
  return end - at;
}

struct ProfileName {
  std::size_t at = 0;
  std::size_t length = 0;
};

// Behind a root such as "\Users\", or nothing.
std::optional<std::size_t> BehindRoot(std::u16string_view folded, std::size_t at,
                                      std::u16string_view root) {
  if (at == 0 || !IsSeparator(folded[at - 1])) return std::nullopt;
  std::size_t end = at + root.size();
  const std::size_t separators = end;
  while (end < folded.size() && end - separators < 2 && IsSeparator(folded[end])) ++end;
  return end == separators ? std::nullopt : std::optional(end);
}

std::optional<ProfileName> FindBehind(std::u16string_view root, std::u16string_view folded,
                                      std::size_t from) {
  for (std::size_t at = folded.find(root, from); at != folded.npos;
       at = folded.find(root, at + 1)) {
    const auto begin = BehindRoot(folded, at, root);
    if (!begin) continue;
    const std::size_t length = LengthOfName(folded, *begin);
    if (!IsNobody(folded.substr(*begin, length))) return ProfileName{*begin, length};
  }
  return std::nullopt;
}

// A folded text has as many units as the text.
std::u16string Folded(std::u16string_view text) { return FoldedName(FromUtf16(text)); }

std::wstring WideUnits(std::span<const std::uint8_t> data) {
  std::u16string units;
  for (std::size_t i = 0; i + 1 < data.size(); i += 2) {
    units.push_back(static_cast<char16_t>(data[i] | (data[i + 1] << 8)));
  }
  return FromUtf16(units);
}

}  // namespace

std::span<const PrivacyRule> PrivacyRules() { return kRules; }

const PrivacyRule& ContentRule(PrivacyRuleKind kind) {
  return *std::ranges::find(kRules, kind, &PrivacyRule::kind);
}

PrivateNames PrivateNamesOf(const Machine& machine) {
  PrivateNames names;
  if (const auto user = machine.user->UserName()) names.users.push_back(*user);
  // A profile folder keeps the name that the user had first.
  if (const auto profile = machine.user->ProfileFolder()) {
    const std::wstring name = FileNameOf(WithoutTrailingBackslashes(*profile));
    if (!name.empty() && (names.users.empty() || CompareNames(name, names.users[0]) != 0)) {
      names.users.push_back(name);
    }
  }
  const auto values = machine.registry->Values(
      RegistryHive::kLocalMachine,
      L"SYSTEM\\CurrentControlSet\\Control\\ComputerName\\ActiveComputerName");
  for (const RegistryValue& value : values.value_or(std::vector<RegistryValue>())) {
    if (CompareNames(value.name, L"ComputerName") != 0 || value.type != kRegSz) continue;
    names.computer = WideUnits(value.data);
    names.computer.resize(std::min(names.computer.find(L'\0'), names.computer.size()));
  }
  return names;
}

std::vector<std::wstring> TextsOf(const RegistryValue& value) {
  switch (value.type) {
    case kRegSz:
      return {WideUnits(value.data)};
    case kRegExpandSz:  // older registry files write texts of 8 bits
    case kRegMultiSz:
    case kRegBinary:
    case kRegNone: {
      std::wstring narrow;
      for (const std::uint8_t byte : value.data) narrow.push_back(static_cast<wchar_t>(byte));
      return {WideUnits(value.data), narrow};
    }
    default:
      return {};
  }
}

bool NamesAsWord(std::wstring_view text, std::wstring_view name) {
  const std::u16string all = FoldedName(text);
  const std::u16string word = FoldedName(name);
  if (word.empty()) return false;
  if (IsShort(word)) return all.substr(0, all.find(u'\0')) == word;
  for (std::size_t at = all.find(word); at != all.npos; at = all.find(word, at + 1)) {
    const std::size_t end = at + word.size();
    if ((at == 0 || IsBoundary(word.front(), all[at - 1])) &&
        (end == all.size() || IsBoundary(word.back(), all[end]))) {
      return true;
    }
  }
  return false;
}

std::vector<std::wstring> ProfileNamesIn(std::wstring_view text) {
  const std::u16string units = ToUtf16(text);
  const std::u16string folded = Folded(units);
  std::vector<std::wstring> names;
  for (const std::u16string_view root : kProfileRoots) {
    for (auto name = FindBehind(root, folded, 0); name;
         name = FindBehind(root, folded, name->at + name->length)) {
      names.push_back(FromUtf16(std::u16string_view(units).substr(name->at, name->length)));
    }
  }
  return names;
}

bool NamesProfileFolder(std::wstring_view text) {
  const std::u16string folded = FoldedName(text);
  return std::ranges::any_of(kProfileRoots, [&](std::u16string_view root) {
    return FindBehind(root, folded, 0).has_value();
  });
}

std::size_t ReplaceProfileNames(std::u16string& text) {
  std::size_t count = 0;
  for (const std::u16string_view root : kProfileRoots) {
    const std::u16string folded = Folded(text);
    std::u16string result;
    std::size_t copied = 0;
    for (auto name = FindBehind(root, folded, 0); name; name = FindBehind(root, folded, copied)) {
      result.append(text, copied, name->at - copied).append(kNobody);
      copied = name->at + name->length;
      ++count;
    }
    if (copied > 0) text = result.append(text, copied);
  }
  return count;
}

const PrivacyRule* PrivacyJudge::RuleForText(std::wstring_view text) const {
  if (NamesProfileFolder(text)) return &ContentRule(kProfileFolder);
  const auto isNamed = [text](const std::wstring& name) { return NamesAsWord(text, name); };
  if (std::ranges::any_of(names_.users, isNamed)) return &ContentRule(kUserName);
  return isNamed(names_.computer) ? &ContentRule(kComputerName) : nullptr;
}

const PrivacyRule* PrivacyJudge::RuleForValue(const RegistryValue& value) const {
  if (const PrivacyRule* rule = RuleForName(kValueName, value.name)) return rule;
  if (const PrivacyRule* rule = RuleForText(value.name)) return rule;
  for (const std::wstring& text : TextsOf(value)) {
    if (const PrivacyRule* rule = RuleForText(text)) return rule;
  }
  return nullptr;
}

const PrivacyRule* PrivacyJudge::RuleForKey(std::wstring_view keyPath) const {
  // The hive, "SOFTWARE", the company and the product with its version.
  constexpr int kOwnNames = 4;
  for (int taken = 0; taken < kOwnNames; ++taken) TakeKeyName(keyPath);
  for (bool isFirst = true; !keyPath.empty(); isFirst = false) {
    const std::wstring_view name = TakeKeyName(keyPath);
    if (const PrivacyRule* rule = RuleForName(kKeyName, name)) return rule;
    const bool isOption =
        isFirst && std::ranges::any_of(OptionSubkeys(), [name](std::wstring_view subkey) {
          return CompareNames(subkey.substr(1), name) == 0;
        });
    if (isOption) continue;
    if (const PrivacyRule* rule = RuleForText(name)) return rule;
  }
  return nullptr;
}

const PrivacyRule* PrivacyJudge::RuleForFile(std::wstring_view entryName) const {
  return RuleForName(kFileName, FileNameOf(entryName));
}

}  // namespace carrovan
