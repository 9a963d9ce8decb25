#pragma once

// Widths of the UTRAN cell information fields. Descriptions declare them as p and q, as the clauses
// of TS 44.018 and TS 44.060 call them.
//
// Tests: tests/unit/cell_information_test.cpp.

#include <cstdint>

namespace quorvane::families {

/// Bits of the UTRAN FDD cell information field for `cells` cells, 1 to 16; 0 for other counts.
/// TS 44.018, table 9.1.54.1a.
[[nodiscard]] std::uint32_t FddCellInfoBits(std::int32_t cells);

/// Bits of the UTRAN TDD cell information field for `cells` cells, 1 to 20; 0 for other counts.
/// TS 44.018, table 9.1.54.1b.
[[nodiscard]] std::uint32_t TddCellInfoBits(std::int32_t cells);

}  // namespace quorvane::families
