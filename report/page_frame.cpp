#include "report/page_frame.h"

#include <string_view>

namespace carrovan {
namespace {

// The sums are SHA-256 of the texts below, in base 64; tests/e2e/report_test.py says what they
// have to be.
constexpr std::string_view kPolicy =
    "default-src 'none'; base-uri 'none'; form-action 'none'; "
    "style-src 'sha256-PgwAQz+VTNVxBM/UdaW2bblLSl/TSPY0/+1rPL/EW9Q='; "
    "script-src 'sha256-c6FmfP81CM/kHfi+4Iv3gVFHqLtCeHgakUcTCC40H7I='";

constexpr std::string_view kStyle = R"css(
:root {
  color-scheme: light dark;
  --page: #f6f5f2; --sheet: #fff; --ink: #1e2227; --soft: #5d6570; --line: #dedbd4;
  --accent: #1f5fa8; --wash: #f0eee9;
  --added: #2c7a45; --changed: #1f5fa8; --merged: #6f4aa5; --removed: #b3362c;
  --dropped: #935e00; --held: #6a717b;
}
@media (prefers-color-scheme: dark) {
  :root {
    --page: #14171b; --sheet: #1c2026; --ink: #e4e6e9; --soft: #9ba3ae; --line: #343a43;
    --accent: #85b5ee; --wash: #252a31;
    --added: #6fc38a; --changed: #85b5ee; --merged: #bd9df0; --removed: #f08c80;
    --dropped: #e0b056; --held: #a3abb6;
  }
}
* { box-sizing: border-box; }
html { -webkit-text-size-adjust: 100%; }
body {
  margin: 0; background: var(--page); color: var(--ink);
  font: 16px/1.5 system-ui, "Segoe UI", "Noto Sans", "Microsoft YaHei", sans-serif;
  overflow-wrap: anywhere;
}
main { max-width: 66rem; margin: 0 auto; padding: 2.25rem 1.5rem 3rem; }
h1, h2, h3 { line-height: 1.25; margin: 0; text-wrap: balance; }
h1 { font-size: 1.85rem; font-weight: 650; letter-spacing: -.01em; }
h2 { font-size: 1.2rem; font-weight: 650; margin: 2.5rem 0 .9rem; }
h3 { font-size: .82rem; font-weight: 500; color: var(--soft); margin: 1.1rem 0 .25rem; }
h3, code, .name, .tree li { font-family: ui-monospace, "Cascadia Mono", Consolas,
  "DejaVu Sans Mono", monospace; }
bdi, .value { unicode-bidi: isolate; }
a { color: var(--accent); }
.brand { margin: 0 0 .35rem; color: var(--soft); font-size: .82rem; letter-spacing: .04em; }
.brand b { color: var(--ink); font-weight: 650; }
.result {
  display: flex; gap: .6rem; align-items: baseline; margin: 1.1rem 0 0; padding: .7rem 1rem;
  background: var(--sheet); border: 1px solid var(--line); border-left: 4px solid var(--tone);
  border-radius: 6px;
}
.result b { color: var(--tone); font-weight: 650; }
.r-done { --tone: var(--added); }
.r-partly { --tone: var(--dropped); }
.r-refused { --tone: var(--removed); }
.r-trial, .r-neutral { --tone: var(--changed); }
dl {
  display: grid; grid-template-columns: repeat(auto-fill, minmax(14rem, 1fr)); gap: .9rem 1.75rem;
  margin: 1.4rem 0 0;
}
dl > .long { grid-column: 1 / -1; }
dt { color: var(--soft); font-size: .82rem; }
dd { margin: 0; font-weight: 500; }
ul, ol { margin: 0; padding: 0; list-style: none; }
.lines li { padding: .4rem 0; border-top: 1px solid var(--line); }
.lines li:first-child { border-top: 0; }
.card {
  background: var(--sheet); border: 1px solid var(--line); border-radius: 8px;
  padding: .5rem 1.1rem;
}
.sum li {
  display: grid; grid-template-columns: 13rem 1fr; gap: .1rem 1.25rem; align-items: center;
  padding: .6rem 0; border-top: 1px solid var(--line);
}
.sum li:first-child { border-top: 0; }
.sum a, .sum b { font-weight: 500; text-decoration: none; }
.sum a:hover { text-decoration: underline; }
.sum svg { display: block; width: 100%; height: 10px; border-radius: 3px; background: var(--wash); }
.sum p { grid-column: 2; margin: 0; font-size: .85rem; color: var(--soft); }
.k-added { --tone: var(--added); }
.k-changed { --tone: var(--changed); }
.k-merged { --tone: var(--merged); }
.k-removed { --tone: var(--removed); }
.k-dropped { --tone: var(--dropped); }
.k-held { --tone: var(--held); }
rect { fill: var(--tone); }
.sum p span { white-space: nowrap; margin-inline-end: .9rem; }
.sum p i {
  display: inline-block; width: .6rem; height: .6rem; margin-inline-end: .35rem; border-radius: 2px;
  background: var(--tone);
}
form {
  position: sticky; top: 0; z-index: 1; display: flex; flex-wrap: wrap; gap: .6rem 1rem;
  align-items: end; padding: .75rem 0; background: var(--page);
}
form[hidden] { display: none; }
form label { display: grid; gap: .2rem; font-size: .78rem; color: var(--soft); }
form .wide { flex: 1 1 14rem; }
select, input {
  width: 100%; min-height: 2.35rem; padding: .35rem .6rem; border: 1px solid var(--line);
  border-radius: 6px; background: var(--sheet); color: var(--ink); font: inherit;
  font-size: .95rem;
}
form p { flex: 1 0 100%; margin: 0; font-size: .85rem; color: var(--soft); }
:focus-visible { outline: 2px solid var(--accent); outline-offset: 2px; border-radius: 3px; }
summary { cursor: pointer; }
.cat { margin: 0 0 .8rem; padding: 0; scroll-margin-top: 6rem; }
.cat > summary { padding: .75rem 1.1rem; font-weight: 600; }
.cat > summary small { margin-inline-start: .5rem; font-weight: 400; color: var(--soft); }
.cat > div { padding: 0 1.1rem .9rem; border-top: 1px solid var(--line); }
.items > li {
  display: grid; grid-template-columns: 6.2rem 1fr; gap: .1rem .8rem; padding: .3rem 0;
}
[hidden] { display: none !important; }
.kind { color: var(--tone); font-size: .82rem; font-weight: 600; padding-top: .12rem; }
.name { font-size: .88rem; }
.what { color: var(--soft); font-size: .82rem; margin-inline-start: .4rem; }
.values { display: grid; grid-template-columns: auto 1fr; gap: .05rem .7rem; margin: .1rem 0 0; }
.values dt { font-size: .78rem; padding-top: .12rem; }
.values dd { font-size: .88rem; font-weight: 400; }
.value {
  font: .84rem/1.5 ui-monospace, "Cascadia Mono", Consolas, "DejaVu Sans Mono", monospace;
  white-space: pre-wrap;
}
.note { margin: .1rem 0 0; font-size: .85rem; color: var(--soft); }
.esc {
  padding: 0 .2em; border-radius: 3px; background: var(--wash); color: var(--removed);
  font-size: .85em; unicode-bidi: isolate;
}
.cut { padding: .5rem 0 0; font-size: .85rem; color: var(--soft); font-style: italic; }
.tree { margin: .35rem 0 .5rem; }
.tree summary { font-size: .88rem; }
.tree > summary { color: var(--accent); width: fit-content; }
.tree ul { border-inline-start: 1px solid var(--line); margin-inline-start: .35rem;
  padding-inline-start: .9rem; }
.tree li { font-size: .82rem; padding: .08rem 0; }
.tree li summary { font-size: .82rem; }
.tree .leaf { padding-inline-start: 1.05rem; }
.tree .k-added > .leaf > bdi:first-child, .tree .k-added > details > summary > bdi:first-child {
  color: var(--tone); font-weight: 600;
}
.tree .k-removed > .leaf > bdi:first-child { text-decoration: line-through; }
.tree small { color: var(--soft); }
.mark {
  margin-inline-start: .5rem; padding: .02rem .4rem; border: 1px solid var(--tone);
  border-radius: 99px; color: var(--tone); font: 600 .72rem/1.4 system-ui, sans-serif;
}
.tree .value { font-size: 1em; color: var(--soft); }
.tree .cut { font-family: system-ui, sans-serif; padding: .08rem 0 .08rem 1.05rem; }
table { width: 100%; border-spacing: 0; table-layout: fixed; font-size: .88rem; margin: 0 0 .8rem; }
th { padding: .3rem .5rem .4rem 0; text-align: start; vertical-align: bottom;
  font-size: .78rem; font-weight: 500; color: var(--soft); }
td { padding: .5rem .5rem .5rem 0; border-top: 1px solid var(--line); vertical-align: top; }
th:nth-child(1) { width: 8.4rem; }
th:nth-child(2) { width: 8rem; }
th:nth-child(3) { width: 6.5rem; }
th:nth-child(4) { width: 3.6rem; }
th:nth-child(5) { width: 10.5rem; }
th:nth-child(6) { width: 7.6rem; }
td small { display: none; }
td a { font-weight: 500; text-decoration: none; }
td a:hover { text-decoration: underline; }
td .mark { margin: 0; white-space: nowrap; }
footer { margin-top: 2.5rem; color: var(--soft); font-size: .82rem; }
@media (max-width: 60rem) {
  table, tbody, tr, td { display: block; }
  thead { display: none; }
  tr { padding: .6rem 0; border-top: 1px solid var(--line); }
  tr:first-child { border-top: 0; }
  td { display: grid; grid-template-columns: 7rem 1fr; align-items: baseline;
    padding: .1rem 0; border-top: 0; }
  td:first-child { display: block; padding-bottom: .3rem; }
  td small { display: block; color: var(--soft); }
  td.none { display: none; }
}
@media (max-width: 40rem) {
  main { padding: 1.4rem 1rem 2rem; }
  h1 { font-size: 1.45rem; }
  dl { grid-template-columns: 1fr 1fr; gap: .8rem 1rem; }
  .sum li { grid-template-columns: 1fr; gap: .3rem; }
  .sum p { grid-column: 1; }
  .items > li { grid-template-columns: 1fr; gap: 0; padding: .45rem 0; }
  form { position: static; }
  .tree ul { padding-inline-start: .5rem; margin-inline-start: .2rem; }
  .tree .leaf, .tree .cut { padding-inline-start: .4rem; }
}
@media print {
  :root {
    color-scheme: light;
    --page: #fff; --sheet: #fff; --ink: #000; --soft: #444; --line: #bbb; --accent: #000;
    --wash: #eee; --added: #1d6334; --changed: #174a85; --merged: #563889; --removed: #962a22;
    --dropped: #744a00; --held: #555;
  }
  body { font-size: 10.5pt; }
  main { max-width: none; padding: 0; }
  form { display: none; }
  .items > li, .sum li, .result, tr { break-inside: avoid; }
  h2, h3, .cat > summary { break-after: avoid; }
  .sum svg, rect { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
  .cat::details-content, .tree::details-content { content-visibility: visible; }
}
@media (prefers-reduced-motion: no-preference) { html { scroll-behavior: smooth; } }
)css";

// Shows and hides what is there already. The filter stands in the page's own address, behind "#",
// so that a filtered page can be kept and sent.
constexpr std::string_view kScript = R"js(
"use strict";
(function () {
  var form = document.getElementById("filter");
  if (!form) return;
  var fields = ["kind", "category", "text"];
  var items = Array.prototype.slice.call(document.querySelectorAll(".items > li"));
  var words = items.map(function (item) {
    var place = item.parentNode.previousElementSibling;
    return ((place ? place.textContent : "") + " " + item.textContent).toLowerCase();
  });
  function wanted() {
    var values = {};
    fields.forEach(function (name) { values[name] = form.elements[name].value; });
    return values;
  }
  function isWanted(item, text, want) {
    return (!want.kind || item.dataset.kind === want.kind) &&
        (!want.category || item.closest(".cat").id === want.category) &&
        text.indexOf(want.text) >= 0;
  }
  function hideEmpty(selector, child) {
    document.querySelectorAll(selector).forEach(function (part) {
      part.hidden = !part.querySelector(child);
    });
  }
  function apply() {
    var want = wanted();
    want.text = want.text.trim().toLowerCase();
    var shown = 0;
    items.forEach(function (item, i) {
      item.hidden = !isWanted(item, words[i], want);
      if (!item.hidden) ++shown;
    });
    hideEmpty(".place", ".items > li:not([hidden])");
    hideEmpty(".cat", ".items > li:not([hidden])");
    document.querySelectorAll("tr[data-of]").forEach(function (row) {
      row.hidden = document.getElementById(row.dataset.of).hidden;
    });
    var isFiltered = want.kind || want.category || want.text;
    if (isFiltered) {
      document.querySelectorAll(".cat:not([hidden])").forEach(function (part) {
        part.open = true;
      });
    }
    document.getElementById("shown").textContent = shown + " of " + items.length + " items";
  }
  function toAddress() {
    var query = new URLSearchParams();
    var want = wanted();
    fields.forEach(function (name) { if (want[name]) query.set(name, want[name]); });
    history.replaceState(null, "", "#" + query.toString());
    apply();
  }
  function fromAddress() {
    if (location.hash && location.hash.indexOf("=") < 0) {
      var target = document.getElementById(location.hash.slice(1));
      if (target) target.open = true;
      return;
    }
    var query = new URLSearchParams(location.hash.slice(1));
    fields.forEach(function (name) { form.elements[name].value = query.get(name) || ""; });
    apply();
  }
  form.hidden = false;
  form.addEventListener("input", toAddress);
  form.addEventListener("submit", function (event) { event.preventDefault(); });
  window.addEventListener("hashchange", fromAddress);
  window.addEventListener("beforeprint", function () {
    document.querySelectorAll(".cat").forEach(function (part) { part.open = true; });
  });
  apply();
  fromAddress();
})();
)js";

}  // namespace

std::string PageBeginning(const std::string& title) {
  std::string page = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n";
  page += "<meta http-equiv=\"Content-Security-Policy\" content=\"";
  page += kPolicy;
  page += "\">\n<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n";
  page += "<meta name=\"referrer\" content=\"no-referrer\">\n<title>" + title + "</title>\n<style>";
  page += kStyle;
  page += "</style>\n</head>\n<body>\n<main>\n";
  return page;
}

std::string PageEnd() {
  std::string page = "</main>\n<script>";
  page += kScript;
  page += "</script>\n</body>\n</html>\n";
  return page;
}

}  // namespace carrovan
