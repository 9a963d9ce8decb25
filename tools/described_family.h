#pragma once

#include <string>

#include "families/family.h"

namespace quorvane::tool {

/// The family of that name; throws UsageError if there is none or it is not described yet.
const families::Family& DescribedFamily(const std::string& name);

}  // namespace quorvane::tool
