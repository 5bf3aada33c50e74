#include <windows.h>

#include <string>

#include "support/tarvik/product_facts.h"
#include "support/tarvik/zip_handles.h"
#include "support/tarvik_api.h"

namespace carrovan {
namespace {

// The folder of this library with a trailing backslash, wherever the program lies that uses it.
std::wstring OwnFolder() {
  HMODULE module = nullptr;
  GetModuleHandleExW(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      reinterpret_cast<const wchar_t*>(&OwnFolder), &module);
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      return path.substr(0, path.find_last_of(L'\\') + 1);
    }
    path.resize(path.size() * 2);
  }
}

struct Library {
  ProductFacts facts = ReadProductFacts(OwnFolder() + L"tarvik.ini");
  LanguageSupport language{facts.language};
  ZipHandles zips;
};

// C functions without a context argument leave no other place for the library's state. It is made
// by the first call.
Library& TheLibrary() {
  static Library library;
  return library;
}

// Only memory can make the library throw, and nothing thrown may reach a caller in C.
template <typename Result, typename Function>
Result Guarded(Result onFailure, Function function) noexcept {
  try {
    return function(TheLibrary());
  } catch (...) {
    return onFailure;
  }
}

const wchar_t* Text(std::wstring ProductFacts::*fact) {
  return Guarded(L"", [=](Library& library) { return (library.facts.*fact).c_str(); });
}

template <typename Function>
std::uint32_t Number(Function function) {
  const ArchiveResult result = Guarded(ArchiveResult::kOutOfMemory,
                                       [&](Library& library) { return function(library.zips); });
  return static_cast<std::uint32_t>(result);
}

}  // namespace
}  // namespace carrovan

using carrovan::Guarded;
using carrovan::Library;
using carrovan::Number;
using carrovan::ProductFacts;
using carrovan::Text;
using carrovan::ZipHandles;

const wchar_t* EyeGetProductName() { return Text(&ProductFacts::productName); }
const wchar_t* EyeGetProductVersion() { return Text(&ProductFacts::productVersion); }
const wchar_t* EyeGetHumanRedableVersion() { return Text(&ProductFacts::humanReadableVersion); }
const wchar_t* EyeGetCompanyNameShort() { return Text(&ProductFacts::companyShortName); }
const wchar_t* APIGetAppStartupFolder() { return Text(&ProductFacts::startupFolder); }

const EyeLangSupport* EyeGetLangSupport() {
  const EyeLangSupport* none = nullptr;
  return Guarded(none, [](Library& library) { return library.language.Object(); });
}

EyeZipHandle CreateZip(const wchar_t* path, const char* password) {
  return Guarded(EyeZipHandle{},
                 [=](Library& library) { return library.zips.CreateZip(path, password); });
}

EyeZipHandle OpenZip(const wchar_t* path, const char* password) {
  return Guarded(EyeZipHandle{},
                 [=](Library& library) { return library.zips.OpenZip(path, password); });
}

int IsZipHandleU(EyeZipHandle zip) {
  return Guarded(0, [=](Library& library) { return int{library.zips.IsReader(zip)}; });
}

uint32_t StoreZipItems(EyeZipHandle zip) {
  return Number([=](ZipHandles& zips) { return zips.StoreUncompressed(zip); });
}

uint32_t ZipAdd(EyeZipHandle zip, const wchar_t* entryName, const wchar_t* sourcePath) {
  return Number([=](ZipHandles& zips) { return zips.Add(zip, entryName, sourcePath); });
}

uint32_t GetZipItem(EyeZipHandle zip, uint32_t index, EyeZipEntry* entry) {
  return Number([=](ZipHandles& zips) { return zips.Item(zip, index, entry); });
}

uint32_t UnzipItem(EyeZipHandle zip, uint32_t index, const wchar_t* targetPath) {
  return Number([=](ZipHandles& zips) { return zips.Extract(zip, index, targetPath); });
}

uint32_t CloseZipZ(EyeZipHandle zip) {
  return Number([=](ZipHandles& zips) { return zips.CloseWriter(zip); });
}

uint32_t CloseZipU(EyeZipHandle zip) {
  return Number([=](ZipHandles& zips) { return zips.CloseReaderOrGiveUp(zip); });
}
