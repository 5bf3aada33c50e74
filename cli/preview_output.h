#pragma once

#include <nlohmann/json.hpp>

#include "cli/session.h"
#include "preview/preview_report.h"

namespace carrovan {

// Prints what a run would change.
//
// The document is `heading`, an object, with one more member "categories", a list in the order of
// the report:
//   "label"    the category's name
//   "summary"  the numbers "filesAdded", "filesReplaced", "filesMerged", "filesRemoved",
//              "valuesAdded", "valuesChanged", "valuesRemoved", "valuesDropped"
//   "files"    "path", "change" (added, replaced, merged, removed), "folder" (true or false),
//              "sizeBefore" and "sizeAfter" in bytes, null where there is no file
//   "keys"     "key" with its hive, "change" (added, removed)
//   "values"   "key", "name" (empty for the default value), "change" (added, changed, removed),
//              "type" (the number of the new value's type, or of the one that is removed),
//              "before" and "after" as in a registry file, null where there is none
//   "dropped"  values of the package that are left out: "file", "key", "name", "why"
void PrintPreviewJson(const Session& session, const PreviewReport& report, nlohmann::json heading);

// The list "dropped" of such a document.
nlohmann::json DroppedJson(const std::vector<DroppedValue>& dropped);

// One line with the numbers for each category; with `details` then the categories again, each with
// one line for each item; and a last line which says that nothing was changed.
void PrintPreview(const Session& session, const PreviewReport& report, bool details);

}  // namespace carrovan
