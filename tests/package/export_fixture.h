#pragma once

#include <gtest/gtest.h>

#include <map>

#include "package/export_run.h"
#include "tests/support/fakes.h"
#include "tests/support/test_machine.h"

namespace carrovan {

// A machine on which release 2026 has been used: two languages, some files of every category,
// values in three option subkeys. The context is ready for an export of everything.
class ExportFixture : public testing::Test {
 protected:
  ExportFixture();
  ~ExportFixture() override;

  // Path of a file below the version's Roaming or Local product folder, or the 2D drafting folder.
  std::wstring Roaming(const std::wstring& below) const;
  std::wstring Local(const std::wstring& below) const;
  std::wstring Draft(const std::wstring& below) const;

  Machine Ports() { return machine_->Ports(); }
  void CheckOnly(std::initializer_list<SettingCategory> categories);
  // Into the package at `packagePath_`, which is PackagePath() until a test says otherwise.
  ExportReport Export(RegistryToolPace pace = RegistryToolPace::kWaitForEnd);
  ExportReport ExportOn(const Machine& machine,
                        RegistryToolPace pace = RegistryToolPace::kWaitForEnd);

  std::wstring PackagePath() const { return machine_->ScratchFolder() + L"x.ucex"; }
  std::vector<std::wstring> EntryNames();
  std::map<std::wstring, std::string> Entries();  // content by name

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  ProductContext context_;
  std::wstring packagePath_;
  CategorySet chosen_;

 private:
  void FillMachine();
};

}  // namespace carrovan
