#include <iostream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "cli/json_text.h"
#include "cli/merge_verbs.h"
#include "cli/ribbon_json.h"
#include "merge/ribbon_codec.h"

namespace carrovan {
namespace {

std::string StandardInput() {
  return {std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>()};
}

// The line end that a shell or an editor puts behind a text, and blanks around it, are not part of
// the record.
std::string Trimmed(const std::string& text) {
  constexpr char kBlanks[] = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace

ExitStatus RunRibbonDecodeVerb(const Session& session) {
  sRibbonElement record;
  if (!RibbonElementFromText(FromUtf8(Trimmed(StandardInput())), record)) {
    return session.Fail(L"Standard input is not the hexadecimal text of a ribbon record");
  }
  PrintJsonText(session, RibbonToJson(record));
  return ExitStatus::kDone;
}

ExitStatus RunRibbonEncodeVerb(const Session& session) {
  const auto json = nlohmann::json::parse(StandardInput(), nullptr, false);
  sRibbonElement record;
  if (json.is_discarded() || !RibbonFromJson(json, record)) {
    return session.Fail(L"Standard input is not the JSON of a ribbon record");
  }
  session.Print(RibbonElementToText(record));
  return ExitStatus::kDone;
}

}  // namespace carrovan
