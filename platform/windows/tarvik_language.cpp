#include "platform/windows/tarvik_language.h"

#include <array>

#include "platform/windows/module_loading.h"
#include "platform/windows/tarvik_path.h"
#include "support/tarvik_api.h"

namespace carrovan {

std::optional<std::wstring> CurrentTarvikLanguage() {
  ModuleHandle library;
  if (LoadModule(TarvikPath(), library) != kSystemOk) return std::nullopt;
  const auto getLanguage = reinterpret_cast<EyeGetLangSupportFunction>(
      reinterpret_cast<void*>(GetProcAddress(library.Get(), "EyeGetLangSupport")));
  const EyeLangSupport* language = getLanguage != nullptr ? getLanguage() : nullptr;
  if (language == nullptr) return std::nullopt;
  std::array<wchar_t, 20> name{};
  const int done =
      language->currentLanguageName(language, EYE_LANGUAGE_ID, name.data(), name.size());
  if (done == 0) return std::nullopt;
  name.back() = L'\0';
  return name.data();
}

}  // namespace carrovan
