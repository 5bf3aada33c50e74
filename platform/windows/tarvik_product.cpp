#include "platform/windows/tarvik_product.h"

namespace carrovan {
namespace {

std::wstring TextOf(EyeTextFunction function) { return TextFromTarvik(function()); }

}  // namespace

std::wstring TarvikProduct::StartupFolder() const { return TextOf(functions_.startupFolder); }

std::wstring TarvikProduct::CompanyShortName() const { return TextOf(functions_.companyShortName); }

std::wstring TarvikProduct::ProductName() const { return TextOf(functions_.productName); }

std::wstring TarvikProduct::HumanReadableVersion() const {
  return TextOf(functions_.humanReadableVersion);
}

std::wstring TarvikProduct::ProductVersion() const { return TextOf(functions_.productVersion); }

}  // namespace carrovan
