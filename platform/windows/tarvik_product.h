#pragma once

#include "platform/product_identity.h"
#include "platform/windows/tarvik_functions.h"

namespace carrovan {

// The CAD product as its maker's library reports it. The functions must stay loaded.
class TarvikProduct : public ProductIdentity {
 public:
  explicit TarvikProduct(const TarvikFunctions& functions) : functions_(functions) {}

  std::wstring StartupFolder() const override;
  std::wstring CompanyShortName() const override;
  std::wstring ProductName() const override;
  std::wstring HumanReadableVersion() const override;
  std::wstring ProductVersion() const override;

 private:
  TarvikFunctions functions_;
};

}  // namespace carrovan
