#include "package/package_description.h"

namespace carrovan {

void WritePackageDescription(const ProductContext& context, const Machine& machine,
                             std::span<const SettingCategory> checkedCategories) {
  const std::wstring& path = context.packageDescriptionPath;
  const auto write = [&](const wchar_t* section, const std::wstring& key,
                         const std::wstring& value) {
    machine.profiles.WriteValue(section, key, value, path);
  };
  // What an earlier, cancelled run wrote must not stay; usually there is nothing to remove.
  static_cast<void>(machine.files.RemoveFile(path));
  for (const SettingCategory category : checkedCategories) {
    if (const CategoryRecord* record = FindCategory(static_cast<int>(category))) {
      write(kSelectedSection, std::wstring(Text(record->label)), L"1");
    }
  }
  write(kBaseSection, kCompanyKey, context.companyShortName);
  write(kBaseSection, kInternalVersionKey, context.productVersion);
  write(kBaseSection, kReleaseVersionKey, context.humanReadableVersion);
  write(kBaseSection, kProductKey, context.productName);
}

}  // namespace carrovan
