#pragma once

#include <string>

#include "cli/session.h"
#include "rewrite/package_tree.h"

namespace carrovan {

// The parts of an import that mend files and registry values, on their own.

struct RewriteOptions {
  std::wstring folder;
  RewriteInputs inputs;
};
ExitStatus RunRewriteVerb(const Session& session, const RewriteOptions& options);

struct RetargetOptions {
  std::wstring file;
  std::wstring key;
  std::wstring version;
};
ExitStatus RunRetargetVerb(const Session& session, const RetargetOptions& options);

struct MigrateOptions {
  std::wstring xmlPath;
  std::wstring company;
  std::wstring productKey;
};
ExitStatus RunMigrateOptionsVerb(const Session& session, const MigrateOptions& options);

}  // namespace carrovan
