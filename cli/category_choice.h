#pragma once

#include <optional>
#include <string>
#include <vector>

#include "environment/product_context.h"
#include "environment/setting_category.h"

namespace carrovan {

// Which categories a verb shall work on: all that are offered, or those with these labels.
struct CategoryChoice {
  bool all = false;
  std::vector<std::wstring> labels;
};

// Why the labels are wrong usage: one is no category's.
std::optional<std::wstring> RefusalOfLabels(const CategoryChoice& choice);

// The categories of a choice, or one line for each that is not offered.
struct ChosenCategories {
  CategorySet chosen;
  std::vector<std::wstring> refusals;
};

// `place` says where a category is not offered, for example "for version 2024".
ChosenCategories ChooseCategories(const CategoryChoice& choice, const CategorySet& offered,
                                  const std::wstring& place);

// Why a version cannot be worked on: no installed one has this year.
std::optional<std::wstring> RefusalOfYear(const ProductContext& context, const std::wstring& year);

}  // namespace carrovan
