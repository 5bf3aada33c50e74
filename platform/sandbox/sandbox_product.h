#pragma once

#include <string>
#include <string_view>

#include "platform/product_identity.h"

namespace carrovan {

// The product that a machine in a folder has, and the user who has it: section "Product" of its
// "product.ini".
class SandboxProduct : public ProductIdentity {
 public:
  explicit SandboxProduct(std::wstring iniText) : iniText_(std::move(iniText)) {}

  std::wstring StartupFolder() const override { return Fact(L"StartupFolder"); }
  std::wstring CompanyShortName() const override { return Fact(L"CompanyShortName"); }
  std::wstring ProductName() const override { return Fact(L"ProductName"); }
  std::wstring HumanReadableVersion() const override { return Fact(L"HumanReadableVersion"); }
  std::wstring ProductVersion() const override { return Fact(L"ProductVersion"); }

  std::wstring UserName() const { return Fact(L"UserName"); }

 private:
  std::wstring Fact(std::wstring_view key) const;

  std::wstring iniText_;
};

}  // namespace carrovan
