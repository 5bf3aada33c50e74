#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "bench/merge/merge_documents.h"
#include "bench/merge/msxml_alone.h"
#include "bench/merge/pair_on_disk.h"
#include "merge/xml_merge.h"
#include "platform/machine.h"
#include "platform/xml_dom.h"
#include "text/text.h"

// The merge beside what MSXML alone takes for the same documents: load, load and save. Prints a
// line for each case: shape, elements, and the median milliseconds of both.

namespace carrovan {
namespace {

class SilentLog : public LineLog {
 public:
  void WriteLine(std::wstring_view) override {}
};

struct Paths {
  std::wstring oldXml;
  std::wstring newXml;
  std::wstring output;
};

void Require(bool done) {
  if (!done) std::abort();
}

void Merge(const Paths& paths) {
  const auto files = OpenHostFiles();
  const auto dom = OpenXmlDom(files->Files());
  SilentLog log;
  Require(MergeXmlFiles(paths.oldXml, paths.newXml, paths.output, *dom, log));
}

void DomAlone(const Paths& paths) {
  Require(LoadBothAndSave(paths.oldXml, paths.newXml, paths.output));
}

using Work = std::function<void(const Paths&)>;

double MillisecondsOf(const Work& work, const Paths& paths) {
  const auto start = std::chrono::steady_clock::now();
  work(paths);
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

double Median(std::vector<double> times) {
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::nth_element(times.begin(), middle, times.end());
  return *middle;
}

// The two take turns, so that whatever else the machine does meets both.
void Measure(const std::string& shape, int elements, int repetitions) {
  const PairOnDisk pair(MakePair(shape, elements));
  const Paths paths = {FromUtf8(pair.Old()), FromUtf8(pair.New()), FromUtf8(pair.Out())};
  Merge(paths);
  std::vector<double> merges;
  std::vector<double> doms;
  for (int i = 0; i < repetitions; ++i) {
    merges.push_back(MillisecondsOf(Merge, paths));
    doms.push_back(MillisecondsOf(DomAlone, paths));
  }
  std::cout << shape << " " << elements << " " << Median(merges) << " " << Median(doms)
            << std::endl;
}

constexpr int kElements[] = {1'000, 10'000, 100'000};
constexpr int kDeepest = 250;  // MSXML refuses more than 256 levels
constexpr const char* kWideShapes[] = {"wide", "numbered", "names", "panels", "ribbon"};

void MeasureAll(int repetitions, const std::wstring& onlyShape) {
  for (const char* shape : kWideShapes) {
    if (!onlyShape.empty() && onlyShape != FromUtf8(shape)) continue;
    for (const int elements : kElements) Measure(shape, elements, repetitions);
  }
  if (onlyShape.empty() || onlyShape == L"deep") Measure("deep", kDeepest, repetitions);
}

}  // namespace
}  // namespace carrovan

int wmain(int argc, wchar_t** argv) {
  carrovan::MeasureAll(argc > 1 ? std::stoi(argv[1]) : 5, argc > 2 ? argv[2] : L"");
  return 0;
}
