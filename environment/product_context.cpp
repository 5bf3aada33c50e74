#include "environment/product_context.h"

#include "environment/installed_versions.h"
#include "environment/version_folders.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

bool IsLowerLetter(wchar_t c) { return c >= L'a' && c <= L'z'; }
bool IsLetter(wchar_t c) { return IsLowerLetter(c) || (c >= L'A' && c <= L'Z'); }

// The installation keeps its program folder and "AppData" side by side, two levels above the
// executables' own folder counted as the shell counts: a trailing backslash is one level.
std::wstring InstallationAppDataFolder(const std::wstring& startupFolder) {
  return WithTrailingBackslash(RemoveFileSpec(RemoveFileSpec(startupFolder))) + L"AppData";
}

std::vector<std::wstring> LanguageFoldersIn(const FileReader& files, const std::wstring& folder) {
  std::vector<std::wstring> languages;
  for (const FolderEntry& entry : ListFolder(files, folder)) {
    if (entry.isFolder && IsLanguageTag(entry.name)) languages.push_back(entry.name);
  }
  return languages;
}

// False for a company that makes no product this program knows.
bool SetBrand(ProductContext& context) {
  const bool vantric = EqualsIgnoringAsciiCase(context.companyShortName, L"Vantric");
  if (!vantric && !EqualsIgnoringAsciiCase(context.companyShortName, L"ORMA")) return false;
  context.brandFlag = vantric ? 1 : 0;
  return true;
}

std::wstring DefaultCustomizationFolder(const ProductContext& context) {
  // The shell's removal works on a buffer of fixed size and fails on anything longer.
  if (context.startupFolder.size() >= kFixedPathBuffer) return {};
  const std::wstring base = WithTrailingBackslash(RemoveFileSpec(context.startupFolder));
  return base +
         (context.brandFlag == 1 ? L"AppData\\Customization" : L"AppData\\zh-cn\\Customization");
}

}  // namespace

bool IsLanguageTag(std::wstring_view name) {
  if (name.size() != 2 && name.size() != 5) return false;
  if (!IsLowerLetter(name[0]) || !IsLowerLetter(name[1])) return false;
  return name.size() == 2 || (name[2] == L'-' && IsLetter(name[3]) && IsLetter(name[4]));
}

bool LoadProductContext(ProductContext& context, const Machine& machine) {
  const ProductIdentity& product = *machine.product;
  context.startupFolder = product.StartupFolder();
  context.installLanguages =
      LanguageFoldersIn(*machine.files, InstallationAppDataFolder(context.startupFolder));
  context.companyShortName = product.CompanyShortName();
  context.productName = product.ProductName();
  context.humanReadableVersion = product.HumanReadableVersion();
  context.productVersion = product.ProductVersion();
  if (!SetBrand(context)) return false;
  context.selectedVersion = context.humanReadableVersion;
  context.defaultCustomizationFolder = DefaultCustomizationFolder(context);
  BuildStagingLocalFolder(context, context.humanReadableVersion);
  return true;
}

void SelectVersion(ProductContext& context, const std::wstring& yearForm) {
  context.productVersion = InternalForm(yearForm);
  context.humanReadableVersion = YearForm(context.productVersion);
  context.selectedVersion = context.humanReadableVersion;
}

}  // namespace carrovan
