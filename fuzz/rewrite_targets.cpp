#include <cstdio>
#include <cstdlib>

#include "fuzz/fuzz_targets.h"
#include "platform/posix/host_facts.h"
#include "rewrite/document_text.h"
#include "rewrite/registry_rewrite.h"
#include "rewrite/xml_rewrite.h"
#include "tests/rewrite/literal_rewrite.h"
#include "tests/support/memory_files.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kFile[] = L"C:\\d\\a";

class SilentLog : public LineLog {
 public:
  void WriteLine(std::wstring_view) override {}
};

class BlankUser : public UserIdentity {
 public:
  std::optional<std::wstring> UserName() const override { return L"new user"; }
  std::optional<std::wstring> ProfileFolder() const override { return L"C:\\Users\\new user"; }
};

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "fuzz: %s\n", what);
  std::abort();
}

// The files, user and log of one run; the input is a file among others.
struct Bench {
  explicit Bench(const std::string& input) {
    files.Put(L"C:\\there\\x", "");
    files.partBytes = 1 + input.size() % 61;
    files.Put(kFile, input);
  }

  RewritePorts Ports() { return {files, user, codePage, log}; }

  MemoryFiles files;
  BlankUser user;
  Utf8CodePage codePage;
  SilentLog log;
};

// The bytes of a file of the same form with another text.
std::string WithText(const std::string& input, const TextForm& form, const std::u16string& text) {
  return std::string(form.Mark(input)) + form.Encode(text) + std::string(form.Rest(input));
}

std::string LiteralRegistryFile(const std::string& input, const std::vector<Replacement>& all,
                                const Bench& bench) {
  const TextForm form(input, bench.codePage);
  std::u16string text = form.Decode(form.Body(input));
  std::size_t count = 0;
  for (const Replacement& each : all) {
    text = LiterallyReplaced(text, ToUtf16(each.search), ToUtf16(each.replacement), count);
  }
  text = LiterallyWithUser(text, u"new user", u"C:\\\\Users\\\\new user", count);
  std::size_t dropped = 0;
  return WithText(input, form, LiterallyWithoutInvalidPaths(text, bench.files, dropped));
}

}  // namespace

void FuzzRegistryRewrite(const std::string& input) {
  const std::vector<Replacement> replacements = {
      {L"VANTRIC 27.0", L"VANTRIC 28.0"}, {L"27.0\\", L"28\\"}, {L"2025", L"/Users/2026"}};
  Bench bench(input);
  Require(RewriteRegistryFile(kFile, replacements, bench.Ports()) == kSystemOk,
          "a file is not read");
  Require(bench.files.Bytes(kFile) == LiteralRegistryFile(input, replacements, bench),
          "the registry file differs");
}

void FuzzXmlRetarget(const std::string& input) {
  Bench bench(input);
  const SystemCode code =
      RetargetLegacyVersion(kFile, L"VANTRIC", L"28.0", bench.files, bench.codePage);
  if (code != kSystemOk) {
    Require(code == kInvalidData && bench.files.Bytes(kFile) == input, "the document is changed");
    return;
  }
  const TextForm form = TextForm::OfDocument(input, bench.codePage);
  const std::u16string text =
      LiterallyRetargeted(form.Decode(form.Body(input)), u"VANTRIC", u"28.0");
  Require(bench.files.Bytes(kFile) == WithText(input, form, text), "the document differs");

  Require(ReplaceUserPathsInXml(kFile, bench.Ports()) == kSystemOk, "the document is not read");
  const std::string once = bench.files.Bytes(kFile);
  Require(ReplaceUserPathsInXml(kFile, bench.Ports()) == kSystemOk, "the document is not read");
  Require(bench.files.Bytes(kFile) == once, "a user path is replaced twice");
  static_cast<void>(ReadLegacyTargetVersion(kFile, *OpenXmlDom(bench.files)));
}

}  // namespace carrovan
