#pragma once

// How an outcome shows in a failed expectation.

#include <ostream>

#include "bits/outcome.h"

namespace quorvane::bits {

inline void PrintTo(const Outcome& outcome, std::ostream* out) {
    if (outcome.Failed()) {
        *out << "code " << static_cast<std::int32_t>(outcome.Error());
    } else {
        *out << outcome.Bits() << " bits";
    }
}

}  // namespace quorvane::bits
