#pragma once

#include <string>
#include <string_view>

#include "platform/file_system.h"
#include "platform/system_code.h"
#include "platform/system_facts.h"
#include "platform/xml_dom.h"
#include "rewrite/rewrite_ports.h"

namespace carrovan {

// Rewriting of XML documents as text. A document is replaced in one step, in its own encoding. Each
// operation gives the code of the reading or writing that failed; the document is then as it was.

// Replaces every occurrence within a line, but not in texts that stay; case counts. Every line then
// ends in CR LF.
SystemCode ReplaceInXmlLines(const std::wstring& file, const std::wstring& search,
                             const std::wstring& replacement, FileSystem& files,
                             const CodePage& codePage,
                             const std::vector<std::u16string>& stay = {});

// Puts the current user's name in the place of another user's behind "C:\Users\" and "C:/Users/".
// Does nothing when the system does not know the name. Line ends stay.
SystemCode ReplaceUserPathsInXml(const std::wstring& file, const RewritePorts& ports);

// The text with every occurrence within a line replaced, but not in texts that stay, and every line
// ended by CR LF.
std::u16string ReplacedInLines(std::u16string_view text, std::u16string_view search,
                               std::u16string_view replacement,
                               const std::vector<std::u16string>& stay = {});

// A legacy document names product versions as a product key with the version right behind it, such
// as VANTRIC2023.0.

// True when the whole text is one decimal number; blanks in front, a sign, a fraction and an
// exponent are allowed. The value is filled only then.
[[nodiscard]] bool ParseNumber(std::wstring_view text, double& value);

// Puts the target version in the place of the highest one that the document names behind the
// product key; lower ones stay. Changes nothing when the target is no number, the key is empty or
// no version is named, and else ends every line in CR LF. Gives the code of the reading or writing
// that failed; the document is then as it was.
SystemCode RetargetLegacyVersion(const std::wstring& xmlPath, const std::wstring& productKey,
                                 const std::wstring& targetVersion, FileSystem& files,
                                 const CodePage& codePage,
                                 const std::vector<std::u16string>& stay = {});

// Attribute "value" of the first element ImgDir0001 that is a child of an element Surface_Finish;
// empty when the document does not load or has no such element or attribute.
std::wstring ReadLegacyTargetVersion(const std::wstring& xmlPath, XmlDom& dom);

}  // namespace carrovan
