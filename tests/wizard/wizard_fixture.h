#pragma once

#include <gtest/gtest.h>

#include "package/package_opening.h"
#include "tests/support/fakes.h"
#include "tests/support/test_machine.h"
#include "tests/wizard/recording_frame.h"
#include "text/text.h"
#include "wizard/wizard_flow.h"

namespace carrovan {

// Notes the runs that an import makes by the archives that it opens and writes.
class RecordingArchives : public ArchiveLibrary {
 public:
  explicit RecordingArchives(ArchiveLibrary& archives) : archives_(archives) {}

  std::vector<std::string> calls;  // "enter", "apply", "legacy"
  std::function<void()> whileWorking;

  std::unique_ptr<ArchiveWriter> Create(const std::wstring& path, ArchivePurpose purpose) override {
    if (path.ends_with(kChangedFilesArchive)) Note("apply");
    return archives_.Create(path, purpose);
  }
  std::unique_ptr<ArchiveReader> Open(const std::wstring& path) override {
    if (!path.ends_with(kChangedFilesArchive)) {
      Note(EndsWithIgnoringAsciiCase(path, L".ucx") ? "legacy" : "enter");
    }
    return archives_.Open(path);
  }

 private:
  void Note(const char* call) {
    calls.emplace_back(call);
    if (whileWorking) whileWorking();
  }

  ArchiveLibrary& archives_;
};

class SilentLog : public LineLog {
 public:
  void WriteLine(std::wstring_view) override {}
};

// A wizard on a machine with releases 2025 and 2026, the user having run 2026 only. The registry
// tool starts nothing.
class WizardFixture : public testing::Test {
 protected:
  WizardFixture();
  ~WizardFixture() override;

  // The open wizard on its start page with a mode chosen.
  void OpenIn(MigrationMode mode);

  // A package of one category and of this release, and a legacy package, under these names.
  void MakePackage(const std::wstring& path, const std::string& release = "2026");
  void MakeLegacyPackage(const std::wstring& path);

  // How often the finish page has shown the text of a reset.
  std::ptrdiff_t Resets() const;

  // The machine with known folders of the test's own.
  Machine PortsWith(KnownFolders& folders);
  WizardFlow FlowOn(const Machine& machine);

  // The machine with the archives and the registry tool that the tests watch, and a profile of its
  // own: an undo takes the newest restore point, which must be none of the user's.
  Machine Wired();

  bool HasStagingFolder() const;
  bool IsStagingFolderFresh() const;  // nothing lies in it but its mark
  std::wstring LiveKeyOf(const std::wstring& version) const;

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  FixedFolders folders_;
  ProductContext context_;
  WizardState state_;
  RecordingInterpreter interpreter_;
  RecordingFrame frame_;
  RecordingArchives import_{*machine_->Ports().archives};
  SilentLog log_;
  WizardFlow flow_ = FlowOn(Wired());
};

}  // namespace carrovan
