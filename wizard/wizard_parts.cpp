#include "wizard/wizard_parts.h"

#include "environment/installed_versions.h"
#include "package/staging_folder.h"
#include "text/path_text.h"

namespace carrovan {

void ShowRefusal(const WizardParts& parts, RunRefusal refusal) {
  const bool inOwnStyle =
      refusal == RunRefusal::kNewerPackage || refusal == RunRefusal::kNeverStarted;
  const std::wstring text = TextOf(refusal, parts.texts);
  if (inOwnStyle) return parts.frame.ShowApplicationMessage(text);
  parts.frame.ShowMessage(text);
}

void ShowUnextracted(const WizardParts& parts, const std::vector<std::wstring>& paths) {
  for (const std::wstring& path : paths) {
    parts.frame.ShowMessage(TextOfUnextracted(path, parts.texts));
  }
}

void ShowAnotherRun(const WizardParts& parts, const std::wstring& otherRun) {
  parts.frame.ShowMessage(parts.texts.Filled(StringId::kAnotherRun, {otherRun}));
}

bool HasStagingFolder(const WizardParts& parts) {
  const std::wstring& folder = parts.context.stagingFolder;
  if (!folder.empty() && parts.machine.files->IsFolder(RemoveFileSpec(folder))) return true;
  return RenewStagingFolder(parts.context, parts.machine);
}

bool EnsureStagingFolder(const WizardParts& parts) {
  if (HasStagingFolder(parts)) return true;
  ShowRefusal(parts, RunRefusal::kNoStagingFolder);
  return false;
}

bool EnsureProductEnded(const WizardParts& parts) {
  if (!IsProductRunning(*parts.machine.processes)) return true;
  ShowRefusal(parts, RunRefusal::kProductRunning);
  return false;
}

}  // namespace carrovan
