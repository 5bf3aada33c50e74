#pragma once

#include <string>

#include "support/tarvik_api.h"

namespace carrovan {

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
