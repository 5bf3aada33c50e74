#include "tests/package/swept_machine.h"

#include <gtest/gtest.h>

#include <functional>

#include "environment/setting_category.h"
#include "environment/string_table.h"
#include "text/text.h"

namespace carrovan {
namespace {

const std::wstring kInstall = L"C:\\Program Files\\Product\\";
const std::wstring kLanguages[] = {L"en-us", L"zh-cn"};
constexpr RegistryHive kUser = RegistryHive::kCurrentUser;
constexpr RegistryHive kMachine = RegistryHive::kLocalMachine;

// Below a product folder; "*" stands for each language.
const std::wstring kRoamingFolders[] = {L"*\\Customization", L"*\\Template"};
const std::wstring kLocalFolders[] = {
    L"Customization", L"*\\3DBOM",          L"*\\PropertyTemplates\\NewTemplates",
    L"*\\materials",  L"*\\ToolBox",        L"*\\FavoriteCatalog",
    L"*\\SheetMetal", L"*\\CosmeticThread",
};

constexpr char kRibbon[] = "<r><Item ElementID=\"1\"/><%s ElementID=\"2\"/></r>";
constexpr char kKeys[] =
    "<r><VANTRIC28.0><Accels-0 Command=\"%s\" Ctrl=\"1\" Key=\"7\"/><Count>1</Count></"
    "VANTRIC28.0></r>";

std::string With(const char* pattern, const std::string& text) {
  std::string filled = pattern;
  return filled.replace(filled.find("%s"), 2, text);
}

std::string RegistryFileOf(const std::wstring& key, const std::wstring& values) {
  const auto bytes =
      EncodeText({L"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\" + key +
                      L"]\r\n" + values,
                  true});
  return {bytes.begin(), bytes.end()};
}

std::string ContentFor(const std::wstring& folder, const std::string& who) {
  if (folder == L"Customization") return With(kKeys, who);
  return folder == L"*\\Customization" ? With(kRibbon, who) : "of " + who;
}

// Calls `put` with a file of each folder category below a product folder.
void ForEachFile(const std::string& who,
                 const std::function<void(bool roaming, const std::wstring& path,
                                          const std::string& bytes)>& put) {
  const auto each = [&](bool roaming, const std::wstring& folder) {
    const std::wstring name = L"\\" + FromUtf8(who) + L".dat";
    for (const std::wstring& language : kLanguages) {
      const std::wstring path = ReplaceAll(folder, L"*", language);
      if (path.ends_with(L"Customization"))
        put(roaming, path + L"\\a.xml", ContentFor(folder, who));
      put(roaming, path + name, "of " + who);
      if (path == folder) return;
    }
  };
  for (const std::wstring& folder : kRoamingFolders) each(true, folder);
  for (const std::wstring& folder : kLocalFolders) each(false, folder);
}

// Made once and copied for each run.
class Content : public MemoryMachine {
 public:
  Content() {
    for (const std::wstring& language : kLanguages) {
      files.PutFolder(kInstall + L"AppData\\" + language);
    }
    files.Put(kInstall + L"Bin\\AppData\\Customization\\a.xml", With(kKeys, "default"));
    files.PutFolder(kAppData + L"Local\\Temp");
    FillProfile(L"27.0", "older", L"2024 (x64)\\25.0");
    FillProfile(L"28.0", "own", L"2026 (x64)\\26.0");
    for (const wchar_t* half : {L"Local\\", L"Roaming\\"}) {
      files.Put(kAppData + half + L"Other\\x.dat", "nobody's");
    }
    FillRegistry();
    MakePackages();
    files.changes.clear();
  }

 private:
  void FillProfile(const std::wstring& version, const std::string& who, const std::wstring& draft) {
    ForEachFile(who, [&](bool roaming, const std::wstring& path, const std::string& bytes) {
      const std::wstring half = roaming ? L"Roaming" : L"Local";
      files.Put(kAppData + half + L"\\Vantric\\VANTRIC\\" + version + L"\\" + path, bytes);
    });
    for (const wchar_t* half : {L"Local", L"Roaming"}) {
      const std::wstring folder = kAppData + half + L"\\ORMA\\ORMA CAD TVRN-INT-VANTRIC " + draft;
      files.Put(folder + L"\\menu.UIK", "menu of " + who);
      files.Put(folder + L"\\" + FromUtf8(who) + L".ini", "of " + who);
    }
  }

  void FillRegistry() {
    for (const std::wstring& key : {kLiveKey, kOlderKey}) {
      registry.Root(kUser).Make(key + L"\\General").SetValue(MakeStringValue(L"own", key));
    }
    for (const std::wstring_view subkey : OptionSubkeys()) {
      registry.Root(kMachine)
          .Make(L"SOFTWARE\\Vantric\\New User Settings\\VANTRIC 28.0" + std::wstring(subkey))
          .SetValue(MakeStringValue(L"factory", L"1"));
    }
    registry.Root(kMachine).Make(L"SOFTWARE\\Vantric\\VANTRIC\\27.0");
    registry.Root(kUser).Make(L"SOFTWARE\\Other").SetValue(MakeStringValue(L"a", L"1"));
  }

  void MakePackages() {
    std::map<std::wstring, std::string> entries;
    std::string description = "[Selected]\r\n";
    for (const CategoryRecord& record : CategoryTable()) {
      description += ToUtf8(Text(record.label)) + "=1\r\n";
    }
    entries[L"config.ini"] =
        description +
        "[Base]\r\nCOMPANY=Vantric\r\nINTERNAL VERSION=27.0\r\nRELEASE VERSION=2025\r\n"
        "PRODUCT=VANTRIC\r\n";
    ForEachFile("packaged", [&](bool roaming, const std::wstring& path, const std::string& bytes) {
      const std::wstring half = roaming ? L"Roaming" : L"Local";
      entries[half + L"\\Vantric\\VANTRIC\\27.0\\" + path] = bytes;
    });
    for (const std::wstring half : {L"Local", L"Roaming"}) {
      const std::wstring folder = half + L"\\ORMA\\ORMA CAD TVRN-INT-VANTRIC 2024 (x64)\\25.0\\";
      entries[folder + L"menu.UIK"] = "packaged";
      entries[folder + L"packaged.ini"] = "packaged";
    }
    entries[L"Options\\General.reg"] = RegistryFileOf(
        kOlderKey + L"\\General", L"\"folder\"=\"C:\\\\Users\\\\old\\\\x\"\r\n\"n\"=\"1\"\r\n");
    entries[L"Register\\VANTRIC2025.reg"] = RegistryFileOf(kOlderKey, L"\"packaged\"=\"1\"\r\n");
    Write(kPackage, entries);
    Write(kScenePackage, {{L"Scene_UI.xml", "<s>VANTRIC24.0</s>"}});
    Write(kOptionsPackage,
          {{L"VANTRIC_Option_Config.xml", "<r><General><own value=\"2025\"/></General></r>"}});
  }

  void Write(const std::wstring& path, const std::map<std::wstring, std::string>& entries) {
    const auto writer = archives.Create(path, ArchivePurpose::kKeep);
    for (const auto& [name, bytes] : entries) {
      files.Put(L"C:\\source", bytes);
      ASSERT_EQ(writer->Add(name, L"C:\\source"), ArchiveResult::kDone);
    }
    ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  }
};

}  // namespace

SweptMachine::SweptMachine() {
  static const Content kContent;
  product.startupFolder = kInstall + L"Bin\\x64";
  files = kContent.files;
  for (const RegistryHive hive : {kUser, kMachine}) {
    registry.Root(hive).CopyFrom(kContent.registry.Root(hive));
  }
}

std::map<std::wstring, std::string> SweptMachine::AllFiles(const std::wstring& folder) const {
  std::map<std::wstring, std::string> found;
  for (const FolderEntry& entry : ListFolder(files, folder)) {
    const std::wstring path = folder + L"\\" + entry.name;
    if (!entry.isFolder) found[path] = files.Bytes(path);
    if (entry.isFolder) found.merge(AllFiles(path));
  }
  return found;
}

}  // namespace carrovan
