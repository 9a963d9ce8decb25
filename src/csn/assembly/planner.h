#pragma once

// Makes the plan of an image, see csn/plan.h.
//
// Tests: tests/unit/csn_plan_test.cpp.

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "csn/plan.h"

namespace quorvane::csn {

struct Plan {
    std::vector<PlanStep> steps;
    std::map<std::uint32_t, std::uint16_t> stepAt;  // by offset in the image

    /// Why there is none, with the offset; empty if there is one.
    std::string error;
    std::uint32_t errorOffset = 0;
};

/// The plan of an image that is proven. One that is too large for the plan's 16 bits has none.
[[nodiscard]] Plan MakePlan(std::span<const std::uint8_t> code,
                            std::span<const std::uint16_t> fieldTable);

}  // namespace quorvane::csn
