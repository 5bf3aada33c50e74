#include "environment/version_folders.h"

#include <optional>

#include "environment/setting_category.h"
#include "platform/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kOrmaCompany[] = L"ORMA";
constexpr wchar_t kVantricCompany[] = L"Vantric";

// The release that shares the 2D drafting folder of the one before it.
constexpr wchar_t kSharingYear[] = L"2025";
constexpr wchar_t kSharedYear[] = L"2024";
constexpr wchar_t kSharedSubfolder[] = L"\\25.0";

bool SharesFolder(const ProductContext& context, const std::wstring& year) {
  return EqualsIgnoringAsciiCase(context.companyShortName, kVantricCompany) && year == kSharingYear;
}

// The 2D drafting folder of a year below a folder; nothing for an unknown company.
std::optional<std::wstring> DraftingFolder(const ProductContext& context, const std::wstring& base,
                                           const std::wstring& year) {
  if (EqualsIgnoringAsciiCase(context.companyShortName, kOrmaCompany)) {
    return base + L"\\ORMA\\ORMA CAD TVRN-INT " + year + L" (x64)";
  }
  if (!EqualsIgnoringAsciiCase(context.companyShortName, kVantricCompany)) return std::nullopt;
  const std::wstring namedYear = SharesFolder(context, year) ? kSharedYear : year;
  return base + L"\\ORMA\\ORMA CAD TVRN-INT-" + context.productName + L" " + namedYear + L" (x64)";
}

std::wstring LastTwoCharacters(const std::wstring& text) {
  return text.size() > 2 ? text.substr(text.size() - 2) : text;
}

// Name of the only subfolder; nothing when there is none or more than one.
std::optional<std::wstring> OnlySubfolder(const FileReader& files, const std::wstring& folder) {
  std::optional<std::wstring> only;
  for (FolderEntry& entry : files.ListFolder(folder)) {
    if (!entry.isFolder) continue;
    if (only) return std::nullopt;
    only = std::move(entry.name);
  }
  return only;
}

std::wstring ProductFolder(const ProductContext& context, const std::wstring& base) {
  return base + L"\\" + context.companyShortName + L"\\" + context.productName + L"\\" +
         context.productVersion;
}

}  // namespace

std::wstring LiveKey(const ProductContext& context) {
  return L"SOFTWARE\\" + context.companyShortName + L"\\" + context.productName + L" " +
         context.productVersion;
}

std::wstring RegistryRoot(const ProductContext& context) {
  return L"HKEY_CURRENT_USER\\" + LiveKey(context);
}

void BuildLocalFolder(ProductContext& context, const Machine& machine) {
  const auto base = machine.folders.LocalAppData();
  if (!base) return;
  if (const auto folder = DraftingFolder(context, *base, context.selectedVersion)) {
    context.localFolder = *folder;
  }
  if (SharesFolder(context, context.selectedVersion)) {
    context.localFolder += kSharedSubfolder;
    return;
  }
  const auto only = OnlySubfolder(machine.files, context.localFolder);
  context.localFolder += L"\\" + only.value_or(LastTwoCharacters(context.selectedVersion) + L".0");
}

void BuildStagingLocalFolder(ProductContext& context, const std::wstring& year) {
  const auto folder = DraftingFolder(context, context.stagingFolder + L"Local", year);
  if (!folder) return;
  context.stagingLocalFolder = *folder + (SharesFolder(context, year) ? kSharedSubfolder : L"");
}

void FillRegistryKeyLists(ProductContext& context) {
  context.registerKeys = {context.registryRoot};
  context.optionKeys.clear();
  for (const std::wstring_view subkey : OptionSubkeys()) {
    context.optionKeys.push_back(context.registryRoot + std::wstring(subkey));
  }
}

std::optional<std::wstring> RoamingTwin(const std::wstring& localPath,
                                        const KnownFolders& folders) {
  const auto local = folders.LocalAppData();
  const auto roaming = folders.RoamingAppData();
  if (!local || !roaming || !localPath.starts_with(*local + L"\\")) return std::nullopt;
  return *roaming + localPath.substr(local->size());
}

std::optional<std::wstring> ResetDraftingTwin(const ProductContext& context,
                                              const KnownFolders& folders) {
  const auto roaming = folders.RoamingAppData();
  if (!roaming) return std::nullopt;
  const std::wstring& year = context.humanReadableVersion;
  std::wstring folder = *roaming;
  if (context.companyShortName == kOrmaCompany) {
    folder += L"\\ORMA\\ORMA CAD TVRN-INT " + year + L" (x64)";
  }
  return folder + L"\\" + LastTwoCharacters(year) + L".0";
}

bool PrepareVersionFolders(ProductContext& context, const Machine& machine) {
  if (context.companyShortName.empty() || context.productName.empty() ||
      context.productVersion.empty()) {
    return false;
  }
  context.registryRoot = RegistryRoot(context);
  FillRegistryKeyLists(context);
  const auto roaming = machine.folders.RoamingAppData();
  const auto local = machine.folders.LocalAppData();
  if (!roaming || !local) return false;
  if (const auto folder = DraftingFolder(context, *local, context.humanReadableVersion)) {
    context.localFolder = *folder;
  }
  context.roamingRoot = ProductFolder(context, *roaming);
  context.localRoot = ProductFolder(context, *local);
  return true;
}

}  // namespace carrovan
