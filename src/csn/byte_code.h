#pragma once

// The byte-code of the CSN.1 machine: opcodes, and how operands are packed. The opcodes follow from
// opcodes.def; docs/byte-code.md describes it for readers of listings.
//
// Tests: tests/unit/csn_byte_code_test.cpp.

#include <array>
#include <cstdint>

namespace quorvane::csn {

enum class Opcode : std::uint8_t {
#define CSN_OPCODE(code, name, mnemonic, first, second, third, direction, effect) k##name = code,
#include "csn/opcodes.def"
#undef CSN_OPCODE
};

/// The code of `octet`'s form, which need not be a defined one.
[[nodiscard]] constexpr Opcode OpcodeOf(std::uint8_t octet) {
    return static_cast<Opcode>(octet < 0x40 ? octet : octet & 0xC0);
}

inline constexpr std::uint32_t kAltFlag = 0x2000;
inline constexpr std::uint32_t kMostJump = 0xFFF;  // farthest target without a scale

/// The target of a jump at offset `base` with the distance code `code`: bits 13 and 14 choose a
/// scale, the low 12 bits count granules of 1, 8, 16 or 32 octets from the end of the range before.
/// A target beyond the first range is rounded up to its granule.
[[nodiscard]] constexpr std::uint32_t JumpDistance(std::uint32_t base, std::uint32_t code) {
    constexpr std::array<std::uint32_t, 4> kStart = {0, 4096, 36864, 102400};
    constexpr std::array<std::uint32_t, 4> kGranule = {1, 8, 16, 32};
    const std::uint32_t scale = code >> 13 & 3U;
    const std::uint32_t granule = kGranule[scale];
    const std::uint32_t target = base + kStart[scale] + granule * (code & 0xFFFU);
    return (target + granule - 1) & ~(granule - 1);
}

/// Reads a variable-length operand at `offset` of `code` and moves `offset` behind it: groups of 7
/// bits, most significant first, as long as bit 7 is set. The fifth octet gives the last 4 bits.
[[nodiscard]] inline std::uint32_t ReadOperand(const std::uint8_t* code, std::uint32_t& offset) {
    std::uint32_t octet = code[offset++];
    std::uint32_t value = octet & 0x7FU;
    for (int group = 1; (octet & 0x80U) != 0 && group < 5; ++group) {
        octet = code[offset++];
        value = group < 4 ? value << 7 | (octet & 0x7FU) : value << 4 | (octet & 0x0FU);
    }
    return value;
}

}  // namespace quorvane::csn
