#include "tests/merge/merge_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "merge/xml_merge.h"

namespace carrovan {
namespace {

// Counts down; true once nothing is left. A negative number never runs out.
bool RunsOut(int& remaining) {
  if (remaining < 0) return false;
  if (remaining == 0) return true;
  --remaining;
  return false;
}

class FaultyDocument : public XmlDocument {
 public:
  FaultyDocument(FaultyDom& dom, std::unique_ptr<XmlDocument> document)
      : dom_(dom), document_(std::move(document)) {}

  bool Load(const std::wstring& path) override { return document_->Load(path); }
  std::wstring LoadProblem() const override { return document_->LoadProblem(); }
  XmlNode Root() override {
    return RunsOut(dom_.rootsUntilMissing) ? XmlNode() : document_->Root();
  }
  XmlNode CreateElement(std::string_view name) override {
    return dom_.createsElements ? document_->CreateElement(name) : XmlNode();
  }
  bool Save(const std::wstring& path) override { return document_->Save(path); }

 private:
  FaultyDom& dom_;
  std::unique_ptr<XmlDocument> document_;
};

class FaultySession : public XmlSession {
 public:
  FaultySession(FaultyDom& dom, std::unique_ptr<XmlSession> session)
      : dom_(dom), session_(std::move(session)) {}

  bool Started() const override { return dom_.starts && session_->Started(); }
  std::unique_ptr<XmlDocument> NewDocument() override {
    if (RunsOut(dom_.documentsUntilFailure)) return nullptr;
    return std::make_unique<FaultyDocument>(dom_, session_->NewDocument());
  }

 private:
  FaultyDom& dom_;
  std::unique_ptr<XmlSession> session_;
};

}  // namespace

std::string OneLine(std::string xml) {
  std::erase_if(xml, [](char c) { return c == '\r' || c == '\n'; });
  return xml;
}

std::optional<std::string> DomBench::MergeXml(const std::string& oldXml,
                                              const std::string& newXml) {
  files.Put(L"C:\\d\\old.xml", oldXml);
  files.Put(L"C:\\d\\new.xml", newXml);
  if (!MergeXmlFiles(L"C:\\d\\old.xml", L"C:\\d\\new.xml", L"C:\\d\\out.xml", *dom, log)) {
    return std::nullopt;
  }
  return OneLine(files.Bytes(L"C:\\d\\out.xml"));
}

LoadedXml::LoadedXml(DomBench& bench, const std::string& xml)
    : bench_(bench), session_(bench.dom->Begin()), document_(session_->NewDocument()) {
  bench.files.Put(L"C:\\d\\loaded.xml", xml);
  EXPECT_TRUE(document_->Load(L"C:\\d\\loaded.xml")) << xml;
}

std::string LoadedXml::Saved() {
  EXPECT_TRUE(document_->Save(L"C:\\d\\saved.xml"));
  return OneLine(bench_.files.Bytes(L"C:\\d\\saved.xml"));
}

std::unique_ptr<XmlSession> FaultyDom::Begin() {
  return std::make_unique<FaultySession>(*this, dom_.Begin());
}

}  // namespace carrovan
