#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "environment/setting_category.h"
#include "environment/string_table.h"
#include "platform/file_system.h"

namespace carrovan {

// Why a run was not begun or not gone on with. Nothing of the user's has been changed then.
enum class RunRefusal {
  kUnknownProduct,   // of a company whose products this program does not know
  kProductRunning,   // what is changed under its feet would be lost when it ends
  kNeverStarted,     // the user has not started the version once
  kNewerPackage,     // the package is of a newer release than the target
  kFoldersMissing,   // the version's folders are missing or not known
  kNoStagingFolder,  // nothing can be made in the temporary path
  kCorruptPackage,   // a legacy package without exactly one document
};

// What is reported of it.
std::wstring TextOf(RunRefusal refusal, const TextSource& texts = EnglishTexts());

// A value of a package that does not get into the registry.
struct DroppedValue {
  std::wstring file;  // of the package: a registry file or an option document
  std::wstring key;   // with its hive spelled out
  std::wstring name;  // empty for the default value, and when the whole key is dropped
  std::wstring why;
};

// How an import or a reset went.
struct RunReport {
  std::vector<std::wstring> problems;     // one line each, in the order of the run
  std::vector<std::wstring> unextracted;  // where items of an archive were to be put and are not

  // Values that an option document of a legacy package has set; nothing for any other package.
  std::optional<std::size_t> optionsSet;

  // Chosen categories of which the user had something and the package holds nothing.
  CategorySet emptied;

  std::vector<std::wstring> merged;   // files of the profile whose new content came of a merge
  std::vector<DroppedValue> dropped;  // in the order of the run

  bool IsComplete() const { return problems.empty() && unextracted.empty(); }
};

// What is reported of an item that was not unpacked.
std::wstring TextOfUnextracted(const std::wstring& targetPath,
                               const TextSource& texts = EnglishTexts());

// Follows a run while it works. This one takes no notice.
class RunObserver {
 public:
  virtual ~RunObserver() = default;

  // A category's turn has come, whether it was chosen or not.
  virtual void OnCategory(SettingCategory) {}

  // A key or a file is worked on next.
  virtual void OnItem(const std::wstring&) {}
};

// Removes a folder with its content; one that stays behind is a problem. A folder that is not there
// is none.
void WipeOrReport(FileSystem& files, const std::wstring& folder, RunReport& report);

}  // namespace carrovan
