#pragma once

#include <functional>
#include <memory>
#include <string>

#include "support/tarvik_api.h"

#include "platform/machine.h"

namespace carrovan {

// Where the maker's library may lie.
struct TarvikPlaces {
  std::wstring programFolder;  // of the running program, without a trailing backslash
  std::wstring settingsKey;    // below HKEY_CURRENT_USER; its value ProductFolder, a text, names
                               // the product's program folder
};

// Full path of tarvik.dll: in the program's folder when it lies there, else in the product's
// program folder that the key names. Where no folder is named it is the path in the program's
// folder. That there is such a file is not promised.
std::wstring FindTarvik(const TarvikPlaces& places);

// The library of this program, by the key in which the setup notes the product's folder.
std::wstring TarvikPath();

// The functions of tarvik.dll that the program calls.
struct TarvikFunctions {
  EyeTextFunction productName = nullptr;
  EyeTextFunction productVersion = nullptr;
  EyeTextFunction humanReadableVersion = nullptr;
  EyeTextFunction companyShortName = nullptr;
  EyeTextFunction startupFolder = nullptr;

  CreateZipFunction createZip = nullptr;
  ZipAddFunction zipAdd = nullptr;
  IsZipHandleUFunction isZipHandleU = nullptr;
  CloseZipFunction closeZipZ = nullptr;
  OpenZipFunction openZip = nullptr;
  GetZipItemFunction getZipItem = nullptr;
  UnzipItemFunction unzipItem = nullptr;
  CloseZipFunction closeZipU = nullptr;

  StoreZipItemsFunction storeZipItems = nullptr;  // null when the library lacks it
};

// A text of the library; no text is taken for an empty one.
inline std::wstring TextFromTarvik(const wchar_t* text) { return text == nullptr ? L"" : text; }

// The address of an exported function; null when there is none of that name.
using FunctionLookup = std::function<void*(const char* name)>;

// Finds every function. Returns the name of the first one that is missing, or an empty text; then
// all are set but those that a library may lack.
std::string FindTarvikFunctions(const FunctionLookup& lookup, TarvikFunctions& functions);

// The maker's support library, loaded as long as this lives.
class TarvikLibrary {
 public:
  virtual ~TarvikLibrary() = default;
  virtual const TarvikFunctions& Functions() const = 0;
};

using TarvikOrReason = OrReason<TarvikLibrary>;

// Loads the library at a full path. What it needs itself is looked for in its own folder and the
// system's, never in the current folder.
TarvikOrReason LoadTarvik(const std::wstring& libraryPath);

}  // namespace carrovan
