#pragma once

#include <functional>
#include <string>

#include "support/tarvik_api.h"

namespace carrovan {

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

}  // namespace carrovan
