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

// How a path is on this machine.
enum class PathState {
  kThere,
  kGone,
  kNoAnswer,  // on a share that cannot be looked into: nobody knows
  kVariable,  // behind a variable such as %TEMP%, which only the program that uses it resolves
};

enum class PathFate { kKept, kMapped, kDropped };

// A path that an import brings, or does not.
struct ImportedPath {
  PathFate fate = PathFate::kKept;
  std::wstring path;     // as it is imported; one that is dropped, as it would have been
  std::wstring was;      // what the package has in its place, for one that was mapped
  std::wstring file;     // of the package
  std::wstring key;      // of a registry file, with its hive spelled out
  std::wstring name;     // of the value
  std::size_t line = 0;  // of a document, from 1
  PathState state = PathState::kThere;
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

  // Of an import that was asked to list them: in the order of the files, what is dropped first.
  std::vector<ImportedPath> paths;

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
