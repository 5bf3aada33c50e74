#include "support/tarvik/product_facts.h"

#include <cstdint>
#include <vector>

#include "platform/profile_text.h"
#include "platform/text_encoding.h"
#include "support/zip/os_file.h"

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

}  // namespace carrovan
