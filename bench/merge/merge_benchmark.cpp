#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <iostream>
#include <string_view>

#include "bench/merge/merge_documents.h"
#include "bench/merge/pair_on_disk.h"
#include "merge/shortcut_merge.h"
#include "merge/xml_merge.h"
#include "platform/machine.h"
#include "platform/xml_dom.h"
#include "text/text.h"

// The merges beside what their DOM alone takes for the same documents: parse, parse and save.
// "merge_benchmark peak" measures memory instead, each case in a process of its own.

namespace carrovan {
namespace {

class SilentLog : public LineLog {
 public:
  void WriteLine(std::wstring_view) override {}
};

void Require(bool done) {
  if (!done) std::abort();
}

void MergeXml(const PairOnDisk& pair) {
  const auto files = OpenHostFiles();
  const auto dom = OpenXmlDom(files->Files());
  SilentLog log;
  Require(
      MergeXmlFiles(FromUtf8(pair.Old()), FromUtf8(pair.New()), FromUtf8(pair.Out()), *dom, log));
}

void MergeShortcuts(const PairOnDisk& pair) {
  const auto files = OpenHostFiles();
  const auto dom = OpenXmlDom(files->Files());
  Require(MergeShortcutFile(FromUtf8(pair.Old()), FromUtf8(pair.New()), FromUtf8(pair.Out()), "T",
                            *dom));
}

void DomAlone(const PairOnDisk& pair) {
  constexpr int kOptions = XML_PARSE_HUGE | XML_PARSE_NOBLANKS | XML_PARSE_NONET;
  xmlDoc* const oldDocument = xmlReadFile(pair.Old().c_str(), nullptr, kOptions);
  xmlDoc* const newDocument = xmlReadFile(pair.New().c_str(), nullptr, kOptions);
  Require(oldDocument != nullptr && newDocument != nullptr);
  Require(xmlSaveFileEnc(pair.Out().c_str(), newDocument, "UTF-8") >= 0);
  xmlFreeDoc(oldDocument);
  xmlFreeDoc(newDocument);
}

using Work = std::function<void(const PairOnDisk&)>;

void Measure(const std::string& name, const DocumentPair& pair, const Work& work) {
  benchmark::RegisterBenchmark(name.c_str(), [pair, work](benchmark::State& state) {
    const PairOnDisk files(pair);
    for (auto _ : state) work(files);
  })->Unit(benchmark::kMillisecond);
}

long PeakKilobytes(const DocumentPair& pair, const Work& work) {
  const PairOnDisk files(pair);
  const pid_t child = fork();
  if (child == 0) {
    work(files);
    _exit(0);
  }
  int status = 0;
  rusage usage = {};
  Require(child > 0 && wait4(child, &status, 0, &usage) == child && status == 0);
  return usage.ru_maxrss;
}

constexpr int kElements[] = {1'000, 10'000, 100'000, 500'000};
constexpr int kEntries[] = {100, 1'000, 10'000, 100'000};
constexpr const char* kShapes[] = {"wide",   "deep", "numbered",     "names", "panels",
                                   "ribbon", "tree", "tree-swapped", "states"};

void RegisterAll() {
  for (const std::string shape : kShapes) {
    for (const int elements : kElements) {
      const DocumentPair pair = MakePair(shape, elements);
      const std::string suffix = "/" + shape + "/" + std::to_string(elements);
      Measure("merge" + suffix, pair, MergeXml);
      Measure("dom" + suffix, pair, DomAlone);
    }
  }
  for (const int entries : kEntries) {
    const DocumentPair pair = MakeShortcutPair(entries);
    Measure("merge/shortcuts/" + std::to_string(entries), pair, MergeShortcuts);
    Measure("dom/shortcuts/" + std::to_string(entries), pair, DomAlone);
  }
}

void PrintPeaks() {
  for (const std::string shape : kShapes) {
    const int elements = kElements[std::size(kElements) - 1];
    const DocumentPair pair = MakePair(shape, elements);
    std::cout << shape << " " << elements << " " << PeakKilobytes(pair, MergeXml) << " "
              << PeakKilobytes(pair, DomAlone) << "\n";
  }
}

}  // namespace
}  // namespace carrovan

int main(int argc, char** argv) {
  if (argc == 2 && std::string_view(argv[1]) == "peak") {
    carrovan::PrintPeaks();
    return 0;
  }
  benchmark::Initialize(&argc, argv);
  carrovan::RegisterAll();
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
