#include "csn/byte_code.h"

#include <algorithm>
#include <cstdio>

namespace quorvane::csn {
namespace {

constexpr OpcodeInfo kOpcodes[] = {
#define CSN_OPCODE(code, name, mnemonic, first, second, third, direction, effect) \
    {Opcode::k##name,                                                             \
     mnemonic,                                                                    \
     {OperandKind::k##first, OperandKind::k##second, OperandKind::k##third},      \
     Direction::k##direction,                                                     \
     effect},
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

std::string_view OperandName(OperandKind kind) {
    switch (kind) {
        case OperandKind::kNone:
            return "";
        case OperandKind::kLabel:
            return "label";
        case OperandKind::kDistance:
            return "distance";
        case OperandKind::kBackDistance:
            return "distance back";
        case OperandKind::kExit:
            return "exit and flag";
        case OperandKind::kField:
            return "field";
        case OperandKind::kDelimiter:
            return "field and sized";
        case OperandKind::kWidth:
            return "width";
        case OperandKind::kLiteral:
            return "value and width";
        case OperandKind::kTag:
            return "tag";
        case OperandKind::kNumber:
            return "n";
        case OperandKind::kAction:
            return "action";
        case OperandKind::kFunction:
            return "function";
        case OperandKind::kEncodeFunction:
            return "function encoding";
        case OperandKind::kDecodeFunction:
            return "function decoding";
        case OperandKind::kJumpDistance:
            return "distance, 14 bits";
        case OperandKind::kAltDistance:
            return "flag and distance, 14 bits";
        case OperandKind::kSkipBits:
            return "n, 6 bits";
    }
    return "";
}

std::string_view DirectionName(Direction direction) {
    switch (direction) {
        case Direction::kBoth:
            return "both";
        case Direction::kDecode:
            return "decoding";
        case Direction::kEncode:
            return "encoding";
    }
    return "";
}

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

std::span<const OpcodeInfo> AllOpcodes() {
    return kOpcodes;
}

const OpcodeInfo& InfoOf(std::uint8_t octet) {
    constexpr std::size_t kForms = std::size(kOpcodes) - 3;
    static_assert(kOpcodes[kForms].opcode == Opcode::kJmp);
    static_assert(kOpcodes[kForms + 1].opcode == Opcode::kAlt);
    static_assert(kOpcodes[kForms + 2].opcode == Opcode::kSkip);
    return octet < 0x40 ? kOpcodes[kPlain[octet]] : kOpcodes[kForms + (octet >> 6) - 1U];
}

std::string OpcodeTable() {
    std::string table =
        "| Code | Name | Operands | Direction | Effect |\n"
        "|---|---|---|---|---|\n";
    for (const OpcodeInfo& info : kOpcodes) {
        char code[8];
        std::snprintf(code, sizeof code, "0x%02X", static_cast<unsigned>(info.opcode));
        table.append("| ").append(code).append(" | `").append(info.name).append("` |");
        std::string_view separator = " ";
        for (const OperandKind kind : info.operands) {
            if (kind != OperandKind::kNone) {
                table.append(separator).append(OperandName(kind));
                separator = "; ";
            }
        }
        table.append(" | ").append(DirectionName(info.direction));
        table.append(" | ").append(info.effect).append(" |\n");
    }
    return table;
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
        default:
            return false;
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
