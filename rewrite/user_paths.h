#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/system_facts.h"

namespace carrovan {

// How a file spells the current user and where it names users at all.
struct UserPathRule {
  std::span<const std::u16string_view> prefixes;  // each holds "Users"; in the order of replacement
  std::u16string name;                            // as it is written in place of another user's
  std::u16string otherSpelling;                   // a second one that names the current user too
  bool inXml = false;                             // markup ends a user's name as well
};

// Puts the current user's name in the place of each other user's that follows a prefix, one prefix
// after the other, and gives the number of replacements.
std::size_t ReplaceUserNames(std::u16string& text, const UserPathRule& rule);

// What a registry file's user paths become. Both texts carry the file's escaping.
struct RegUser {
  UserPathRule rule;
  std::u16string profile;  // in place of %USERPROFILE%; empty when that is not set
};

// Nothing when the system does not know the user's name.
std::optional<RegUser> RegUserOf(const UserIdentity& user);

// Nothing when the system does not know the user's name. `anyCharacter` is false for a file in
// which other characters than ASCII have to be written as references.
std::optional<UserPathRule> XmlUserOf(const UserIdentity& user, bool anyCharacter);

}  // namespace carrovan
