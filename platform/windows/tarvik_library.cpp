#include "platform/windows/tarvik_library.h"

#include "platform/system_code.h"
#include "platform/windows/module_loading.h"
#include "platform/windows/windows_file_system.h"
#include "platform/windows/windows_registry.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kSettingsKey[] = L"SOFTWARE\\Carrovan";
constexpr wchar_t kProductFolder[] = L"ProductFolder";
constexpr wchar_t kLibraryName[] = L"\\tarvik.dll";

// Empty when there is no such text.
std::wstring ReadText(const RegistryKeyHandle& key, const wchar_t* name) {
  DWORD sizeBytes = 0;
  if (RegGetValueW(key.Get(), nullptr, name, RRF_RT_REG_SZ, nullptr, nullptr, &sizeBytes) !=
      ERROR_SUCCESS) {
    return L"";
  }
  std::wstring text(sizeBytes / sizeof(wchar_t), L'\0');
  if (RegGetValueW(key.Get(), nullptr, name, RRF_RT_REG_SZ, nullptr, text.data(), &sizeBytes) !=
      ERROR_SUCCESS) {
    return L"";
  }
  return text.c_str();
}

}  // namespace

std::wstring FindTarvik(const TarvikPlaces& places) {
  const std::wstring besideProgram = places.programFolder + kLibraryName;
  if (WindowsFileSystem().Exists(besideProgram)) return besideProgram;
  const RegistryKeyHandle key =
      OpenRegistryKey(RegistryHive::kCurrentUser, places.settingsKey, KEY_QUERY_VALUE);
  if (!key) return besideProgram;
  const std::wstring folder = WithoutTrailingBackslashes(ReadText(key, kProductFolder));
  return folder.empty() ? besideProgram : folder + kLibraryName;
}

std::wstring TarvikPath() { return FindTarvik({RemoveFileSpec(ProgramPath()), kSettingsKey}); }

namespace {

// Finds functions one after the other and remembers the first that is missing.
class FunctionFinder {
 public:
  explicit FunctionFinder(const FunctionLookup& lookup) : lookup_(lookup) {}

  template <typename Function>
  void Find(const char* name, Function& function) {
    function = reinterpret_cast<Function>(lookup_(name));
    if (function == nullptr && missing_.empty()) missing_ = name;
  }

  const std::string& Missing() const { return missing_; }

 private:
  const FunctionLookup& lookup_;
  std::string missing_;
};

}  // namespace

std::string FindTarvikFunctions(const FunctionLookup& lookup, TarvikFunctions& functions) {
  FunctionFinder finder(lookup);
  finder.Find("EyeGetProductName", functions.productName);
  finder.Find("EyeGetProductVersion", functions.productVersion);
  finder.Find("EyeGetHumanRedableVersion", functions.humanReadableVersion);
  finder.Find("EyeGetCompanyNameShort", functions.companyShortName);
  finder.Find("APIGetAppStartupFolder", functions.startupFolder);
  finder.Find("CreateZip", functions.createZip);
  finder.Find("ZipAdd", functions.zipAdd);
  finder.Find("IsZipHandleU", functions.isZipHandleU);
  finder.Find("CloseZipZ", functions.closeZipZ);
  finder.Find("OpenZip", functions.openZip);
  finder.Find("GetZipItem", functions.getZipItem);
  finder.Find("UnzipItem", functions.unzipItem);
  finder.Find("CloseZipU", functions.closeZipU);
  functions.storeZipItems = reinterpret_cast<StoreZipItemsFunction>(lookup("StoreZipItems"));
  return finder.Missing();
}

namespace {

class LoadedTarvik : public TarvikLibrary {
 public:
  LoadedTarvik(ModuleHandle module, const TarvikFunctions& functions)
      : module_(std::move(module)), functions_(functions) {}

  const TarvikFunctions& Functions() const override { return functions_; }

 private:
  ModuleHandle module_;
  TarvikFunctions functions_;
};

std::wstring ReasonNotLoaded(const std::wstring& path, SystemCode code) {
  // The system gives one number for a library that is missing and for one that misses another.
  if (!WindowsFileSystem().Exists(path)) {
    return path +
           L" is missing: run Carrovan's setup and name the CAD product's program folder, or put "
           L"this program into that folder and start it there";
  }
  return path + L" cannot be loaded (error " + std::to_wstring(code) +
         L"): repair the installation of the CAD product";
}

std::wstring ReasonMissingFunction(const std::wstring& path, const std::string& function) {
  return path + L" has no function " + FromUtf8(function) +
         L": use the library of a CAD product that this program supports";
}

}  // namespace

TarvikOrReason LoadTarvik(const std::wstring& libraryPath) {
  ModuleHandle module;
  const SystemCode code = LoadModule(libraryPath, module);
  if (!module) return {nullptr, ReasonNotLoaded(libraryPath, code)};
  const auto lookup = [&module](const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(module.Get(), name));
  };
  TarvikFunctions functions;
  const std::string missing = FindTarvikFunctions(lookup, functions);
  if (!missing.empty()) return {nullptr, ReasonMissingFunction(libraryPath, missing)};
  return {std::make_unique<LoadedTarvik>(std::move(module), functions), L""};
}

}  // namespace carrovan
