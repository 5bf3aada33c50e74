#pragma once

#include <filesystem>
#include <string>

#include "support/tarvik_api.h"

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

// The object behind EyeGetLangSupport.
class LanguageSupport {
 public:
  explicit LanguageSupport(std::wstring languageName);
  LanguageSupport(const LanguageSupport&) = delete;
  LanguageSupport& operator=(const LanguageSupport&) = delete;

  // Null when there is no language name.
  const EyeLangSupport* Object() const;

 private:
  struct NamedLanguage : EyeLangSupport {
    std::wstring name;
  };

  static int CopyName(const EyeLangSupport* self, std::uint32_t languageId, wchar_t* buffer,
                      std::size_t capacity);

  NamedLanguage language_;
};

}  // namespace carrovan
