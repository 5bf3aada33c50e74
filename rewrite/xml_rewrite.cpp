#include "rewrite/xml_rewrite.h"

#include <optional>

#include "platform/text.h"
#include "rewrite/document_text.h"
#include "rewrite/unit_text.h"
#include "rewrite/user_paths.h"

namespace carrovan {

std::u16string ReplacedInLines(std::u16string_view text, std::u16string_view search,
                               std::u16string_view replacement) {
  std::u16string result;
  result.reserve(text.size() + text.size() / 16);
  std::u16string line;
  while (!text.empty()) {
    line = TakeLine(text);
    ReplaceUnits(line, search, replacement);
    result.append(line).append(u"\r\n");
  }
  return result;
}

SystemCode ReplaceInXmlLines(const std::wstring& file, const std::wstring& search,
                             const std::wstring& replacement, FileSystem& files,
                             const CodePage& codePage) {
  DocumentText document(files, codePage);
  if (const SystemCode code = document.Load(file); code != kSystemOk) return code;
  return document.Save(ReplacedInLines(document.Text(), ToUtf16(search), ToUtf16(replacement)));
}

SystemCode ReplaceUserPathsInXml(const std::wstring& file, const RewritePorts& ports) {
  DocumentText document(ports.files, ports.codePage);
  if (const SystemCode code = document.Load(file); code != kSystemOk) return code;
  const std::optional<UserPathRule> rule = XmlUserOf(ports.user, document.HoldsAnyCharacter());
  std::u16string text = document.Text();
  if (!rule || ReplaceUserNames(text, *rule) == 0) return kSystemOk;
  return document.Save(text);
}

}  // namespace carrovan
