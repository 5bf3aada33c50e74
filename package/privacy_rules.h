#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"
#include "registry_text/registry_key.h"

namespace carrovan {

// What of a user's settings is personal and stays out of a package that is made to be shared.
// Names and patterns compare without regard to case.

enum class PrivacyRuleKind {
  kKeyName,        // of a key below the version's own, or of one above it; with all its values
  kValueName,      // of a value
  kUserName,       // a value or a key that names the user, as a word of its own
  kProfileFolder,  // a value with a path into a user's profile folder
  kComputerName,   // a value that names the computer, as a word of its own
  kFileName,       // of a file
  kDocument,       // a document with such paths: they become paths of no user
};

struct PrivacyRule {
  PrivacyRuleKind kind;
  std::wstring_view pattern;  // of names; "*" stands for any text. Empty for a test of the content
  std::wstring_view reason;   // as it reads behind an item and a colon
};

// All rules. Nothing else decides what is personal.
std::span<const PrivacyRule> PrivacyRules();

// Who is not to be named.
struct PrivateNames {
  std::vector<std::wstring> users;
  std::wstring computer;  // empty when it is not known
};

// The current user and this computer, as far as the machine knows them.
PrivateNames PrivateNamesOf(const Machine& machine);

// The first rule that says why something is personal; null when none does. The names outlive this.
class PrivacyJudge {
 public:
  explicit PrivacyJudge(const PrivateNames& names) : names_(names) {}

  // The path with its root; only the keys below the version's own key are looked at, and of these
  // not the subkeys that make up Options.
  const PrivacyRule* RuleForKey(std::wstring_view keyPath) const;

  const PrivacyRule* RuleForValue(const RegistryValue& value) const;

  // A line of a registry file that nobody understands.
  const PrivacyRule* RuleForText(std::wstring_view text) const;

  const PrivacyRule* RuleForFile(std::wstring_view entryName) const;

 private:
  const PrivateNames& names_;
};

// The rule of a kind that tests content.
const PrivacyRule& ContentRule(PrivacyRuleKind kind);

// The texts of a value: all of a list of texts, separated by zeros, and what bytes would be as
// text.
std::vector<std::wstring> TextsOf(const RegistryValue& value);

// True when the text holds the name as a word of its own, so "Ada" in "ada's part" and not in
// "adapter". Chinese names need nothing around them. A name of one or two Latin characters has to
// be the whole text.
bool NamesAsWord(std::wstring_view text, std::wstring_view name);

// Whose profile folders the text names, in paths such as "C:\Users\ada\Documents" or
// "c:/users/ada". Public and the other folders that are no user's, and variables such as
// %USERNAME%, name nobody. Backslashes may be doubled.
std::vector<std::wstring> ProfileNamesIn(std::wstring_view text);
bool NamesProfileFolder(std::wstring_view text);

// Takes the place of a user's name in a document.
inline constexpr std::u16string_view kNobody = u"Public";

// Puts it there and gives the number of names.
std::size_t ReplaceProfileNames(std::u16string& text);

}  // namespace carrovan
