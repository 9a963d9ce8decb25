#pragma once

#include <string>

#include "families/family.h"

namespace quorvane::tool {

/// The family of that name; throws UsageError if there is none or this build does not describe it.
const families::Family& DescribedFamily(const std::string& name);

/// The names of all families, for people: "eps, epc or l3" with "or" for `conjunction`.
std::string FamilyNames(const std::string& conjunction);

}  // namespace quorvane::tool
