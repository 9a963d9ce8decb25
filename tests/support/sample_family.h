#pragma once

// The tests' own family, compiled from tests/families/sample.qd and sample.csn1.

#include <vector>

#include "families/family.h"

namespace quorvane::families {

extern const Family kSampleFamily;

/// The described families and the sample.
inline std::vector<const Family*> AllFamiliesAndTheSample() {
    const auto described = AllFamilies();
    std::vector<const Family*> all(described.begin(), described.end());
    all.push_back(&kSampleFamily);
    return all;
}

}  // namespace quorvane::families
