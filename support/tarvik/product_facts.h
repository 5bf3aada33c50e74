#pragma once

#include <filesystem>
#include <string>

namespace carrovan {

// What the library reports of the product; a fact that is not known is an empty text.
struct ProductFacts {
  std::wstring companyShortName;
  std::wstring productName;
  std::wstring productVersion;
  std::wstring humanReadableVersion;
  std::wstring startupFolder;
  std::wstring language;  // "en-us"
};

// Reads section [Product] of an initialization file, whose keys are CompanyShortName, ProductName,
// ProductVersion, HumanReadableVersion, StartupFolder and Language. Nothing is known when there is
// no such file.
ProductFacts ReadProductFacts(const std::filesystem::path& iniFile);

}  // namespace carrovan
