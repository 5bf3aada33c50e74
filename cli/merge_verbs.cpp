#include "cli/merge_verbs.h"

#include "cli/console_log.h"
#include "merge/file_system_error.h"
#include "merge/folder_merge.h"
#include "merge/shortcut_merge.h"
#include "merge/xml_merge.h"
#include "platform/xml_dom.h"

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

}  // namespace carrovan
