#include "rewrite/user_paths.h"

#include <algorithm>

#include "rewrite/document_text.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr std::u16string_view kInEveryPrefix = u"Users";

constexpr std::u16string_view kRegPrefixes[] = {u"C:\\\\Users\\\\", u"C:/Users/", u"\\Users\\",
                                                u"/Users/"};
constexpr std::u16string_view kXmlPrefixes[] = {u"C:\\Users\\", u"C:/Users/"};

// Characters that no folder's name holds, as a document may spell them.
constexpr std::u16string_view kMarkup[] = {u"<", u">", u"'", u"&quot;", u"&lt;", u"&gt;"};

// Whether a user's name ends in front of this text.
bool EndsName(std::u16string_view text, bool inXml) {
  if (text.empty()) return true;
  const char16_t c = text.front();
  if (c <= u' ' || c == u'\\' || c == u'/' || c == u'"') return true;
  return inXml && std::ranges::any_of(
                      kMarkup, [&](std::u16string_view mark) { return text.starts_with(mark); });
}

// The length of the name at the front when it is this one, whatever characters it holds; else 0.
std::size_t LengthIfNamed(std::u16string_view text, std::u16string_view name, bool inXml) {
  const bool named = text.starts_with(name) && EndsName(text.substr(name.size()), inXml);
  return named ? name.size() : 0;
}

// The length of the current user's name at the front; 0 when another one stands there.
std::size_t OwnLength(std::u16string_view text, const UserPathRule& rule) {
  return std::max(LengthIfNamed(text, rule.name, rule.inXml),
                  LengthIfNamed(text, rule.otherSpelling, rule.inXml));
}

std::size_t NameLength(std::u16string_view text, bool inXml) {
  std::size_t length = 0;
  while (!EndsName(text.substr(length), inXml)) ++length;
  return length;
}

std::size_t ReplaceNamesBehind(std::u16string_view prefix, std::u16string& text,
                               const UserPathRule& rule) {
  std::u16string result;
  std::size_t copied = 0;
  std::size_t count = 0;
  const std::u16string_view all = text;
  for (std::size_t hit = FindUnits(all, prefix); hit != kNotFound;) {
    std::size_t end = hit + prefix.size();
    const std::size_t own = OwnLength(all.substr(end), rule);
    const std::size_t length = own > 0 ? own : NameLength(all.substr(end), rule.inXml);
    if (own == 0 && length > 0) {
      if (count == 0) result.reserve(text.size() + text.size() / 8);
      result.append(all.substr(copied, end - copied)).append(rule.name);
      copied = end + length;
      ++count;
    }
    end += length;
    hit = FindUnits(all, prefix, end);
  }
  if (count > 0) {
    result.append(all.substr(copied));
    text.swap(result);
  }
  return count;
}

std::size_t ReplaceNamesInLine(std::u16string& line, const UserPathRule& rule) {
  std::size_t count = 0;
  for (const std::u16string_view prefix : rule.prefixes) {
    count += ReplaceNamesBehind(prefix, line, rule);
  }
  return count;
}

// As a registry file writes a string.
std::u16string RegEscaped(std::wstring_view text) {
  return ToUtf16(ReplaceAll(ReplaceAll(text, L"\\", L"\\\\"), L"\"", L"\\\""));
}

bool IsPair(std::u16string_view text) {
  return text.size() > 1 && (text[0] & 0xFC00) == 0xD800 && (text[1] & 0xFC00) == 0xDC00;
}

// The reference to the character at the front of a text.
std::u16string CharacterReference(std::u16string_view text) {
  unsigned long code = text[0];
  if (IsPair(text)) code = 0x10000 + ((code - 0xD800) << 10) + (text[1] - 0xDC00);
  return ToUtf16(L"&#" + std::to_wstring(code) + L";");
}

std::u16string XmlEscaped(std::u16string_view text, bool anyCharacter) {
  std::u16string escaped;
  while (!text.empty()) {
    const bool refer = text[0] >= 0x80 && !anyCharacter;
    if (text[0] == u'&' || text[0] == u'\'') {
      escaped += text[0] == u'&' ? u"&amp;" : u"&apos;";
    } else {
      escaped += refer ? CharacterReference(text) : std::u16string(1, text[0]);
    }
    text.remove_prefix(refer && IsPair(text) ? 2 : 1);
  }
  return escaped;
}

}  // namespace

// No prefix and no name goes over the end of a line, so that only the lines with users count.
std::size_t ReplaceUserNames(std::u16string& text, const UserPathRule& rule) {
  std::u16string result;
  std::u16string line;
  std::size_t copied = 0;
  std::size_t count = 0;
  for (std::size_t hit = FindUnits(text, kInEveryPrefix); hit != kNotFound;) {
    const std::size_t begin = text.rfind(u'\n', hit) + 1;  // 0 when there is none
    const std::size_t end = std::min(text.find(u'\n', hit), text.size());
    const bool isOnlyLine = begin == 0 && end == text.size();  // which may be a very long one
    if (isOnlyLine) return ReplaceNamesInLine(text, rule);
    line.assign(text, begin, end - begin);
    if (const std::size_t inLine = ReplaceNamesInLine(line, rule); inLine > 0) {
      if (count == 0) result.reserve(text.size() + text.size() / 8);
      result.append(text, copied, begin - copied).append(line);
      copied = end;
      count += inLine;
    }
    hit = FindUnits(text, kInEveryPrefix, end);
  }
  if (count > 0) {
    result.append(text, copied);
    text.swap(result);
  }
  return count;
}

std::optional<RegUser> RegUserOf(const UserIdentity& user) {
  const std::optional<std::wstring> name = user.UserName();
  if (!name || name->empty()) return std::nullopt;
  // What follows the variable brings its own separator.
  std::wstring profile = user.ProfileFolder().value_or(L"");
  while (EndsInSeparator(profile)) profile.pop_back();
  RegUser regUser;
  regUser.rule.prefixes = kRegPrefixes;
  regUser.rule.name = RegEscaped(*name);
  regUser.profile = RegEscaped(profile);
  return regUser;
}

std::optional<UserPathRule> XmlUserOf(const UserIdentity& user, bool anyCharacter) {
  const std::optional<std::wstring> name = user.UserName();
  if (!name || name->empty()) return std::nullopt;
  const std::u16string plain = ToUtf16(*name);
  return UserPathRule{kXmlPrefixes, XmlEscaped(plain, anyCharacter), plain, true};
}

}  // namespace carrovan
