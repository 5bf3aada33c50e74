#pragma once

#include <gtest/gtest.h>

#include <map>

#include "package/import_run.h"
#include "tests/support/fakes.h"
#include "tests/support/import_face.h"
#include "tests/support/test_machine.h"
#include "tests/wizard/recording_frame.h"

namespace carrovan {

// Notes the lines of a log.
class RecordingLog : public LineLog {
 public:
  std::vector<std::wstring> lines;

  void WriteLine(std::wstring_view line) override { lines.emplace_back(line); }
};

// A machine on which release 2026 has been used, with two languages, and a package in the making.
class ImportFixture : public testing::Test {
 protected:
  ImportFixture();
  ~ImportFixture() override;

  // The package's files by entry name; `Package` writes them. Its description says release 2026
  // unless it is put otherwise.
  std::map<std::wstring, std::string> entries_;
  void Describe(const std::vector<std::string>& labels, const std::string& release = "2026",
                const std::string& internal = "28.0");
  void MakePackage();

  // Makes the package, chooses it for the target and enters the list of categories.
  ImportFace::Entry Enter(const std::wstring& targetYear = L"2026");
  // The same, with all but these categories unticked, and applies it.
  void Import(const std::vector<SettingCategory>& ticked, const std::wstring& targetYear = L"2026");

  // Offered in the tree.
  std::vector<int> Offered() const;

  // Entry names below the package's product folders, under a version number.
  std::wstring PackageRoaming(const std::wstring& below, const std::wstring& version = L"28.0");
  std::wstring PackageLocal(const std::wstring& below, const std::wstring& version = L"28.0");

  // Paths in the profile, of release 2026.
  std::wstring Roaming(const std::wstring& below) const;
  std::wstring Local(const std::wstring& below) const;
  std::string Content(const std::wstring& path) const;  // "no file" when there is none

  Machine Ports() { return machine_->Ports(); }
  std::wstring PackagePath() const { return machine_->ScratchFolder() + L"x.ucex"; }
  ImportRun Run();

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  Machine ports_ = machine_->Ports();
  ProductContext context_;
  WizardState state_;
  RecordingView view_;
  RunObserver observer_;
  RecordingLog log_;
  RecordingTree tree_;
  RegistryToolPace pace_ = RegistryToolPace::kWaitForEnd;
  std::unique_ptr<PacedRegistryTool> tool_;
  std::unique_ptr<XmlDom> dom_;
  RunReport report_;

 private:
  void FillMachine();
};

}  // namespace carrovan
