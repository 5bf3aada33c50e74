#include "cli/merge_verbs.h"

#include <iostream>
#include <iterator>

#include "cli/ribbon_json.h"
#include "cli/session.h"
#include "merge/folder_merge.h"
#include "merge/ribbon_codec.h"
#include "merge/shortcut_merge.h"
#include "merge/xml_merge.h"
#include "platform/posix/host_facts.h"
#include "platform/system_facts.h"
#include "platform/xml_dom.h"
#include "text/text.h"

namespace carrovan {

ExitStatus RunMergeXmlVerb(const Session& session, const MergeXmlOptions& options) {
  const auto files = session.OpenFiles();
  if (!files) return ExitStatus::kFailed;
  const auto dom = OpenXmlDom(files->Files());
  ConsoleLog log(session);
  if (MergeXmlFiles(options.oldPath, options.newPath, options.output, *dom, log)) {
    return ExitStatus::kDone;
  }
  return session.Fail(L"The documents were not merged into " + options.output);
}

ExitStatus RunMergeFoldersVerb(const Session& session, const MergeFoldersOptions& options) {
  const auto files = session.OpenFiles();
  if (!files) return ExitStatus::kFailed;
  const auto dom = OpenXmlDom(files->Files());
  ConsoleLog log(session);
  try {
    const FolderMergePorts ports{files->Files(), *dom, log};
    if (MergeAndSyncFolders(options.oldFolder, options.newFolder, ports)) return ExitStatus::kDone;
  } catch (const FileSystemError& error) {
    return session.Fail(error.Description());
  }
  return session.Fail(L"No file was merged or added");
}

ExitStatus RunMergeShortcutsVerb(const Session& session, const MergeShortcutsOptions& options) {
  const auto files = session.OpenFiles();
  if (!files) return ExitStatus::kFailed;
  const auto dom = OpenXmlDom(files->Files());
  const bool updated = MergeShortcutFolders(options.oldFolder, options.newFolder, options.table,
                                            files->Files(), *dom);
  return updated ? ExitStatus::kDone : session.Fail(L"No file was updated");
}

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
