#pragma once

#include <string>

namespace carrovan {

// What the maker's support library reports of the installed CAD product. A fact that it does not
// know is an empty text.
class ProductIdentity {
 public:
  virtual ~ProductIdentity() = default;

  virtual std::wstring StartupFolder() const = 0;         // folder of the product's executables
  virtual std::wstring CompanyShortName() const = 0;      // for example "Vantric"
  virtual std::wstring ProductName() const = 0;           // for example "VANTRIC"
  virtual std::wstring HumanReadableVersion() const = 0;  // year form, for example "2026"
  virtual std::wstring ProductVersion() const = 0;        // internal form, for example "28.0"
};

}  // namespace carrovan
