#include "fuzz/fuzz_targets.h"

#include <cstdio>
#include <cstdlib>

#include "merge/ribbon_codec.h"
#include "merge/shortcut_merge.h"
#include "merge/xml_merge.h"
#include "tests/merge/literal_merge.h"
#include "tests/support/memory_files.h"
#include "text/text.h"

namespace carrovan {
namespace {

// The literal merge takes the third power of the size and the program's stack.
constexpr std::size_t kComparedBytes = 4096;

constexpr wchar_t kOld[] = L"C:\\old\\a.xml";
constexpr wchar_t kNew[] = L"C:\\new\\a.xml";
constexpr wchar_t kMerged[] = L"C:\\new\\merged";

class SilentLog : public LineLog {
 public:
  void WriteLine(std::wstring_view) override {}
};

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "fuzz: %s\n", what);
  std::abort();
}

void PutPair(const std::string& input, MemoryFiles& files) {
  constexpr std::string_view kSeparator = "\n---\n";
  const std::size_t middle = input.find(kSeparator);
  files.Put(kOld, input.substr(0, middle));
  files.Put(kNew, middle == std::string::npos ? "<r/>" : input.substr(middle + kSeparator.size()));
}

std::string MergeLiterally(MemoryFiles& files, XmlDom& dom) {
  const auto session = dom.Begin();
  const auto oldDocument = session->NewDocument();
  const auto newDocument = session->NewDocument();
  Require(oldDocument->Load(kOld) && newDocument->Load(kNew), "a document loads only once");
  LiterallyMergeXmlNodes(oldDocument->Root(), newDocument->Root(), *newDocument);
  Require(newDocument->Save(L"C:\\new\\literal"), "the literal merge is not saved");
  return files.Bytes(L"C:\\new\\literal");
}

}  // namespace

void FuzzXmlMerge(const std::string& input) {
  MemoryFiles files;
  PutPair(input, files);
  const auto dom = OpenXmlDom(files);
  SilentLog log;
  if (!MergeXmlFiles(kOld, kNew, kMerged, *dom, log)) return;
  const auto session = dom->Begin();
  Require(session->NewDocument()->Load(kMerged), "the merged document does not load");
  if (input.size() > kComparedBytes) return;
  Require(files.Bytes(kMerged) == MergeLiterally(files, *dom), "the merges differ");
}

void FuzzShortcutMerge(const std::string& input) {
  MemoryFiles files;
  PutPair(input, files);
  const auto dom = OpenXmlDom(files);
  const bool updated = MergeShortcutFolders(L"C:\\old", L"C:\\new", L"T", files, *dom);
  Require(!files.Exists(L"C:\\new\\temp_a.xml"), "the temporary file stays");
  if (!updated) return;
  const auto session = dom->Begin();
  const auto merged = session->NewDocument();
  Require(merged->Load(kNew), "the merged document does not load");
}

void FuzzRibbonDecode(const std::string& input) {
  sRibbonElement record;
  if (!RibbonElementFromText(FromUtf8(input), record)) {
    Require(record == sRibbonElement(), "an unreadable record is not fresh");
    return;
  }
  sRibbonElement again;
  Require(RibbonElementFromText(RibbonElementToText(record), again), "a record does not read back");
  Require(again == record, "a record reads back differently");
}

}  // namespace carrovan
