#include "merge/element_names.h"

#include <algorithm>
#include <array>

#include "merge/integer_text.h"

namespace carrovan {
namespace {

constexpr std::array<std::string_view, 10> kValueElementNames = {
    "Size",          "Major",
    "Minor",         "ID",
    "Name",          "Style",
    "UserDefine",    "UserDefinePanelID",
    "CollapseOrder", "IsAutoFindPanelIcon"};

}  // namespace

std::string_view ElementBaseName(std::string_view name) { return name.substr(0, name.rfind('-')); }

std::optional<std::int32_t> SuffixNumber(std::string_view name) {
  const std::size_t hyphen = name.rfind('-');
  return ReadWholeInteger(hyphen == std::string_view::npos ? name : name.substr(hyphen + 1));
}

bool IsValueElementName(std::string_view name) {
  return std::find(kValueElementNames.begin(), kValueElementNames.end(), name) !=
         kValueElementNames.end();
}

ContainerKind ContainerKindOf(std::string_view name) {
  if (!name.starts_with("Eye")) return ContainerKind::kNone;
  const std::string_view base = ElementBaseName(name);
  if (base == "EyeCustomRibbonPanel") return ContainerKind::kPanel;
  if (base == "EyeCustomRibbonCategory") return ContainerKind::kCategory;
  if (base == "EyeRibbonState") return ContainerKind::kState;
  return ContainerKind::kNone;
}

bool HoldsNumberedContainers(std::string_view name) {
  const ContainerKind kind = ContainerKindOf(name);
  return kind == ContainerKind::kState || kind == ContainerKind::kCategory;
}

}  // namespace carrovan
