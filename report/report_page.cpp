#include "report/report_page.h"

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

#include "report/page_frame.h"
#include "report/page_markup.h"

namespace carrovan {
namespace {

struct KindLook {
  std::string_view word;
  std::string_view tone;  // a class of the style
};

constexpr std::array<KindLook, 29> kLooks{{{"added", "added"},
                                           {"replaced", "changed"},
                                           {"changed", "changed"},
                                           {"merged", "merged"},
                                           {"removed", "removed"},
                                           {"dropped", "dropped"},
                                           {"held", "held"},
                                           {"refused", "removed"},
                                           {"not trusted", "dropped"},
                                           {"kept", "held"},
                                           {"mapped", "changed"},
                                           {"only in first", "removed"},
                                           {"only in second", "added"},
                                           {"done", "added"},
                                           {"done in part", "dropped"},
                                           {"failed", "removed"},
                                           {"wrong usage", "removed"},
                                           {"no answer", "held"},
                                           {"not understood", "merged"},
                                           {"problem", "removed"},
                                           {"standard error", "held"},
                                           {"differs", "changed"},
                                           {"imported", "added"},
                                           {"reset", "changed"},
                                           {"stored", "added"},
                                           {"left out", "held"},
                                           {"emptied", "dropped"},
                                           {"empty", "dropped"},
                                           {"not stored", "removed"}}};

const KindLook& LookOf(ItemKind kind) { return kLooks[static_cast<std::size_t>(kind)]; }

std::string ClassOf(ItemKind kind) { return "k-" + std::string(LookOf(kind).tone); }

using Counts = std::array<std::size_t, kLooks.size()>;

std::size_t SumOf(const Counts& counts) {
  std::size_t sum = 0;
  for (const std::size_t count : counts) sum += count;
  return sum;
}

Counts CountsOf(const ReportCategory& category) {
  Counts counts{};
  for (const ReportItem& item : category.items) {
    if (item.counts) ++counts[static_cast<std::size_t>(item.kind)];
  }
  return counts;
}

Counts CountsOf(const ReportTotal& total) {
  Counts counts{};
  for (const auto& [kind, count] : total.counts) {
    counts[static_cast<std::size_t>(kind)] += count;
  }
  return counts;
}

std::string Percent(std::size_t part, std::size_t whole) {
  const std::size_t thousandths = whole == 0 ? 0 : part * 100000 / whole;
  std::string digits = std::to_string(thousandths % 1000);
  digits.insert(0, 3 - digits.size(), '0');
  return std::to_string(thousandths / 1000) + "." + digits + "%";
}

std::string_view ToneOf(ReportResult result) {
  switch (result) {
    case ReportResult::kDone:
      return "r-done";
    case ReportResult::kPartly:
      return "r-partly";
    case ReportResult::kRefused:
      return "r-refused";
    case ReportResult::kTrial:
      return "r-trial";
    default:
      return "r-neutral";
  }
}

std::string Plural(std::size_t count, const std::string& one, const std::string& several) {
  return std::to_string(count) + " " + (count == 1 ? one : several);
}

class PageWriter {
 public:
  PageWriter(const ReportPage& page, const PageLimits& limits) : page_(page), limits_(limits) {}

  std::string Write() {
    html_ = PageBeginning(TitleMarkup(page_.title + L" \x2013 Carrovan"));
    AddHeader();
    for (const ReportLines& lines : page_.lines) AddLines(lines);
    AddSummary();
    AddFilter();
    if (page_.table) AddTable(*page_.table);
    AddCategories();
    html_ += "<footer>Made by " + MarkupOf(page_.program) + "</footer>\n" + PageEnd();
    return std::move(html_);
  }

 private:
  void AddHeader() {
    constexpr std::size_t kLongFact = 60;
    html_ += "<header>\n<p class=\"brand\"><b>Carrovan</b> report</p>\n<h1>";
    html_ += MarkupOf(page_.title);
    if (!page_.subject.empty()) html_ += " " + NameMarkup(page_.subject);
    html_ += "</h1>\n";
    if (!page_.resultText.empty()) {
      html_ += "<p class=\"result ";
      html_ += ToneOf(page_.result);
      html_ += "\"><b>" + MarkupOf(page_.resultText) + "</b></p>\n";
    }
    html_ += "<dl>\n";
    for (const ReportFact& fact : page_.facts) {
      if (fact.value.empty()) continue;
      html_ += fact.value.size() > kLongFact ? "<div class=\"long\">" : "<div>";
      html_ +=
          "<dt>" + MarkupOf(fact.name) + "</dt><dd>" + NameMarkup(fact.value) + "</dd></div>\n";
    }
    html_ += "</dl>\n</header>\n";
  }

  void AddLines(const ReportLines& lines) {
    if (lines.lines.empty()) return;
    html_ += "<h2>" + MarkupOf(lines.heading) + "</h2>\n<ul class=\"card lines\">\n";
    const std::size_t shown = std::min(lines.lines.size(), limits_.items);
    for (std::size_t i = 0; i < shown; ++i) {
      html_ += "<li>" + NameMarkup(lines.lines[i]) + "</li>\n";
    }
    html_ += "</ul>\n";
    AddCut(lines.lines.size() - shown, "line is", "lines are");
  }

  void AddCut(std::size_t left, const std::string& one, const std::string& several) {
    if (left > 0) html_ += "<p class=\"cut\">" + Plural(left, one, several) + " not shown.</p>\n";
  }

  void AddSummary() {
    std::vector<std::pair<std::string, Counts>> lines;
    for (const ReportTotal& total : page_.totals) {
      lines.emplace_back("<b>" + NameMarkup(total.label) + "</b>", CountsOf(total));
    }
    if (page_.totals.empty()) {
      for (const ReportCategory& category : page_.categories) {
        lines.emplace_back(LinkTo(lines.size(), category.label), CountsOf(category));
      }
    }
    if (lines.empty()) return;
    std::size_t most = 0;
    for (const auto& [label, counts] : lines) most = std::max(most, SumOf(counts));
    html_ += "<h2>Summary</h2>\n<ul class=\"card sum\">\n";
    for (const auto& [label, counts] : lines) AddBar(label, counts, most);
    html_ += "</ul>\n";
  }

  static std::string LinkTo(std::size_t category, const std::wstring& label) {
    return "<a href=\"#c" + std::to_string(category) + "\">" + NameMarkup(label) + "</a>";
  }

  void AddBar(const std::string& label, const Counts& counts, std::size_t most) {
    html_ += "<li>" + label + "<svg aria-hidden=\"true\" focusable=\"false\">";
    std::string words;
    std::size_t before = 0;
    for (std::size_t i = 0; i < counts.size(); ++i) {
      if (counts[i] == 0) continue;
      const std::string tone = ClassOf(static_cast<ItemKind>(i));
      html_ += "<rect class=\"" + tone + "\" x=\"" + Percent(before, most) + "\" width=\"" +
               Percent(counts[i], most) + "\" height=\"100%\"/>";
      words += "<span class=\"" + tone + "\"><i></i>" + std::to_string(counts[i]) + " " +
               std::string(kLooks[i].word) + "</span> ";
      before += counts[i];
    }
    if (words.empty()) words = "folders and keys only";
    html_ += "</svg><p>" + words + "</p></li>\n";
  }

  void AddCategories() {
    if (page_.itemsHeading.empty()) return;
    if (page_.table) html_ += "<h2>" + MarkupOf(page_.itemsHeading) + "</h2>\n";
    if (page_.categories.empty()) {
      html_ += "<p>" + MarkupOf(page_.nothing) + "</p>\n";
      return;
    }
    for (std::size_t i = 0; i < page_.categories.size(); ++i) AddCategory(i);
  }

  // Above what it filters: the table too, where there is one.
  void AddFilter() {
    if (page_.itemsHeading.empty()) return;
    html_ += "<h2>" + MarkupOf(page_.table ? page_.table->heading : page_.itemsHeading) + "</h2>\n";
    if (!page_.categories.empty()) AddForm();
  }

  void AddForm() {
    std::map<std::string_view, bool> kinds;
    for (const ReportCategory& category : page_.categories) {
      for (const ReportItem& item : category.items) kinds[LookOf(item.kind).word] = true;
    }
    html_ +=
        "<form id=\"filter\" hidden>\n<label>Kind<select name=\"kind\">"
        "<option value=\"\">All kinds</option>";
    for (const auto& [word, isThere] : kinds) html_ += "<option>" + std::string(word) + "</option>";
    html_ += "</select></label>\n<label>" + MarkupOf(page_.categoryWord) +
             "<select name=\"category\"><option value=\"\">" + TitleMarkup(page_.allCategories) +
             "</option>";
    for (std::size_t i = 0; i < page_.categories.size(); ++i) {
      html_ += "<option value=\"c" + std::to_string(i) + "\">" +
               TitleMarkup(page_.categories[i].label) + "</option>";
    }
    html_ +=
        "</select></label>\n<label class=\"wide\">Text<input name=\"text\" type=\"search\" "
        "autocomplete=\"off\"></label>\n<p id=\"shown\" role=\"status\"></p>\n</form>\n";
  }

  void AddTable(const ReportTable& table) {
    html_ += "<table class=\"card\">\n<thead><tr><th scope=\"col\">Result</th>";
    for (const std::wstring& column : table.columns) {
      html_ += "<th scope=\"col\">" + MarkupOf(column) + "</th>";
    }
    html_ += "</tr></thead>\n<tbody>\n";
    for (const ReportRow& row : table.rows) AddRow(table, row);
    html_ += "</tbody>\n</table>\n";
    AddCut(table.omitted, "more line is", "more lines are");
  }

  void AddRow(const ReportTable& table, const ReportRow& row) {
    html_ += "<tr class=\"" + ClassOf(row.kind) + "\" data-of=\"c" + std::to_string(row.category) +
             "\" data-kind=\"" + std::string(LookOf(row.kind).word) +
             "\"><td><span class=\"mark\">" + std::string(LookOf(row.kind).word) + "</span></td>";
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
      html_ += row.cells[i].empty() ? "<td class=\"none\">" : "<td>";
      html_ += "<small>" + MarkupOf(table.columns[i]) + "</small>";
      const std::wstring text = CutText(row.cells[i], limits_.text);
      html_ += (i == 0 ? LinkTo(row.category, text) : NameMarkup(text)) + "</td>";
    }
    html_ += "</tr>\n";
  }

  void AddCategory(std::size_t index) {
    constexpr std::size_t kManyItems = 60;
    const ReportCategory& category = page_.categories[index];
    html_ += "<details class=\"card cat\" id=\"c" + std::to_string(index) + "\"";
    if (category.items.size() <= kManyItems && !category.isClosed) html_ += " open";
    html_ += "><summary>" + NameMarkup(category.label) + "<small>" +
             Plural(category.items.size() + category.omitted, "item", "items") +
             "</small></summary>\n<div>\n";
    const std::size_t shown = std::min(category.items.size(), limits_.items);
    for (std::size_t i = 0; i < shown;) i = AddPlace(category.items, i, shown);
    AddCut(category.items.size() - shown + category.omitted, "more item is", "more items are");
    html_ += "</div>\n</details>\n";
  }

  // The items of one place, from the first one on; gives the next one.
  std::size_t AddPlace(const std::vector<ReportItem>& items, std::size_t first, std::size_t end) {
    const std::wstring& place = items[first].place;
    html_ += "<section class=\"place\">";
    if (!place.empty()) html_ += "<h3>" + NameMarkup(place) + "</h3>";
    html_ += "<ul class=\"items\">\n";
    std::size_t i = first;
    for (; i < end && items[i].place == place; ++i) AddItem(items[i]);
    html_ += "</ul></section>\n";
    return i;
  }

  void AddItem(const ReportItem& item) {
    const std::string word(LookOf(item.kind).word);
    html_ += "<li class=\"" + ClassOf(item.kind) + "\" data-kind=\"" + word +
             "\"><span class=\"kind\">" + word + "</span><div><span class=\"name\">" +
             NameMarkup(item.name) + "</span> <span class=\"what\">" + MarkupOf(item.what) +
             "</span>";
    AddValues(item);
    AddFacts(item.facts);
    if (!item.note.empty()) html_ += "<p class=\"note\">" + NameMarkup(item.note) + "</p>";
    if (item.tree) AddTree(*item.tree);
    html_ += "</div></li>\n";
  }

  void AddValues(const ReportItem& item) {
    if (!item.before && !item.after) return;
    const bool isBoth = item.before && item.after;
    html_ += "<dl class=\"values\">";
    if (item.before) AddValue(isBoth ? "from" : "was", *item.before);
    if (item.after) AddValue(isBoth ? "to" : "is", *item.after);
    html_ += "</dl>";
  }

  void AddFacts(const std::vector<ReportFact>& facts) {
    if (facts.empty()) return;
    html_ += "<dl class=\"values\">";
    for (const ReportFact& fact : facts) {
      if (fact.value.empty()) continue;
      html_ += "<dt>" + MarkupOf(fact.name) + "</dt><dd>" +
               NameMarkup(CutText(fact.value, limits_.text)) + "</dd>";
    }
    html_ += "</dl>";
  }

  void AddValue(const std::string& word, const std::wstring& value) {
    html_ += "<dt>" + word + "</dt><dd><bdi class=\"value\">" +
             MarkupOf(CutText(value, limits_.text)) + "</bdi></dd>";
  }

  void AddTree(const DocumentTree& tree) {
    if (!tree.failure.empty()) {
      html_ += "<p class=\"note\">" + MarkupOf(tree.failure) + "</p>";
      return;
    }
    if (treeNodes_ >= limits_.trees) {
      html_ += "<p class=\"cut\">The page shows no more trees: it would be too large.</p>";
      return;
    }
    html_ += "<details class=\"tree\"><summary>Merged document: " +
             Plural(tree.added, "new element", "new elements") + ", " +
             std::to_string(tree.changed) + " changed, " + std::to_string(tree.removed) +
             " removed</summary>\n<ul>";
    AddNode(tree.root);
    html_ += "</ul></details>";
  }

  void AddNode(const DocumentNode& node, NodeMark above = NodeMark::kTouched) {
    ++treeNodes_;
    const bool isClosed = node.below.empty() && node.hidden > 0 && node.mark == NodeMark::kSame;
    html_ += node.mark == NodeMark::kNew       ? "<li class=\"k-added\">"
             : node.mark == NodeMark::kChanged ? "<li class=\"k-changed\">"
             : node.mark == NodeMark::kRemoved ? "<li class=\"k-removed\">"
                                               : "<li>";
    if (isClosed || (node.below.empty() && node.hidden == 0)) {
      html_ += "<div class=\"leaf\">" + LineOf(node, above);
      if (isClosed) html_ += " <small>" + Plural(node.hidden, "element", "elements") + "</small>";
      html_ += "</div></li>\n";
      return;
    }
    html_ += node.mark == NodeMark::kSame ? "<details>" : "<details open>";
    html_ += "<summary>" + LineOf(node, above) + "</summary><ul>\n";
    for (const DocumentNode& child : node.below) AddNode(child, node.mark);
    if (node.hidden > 0) {
      html_ += "<li class=\"cut\">" + Plural(node.hidden, "more element", "more elements");
      html_ += node.hiddenMarks > 0
                   ? ", " + std::to_string(node.hiddenMarks) + " of them new or changed, not shown"
                   : " without a change, not shown";
      html_ += "</li>";
    }
    html_ += "</ul></details></li>\n";
  }

  // What is below a new element is new, too.
  static std::string LineOf(const DocumentNode& node, NodeMark above) {
    std::string line = NameMarkup(node.name);
    if (node.mark == NodeMark::kChanged) line += ValueOf(node.before) + " \xE2\x86\x92";
    if (!node.text.empty() || node.mark == NodeMark::kChanged) line += ValueOf(node.text);
    if (node.mark == above) return line;
    switch (node.mark) {
      case NodeMark::kNew:
        return line + "<span class=\"mark\">new</span>";
      case NodeMark::kChanged:
        return line + "<span class=\"mark\">changed</span>";
      case NodeMark::kRemoved:
        return line + "<span class=\"mark\">removed</span>";
      default:
        return line;
    }
  }

  static std::string ValueOf(const std::wstring& text) {
    return " <bdi class=\"value\">" + MarkupOf(text) + "</bdi>";
  }

  const ReportPage& page_;
  const PageLimits& limits_;
  std::string html_;
  std::size_t treeNodes_ = 0;
};

}  // namespace

std::wstring WordOf(ItemKind kind) {
  const std::string_view word = LookOf(kind).word;
  return {word.begin(), word.end()};
}

std::string WritePage(const ReportPage& page, const PageLimits& limits) {
  return PageWriter(page, limits).Write();
}

}  // namespace carrovan
