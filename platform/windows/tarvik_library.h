#pragma once

#include <memory>
#include <string>

#include "platform/windows/tarvik_functions.h"

namespace carrovan {

// The maker's support library, loaded as long as this lives.
class TarvikLibrary {
 public:
  virtual ~TarvikLibrary() = default;
  virtual const TarvikFunctions& Functions() const = 0;
};

struct TarvikOrReason {
  std::unique_ptr<TarvikLibrary> library;  // null when it cannot be used
  std::wstring reason;                     // then: one line that says why and what to do
};

// Loads the library at a full path. What it needs itself is looked for in its own folder and the
// system's, never in the current folder.
TarvikOrReason LoadTarvik(const std::wstring& libraryPath);

}  // namespace carrovan
