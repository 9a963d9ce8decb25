#pragma once

// CSN.1 decoded by the machine and its field records, instruction by instruction: what judges the
// plans and the log that the library decodes with.

#include <string>

#include "csn/csn_record.h"
#include "csn/runner.h"

namespace quorvane::csn::test {

/// What DecodeCsn does, by CsnMachineRun.
bits::Outcome DecodePlainly(const CsnStructure& structure, const bits::BitReader& reader,
                            bits::Arena& arena, std::int32_t bitPos, std::int32_t bitLength,
                            bits::Cell& cell);

/// Runs the plan from `step` on over what a machine that was set up is to decode, and then the
/// machine. Empty, or in what the two differ. `result` is the machine's.
std::string DifferenceOfPlan(CsnMachine& machine, std::uint32_t step, bits::Outcome& result);

}  // namespace quorvane::csn::test
