#pragma once

// An instruction of the byte-code taken apart: what its operands mean, by opcodes.def, and where it
// leads.
//
// Tests: tests/unit/csn_byte_code_test.cpp.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "csn/byte_code.h"

namespace quorvane::csn {

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
