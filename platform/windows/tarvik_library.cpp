#include "platform/windows/tarvik_library.h"

#include "platform/path_text.h"
#include "platform/system_code.h"
#include "platform/text.h"
#include "platform/windows/handles.h"
#include "platform/windows/windows_file_system.h"

namespace carrovan {
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

std::wstring ProgramPath() {
  std::wstring path(kFixedPathBuffer, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) return path.substr(0, length);
    path.resize(path.size() * 2);
  }
}

SystemCode LoadModule(const std::wstring& path, ModuleHandle& module) {
  // Of a damaged library the system would tell the user itself, in a message box.
  DWORD oldMode = 0;
  SetThreadErrorMode(SEM_FAILCRITICALERRORS, &oldMode);
  module.Reset(LoadLibraryExW(path.c_str(), nullptr,
                              LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32));
  const SystemCode code = module ? kSystemOk : GetLastError();
  SetThreadErrorMode(oldMode, nullptr);
  return code;
}

std::wstring ReasonNotLoaded(const std::wstring& path, SystemCode code) {
  // The system gives one number for a library that is missing and for one that misses another.
  if (!WindowsFileSystem().Exists(path)) {
    return path +
           L" is missing: put this program into the CAD product's program folder and start it "
           L"there";
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

std::wstring TarvikPath() { return RemoveFileSpec(ProgramPath()) + L"\\tarvik.dll"; }

}  // namespace carrovan
