#pragma once

// Listings of byte-code: one line an instruction, with its offset, its operands in readable form
// and what they refer to. A listing depends on nothing but the image and the names given, so that
// it can be compared with one that was kept.
//
//   148  FIELD        118, width 8            ; Delay_class
//   154  ALT          -> 185
//   156  BEGIN        124                     ; ext
//
// Tests: tests/unit/csn_disassembler_test.cpp.

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "csn/assembly/instruction.h"

namespace quorvane::csn {

/// Names for the numbers of an image. Each may be left out, and an empty answer means that there is
/// none.
struct ListingNames {
    using Lookup = std::function<std::string(std::uint32_t)>;

    Lookup field;     // by field identifier
    Lookup rule;      // by offset of a rule's first instruction
    Lookup action;    // by index
    Lookup function;  // by index of a value function
    Lookup tag;       // by number
};

/// One instruction without offset and line end.
[[nodiscard]] std::string DisassembleInstruction(const Instruction& instruction,
                                                 const ListingNames& names = {});

/// The whole image. An octet that begins no complete instruction ends the listing with a line that
/// says so.
[[nodiscard]] std::string Disassemble(std::span<const std::uint8_t> code,
                                      const ListingNames& names = {});

/// The rule at `label`: up to the return behind which none of its own jumps lead.
[[nodiscard]] std::string DisassembleRule(std::span<const std::uint8_t> code, std::uint32_t label,
                                          const ListingNames& names = {});

}  // namespace quorvane::csn
