#include "csn/assembly/verifier_numbers.h"

#include <algorithm>

#include "csn/machine.h"

namespace quorvane::csn {
namespace {

std::uint32_t OfTag(std::uint32_t tag, const TagBounds& bounds) {
    const auto bound = bounds.find(tag);
    return bound == bounds.end() ? kNoBound : bound->second;
}

/// As LoopEnter cuts the counts.
Iterations Fixed(std::uint32_t least, std::uint32_t most) {
    least &= 0x3FFFU;
    most &= 0x7FFFU;
    return {most == 0 ? 0 : least, most == kOpenEndedCount ? kNoBound : most};
}

}  // namespace

std::optional<std::uint32_t> BitsTaken(const Instruction& instruction) {
    switch (instruction.Code()) {
        case Opcode::kBit0:
        case Opcode::kBit1:
        case Opcode::kBitH:
        case Opcode::kBitL:
            return 1;
        case Opcode::kLit:
            return (instruction.operands[0] & 0xFU) + 1;
        case Opcode::kFieldLit:
            return (instruction.operands[1] & 0xFU) + 1;
        case Opcode::kSkip:
            return instruction.operands[0];
        case Opcode::kField:
            return instruction.operands[1];
        case Opcode::kNop:
        case Opcode::kFail:
        case Opcode::kBegin:
        case Opcode::kEnd:
        case Opcode::kEndTag:
        case Opcode::kAlt:
        case Opcode::kJmp:
        case Opcode::kPop:
            return 0;
        default:
            return std::nullopt;
    }
}

std::uint32_t MostBetween(const InstructionMap& instructions, std::uint32_t begin,
                          std::uint32_t end) {
    std::uint64_t bits = 0;
    for (auto place = instructions.find(begin); place->first < end; ++place) {
        const std::optional<std::uint32_t> taken = BitsTaken(place->second);
        if (!taken) {
            return kNoBound;
        }
        bits += *taken;
    }
    return bits < 32 ? (1U << bits) - 1 : kNoBound;
}

bool Weaken(TagBounds& bounds, const TagBounds& other) {
    bool changed = false;
    for (auto& [tag, most] : bounds) {
        const std::uint32_t theirs = OfTag(tag, other);
        changed = changed || theirs > most;
        most = std::max(most, theirs);
    }
    return changed;
}

void AddTag(const VerifierInput& input, TagBounds& bounds, std::uint32_t tag, std::uint32_t most) {
    for (const VerifierAction& action : input.actions) {
        // Going back does not undo a change, so that one may have been made at any time.
        if (action.effect == VerifierAction::Effect::kChanges && action.tag == tag) {
            most = std::max(most, action.most);
        }
    }
    bounds[tag] = most < kOpenEndedCount ? most : kNoBound;
}

Iterations IterationsOf(const VerifierInput& input, const Instruction& repetition,
                        const TagBounds& bounds) {
    const auto& operands = repetition.operands;
    const auto ofFunction = [&](std::uint32_t index) {
        const VerifierBound& bound = input.functions[index];
        const std::uint32_t number = bound.tag ? OfTag(*bound.tag, bounds) : 0;
        const std::int64_t most = bound.offset + std::int64_t{bound.factor} * number;
        return number == kNoBound || most >= kOpenEndedCount
                   ? kNoBound
                   : static_cast<std::uint32_t>(std::max<std::int64_t>(most, 0));
    };
    switch (repetition.Code()) {
        case Opcode::kRep:
            return Fixed(operands[1], operands[1]);
        case Opcode::kRepRange:
            return Fixed(operands[1], operands[2]);
        case Opcode::kRepBit:
            return {0, 1};
        case Opcode::kRepTag:
            return {0, OfTag(operands[1], bounds)};
        case Opcode::kRepFn:
            return {0, ofFunction(operands[1])};
        case Opcode::kRepFn2:
            return {0, std::max(ofFunction(operands[1]), ofFunction(operands[2]))};
        case Opcode::kRepMore:
            return {1, kNoBound};
        default:
            return {};
    }
}

}  // namespace quorvane::csn
