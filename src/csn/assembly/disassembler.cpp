#include "csn/assembly/disassembler.h"

#include <algorithm>
#include <cstdio>

namespace quorvane::csn {
namespace {

constexpr std::size_t kNameColumn = 13;     // width of the names, a blank included
constexpr std::size_t kCommentColumn = 36;  // of an instruction, offset left out

std::string NameOf(const ListingNames::Lookup& lookup, std::uint32_t number) {
    return lookup ? lookup(number) : std::string();
}

void Pad(std::string& text, std::size_t width) {
    text.append(width > text.size() ? width - text.size() : 0, ' ');
}

/// The operand at `place` in words, and in `comment` the name of what it refers to.
std::string OperandText(const Instruction& instruction, std::size_t place,
                        const ListingNames& names, std::string& comment) {
    const std::uint32_t operand = instruction.operands[place];
    const std::string number = std::to_string(operand);
    const auto called = [&](const char* what, const ListingNames::Lookup& lookup) {
        const std::string name = NameOf(lookup, operand);
        return std::string(what) + " " + number + (name.empty() ? "" : " (" + name + ")");
    };
    const auto target = [&] { return "-> " + std::to_string(instruction.Target().value_or(0)); };
    switch (instruction.info->operands[place]) {
        case OperandKind::kNone:
            return {};
        case OperandKind::kLabel:
            comment = NameOf(names.rule, operand);
            return target();
        case OperandKind::kDistance:
        case OperandKind::kBackDistance:
        case OperandKind::kJumpDistance:
            return target();
        case OperandKind::kExit:
            return target() + (instruction.Flag() ? ", not written" : "");
        case OperandKind::kAltDistance:
            return target() + (instruction.Flag() ? ", last" : "");
        case OperandKind::kField:
            comment = NameOf(names.field, operand);
            return number;
        case OperandKind::kDelimiter:
            comment = NameOf(names.field, operand >> 1);
            return std::to_string(operand >> 1) + (instruction.Flag() ? ", sized" : "");
        case OperandKind::kWidth:
            return "width " + number;
        case OperandKind::kLiteral: {
            const std::uint32_t width = (operand & 0xFU) + 1;
            std::string bits;
            for (std::uint32_t left = width; left > 0; --left) {
                bits += (operand >> 4 >> (left - 1) & 1U) != 0 ? '1' : '0';
            }
            return "bits " + bits;
        }
        case OperandKind::kTag:
            return called("tag", names.tag);
        case OperandKind::kAction:
            return called("action", names.action);
        case OperandKind::kFunction:
            return called("function", names.function);
        case OperandKind::kEncodeFunction:
            return called("encoding function", names.function);
        case OperandKind::kDecodeFunction:
            return called("decoding function", names.function);
        case OperandKind::kNumber:
        case OperandKind::kSkipBits:
            return number;
    }
    return {};  // unreachable: each kind returns
}

std::string Line(const Instruction& instruction, const ListingNames& names) {
    char offset[16];
    std::snprintf(offset, sizeof offset, "%6u  ", static_cast<unsigned>(instruction.offset));
    return offset + DisassembleInstruction(instruction, names) + "\n";
}

/// Lists from `label` on as long as `more` wants another instruction behind the one given.
template <typename More>
std::string List(std::span<const std::uint8_t> code, std::uint32_t label, const ListingNames& names,
                 More more) {
    std::string listing;
    std::uint32_t offset = label;
    while (offset < code.size()) {
        const auto instruction = DecodeInstruction(code, offset);
        if (!instruction) {
            return listing + "; incomplete instruction at " + std::to_string(offset) + "\n";
        }
        const std::string rule = NameOf(names.rule, offset);
        if (!rule.empty()) {
            listing += (listing.empty() ? "" : "\n") + rule + ":\n";
        }
        listing += Line(*instruction, names);
        if (!more(*instruction)) {
            break;
        }
        offset += instruction->size;
    }
    return listing;
}

}  // namespace

std::string DisassembleInstruction(const Instruction& instruction, const ListingNames& names) {
    std::string text(instruction.info->name);
    if (instruction.Code() == Opcode::kNop && instruction.first != 0) {
        char code[16];
        std::snprintf(code, sizeof code, " 0x%02X", static_cast<unsigned>(instruction.first));
        text += code;
    }
    std::string comment;
    const char* separator = "";
    for (std::size_t place = 0; place < instruction.operands.size(); ++place) {
        const std::string operand = OperandText(instruction, place, names, comment);
        if (!operand.empty()) {
            Pad(text, kNameColumn);
            text += separator + operand;
            separator = ", ";
        }
    }
    if (!comment.empty()) {
        Pad(text, kCommentColumn);
        text += " ; " + comment;
    }
    return text;
}

std::string Disassemble(std::span<const std::uint8_t> code, const ListingNames& names) {
    return List(code, 0, names, [](const Instruction&) { return true; });
}

std::string DisassembleRule(std::span<const std::uint8_t> code, std::uint32_t label,
                            const ListingNames& names) {
    std::uint64_t farthest = label;  // of the rule's own jumps
    return List(code, label, names, [&](const Instruction& instruction) {
        const bool returns =
            instruction.Code() == Opcode::kRet || instruction.Code() == Opcode::kRetTags;
        if (instruction.Code() != Opcode::kCall && instruction.Code() != Opcode::kLoop) {
            farthest = std::max(farthest, instruction.Target().value_or(0));
        }
        return !returns || instruction.offset < farthest;
    });
}

}  // namespace quorvane::csn
