#pragma once

// Decodes CSN.1 by the plan of an image: what CsnMachineRun does without a callback, several times
// as fast. Result and fields, limits of stack, records and instructions are the machine's to the
// letter; tests run both beside each other. Instead of two records a field it logs one line, as
// the occurrence and the parent of a field follow from the order of the lines.
//
// Tests: tests/unit/csn_plan_test.cpp, tests/unit/csn_plan_repetition_test.cpp.

#include <cstdint>

#include "bits/bit_reader.h"
#include "bits/outcome.h"
#include "csn/csn_program.h"
#include "csn/machine.h"

namespace quorvane::csn {

/// A line of a log: a whole field, or one that opens or closes around others.
struct CsnLogLine {
    static constexpr std::uint16_t kOpens = 0xFFFF;
    static constexpr std::uint16_t kCloses = 0xFFFE;

    std::uint16_t tag;    // not of one that closes
    std::uint16_t width;  // bits of a whole field, kOpens or kCloses
    std::int32_t bitPos;  // where it begins, or closes

    [[nodiscard]] bool Opens() const { return width == kOpens; }
    [[nodiscard]] bool Closes() const { return width == kCloses; }
    [[nodiscard]] bool IsWhole() const { return width < kCloses; }
};

/// The fields of a run in the order of the message. What is behind `count` was never set.
struct CsnLog {
    CsnLog() {}  // leaves the lines alone
    CsnLog(const CsnLog&) = delete;
    CsnLog& operator=(const CsnLog&) = delete;

    CsnLogLine lines[kMostRecords];
    std::int32_t count = 0;
};

/// Decodes `bitLength` bits of `reader` at `bitPos` by the rule at `step` of the program's plan.
/// `instructions` is what the run may take, those that a step stands for counted one by one.
/// Returns the count of bits passed, or kSyntaxError; `log` has the fields that were accepted
/// either way. More than `bitLength` were passed if a part says that it is longer than what is
/// left.
bits::Outcome RunPlan(const CsnProgram& program, std::uint32_t step, std::uint16_t rootTag,
                      const bits::BitReader& reader, std::int32_t bitPos, std::int32_t bitLength,
                      std::uint64_t instructions, CsnLog& log);

}  // namespace quorvane::csn
