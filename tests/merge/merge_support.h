#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/console.h"
#include "platform/xml_dom.h"
#include "tests/support/memory_files.h"

namespace carrovan {

class RecordingLog : public LineLog {
 public:
  std::vector<std::wstring> lines;

  void WriteLine(std::wstring_view line) override { lines.emplace_back(line); }
};

// Without line breaks, which the DOMs put in different places behind the declaration and the root.
std::string OneLine(std::string xml);

// The DOM of this system over files in memory.
class DomBench {
 public:
  MemoryFiles files;
  RecordingLog log;
  std::unique_ptr<XmlDom> dom = OpenXmlDom(files);

  DomBench() { files.PutFolder(L"C:\\d"); }

  // Merges two documents; nothing when the merge says that it failed.
  std::optional<std::string> MergeXml(const std::string& oldXml, const std::string& newXml);
};

// Loads one document and keeps it, with what it needs, alive.
class LoadedXml {
 public:
  LoadedXml(DomBench& bench, const std::string& xml);

  XmlDocument& Document() { return *document_; }
  XmlNode Root() { return document_->Root(); }
  std::string Saved();

 private:
  DomBench& bench_;
  std::unique_ptr<XmlSession> session_;
  std::unique_ptr<XmlDocument> document_;
};

// A DOM that fails where it is asked to.
class FaultyDom : public XmlDom {
 public:
  bool starts = true;
  int documentsUntilFailure = -1;  // NewDocument gives null from this many on; -1: never
  int rootsUntilMissing = -1;      // Root is none from this many asked for on
  bool createsElements = true;

  explicit FaultyDom(XmlDom& dom) : dom_(dom) {}

  std::unique_ptr<XmlSession> Begin() override;

 private:
  XmlDom& dom_;
};

}  // namespace carrovan
