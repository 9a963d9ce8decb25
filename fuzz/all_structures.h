#pragma once

// The CSN.1 structures of all families, in an order that inputs number them by.

#include <cstdint>
#include <vector>

#include "csn/csn_program.h"
#include "families/family.h"

namespace quorvane::fuzz {

struct Structure {
    const csn::CsnStructure* csn;
    const families::Family* family;
    std::uint16_t type;
    bool isLossy;  // see csn_limits.h
};

/// The same list at every call.
const std::vector<Structure>& AllStructures();

}  // namespace quorvane::fuzz
