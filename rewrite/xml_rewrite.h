#pragma once

#include <string>
#include <string_view>

#include "platform/system_code.h"
#include "rewrite/rewrite_ports.h"

namespace carrovan {

// Rewriting of XML documents as text. A document is replaced in one step, in its own encoding. Each
// operation gives the code of the reading or writing that failed; the document is then as it was.

// Replaces every occurrence within a line; case counts. Every line then ends in CR LF.
SystemCode ReplaceInXmlLines(const std::wstring& file, const std::wstring& search,
                             const std::wstring& replacement, FileSystem& files,
                             const CodePage& codePage);

// Puts the current user's name in the place of another user's behind "C:\Users\" and "C:/Users/".
// Does nothing when the system cannot tell the name. Line ends stay.
SystemCode ReplaceUserPathsInXml(const std::wstring& file, const RewritePorts& ports);

// The text with every occurrence within a line replaced and every line ended by CR LF.
std::u16string ReplacedInLines(std::u16string_view text, std::u16string_view search,
                               std::u16string_view replacement);

}  // namespace carrovan
