#include <iostream>
#include <iterator>

#include "cli/merge_verbs.h"
#include "cli/ribbon_json.h"
#include "merge/ribbon_codec.h"
#include "platform/code_page.h"
#include "platform/sandbox/utf8_code_page.h"
#include "platform/text.h"

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

// Of the machine that the session works on.
std::unique_ptr<CodePage> CodePageOf(const Session& session) {
  if (session.root.empty()) return OpenHostCodePage();
  return std::make_unique<Utf8CodePage>();
}

}  // namespace

ExitStatus RunRibbonDecodeVerb(const Session& session) {
  sRibbonElement record;
  if (!RibbonElementFromText(FromUtf8(Trimmed(StandardInput())), record)) {
    return session.Fail(L"Standard input is not the hexadecimal text of a ribbon record");
  }
  session.Print(RibbonToJson(record, *CodePageOf(session)));
  return ExitStatus::kDone;
}

ExitStatus RunRibbonEncodeVerb(const Session& session) {
  sRibbonElement record;
  if (!RibbonFromJson(StandardInput(), *CodePageOf(session), record)) {
    return session.Fail(L"Standard input is not the JSON of a ribbon record");
  }
  session.Print(RibbonElementToText(record));
  return ExitStatus::kDone;
}

}  // namespace carrovan
