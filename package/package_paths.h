#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "package/run_report.h"
#include "platform/archive_library.h"
#include "platform/file_system.h"
#include "platform/machine.h"
#include "platform/system_facts.h"
#include "rewrite/package_tree.h"
#include "rewrite/path_walk.h"

namespace carrovan {

// The absolute paths that a package's registry files and documents name: what is there, and what
// becomes of it on another machine.

// What a user wants to be done with the paths of a package that is imported.
struct PathRules {
  PathMap map;
  bool keepsDeadPaths = false;  // also what leads to nothing here is imported
  bool listsPaths = false;      // the report names every path
};

// Looks a path up; each is looked for once.
class PathLookup {
 public:
  explicit PathLookup(const FileReader& files) : files_(files) {}

  PathState StateOf(const std::wstring& path);

 private:
  bool Answers(const std::wstring& share);

  const FileReader& files_;
  std::map<std::wstring, PathState, NameLess> states_;
  std::map<std::wstring, bool, NameLess> shares_;
};

// Maps the paths of an unpacked package and knows afterwards which they were.
class PackagePaths {
 public:
  PackagePaths(const PathRules& rules, const Machine& machine) : rules_(rules), machine_(machine) {}

  bool KeepsDeadPaths() const { return rules_.keepsDeadPaths; }
  bool ListsPaths() const { return rules_.listsPaths; }
  std::vector<std::wstring> NewBeginnings() const;

  // The mapping's own words that the rewriting would change, in every spelling.
  std::vector<std::u16string> WordsThatStay(const RewriteInputs& inputs) const;

  // Maps in every file below a folder. What could not be done is a problem of the run.
  void MapBelow(const std::wstring& folder, RunReport& report);
  void MapFile(const std::wstring& file, RunReport& report);

  // Reports what is in the files below a folder, which have been rewritten (`inputs`; null when
  // they have not), and what was dropped from them.
  void ReportBelow(const std::wstring& folder, const RewriteInputs* inputs, RunReport& report);

 private:
  struct Names;
  Names MappedNames(const RewriteInputs* inputs) const;

  const PathRules& rules_;
  const Machine& machine_;
  std::map<std::wstring, std::wstring, NameLess> mapped_;  // what a path has become, to the path
};

// A path as `inspect` lists it.
struct PathUse {
  std::wstring file;  // of the package
  PathPlace place;
};
struct ListedPath {
  std::wstring path;     // in its first spelling
  std::wstring becomes;  // what the rewriting for the target makes of it; empty without a target
  std::optional<PathState> state;  // of that, on the machine
  std::vector<PathUse> uses;
};

// What a package is compared with.
struct PathTarget {
  const Machine& machine;
  std::optional<RewriteInputs> inputs;  // nothing for a release whose paths are not rewritten
};

struct PathListing {
  std::vector<ListedPath> paths;       // by name
  std::vector<std::wstring> problems;  // files that could not be read, one line each
};

// Lists every path of a package. Paths of one name that become the same are one. The target is null
// when only the package counts.
PathListing ListPackagePaths(ArchiveExaminer& archive, const CodePage& codePage,
                             const PathTarget* target);

}  // namespace carrovan
