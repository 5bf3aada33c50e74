#pragma once

#include <map>

#include "tests/support/memory_machine.h"

namespace carrovan {

// A machine on which releases 2025 and 2026 were used by the user "u", with a package of 2025 that
// holds all categories and two legacy packages.
class SweptMachine : public MemoryMachine {
 public:
  SweptMachine();

  // Content of every file below a folder.
  std::map<std::wstring, std::string> AllFiles(const std::wstring& folder) const;
};

inline const std::wstring kAppData = L"C:\\Users\\u\\AppData\\";
inline const std::wstring kLiveKey = L"SOFTWARE\\Vantric\\VANTRIC 28.0";
inline const std::wstring kOlderKey = L"SOFTWARE\\Vantric\\VANTRIC 27.0";
inline const std::wstring kPackage = L"C:\\settings.ucex";
inline const std::wstring kScenePackage = L"C:\\scene.ucx";
inline const std::wstring kOptionsPackage = L"C:\\options.ucx";

}  // namespace carrovan
