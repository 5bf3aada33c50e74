#include "platform/windows/tarvik_library.h"

#include "platform/system_code.h"
#include "platform/text.h"
#include "platform/windows/module_loading.h"
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
