#pragma once

#include <string>

#include "cli/session.h"

namespace carrovan {

// The merges on their own, and the ribbon record's two forms.

struct MergeXmlOptions {
  std::wstring oldPath;
  std::wstring newPath;
  std::wstring output;
};
ExitStatus RunMergeXmlVerb(const Session& session, const MergeXmlOptions& options);

struct MergeFoldersOptions {
  std::wstring oldFolder;
  std::wstring newFolder;
};
ExitStatus RunMergeFoldersVerb(const Session& session, const MergeFoldersOptions& options);

struct MergeShortcutsOptions {
  std::wstring oldFolder;
  std::wstring newFolder;
  std::wstring table;
};
ExitStatus RunMergeShortcutsVerb(const Session& session, const MergeShortcutsOptions& options);

// Both read one record from standard input and print its other form.
ExitStatus RunRibbonDecodeVerb(const Session& session);
ExitStatus RunRibbonEncodeVerb(const Session& session);

}  // namespace carrovan
