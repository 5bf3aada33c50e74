#include "rewrite/xml_rewrite.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "rewrite/document_text.h"
#include "rewrite/user_paths.h"
#include "text/text.h"

namespace carrovan {

std::u16string ReplacedInLines(std::u16string_view text, std::u16string_view search,
                               std::u16string_view replacement,
                               const std::vector<std::u16string>& stay) {
  std::u16string result;
  result.reserve(text.size() + text.size() / 16);
  std::u16string line;
  while (!text.empty()) {
    line = TakeLine(text);
    ReplaceBetween(line, stay, [&](std::u16string& stretch) {
      return ReplaceUnits(stretch, search, replacement);
    });
    result.append(line).append(u"\r\n");
  }
  return result;
}

SystemCode ReplaceInXmlLines(const std::wstring& file, const std::wstring& search,
                             const std::wstring& replacement, FileSystem& files,
                             const CodePage& codePage, const std::vector<std::u16string>& stay) {
  DocumentText document(files, codePage);
  if (const SystemCode code = document.Load(file); code != kSystemOk) return code;
  return document.Save(
      ReplacedInLines(document.Text(), ToUtf16(search), ToUtf16(replacement), stay));
}

SystemCode ReplaceUserPathsInXml(const std::wstring& file, const RewritePorts& ports) {
  DocumentText document(ports.files, ports.codePage);
  if (const SystemCode code = document.Load(file); code != kSystemOk) return code;
  const std::optional<UserPathRule> rule = XmlUserOf(ports.user, document.HoldsAnyCharacter());
  std::u16string text = document.Text();
  if (!rule) return kSystemOk;
  const std::size_t count = ReplaceBetween(
      text, ports.stay, [&rule](auto& stretch) { return ReplaceUserNames(stretch, *rule); });
  if (count == 0) return kSystemOk;
  return document.Save(text);
}

namespace {

bool IsVersionCharacter(char16_t c) { return (c >= u'0' && c <= u'9') || c == u'.'; }

std::u16string_view VersionAtFront(std::u16string_view text) {
  const auto end = std::ranges::find_if_not(text, IsVersionCharacter);
  return text.substr(0, static_cast<std::size_t>(end - text.begin()));
}

// The text of the largest number behind the key in any line; empty when there is none.
std::u16string LargestVersion(std::u16string_view text, std::u16string_view key) {
  std::u16string_view largest;
  double largestNumber = std::numeric_limits<double>::lowest();
  while (!text.empty()) {
    const std::u16string_view line = TakeLine(text);
    for (std::size_t hit = FindUnits(line, key); hit != kNotFound;) {
      const std::u16string_view run = VersionAtFront(line.substr(hit + key.size()));
      double number = 0;
      if (ParseNumber(FromUtf16(run), number) && number > largestNumber) {
        largestNumber = number;
        largest = run;
      }
      hit = FindUnits(line, key, hit + key.size() + run.size());
    }
  }
  return std::u16string(largest);
}

}  // namespace

bool ParseNumber(std::wstring_view text, double& value) {
  const std::size_t front = std::min(text.find_first_not_of(L" \t\n\v\f\r"), text.size());
  text.remove_prefix(front);
  std::string characters;
  for (const wchar_t c : text) {
    if (std::wstring_view(L"0123456789.eE+-").find(c) == std::wstring_view::npos) return false;
    characters.push_back(static_cast<char>(c));
  }
  // The parser takes a minus sign only.
  if (characters.starts_with('+') && !characters.starts_with("+-")) characters.erase(0, 1);
  double number = 0;
  const char* const end = characters.data() + characters.size();
  const auto result = std::from_chars(characters.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end) return false;
  value = number;
  return true;
}

SystemCode RetargetLegacyVersion(const std::wstring& xmlPath, const std::wstring& productKey,
                                 const std::wstring& targetVersion, FileSystem& files,
                                 const CodePage& codePage,
                                 const std::vector<std::u16string>& stay) {
  double target = 0;
  if (productKey.empty() || !ParseNumber(targetVersion, target)) return kSystemOk;
  DocumentText document(files, codePage);
  if (const SystemCode code = document.Load(xmlPath); code != kSystemOk) return code;
  const std::u16string key = ToUtf16(productKey);
  const std::u16string largest = LargestVersion(document.Text(), key);
  if (largest.empty()) return kSystemOk;
  return document.Save(
      ReplacedInLines(document.Text(), key + largest, key + ToUtf16(targetVersion), stay));
}

std::wstring ReadLegacyTargetVersion(const std::wstring& xmlPath, XmlDom& dom) {
  const auto session = dom.Begin();
  const auto document = session->NewDocument();
  if (document == nullptr || !document->Load(xmlPath)) return {};
  struct Place {
    XmlNode node;
    bool insideSurfaceFinish = false;
  };
  std::vector<Place> pending = {{document->Root(), false}};  // the next node of each level
  while (!pending.empty()) {
    const Place place = std::move(pending.back());
    pending.pop_back();
    if (!place.node) continue;
    if (place.insideSurfaceFinish && place.node.IsElement() && place.node.Name() == "ImgDir0001") {
      return place.node.Attribute("value").value_or(L"");
    }
    pending.push_back({place.node.NextSibling(), place.insideSurfaceFinish});
    if (place.node.IsElement()) {
      pending.push_back({place.node.FirstChild(), place.node.Name() == "Surface_Finish"});
    }
  }
  return {};
}

}  // namespace carrovan
