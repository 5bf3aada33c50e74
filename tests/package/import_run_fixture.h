#pragma once

#include "environment/version_folders.h"
#include "tests/package/import_fixture.h"
#include "text/text.h"

namespace carrovan {

// A package of the test's own that is applied to release 2026, with something of the user's own in
// every place.
class ImportRunTest : public ImportFixture {
 protected:
  // Every category that lives in one kind of place, with its file in the package and the user's
  // own.
  struct Place {
    SettingCategory category;
    std::string label;
    bool roaming;
    std::wstring folder;
  };
  const std::vector<Place> kPlaces = {
      {SettingCategory::DocumentTemplate, "Document Template", true, L"en-us\\Template\\"},
      {SettingCategory::Bom3dConfiguration, "3DBOM Configuration", false, L"en-us\\3DBOM\\"},
      {SettingCategory::PropertyTemplates, "Property Templates", false,
       L"en-us\\PropertyTemplates\\NewTemplates\\"},
      {SettingCategory::CustomMaterials, "Custom materials", false, L"en-us\\materials\\"},
      {SettingCategory::CustomPartsLibrary, "Custom Parts Library", false, L"en-us\\ToolBox\\"},
      {SettingCategory::CatalogLibrary, "Catalog Library", false, L"en-us\\FavoriteCatalog\\"},
      {SettingCategory::SheetMetalLibrary, "Sheet Metal Library", false, L"en-us\\SheetMetal\\"},
      {SettingCategory::CosmeticThread, "Cosmetic Thread", false, L"en-us\\CosmeticThread\\"},
  };

  // All thirteen categories, the user's own besides, and files of nobody. Their contents say whose
  // they are.
  void DescribeEverything() {
    DescribeAllPlaces();
    std::vector<std::string> labels;
    for (const CategoryRecord& record : CategoryTable()) {
      labels.push_back(ToUtf8(std::wstring(Text(record.label))));
    }
    Describe(labels);
    entries_[PackageRoaming(L"en-us\\Customization\\new.dat")] = "from the package";
    entries_[PackageLocal(L"Customization\\new.dat")] = "from the package";
    entries_[Draft(L"Local", L"26.0\\new.dat")] = "from the package";
    entries_[Draft(L"Roaming", L"26.0\\new.dat")] = "from the package";
    entries_[L"Options\\General.reg"] = RegistryFile("\\General");
    entries_[L"Register\\x.reg"] = RegistryFile("");
    entries_[PackageLocal(L"en-us\\Elsewhere\\x.dat")] = "nobody's";
    machine_->PutFile(Roaming(L"en-us\\Customization\\old.dat"), "the user's own");
    machine_->PutFile(Local(L"Customization\\old.dat"), "the user's own");
    machine_->PutFile(OwnDraft(L"Local", L"26.0\\old.dat"), "the user's own");
    machine_->PutFile(OwnDraft(L"Roaming", L"26.0\\old.dat"), "the user's own");
    for (const wchar_t* subkey : {L"", L"\\General"}) {
      machine_->PutValue(RegistryHive::kCurrentUser, LiveKey(context_) + subkey,
                         MakeStringValue(L"whose", L"the user's own"));
    }
  }

  std::string RegistryFile(const std::string& subkey) const {
    return "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\" + ToUtf8(LiveKey(context_)) + subkey +
           "]\r\n\"whose\"=\"from the package\"\r\n";
  }

  // The machine is as it was but for the files of nobody.
  void ExpectOnlyNobodysFiles() {
    for (const CategoryRecord& record : CategoryTable()) {
      for (const std::wstring& folder : CategoryFolders(record, context_)) {
        const bool own = folder.find(L"zh-cn") == std::wstring::npos;
        const std::wstring below =
            record.category == SettingCategory::Draft2dSettings ? L"\\26.0" : L"";
        EXPECT_EQ(Content(folder + below + L"\\new.dat"), "no file") << ToUtf8(folder);
        EXPECT_EQ(Content(folder + below + L"\\old.dat"), own ? "the user's own" : "no file")
            << ToUtf8(folder);
      }
    }
    for (const wchar_t* subkey : {L"", L"\\General"}) {
      EXPECT_EQ(machine_->Value(RegistryHive::kCurrentUser, LiveKey(context_) + subkey, L"whose"),
                MakeStringValue(L"whose", L"the user's own"));
    }
    EXPECT_EQ(Content(Local(L"en-us\\Elsewhere\\x.dat")), "nobody's");
  }

  // A file of the drafting program of release 2026, below a half of a profile.
  std::wstring Draft(const std::wstring& half, const std::wstring& below) const {
    return half + L"\\ORMA\\ORMA CAD TVRN-INT-" + context_.productName + L" 2026 (x64)\\" + below;
  }
  std::wstring OwnDraft(const std::wstring& half, const std::wstring& below) const {
    return state_.package.applicationDataRoot + Draft(half, below);
  }

  void DescribeAllPlaces() {
    std::vector<std::string> labels;
    for (const Place& place : kPlaces) {
      labels.push_back(place.label);
      const std::wstring below = place.folder + L"new.dat";
      entries_[place.roaming ? PackageRoaming(below) : PackageLocal(below)] = "from the package";
      machine_->PutFile(Own(place) + L"old.dat", "the user's own");
    }
    Describe(labels);
  }

  std::wstring Own(const Place& place) const {
    return place.roaming ? Roaming(place.folder) : Local(place.folder);
  }
};

}  // namespace carrovan
