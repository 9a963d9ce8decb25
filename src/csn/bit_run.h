#pragma once

// Fixed bits and padding, many at a look.
//
// Tests: tests/unit/csn_plan_test.cpp, tests/unit/csn_plan_repetition_test.cpp.

#include <algorithm>
#include <bit>
#include <cstdint>

#include "bits/bit_reader.h"
#include "csn/plan.h"

namespace quorvane::csn {

/// How many bits from `position` on, up to `most`, are those that steps `op` ask for: fixed bits or
/// padding.
inline std::int32_t RunOf(PlanOp op, const bits::BitReader& reader, std::int32_t position,
                          std::int32_t most) {
    constexpr std::uint64_t kPadding = bits::kFillOctet * 0x0101010101010101U;
    const std::uint64_t wanted = op == PlanOp::kBit0   ? 0
                                 : op == PlanOp::kBit1 ? ~std::uint64_t{0}
                                 : op == PlanOp::kBitL ? kPadding
                                                       : ~kPadding;
    std::int32_t run = 0;
    while (run < most) {
        const std::int32_t before = (position + run) & 7;
        const std::uint64_t others = (reader.ReadWindow(position + run) ^ wanted) << before;
        const std::int32_t same = std::min(std::countl_zero(others), 64 - before);
        run += same;
        if (same < 64 - before) {
            break;
        }
    }
    return std::min(run, most);
}

}  // namespace quorvane::csn
