#include "package/package_description.h"

#include <algorithm>
#include <array>
#include <utility>

#include "package/staging_folder.h"

namespace carrovan {
namespace {

using BaseValue = std::pair<const wchar_t*, const std::wstring*>;

// In the order in which they are written.
std::array<BaseValue, 4> BaseValues(const ProductContext& context) {
  return {BaseValue{kCompanyKey, &context.companyShortName},
          {kInternalVersionKey, &context.productVersion},
          {kReleaseVersionKey, &context.humanReadableVersion},
          {kProductKey, &context.productName}};
}

}  // namespace

void WritePackageDescription(const ProductContext& context, const Machine& machine,
                             const CategorySet& chosen) {
  const std::wstring& path = context.packageDescriptionPath;
  const auto write = [&](const wchar_t* section, const std::wstring& key,
                         const std::wstring& value) {
    machine.profiles->WriteValue(section, key, value, path);
  };
  // What an earlier, cancelled run wrote must not stay; usually there is nothing to remove.
  static_cast<void>(ClearPath(*machine.files, path));
  for (const SettingCategory category : chosen) {
    if (const CategoryRecord* record = FindCategory(static_cast<int>(category))) {
      write(kSelectedSection, std::wstring(Text(record->label)), L"1");
    }
  }
  for (const auto& [key, value] : BaseValues(context)) write(kBaseSection, key, *value);
}

bool IsDescriptionWritten(const ProductContext& context, const ProfileReader& profiles,
                          const CategorySet& chosen) {
  const auto reads = [&](const wchar_t* section, const std::wstring& key,
                         const std::wstring& value) {
    return profiles.ReadValue(section, key, context.packageDescriptionPath) == value;
  };
  for (const CategoryRecord& record : CategoryTable()) {
    const wchar_t* mark = chosen.contains(record.category) ? L"1" : L"";
    if (!reads(kSelectedSection, std::wstring(Text(record.label)), mark)) {
      return false;
    }
  }
  return std::ranges::all_of(BaseValues(context), [&](const BaseValue& base) {
    return reads(kBaseSection, base.first, *base.second);
  });
}

}  // namespace carrovan
