#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "report/document_tree.h"

namespace carrovan {

// A report that people look at: one page that needs nothing but itself. It can be read without its
// script, which only filters, and a policy in it forbids everything else. Whatever a text of a
// package holds is text on the page.

enum class ItemKind {
  kAdded,
  kReplaced,
  kChanged,
  kMerged,
  kRemoved,
  kDropped,
  kHeld,
  kRefused,
  kNotTrusted,
  kKept,
  kMapped,
  kOnlyInFirst,
  kOnlyInSecond,
  // Of a run on one of many hosts, and what it met.
  kDone,
  kPartly,
  kFailed,
  kUsage,
  kNoAnswer,
  kNotUnderstood,
  kProblem,
  kStandardError,
  kDiffers,
  // What became of a category.
  kImported,
  kReset,
  kStored,
  kLeftOut,
  kEmptied,
  kEmpty,
  kNotStored,
};

// "added", "not trusted"
std::wstring WordOf(ItemKind kind);

struct ReportFact {
  std::wstring name;   // "Package"; a word of the program's own
  std::wstring value;  // none is shown for an empty one
};

struct ReportItem {
  ItemKind kind = ItemKind::kHeld;
  std::wstring what;   // "file", "value"; a word of the program's own
  std::wstring place;  // the folder or key in which it is; items of one place stand together
  std::wstring name;
  std::optional<std::wstring> before;  // a text that it had or has lost
  std::optional<std::wstring> after;
  std::wstring note;
  std::optional<DocumentTree> tree;
  bool counts = true;  // in the summary
  std::vector<ReportFact> facts;
};

struct ReportCategory {
  std::wstring label;
  std::vector<ReportItem> items;
  bool isClosed = false;    // whatever it holds
  std::size_t omitted = 0;  // further items, which are not there
};

// A line of the summary that is not that of a category.
struct ReportTotal {
  std::wstring label;
  std::vector<std::pair<ItemKind, std::size_t>> counts;
};

// A line for each thing that the page is about. It leads to a category and is shown with it.
struct ReportRow {
  ItemKind kind = ItemKind::kDone;  // stands in front of the cells
  std::size_t category = 0;
  std::vector<std::wstring> cells;  // one for each column
};

struct ReportTable {
  std::wstring heading;
  std::vector<std::wstring> columns;  // words of the program's own, without that of the kind
  std::vector<ReportRow> rows;
  std::size_t omitted = 0;  // further rows, which are not there
};

// Lines of one kind: what was not done, what to know.
struct ReportLines {
  std::wstring heading;
  std::vector<std::wstring> lines;  // nothing is shown without any
};

enum class ReportResult { kDone, kPartly, kRefused, kTrial, kNeutral };

struct ReportPage {
  std::wstring title;    // "Import", of the program's own
  std::wstring subject;  // what it is about: a package, a version
  ReportResult result = ReportResult::kNeutral;
  std::wstring resultText;  // "Done", "Tried out only: nothing was changed"
  std::vector<ReportFact> facts;
  std::vector<ReportLines> lines;
  std::wstring itemsHeading;  // "What changed"; empty for a page that is not about items
  std::wstring nothing;       // what stands there without any item
  std::vector<ReportCategory> categories;
  std::vector<ReportTotal> totals;  // the summary, where it is not that of the categories
  std::optional<ReportTable> table;
  std::wstring categoryWord = L"Category";  // what the categories are
  std::wstring allCategories = L"All categories";
  std::wstring program;  // which made it: "carrovan-cli 1.2.3"
};

// How much of a page is shown; a line says what is left out.
struct PageLimits {
  std::size_t items = 2000;   // of one category
  std::size_t text = 400;     // characters of a value
  std::size_t trees = 20000;  // elements of all trees together
};

// The page as UTF-8.
std::string WritePage(const ReportPage& page, const PageLimits& limits = {});

}  // namespace carrovan
