#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/applied_run.h"
#include "cli/session.h"
#include "environment/product_context.h"
#include "wizard/category_checklist.h"

namespace carrovan {

// Which categories a verb shall work on: all that are offered, or those with these labels.
struct CategoryChoice {
  bool all = false;
  std::vector<std::wstring> labels;
};

// Wrong usage, after saying so, when a label is no category's.
std::optional<ExitStatus> RefuseUnknownLabels(const Session& session, const CategoryChoice& choice);

// Checks the chosen categories and no others. False, after naming each, when some are not offered;
// `place` says where not, for example "for version 2024".
bool CheckChosen(const Session& session, const CategoryChoice& choice, const std::wstring& place,
                 CategoryChecklist& checklist);

// What was done with each category of the tree.
std::vector<CategoryOutcome> OutcomesOf(const CategoryTree& tree, const std::wstring& whenChecked,
                                        const std::wstring& whenNot);

// False, after saying which ones there are, when no installed version has this year.
bool RequireInstalled(const Session& session, const ProductContext& context,
                      const std::wstring& year);

}  // namespace carrovan
