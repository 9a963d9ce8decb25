#pragma once

// Whether the address sanitizer watches: tests that repeat much take less of it then.

#include "bits/poison.h"

namespace quorvane::test {

inline constexpr bool kSanitized = bits::kPoisons;

}  // namespace quorvane::test
