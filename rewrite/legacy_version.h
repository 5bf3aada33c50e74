#pragma once

#include <string>
#include <string_view>

#include "platform/code_page.h"
#include "platform/file_system.h"
#include "platform/xml_dom.h"

namespace carrovan {

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
                                 const CodePage& codePage);

// Attribute "value" of the first element ImgDir0001 that is a child of an element Surface_Finish;
// empty when the document does not load or has no such element or attribute.
std::wstring ReadLegacyTargetVersion(const std::wstring& xmlPath, XmlDom& dom);

}  // namespace carrovan
