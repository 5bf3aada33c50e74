#pragma once

#include <cstddef>
#include <string>

#include "platform/file_system.h"

namespace carrovan {

// The rules of the rewriting word for word, one pass after the other over the whole text, without
// regard to time or memory.

std::u16string LiterallyReplaced(const std::u16string& text, const std::u16string& search,
                                 const std::u16string& replacement, std::size_t& count);

// `name` and `profile` as a registry file spells them.
std::u16string LiterallyWithUser(std::u16string text, const std::u16string& name,
                                 const std::u16string& profile, std::size_t& count);

std::u16string LiterallyWithoutInvalidPaths(const std::u16string& text, const FileReader& files,
                                            std::size_t& count);

std::u16string LiterallyRetargeted(const std::u16string& text, const std::u16string& key,
                                   const std::u16string& target);

}  // namespace carrovan
