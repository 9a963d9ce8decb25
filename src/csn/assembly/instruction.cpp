#include "csn/assembly/instruction.h"

#include <cstddef>
#include <iterator>

namespace quorvane::csn {
namespace {

constexpr OpcodeInfo kOpcodes[] = {
#define CSN_OPCODE(code, name, mnemonic, first, second, third, direction, effect) \
    {Opcode::k##name,                                                             \
     mnemonic,                                                                    \
     {OperandKind::k##first, OperandKind::k##second, OperandKind::k##third}},
#include "csn/opcodes.def"
#undef CSN_OPCODE
};

// Index into kOpcodes by plain opcode; those that are not defined stay at NOP's, which is 0.
constexpr std::array<std::uint8_t, 0x40> kPlain = [] {
    std::array<std::uint8_t, 0x40> index{};
    for (std::size_t place = 0; place < std::size(kOpcodes); ++place) {
        const auto code = static_cast<std::size_t>(kOpcodes[place].opcode);
        if (code < index.size()) {
            index[code] = static_cast<std::uint8_t>(place);
        }
    }
    return index;
}();

static_assert(kOpcodes[0].opcode == Opcode::kNop);

/// ReadOperand for code that nobody has checked yet.
bool ReadChecked(std::span<const std::uint8_t> code, std::uint32_t& offset, std::uint32_t& value) {
    constexpr std::uint32_t kMostOctets = 5;
    for (std::uint32_t octet = 0; octet < kMostOctets; ++octet) {
        if (offset + octet >= code.size()) {
            return false;
        }
        if ((code[offset + octet] & 0x80U) == 0) {
            break;
        }
    }
    value = ReadOperand(code.data(), offset);
    return true;
}

}  // namespace

const OpcodeInfo& InfoOf(std::uint8_t octet) {
    constexpr std::size_t kForms = std::size(kOpcodes) - 3;
    static_assert(kOpcodes[kForms].opcode == Opcode::kJmp);
    static_assert(kOpcodes[kForms + 1].opcode == Opcode::kAlt);
    static_assert(kOpcodes[kForms + 2].opcode == Opcode::kSkip);
    return octet < 0x40 ? kOpcodes[kPlain[octet]] : kOpcodes[kForms + (octet >> 6) - 1U];
}

std::optional<Instruction> DecodeInstruction(std::span<const std::uint8_t> code,
                                             std::uint32_t offset) {
    if (offset >= code.size()) {
        return std::nullopt;
    }
    Instruction result{offset, 0, code[offset], &InfoOf(code[offset]), {}};
    std::uint32_t next = offset + 1;
    for (std::size_t place = 0; place < result.operands.size(); ++place) {
        std::uint32_t& operand = result.operands[place];
        switch (result.info->operands[place]) {
            case OperandKind::kNone:
                break;
            case OperandKind::kSkipBits:
                operand = result.first & 0x3FU;
                break;
            case OperandKind::kJumpDistance:
            case OperandKind::kAltDistance:
                if (next >= code.size()) {
                    return std::nullopt;
                }
                operand = (result.first & 0x3FU) << 8 | code[next++];
                break;
            default:
                if (!ReadChecked(code, next, operand)) {
                    return std::nullopt;
                }
        }
    }
    result.size = next - offset;
    return result;
}

std::optional<std::uint64_t> Instruction::Target() const {
    const std::uint64_t base = offset;
    switch (info->operands[0]) {
        case OperandKind::kLabel:
            return operands[0];
        case OperandKind::kDistance:
            return base + operands[0];
        case OperandKind::kBackDistance:
            return base - operands[0];  // before the image: beyond any size
        case OperandKind::kExit:
            return base + (operands[0] >> 1);
        case OperandKind::kJumpDistance:
            return JumpDistance(offset, operands[0]);
        case OperandKind::kAltDistance:
            return JumpDistance(offset, operands[0] & (kAltFlag - 1));
        default:
            return std::nullopt;
    }
}

bool Instruction::Flag() const {
    switch (info->operands[0]) {
        case OperandKind::kExit:
        case OperandKind::kDelimiter:
            return (operands[0] & 1U) != 0;
        case OperandKind::kAltDistance:
            return (operands[0] & kAltFlag) != 0;
        default:           // unreachable: others have no flag, and nobody asks
            return false;  // unreachable: the same
    }
}

std::uint32_t Instruction::FieldId() const {
    switch (info->operands[0]) {
        case OperandKind::kField:
            return operands[0];
        case OperandKind::kDelimiter:
            return operands[0] >> 1;
        default:
            return 0;
    }
}

}  // namespace quorvane::csn
