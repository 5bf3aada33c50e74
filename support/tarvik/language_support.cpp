#include "support/tarvik/language_support.h"

#include <algorithm>
#include <utility>

namespace carrovan {

LanguageSupport::LanguageSupport(std::wstring languageName) {
  language_.currentLanguageName = &LanguageSupport::CopyName;
  language_.name = std::move(languageName);
}

const EyeLangSupport* LanguageSupport::Object() const {
  return language_.name.empty() ? nullptr : &language_;
}

int LanguageSupport::CopyName(const EyeLangSupport* self, std::uint32_t languageId, wchar_t* buffer,
                              std::size_t capacity) {
  if (self == nullptr || buffer == nullptr || languageId != EYE_LANGUAGE_ID) return 0;
  const std::wstring& name = static_cast<const NamedLanguage*>(self)->name;
  if (name.size() >= capacity) return 0;
  std::copy_n(name.c_str(), name.size() + 1, buffer);
  return 1;
}

}  // namespace carrovan
