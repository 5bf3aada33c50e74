#include "support/tarvik/product_facts.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "support/files/os_file.h"
#include "text/profile_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

// Generous for a handful of lines; a longer file is not read to its end.
constexpr std::size_t kMostBytes = std::size_t{1} << 20;

std::wstring FileText(const std::filesystem::path& path) {
  OsFile file;
  if (file.OpenToRead(path) != FileStatus::kDone) return L"";
  std::vector<std::uint8_t> bytes(kMostBytes);
  bytes.resize(file.ReadAt(0, bytes).value_or(0));
  return DecodeText(bytes).text;
}

}  // namespace

ProductFacts ReadProductFacts(const std::filesystem::path& iniFile) {
  const std::wstring text = FileText(iniFile);
  const auto fact = [&](const wchar_t* key) { return ProfileValue(text, L"Product", key); };
  ProductFacts facts;
  facts.companyShortName = fact(L"CompanyShortName");
  facts.productName = fact(L"ProductName");
  facts.productVersion = fact(L"ProductVersion");
  facts.humanReadableVersion = fact(L"HumanReadableVersion");
  facts.startupFolder = fact(L"StartupFolder");
  facts.language = fact(L"Language");
  return facts;
}

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
