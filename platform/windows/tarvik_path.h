#pragma once

#include <string>

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

}  // namespace carrovan
