#pragma once

#include <string>

#include "cli/session.h"
#include "environment/product_context.h"

namespace carrovan {

// False, after saying which ones there are, when no installed version has this year.
bool RequireInstalled(const Session& session, const ProductContext& context,
                      const std::wstring& year);

}  // namespace carrovan
