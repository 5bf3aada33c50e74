#include "tests/support/random_machine.h"

#include <map>

#include "environment/string_table.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr RegistryHive kUser = RegistryHive::kCurrentUser;
constexpr RegistryHive kMachine = RegistryHive::kLocalMachine;

const std::wstring kInstall = L"C:\\Program Files\\Product\\";
const std::wstring kCustomization = L"\\Customization";
const std::wstring kData = L"C:\\Users\\u\\AppData\\";
constexpr const wchar_t* kLanguages[] = {L"en-us", L"zh-CN", L"fr-fr"};
constexpr const wchar_t* kNames[] = {L"a.xml", L"A.XML", L"b.xml",          L"menu.UIK",
                                     L"k.acc", L"K.ACC", L"x.config",       L"\x00E4pfel.dat",
                                     L"p.dat", L"P.DAT", L"\x00C4PFEL.dat", L"\x4E2D\x6587.prt"};
constexpr const wchar_t* kSubfolders[] = {L"", L"", L"", L"", L"sub\\", L"Sub\\", L"sub\\deep\\"};

constexpr const char* kRibbons[] = {
    "<r><Item ElementID=\"1\"/></r>",
    "<r><Item ElementID=\"1\"/><Item ElementID=\"2\" Text=\"2025\"/></r>",
    "<r><Bar ElementID=\"3\"><Item ElementID=\"4\"/></Bar></r>",
    "<r><broken",
    "<VANTRIC28.0><Item ElementID=\"9\"/></VANTRIC28.0>",
};
constexpr const char* kShortcuts[] = {
    "<r><VANTRIC28.0><Accels-0><Command>1</Command><Ctrl>1</Ctrl><Key>7</Key></Accels-0>"
    "<Count>1</Count></VANTRIC28.0></r>",
    "<r><VANTRIC28.0><Accels-0><Command>2</Command><Ctrl>0</Ctrl><Key>8</Key></Accels-0>"
    "<Count>1</Count></VANTRIC28.0></r>",
    "<r><VANTRIC27.0><Accels-0><Command>3</Command><Ctrl>1</Ctrl><Key>9</Key></Accels-0>"
    "<Count>1</Count></VANTRIC27.0></r>",
    "<r/>",
};
constexpr const char* kTexts[] = {"", "x", "one", "two", "C:\\Users\\old\\x 2025"};

constexpr const wchar_t* kKeys[] = {L"General", L"GENERAL", L"Color",       L"Grid\\Deep",
                                    L"Recent",  L"Draw",    L"\x4E2D\x6587"};
constexpr const wchar_t* kValueNames[] = {L"", L"a", L"A", L"b", L"folder", L"\x00E4", L"n"};

}  // namespace

RandomMachine::RandomMachine(unsigned seed) : random_(seed) {
  files.listsByName = true;
  const std::size_t kind = Below(10);
  kind_ = kind < 5 ? Run::kImport : kind < 7 ? Run::kLegacyImport : Run::kReset;
  if (Chance(25)) product.companyShortName = L"ORMA";
  product.startupFolder = kInstall + L"Bin\\x64";
  Install();
  FillProfile(L"28.0", L"2026");
  if (Chance(40)) FillProfile(L"27.0", L"2025");
  FillRegistry();
  year_ = Chance(85) ? L"2026" : L"2025";
  const int percent = OneOf({100, 60, 30});
  for (std::size_t i = 0; i < CategoryTable().size(); ++i) chosen_.push_back(Chance(percent));
  if (kind_ == Run::kImport) MakePackage();
  if (kind_ == Run::kLegacyImport) MakeLegacyPackage();
  if (kind_ != Run::kReset) WriteArchive();
  ChoosePaths(seed);
  files.changes.clear();
}

// From the seed itself, so that the machines are the same as without.
void RandomMachine::ChoosePaths(unsigned seed) {
  const PathMapping kMappings[] = {{L"D:\\none", kData + L"Local"},
                                   {L"C:\\Users\\old", L"E:\\new 2025\\27.0"},
                                   {L"c:\\users\\U\\appdata", L"\\\\server\\share"},
                                   {L"D:", L"F:"}};
  if (seed % 2 == 0) return;
  std::vector<PathMapping> chosen;
  for (unsigned i = 0; i < std::size(kMappings); ++i) {
    if ((seed >> (1 + i)) % 2 == 1) chosen.push_back(kMappings[i]);
  }
  paths_.map = PathMap(std::move(chosen));
  paths_.keepsDeadPaths = (seed >> 5) % 4 == 0;
  paths_.listsPaths = (seed >> 7) % 2 == 0;
}

bool RandomMachine::IsChosen(SettingCategory category) const {
  return chosen_.at(static_cast<std::size_t>(category) -
                    static_cast<std::size_t>(SettingCategory::Options));
}

// The distributions of the standard library differ from system to system.
std::size_t RandomMachine::Below(std::size_t bound) { return random_() % bound; }

void RandomMachine::Install() {
  for (const wchar_t* language : kLanguages) {
    if (languages_.empty() || Chance(30)) languages_.emplace_back(language);
  }
  for (const std::wstring& language : languages_) {
    files.PutFolder(kInstall + L"AppData\\" + language);
  }
  if (Chance(70)) {
    files.Put(kInstall + L"Bin\\AppData\\Customization\\a.xml", OneOf(kShortcuts));
  }
  files.PutFolder(kData + L"Local\\Temp");
  files.PutFolder(kData + L"Roaming");
  for (const wchar_t* half : {L"Local\\", L"Roaming\\"}) {
    if (Chance(50)) files.Put(kData + half + L"Other\\x.dat", "nobody's");
  }
}

void RandomMachine::FillProfile(const std::wstring& version, const std::wstring& year) {
  for (const bool roaming : {false, true}) {
    const std::wstring half = kData + (roaming ? L"Roaming" : L"Local");
    if (Chance(92)) {
      const std::wstring folder =
          half + L"\\" + product.companyShortName + L"\\" + product.productName + L"\\" + version;
      files.PutFolder(folder);
      FillProductFolder(folder, roaming, &RandomMachine::PutInProfile);
    }
    if (Chance(70)) FillDrafting(half, year, &RandomMachine::PutInProfile);
  }
  if (Chance(30)) PutInProfile(kData + L"Roaming\\" + year.substr(2) + L".0\\t.dat", "twin");
}

void RandomMachine::FillProductFolder(const std::wstring& base, bool roaming, Put put) {
  for (const CategoryRecord& record : CategoryTable()) {
    const std::wstring subfolder(record.subfolder);
    const bool isRoaming = record.storage == CategoryStorage::kRoamingLanguage;
    if (subfolder.empty() || isRoaming != roaming) continue;
    if (Chance(subfolder == kCustomization ? 30 : 65)) continue;
    if (record.storage == CategoryStorage::kLocalSingle) {
      FillFolder(base, subfolder, put);
      continue;
    }
    for (const std::wstring& language : languages_) {
      if (Chance(80)) FillFolder(base + L"\\" + language, subfolder, put);
    }
  }
}

void RandomMachine::FillFolder(const std::wstring& folder, const std::wstring& subfolder, Put put) {
  // The same name on both sides, so that there is something to merge.
  if (subfolder == kCustomization && Chance(70)) {
    (this->*put)(folder + subfolder + L"\\a.xml", ContentFor(L"a.xml", subfolder));
  }
  for (std::size_t left = Below(3); left > 0; --left) {
    const std::wstring name = OneOf(kNames);
    const std::wstring below = OneOf(kSubfolders);
    (this->*put)(folder + subfolder + L"\\" + below + name, ContentFor(name, subfolder));
  }
}

std::string RandomMachine::ContentFor(const std::wstring& name, const std::wstring& subfolder) {
  if (!EndsWithIgnoringAsciiCase(name, L".xml")) return OneOf(kTexts);
  return subfolder == kCustomization && Chance(50) ? OneOf(kShortcuts) : OneOf(kRibbons);
}

void RandomMachine::FillDrafting(const std::wstring& base, const std::wstring& year, Put put) {
  const bool isVantric = product.companyShortName == L"Vantric";
  const std::wstring named = isVantric && year == L"2025" ? L"2024" : year;
  const std::wstring folder = base + L"\\ORMA\\ORMA CAD TVRN-INT" +
                              (isVantric ? L"-" + product.productName : L"") + L" " + named +
                              L" (x64)";
  FillFolder(folder, L"\\" + (Chance(80) ? year.substr(2) + L".0" : std::wstring(L"R7")), put);
  if (Chance(20)) FillFolder(folder, L"\\other", put);
}

void RandomMachine::PutInProfile(const std::wstring& path, const std::string& bytes) {
  if (files.Exists(path)) return;
  files.Put(path, bytes);
  if (Chance(6)) files.MakeReadOnly(path);
  if (Chance(8)) files.PutFolder(path + L" empty");
}

void RandomMachine::FillRegistry() {
  const std::wstring company = L"SOFTWARE\\" + product.companyShortName;
  registry.Root(kMachine).Make(company + L"\\VANTRIC\\28.0");
  if (Chance(60)) registry.Root(kMachine).Make(company + L"\\VANTRIC\\27.0");
  for (const wchar_t* version : {L"28.0", L"27.0"}) {
    if (Chance(90)) FillKey(registry.Root(kUser).Make(company + L"\\VANTRIC " + version), 2);
    if (Chance(70)) {
      FillKey(registry.Root(kMachine).Make(company + L"\\New User Settings\\VANTRIC " + version),
              2);
    }
  }
  FillKey(registry.Root(kUser).Make(L"SOFTWARE\\Other"), 1);
}

void RandomMachine::FillKey(RegistryKey& key, int levels) {
  for (std::size_t left = Below(4); left > 0; --left) key.SetValue(AnyValue());
  if (levels == 0) return;
  for (std::size_t left = Below(4); left > 0; --left) FillKey(key.Make(OneOf(kKeys)), levels - 1);
}

RegistryValue RandomMachine::AnyValue() {
  const std::wstring name = OneOf(kValueNames);
  switch (Below(5)) {
    case 0:
      return MakeDwordValue(name, static_cast<std::uint32_t>(Below(3)));
    case 1:
      return {name, kRegBinary, {static_cast<std::uint8_t>(Below(2)), 7}};
    case 2:
      return MakeStringValue(name, L"%USERPROFILE%\\x", kRegExpandSz);
    default:
      return MakeStringValue(name, FromUtf8(OneOf(kTexts)));
  }
}

void RandomMachine::MakePackage() {
  package_ = L"C:\\settings.ucex";
  const bool older = Chance(50);
  packageVersion_ = older ? L"27.0" : L"28.0";
  packageYear_ = older ? L"2025" : L"2026";
  if (Chance(96)) Describe();
  for (const bool roaming : {false, true}) {
    const std::wstring half = roaming ? L"Roaming" : L"Local";
    FillProductFolder(half + L"\\" + product.companyShortName + L"\\" + product.productName +
                          L"\\" + packageVersion_,
                      roaming, &RandomMachine::PutInPackage);
    FillDrafting(half, packageYear_, &RandomMachine::PutInPackage);
  }
  AddRegistryFiles();
  if (Chance(25)) AddOddities();
}

void RandomMachine::PutInPackage(const std::wstring& path, const std::string& bytes) {
  entries_.emplace(path, bytes);
}

void RandomMachine::Describe() {
  std::string text = "[Selected]\r\n";
  for (const CategoryRecord& record : CategoryTable()) {
    if (Chance(90)) text += ToUtf8(Text(record.label)) + "=1\r\n";
  }
  entries_[L"config.ini"] = text + "[Base]\r\nCOMPANY=" + ToUtf8(product.companyShortName) +
                            "\r\nINTERNAL VERSION=" + ToUtf8(packageVersion_) +
                            "\r\nRELEASE VERSION=" + ToUtf8(packageYear_) +
                            "\r\nPRODUCT=VANTRIC\r\n";
}

void RandomMachine::AddRegistryFiles() {
  for (const wchar_t* name : {L"Options\\General.reg", L"Options\\Color.reg", L"Options\\x.txt",
                              L"Register\\VANTRIC.reg", L"Options\\sub\\deep.reg"}) {
    if (Chance(55)) entries_[name] = RegistryFileText();
  }
}

std::string RandomMachine::RegistryFileText() {
  if (Chance(5)) return "no registry file";
  std::wstring text = L"Windows Registry Editor Version 5.00\r\n";
  const std::wstring live =
      L"SOFTWARE\\" + product.companyShortName + L"\\VANTRIC " + packageVersion_;
  for (std::size_t left = 1 + Below(3); left > 0; --left) {
    const std::wstring root = Chance(94) ? L"HKEY_CURRENT_USER\\" : L"HKEY_LOCAL_MACHINE\\";
    const std::wstring key = Chance(70) ? live + L"\\" + OneOf(kKeys) : live;
    text += L"\r\n[" + std::wstring(Chance(10) ? L"-" : L"") + root + key + L"]\r\n";
    for (std::size_t lines = Below(4); lines > 0; --lines) text += RegistryLine() + L"\r\n";
  }
  const auto bytes = EncodeText({text, Chance(80)});
  return {bytes.begin(), bytes.end()};
}

std::wstring RandomMachine::RegistryLine() {
  constexpr const wchar_t* kData[] = {L"\"text 2025\"",
                                      L"\"C:\\\\Users\\\\old\\\\x\"",
                                      L"\"C:\\\\Users\\\\u\\\\AppData\"",
                                      L"\"D:\\\\none\\\\27.0\\\\y\"",
                                      L"\"%USERPROFILE%\\\\AppData\"",
                                      L"dword:00000002",
                                      L"hex:01,07",
                                      L"hex(2):25,00,\\\r\n  41,00,00,00",
                                      L"-",
                                      L"nonsense"};
  const std::wstring name = OneOf(kValueNames);
  return (name.empty() ? L"@" : L"\"" + name + L"\"") + L"=" + OneOf(kData);
}

void RandomMachine::AddOddities() {
  const std::wstring local = L"Local\\" + product.companyShortName;
  const std::pair<std::wstring, std::string> kOddities[] = {
      {L"readme.txt", "x"},
      {L"Other\\y.dat", "y"},
      {L"Local\\Other\\x.dat", "not nobody's"},
      {L"Roaming\\Other\\new.dat", "new"},
      {L"..\\evil.txt", "evil"},
      {L"Local\\con.txt:stream", "evil"},
      {local + L"\\VANTRIC\\28.0\\en-us\\ToolBox", "a file where a folder is"},
      {L"Roaming\\Other\\x.dat\\inside", "below a file"},
      {L"Register", "a file where a folder is"},
      {L"Version_Changed_Files.zip", "in the way"},
  };
  for (std::size_t left = 1 + Below(3); left > 0; --left) entries_.insert(OneOf(kOddities));
}

void RandomMachine::MakeLegacyPackage() {
  package_ = L"C:\\settings.ucx";
  constexpr const wchar_t* kDocuments[] = {L"ERROR_UI.xml", L"Scene_UI.xml",
                                           L"VANTRIC_Option_Config.xml",
                                           L"VANTRIC_Option_Config.xml", L"Other.xml"};
  constexpr const char* kContents[] = {
      "<r><General><a value=\"2025\"/><none value=\"1\"/></General><a value=\"3\"/></r>",
      "<r><Color><n value=\"7\"/><folder value=\"C:\\Users\\old\\x\"/></Color></r>",
      "<s>VANTRIC24.0</s>", "<broken"};
  entries_[OneOf(kDocuments)] = OneOf(kContents);
  if (Chance(10)) entries_[L"second.xml"] = "<r/>";
  if (Chance(20)) entries_[L"note.txt"] = "x";
}

void RandomMachine::WriteArchive() {
  const auto writer = archives.Create(package_, ArchivePurpose::kKeep);
  for (const auto& [name, bytes] : entries_) {
    files.Put(L"C:\\source", bytes);
    // A name that would be refused is refused here as well.
    static_cast<void>(writer->Add(name, L"C:\\source"));
  }
  static_cast<void>(writer->Close());
  static_cast<void>(files.RemoveFile(L"C:\\source"));
  if (Chance(2)) files.Put(package_, "no archive");
}

}  // namespace carrovan
