#pragma once

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "restore/restore_point.h"
#include "tests/wizard/wizard_fixture.h"
#include "text/path_text.h"

namespace carrovan {

using Texts = std::vector<std::wstring>;

// The file of the product's template, in the user's profile and in a package.
inline constexpr wchar_t kTemplate[] = L"28.0\\en-us\\Template\\part.tpl";

inline Texts TextsOf(const std::vector<ListedLine>& lines) {
  Texts texts;
  for (const ListedLine& line : lines) texts.push_back(line.text);
  return texts;
}

inline bool AnyHolds(const Texts& lines, const std::wstring& part) {
  return std::ranges::any_of(
      lines, [&](const std::wstring& line) { return line.find(part) != std::wstring::npos; });
}

// A wizard on a machine whose user has a template of his own, and what its runs are guarded with.
class GuardedWizard : public WizardFixture {
 protected:
  void SetUp() override {
    machine_->MakeFolder(Profile(L"28.0"));
    machine_->MakeFolder(Roaming(L"28.0"));
    machine_->PutFile(Roaming(kTemplate), "mine");
  }

  std::wstring Below(const std::optional<std::wstring>& root, const std::wstring& path) const {
    return *root + L"\\" + machine_->product.companyShortName + L"\\" +
           machine_->product.productName + L"\\" + path;
  }
  std::wstring Profile(const std::wstring& path) const { return Below(folders_.local, path); }
  std::wstring Roaming(const std::wstring& path) const { return Below(folders_.roaming, path); }
  std::wstring Scene() const {
    return Roaming(L"28.0\\en-us\\Customization\\" + machine_->product.productName + L"-Scene.xml");
  }
  std::string Template() const { return machine_->FileBytes(Roaming(kTemplate)).value_or("none"); }

  std::wstring Package() const { return machine_->ScratchFolder() + L"some.ucex"; }

  // A package that marks these categories and holds these entries.
  void MakePackageOf(const Texts& labels, const std::map<std::wstring, std::string>& entries) {
    const Machine ports = machine_->Ports();
    std::string description = "[Selected]\r\n";
    for (const std::wstring& label : labels) description += ToUtf8(label) + "=1\r\n";
    description += "[Base]\r\nCOMPANY=" + ToUtf8(machine_->product.companyShortName) +
                   "\r\nINTERNAL VERSION=28.0\r\nRELEASE VERSION=2026\r\nPRODUCT=" +
                   ToUtf8(machine_->product.productName) + "\r\n";
    const auto writer = ports.archives->Create(Package(), ArchivePurpose::kKeep);
    ASSERT_TRUE(writer);
    std::map<std::wstring, std::string> all = entries;
    all[L"config.ini"] = description;
    for (const auto& [name, bytes] : all) {
      const std::wstring source = machine_->ScratchFolder() + L"entry";
      machine_->PutFile(source, bytes);
      ASSERT_EQ(writer->Add(name, source), ArchiveResult::kDone);
    }
    ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  }

  std::wstring EntryOf(const std::wstring& path) const {
    return L"Roaming\\" + machine_->product.companyShortName + L"\\" +
           machine_->product.productName + L"\\" + path;
  }

  void MakeTemplatePackage() {
    MakePackageOf({L"Document Template"}, {{EntryOf(kTemplate), "theirs"}});
  }

  void GoToImportCategories() {
    using enum WizardPage;
    OpenIn(MigrationMode::kImport);
    state_.package.path = Package();
    frame_.selectedVersions[kPath] = L"2026";
    flow_.Next();
    flow_.Next();
    ASSERT_EQ(frame_.Page(), kImportCategories);
  }

  void ImportTemplate() {
    using enum WizardPage;
    MakeTemplatePackage();
    GoToImportCategories();
    flow_.Finish();
    ASSERT_EQ(frame_.Page(), kFinish);
    ASSERT_EQ(Template(), "theirs");
  }

  Texts Points() const { return RestorePointIds(*machine_->Ports().files, *RestoreRoot(folders_)); }

  // A file where the folder of restore points would be, so that none can be made.
  void BlockRestorePoints() {
    machine_->PutFile(RemoveFileSpec(*RestoreRoot(folders_)), "in the way");
  }
};

}  // namespace carrovan
