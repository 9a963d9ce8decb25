#include "csn/assembly/planner.h"

#include <cstddef>
#include <set>

#include "csn/assembly/instruction.h"
#include "csn/runner.h"

namespace quorvane::csn {
namespace {

constexpr std::uint32_t kMostOperand = 0xFFFF;
constexpr std::uint32_t kMostFieldWidth = CsnLogLine::kCloses - 1;

class Planner {
  public:
    Planner(std::span<const std::uint8_t> code, std::span<const std::uint16_t> fieldTable)
        : code_(code), fieldTable_(fieldTable) {}

    Plan Run() {
        std::size_t steps = 0;
        for (std::uint32_t offset = 0; offset < code_.size();) {
            const auto instruction = DecodeInstruction(code_, offset);
            if (!instruction) {
                Refuse(offset, "an instruction is cut off");
                return std::move(plan_);
            }
            plan_.stepAt[offset] = static_cast<std::uint16_t>(steps);
            instructions_.push_back(*instruction);
            steps += 1 + ExtraSteps(instruction->Code());
            if (instruction->FieldId() != 0) {
                fieldIds_.insert(instruction->FieldId());
            }
            offset += instruction->size;
        }
        if (steps > kMostOperand) {
            Refuse(0, "the image has more than 65535 instructions");
            return std::move(plan_);
        }
        for (index_ = 0; index_ < instructions_.size(); ++index_) {
            Add(instructions_[index_]);
        }
        // From the end on, so that what is behind a step is ready.
        for (std::size_t index = plan_.steps.size(); index-- > 0;) {
            Join(index);
        }
        return std::move(plan_);
    }

  private:
    static std::size_t ExtraSteps(Opcode opcode) {
        return opcode == Opcode::kValEq || opcode == Opcode::kValRange ? 1 : 0;
    }

    void Refuse(std::uint32_t offset, std::string reason) {
        if (plan_.error.empty()) {
            plan_.error = std::move(reason);
            plan_.errorOffset = offset;
        }
    }

    std::uint16_t Small(std::uint32_t number) {
        if (number > kMostOperand) {
            Refuse(instructions_[index_].offset,
                   "the operand " + std::to_string(number) + " is above 65535");
        }
        return static_cast<std::uint16_t>(number);
    }

    /// The step of a jump's target, which is an instruction in a proven image.
    std::uint16_t Target(const Instruction& instruction) {
        const auto found = plan_.stepAt.find(static_cast<std::uint32_t>(*instruction.Target()));
        if (found == plan_.stepAt.end()) {
            Refuse(instruction.offset, "its target is no instruction");
            return 0;
        }
        return found->second;
    }

    /// The instruction `ahead` of the current one, or null.
    [[nodiscard]] const Instruction* Next(std::size_t ahead) const {
        return index_ + ahead < instructions_.size() ? &instructions_[index_ + ahead] : nullptr;
    }
    [[nodiscard]] bool IsPopAt(std::uint64_t offset) const {
        return offset < code_.size() &&
               OpcodeOf(code_[static_cast<std::size_t>(offset)]) == Opcode::kPop;
    }

    void Add(const Instruction& instruction) { plan_.steps.push_back(StepOf(instruction)); }

    /// Has a step take those that follow it, too.
    void Join(std::size_t index);

    PlanStep StepOf(const Instruction& instruction);
    PlanStep Alternative(const Instruction& instruction);
    PlanStep Field(const Instruction& instruction);
    PlanStep Repeat(PlanOp op, const Instruction& instruction, std::uint32_t b, std::uint32_t c);
    PlanStep Compare(const Instruction& instruction, std::uint32_t low, std::uint32_t high);

    std::span<const std::uint8_t> code_;
    std::span<const std::uint16_t> fieldTable_;
    std::vector<Instruction> instructions_;
    std::set<std::uint32_t> fieldIds_;
    std::size_t index_ = 0;  // of the current instruction
    Plan plan_;
};

PlanStep Simple(PlanOp op, std::uint16_t a = 0) {
    return {op, 0, a, 0, 0};
}

std::uint8_t WidthOf(std::uint32_t literal) {
    return static_cast<std::uint8_t>((literal & 0xFU) + 1);
}

PlanStep Planner::StepOf(const Instruction& instruction) {
    const auto& operands = instruction.operands;
    switch (instruction.Code()) {
        case Opcode::kNop:
        case Opcode::kActEnc:
        case Opcode::kSkipEnc:
            return Simple(PlanOp::kNone);
        case Opcode::kFail:
            return Simple(PlanOp::kBack);
        case Opcode::kBit0:
            return Simple(PlanOp::kBit0);
        case Opcode::kBit1:
            return Simple(PlanOp::kBit1);
        case Opcode::kBitH:
            return Simple(PlanOp::kBitH);
        case Opcode::kBitL:
            return Simple(PlanOp::kBitL);
        case Opcode::kPop:
            return Simple(PlanOp::kPop);
        case Opcode::kExclude:
            return Simple(PlanOp::kExclude, Target(instruction));
        case Opcode::kExcludeEnd:
            return Simple(PlanOp::kExcludeEnd);
        case Opcode::kAct:
        case Opcode::kActDec:
            return Simple(PlanOp::kAct, Small(operands[0]));
        case Opcode::kCall:
            return Simple(PlanOp::kCall, Target(instruction));
        case Opcode::kRescan:
            return Simple(PlanOp::kRescan);
        case Opcode::kRescanEnd:
            return Simple(PlanOp::kRescanEnd);
        case Opcode::kField:
        case Opcode::kFieldLit:
            return Field(instruction);
        case Opcode::kBegin:
            return Simple(PlanOp::kBegin, Small(instruction.FieldId()));
        case Opcode::kEnd:
            return Simple(PlanOp::kEnd);
        case Opcode::kEndTag:
            return Simple(PlanOp::kEndTag, Small(operands[1]));
        case Opcode::kRep:
            return Repeat(PlanOp::kRepeat, instruction, operands[1], operands[1]);
        case Opcode::kRepBit:
            return Repeat(PlanOp::kRepeatBit, instruction, operands[1], operands[2]);
        case Opcode::kRepTag:
            return Repeat(PlanOp::kRepeatTag, instruction, operands[1], 0);
        case Opcode::kRepAny:
        case Opcode::kRepFnEnc:
            return Repeat(PlanOp::kRepeat, instruction, 0, kOpenEndedCount);
        case Opcode::kRepMore:
            return Repeat(PlanOp::kRepeat, instruction, 1, kOpenEndedCount);
        case Opcode::kRepRange:
            return Repeat(PlanOp::kRepeat, instruction, operands[1], operands[2]);
        case Opcode::kRepFn:
            return Repeat(PlanOp::kRepeatFunction, instruction, operands[1], 0);
        case Opcode::kRepFn2:
            return Repeat(PlanOp::kRepeatFunction, instruction, operands[2], 0);
        case Opcode::kLoop:
            return Simple(PlanOp::kLoop, Target(instruction));
        case Opcode::kCountFn:
            return Simple(PlanOp::kCountFunction, Small(operands[0]));
        case Opcode::kCountFn2:
            return Simple(PlanOp::kCountFunction, Small(operands[1]));
        case Opcode::kCount:
            return Simple(PlanOp::kCount, static_cast<std::uint16_t>(operands[0] & kMostLeast));
        case Opcode::kMark:
            return Simple(PlanOp::kMark);
        case Opcode::kRet:
            return Simple(PlanOp::kReturn);
        case Opcode::kRetTags:
            return Simple(PlanOp::kReturnTags);
        case Opcode::kTagPos:
            return Simple(PlanOp::kTagPosition, Small(operands[0]));
        case Opcode::kCommit:
            return Simple(PlanOp::kCommit);
        case Opcode::kLit:
            return {PlanOp::kLiteral, WidthOf(operands[0]), Small(operands[0] >> 4), 0, 0};
        case Opcode::kValEq:
            return Compare(instruction, operands[1], operands[1]);
        case Opcode::kValRange:
            return Compare(instruction, operands[1], operands[2]);
        case Opcode::kValEqFn:
            return {PlanOp::kCompareFunction, 0, Small(operands[0]), Small(operands[1]), 0};
        case Opcode::kValRangeFn:
            return {PlanOp::kCompareFunctions, 0, Small(operands[0]), Small(operands[1]),
                    Small(operands[2])};
        case Opcode::kAtEnd:
            return Simple(PlanOp::kAtEnd);
        case Opcode::kJmp: {
            const std::uint16_t target = Target(instruction);
            return IsPopAt(*instruction.Target())
                       ? Simple(PlanOp::kJumpPop, static_cast<std::uint16_t>(target + 1))
                       : Simple(PlanOp::kJump, target);
        }
        case Opcode::kAlt:
            return Alternative(instruction);
        case Opcode::kSkip:
            return {PlanOp::kSkip, static_cast<std::uint8_t>(operands[0]), 0, 0, 0};
    }
    return Simple(PlanOp::kNone);  // unreachable: each opcode returns
}

PlanStep Planner::Alternative(const Instruction& instruction) {
    PlanStep step{PlanOp::kAlt, 0, Target(instruction), 0, 0};
    const Instruction* test = Next(1);
    if (test == nullptr) {
        return step;
    }
    switch (test->Code()) {
        case Opcode::kBit0:
            step.op = PlanOp::kAlt0;
            break;
        case Opcode::kBit1:
            step.op = PlanOp::kAlt1;
            break;
        case Opcode::kBitL:
            step.op = PlanOp::kAltL;
            break;
        case Opcode::kBitH:
            step.op = PlanOp::kAltH;
            break;
        case Opcode::kLit:
            step.op = PlanOp::kAltLiteral;
            step.width = WidthOf(test->operands[0]);
            step.c = Small(test->operands[0] >> 4);
            break;
        default:
            return step;
    }
    const Instruction* jump = Next(2);
    if (jump != nullptr && jump->Code() == Opcode::kJmp && IsPopAt(*jump->Target())) {
        step.b = static_cast<std::uint16_t>(Target(*jump) + 1);
    }
    return step;
}

bool AreInverse(PlanOp one, PlanOp other) {
    const auto is = [one, other](PlanOp first, PlanOp second) {
        return (one == first && other == second) || (one == second && other == first);
    };
    return is(PlanOp::kAlt0, PlanOp::kAlt1) || is(PlanOp::kAltL, PlanOp::kAltH);
}

void Planner::Join(std::size_t index) {
    const auto stepAt = [this](std::size_t at) {
        return at < plan_.steps.size() ? plan_.steps[at] : PlanStep{};
    };
    PlanStep& step = plan_.steps[index];
    const PlanStep next = stepAt(index + 1);
    const PlanStep target = stepAt(step.a);
    if (step.op == PlanOp::kField) {
        const PlanStep behind = stepAt(index + 2);
        if (next.op == PlanOp::kField) {
            step.b = static_cast<std::uint16_t>(next.b + 1);
        } else if (next.op == PlanOp::kCommit) {
            step.b = behind.op == PlanOp::kField ? static_cast<std::uint16_t>(behind.b + 2) : 1;
        }
    } else if (AreInverse(step.op, target.op)) {
        step.width = 1;
    } else if (step.op == PlanOp::kJumpPop && target.op == PlanOp::kJumpPop && step.a > index) {
        step.b = static_cast<std::uint16_t>(target.b + 1);
        step.a = target.a;
    }
}

PlanStep Planner::Field(const Instruction& instruction) {
    const std::uint32_t id = instruction.FieldId();
    if (instruction.Code() == Opcode::kFieldLit) {
        const std::uint32_t literal = instruction.operands[1];
        return {PlanOp::kFieldLiteral, WidthOf(literal), Small(id), Small(literal >> 4),
                WidthOf(literal)};
    }
    const std::uint32_t width = instruction.operands[1];
    if (width > kMostFieldWidth) {
        Refuse(instruction.offset,
               "a field has more than " + std::to_string(kMostFieldWidth) + " bits");
    }
    // Without a second parent there is nothing to look up.
    const auto next = fieldIds_.upper_bound(id);
    const std::size_t end = next == fieldIds_.end() ? fieldTable_.size() : *next - 1;
    const bool single = end - id == 2;
    return {single ? PlanOp::kField : PlanOp::kFieldOf, 0, single ? fieldTable_[id + 1] : Small(id),
            0, static_cast<std::uint16_t>(width)};
}

PlanStep Planner::Repeat(PlanOp op, const Instruction& instruction, std::uint32_t b,
                         std::uint32_t c) {
    PlanStep step{op, 0, Target(instruction), 0, 0};
    if (op == PlanOp::kRepeat) {
        step.b = static_cast<std::uint16_t>(b & kMostLeast);
        step.c = static_cast<std::uint16_t>(c & kMostCount);
    } else {
        step.b = Small(b);
        step.c = Small(c);
    }
    const Instruction* skip = Next(1);
    const Instruction* loop = Next(2);
    const Instruction* behind = Next(3);
    if (skip != nullptr && skip->Code() == Opcode::kSkip && loop != nullptr &&
        loop->Code() == Opcode::kLoop && *loop->Target() == skip->offset && behind != nullptr &&
        *instruction.Target() == behind->offset) {
        step.width = static_cast<std::uint8_t>(skip->operands[0]);
    }
    return step;
}

PlanStep Planner::Compare(const Instruction& instruction, std::uint32_t low, std::uint32_t high) {
    const auto lowerHalf = [](std::uint32_t number) {
        return static_cast<std::uint16_t>(number & 0xFFFFU);
    };
    plan_.steps.push_back(
        {PlanOp::kCompare, 0, Small(instruction.operands[0]), lowerHalf(low), lowerHalf(high)});
    return {PlanOp::kNone, 0, 0, lowerHalf(low >> 16), lowerHalf(high >> 16)};
}

}  // namespace

Plan MakePlan(std::span<const std::uint8_t> code, std::span<const std::uint16_t> fieldTable) {
    return Planner(code, fieldTable).Run();
}

}  // namespace quorvane::csn
