#pragma once

// The byte-code of the CSN.1 machine: opcodes and how an instruction's operands are laid out. All
// of it follows from opcodes.def; docs/byte-code.md describes it for readers of listings.
//
// Tests: tests/unit/csn_byte_code_test.cpp.

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace quorvane::csn {

enum class Opcode : std::uint8_t {
#define CSN_OPCODE(code, name, mnemonic, first, second, third, direction, effect) k##name = code,
#include "csn/opcodes.def"
#undef CSN_OPCODE
};

/// What an operand means and how it is packed. All are variable-length numbers but the last three,
/// which share the instruction's first octets.
enum class OperandKind : std::uint8_t {
    kNone,
    kLabel,           // offset from the start of the image
    kDistance,        // forward from the instruction's first octet
    kBackDistance,    // backward from the instruction's first octet
    kExit,            // distance << 1 | flag: end of a repetition, and whether a writer leaves the
                      // repetition out
    kField,           // field identifier
    kDelimiter,       // field identifier << 1 | sized
    kWidth,           // bits
    kLiteral,         // value << 4 | (width - 1)
    kTag,             // tag of the machine's tag store
    kNumber,          // as it stands
    kAction,          // index into the image's action table
    kFunction,        // index into the image's value table
    kEncodeFunction,  // the same, called when encoding
    kDecodeFunction,  // the same, called when decoding
    kJumpDistance,    // 14 bits, see JumpDistance
    kAltDistance,     // flag << 13 | 13 bits, see JumpDistance
    kSkipBits,        // 6 bits
};

struct OpcodeInfo {
    Opcode opcode;
    std::string_view name;
    std::array<OperandKind, 3> operands;
};

/// The opcode of an instruction that begins with `octet`; an undefined one counts as NOP.
[[nodiscard]] const OpcodeInfo& InfoOf(std::uint8_t octet);

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

/// One instruction as it stands in an image.
struct Instruction {
    std::uint32_t offset;
    std::uint32_t size;  // octets
    std::uint8_t first;  // its first octet: of interest if no opcode is defined for it
    const OpcodeInfo* info;
    std::array<std::uint32_t, 3> operands;  // as packed

    [[nodiscard]] Opcode Code() const { return info->opcode; }

    /// Where it may jump to, call or leave its repetition for; none if it does not jump.
    [[nodiscard]] std::optional<std::uint64_t> Target() const;

    /// The flag of ALT or of a repetition, `sized` of a delimiter.
    [[nodiscard]] bool Flag() const;

    /// Of FIELD, FIELD_LIT and the delimiters; 0 for others.
    [[nodiscard]] std::uint32_t FieldId() const;
};

/// Decodes the instruction at `offset`; nothing if it is not wholly in `code`.
[[nodiscard]] std::optional<Instruction> DecodeInstruction(std::span<const std::uint8_t> code,
                                                           std::uint32_t offset);

}  // namespace quorvane::csn
