#include "csn/runner.h"

#include <algorithm>

#include "csn/bit_run.h"

namespace quorvane::csn {
namespace {

/// A choice point, a return address, a loop's state or the start of a field, with the state of the
/// run at that time. As many as the machine has entries, one for one.
struct Entry {
    std::uint32_t value;  // a step, a position or, in a loop's counter, least << 16 | most
    std::int32_t bitPos;
    std::int32_t logCount;
    std::uint16_t records;  // as the machine counts them: two a field
    std::uint16_t parentTag;
    std::uint8_t tagCount;
    bool isChoice;
    bool restoresEnd;

    [[nodiscard]] std::uint32_t Least() const { return value >> 16; }
    [[nodiscard]] std::uint32_t Most() const { return value & 0xFFFFU; }
    void SetCounts(std::uint32_t least, std::uint32_t most) { value = least << 16 | most; }
};

/// Where the run goes on: a step, or one of these.
using Target = std::uint32_t;
constexpr Target kFailed = 0xFFFFFFFE;  // not at all
constexpr Target kBack = 0xFFFFFFFF;    // at the nearest choice point

constexpr Target OnIf(bool there, Target on) {
    return there ? on : kBack;
}
constexpr Target FailUnless(bool good, Target on) {
    return good ? on : kFailed;
}

class Runner {
  public:
    Runner(const CsnProgram& program, std::uint16_t rootTag, const bits::BitReader& reader,
           std::int32_t bitPos, std::int32_t bitLength, std::uint64_t instructions, CsnLog& log)
        : log_(log), parentTag_(rootTag), left_(instructions) {
        CsnMachineInit(machine_, program, 0, reader, bitPos, bitLength);
        machine_.flags |= kFlagRunning;
        machine_.startPos = machine_.bitPos;
        machine_.endPos = static_cast<std::int32_t>(std::clamp<std::int64_t>(
            std::int64_t{machine_.bitPos} + bitLength, -kMostPosition, kMostPosition));
        log.count = 0;
    }

    bits::Outcome Run(std::uint32_t step) {
        return Walk(step) ? bits::Outcome(machine_.bitPos - machine_.startPos) : kSyntaxError;
    }

  private:
    /// Takes steps from `next` on to the end of the outermost rule. False: the run fails.
    bool Walk(Target next);

    [[nodiscard]] bool IsLeft(std::int32_t bits) const {
        return machine_.endPos - machine_.bitPos >= bits;
    }
    [[nodiscard]] bool IsNext(std::uint32_t value, std::int32_t width) const {
        return IsLeft(width) && machine_.reader.Read(machine_.bitPos, width) == value;
    }
    /// Passes a bit if it is the one.
    bool PassBit(std::uint32_t bit) {
        const bool there = IsLeft(1) && machine_.reader.ReadBit(machine_.bitPos) == bit;
        machine_.bitPos += there ? 1 : 0;
        return there;
    }
    /// Passes `width` bits if they have the value.
    bool Pass(std::uint32_t value, std::int32_t width) {
        const bool there = IsNext(value, width);
        machine_.bitPos += there ? width : 0;
        return there;
    }
    bool SkipBits(std::int32_t width) {
        const bool there = IsLeft(width);
        machine_.bitPos += there ? width : 0;
        return there;
    }
    /// Takes `count` instructions more than the one that the loop counts. False: there are not so
    /// many left.
    bool Spend(std::uint64_t count) {
        const bool enough = count <= left_;
        left_ -= enough ? count : left_;
        return enough;
    }

    bool Push(std::uint32_t value, bool isChoice = false, bool restoresEnd = false) {
        if (depth_ >= kMostStackEntries) {
            return false;
        }
        stack_[depth_++] = {value,    machine_.bitPos, log_.count,
                            records_, parentTag_,      static_cast<std::uint8_t>(machine_.tagCount),
                            isChoice, restoresEnd};
        return true;
    }
    Entry& Top() { return stack_[depth_ - 1]; }
    bool Pop(std::int32_t count = 1) {
        if (depth_ < count) {
            return false;
        }
        depth_ -= count;
        parentTag_ = stack_[depth_].parentTag;
        return true;
    }
    /// The entry popped last.
    [[nodiscard]] const Entry& Popped() const { return stack_[depth_]; }
    void SaveIn(Entry& entry) const {
        entry.bitPos = machine_.bitPos;
        entry.logCount = log_.count;
        entry.records = records_;
        entry.parentTag = parentTag_;
        entry.tagCount = static_cast<std::uint8_t>(machine_.tagCount);
    }

    // What a step does. `on` is the step behind it. Alternatives are a third of the steps, and
    // inlining them takes 3 to 9 % off decoding.
    [[gnu::always_inline]] inline Target Alternative(const PlanStep& step, Target on, bool begins,
                                                     std::int32_t width);
    [[gnu::always_inline]] inline Target AlternativeOfBit(const PlanStep& step, Target on,
                                                          std::uint32_t bit);
    Target Call(std::uint32_t function, Target on, std::uint32_t& result);
    Target Repeat(const PlanStep& step, Target on, std::uint32_t least, std::uint32_t most);
    Target Require(std::uint32_t count, Target on);
    Target Loop(Target body, Target on);
    void PassAtOnce(const PlanStep& step);
    Target Exclude(Target otherwise, Target on);
    bool ReadAgain(std::int32_t mark);
    Target TakeField(std::uint16_t tag, std::uint16_t width, Target on);
    /// Whether neither the list nor the instructions end inside of this field and `more` of them.
    [[nodiscard]] bool HasRoomFor(std::uint32_t more) const {
        return records_ + 2 * (more + 1) <= kMostRecords && more <= left_;
    }
    Target TakeFields(const PlanStep* step, Target on);
    Target Open(std::uint16_t tag, Target on);
    Target Close(Target on);
    /// To the nearest choice point; kFailed if there is none.
    Target GoBack();
    bool Commit();

    bool LeavesLoop();
    [[nodiscard]] bool IsAborted() const { return (machine_.flags & kFlagAbort) != 0; }
    [[nodiscard]] std::uint16_t TagOf(std::uint32_t id) const {
        const std::uint16_t* pair = machine_.program->fieldTable + id;
        while (pair[0] != parentTag_) {
            pair += 2;
        }
        return pair[1];
    }
    void Log(std::uint16_t tag, std::uint16_t width) {
        log_.lines[log_.count++] = {tag, width, machine_.bitPos};
    }
    [[nodiscard]] bool IsBetween(std::uint32_t tag, std::uint32_t low, std::uint32_t high) const {
        const std::int32_t from = TagValue(machine_, static_cast<std::int32_t>(tag));
        const std::uint32_t number = ReadBetween(machine_.reader, from, machine_.bitPos);
        return number >= low && number <= high;
    }

    CsnMachine machine_;  // what actions and value functions see of the run; nothing of its arrays
                          // but the tags is used
    CsnLog& log_;
    std::int32_t depth_ = 0;
    Target loopExit_ = 0;  // of the repetition entered last
    std::uint16_t records_ = 0;
    std::uint16_t parentTag_;  // of the innermost open field, or the root's
    std::uint64_t left_;
    Entry stack_[kMostStackEntries];
};

bool Runner::Walk(Target next) {
    const PlanStep* const steps = machine_.program->plan;
    while (left_ > 0) {
        --left_;
        const PlanStep& step = steps[next++];
        std::uint32_t count = 0;
        std::uint32_t other = 0;
        switch (step.op) {
            case PlanOp::kNone:
                break;
            case PlanOp::kBack:
                next = kBack;
                break;
            case PlanOp::kBit0:
                next = OnIf(PassBit(0), next);
                break;
            case PlanOp::kBit1:
                next = OnIf(PassBit(1), next);
                break;
            case PlanOp::kBitL:
                next = OnIf(PassBit(PaddingBit(machine_.bitPos)), next);
                break;
            case PlanOp::kBitH:
                next = OnIf(PassBit(PaddingBit(machine_.bitPos) ^ 1U), next);
                break;
            case PlanOp::kLiteral:
                next = OnIf(Pass(step.a, step.width), next);
                break;
            case PlanOp::kSkip:
                next = OnIf(SkipBits(step.width), next);
                break;
            case PlanOp::kField:
                if (step.b != 0 && HasRoomFor(step.b)) {
                    next = TakeFields(&step, next);
                } else {
                    next = IsLeft(step.c) ? TakeField(step.a, step.c, next) : kBack;
                }
                break;
            case PlanOp::kFieldOf:
                next = IsLeft(step.c) ? TakeField(TagOf(step.a), step.c, next) : kBack;
                break;
            case PlanOp::kFieldLiteral:
                next = IsNext(step.b, step.width) ? TakeField(TagOf(step.a), step.c, next) : kBack;
                break;
            case PlanOp::kBegin:
                next = Open(TagOf(step.a), next);
                break;
            case PlanOp::kEnd:
                next = Close(next);
                break;
            case PlanOp::kEndTag:
                if (next = Close(next); next != kFailed) {
                    count = ReadBetween(machine_.reader, Popped().bitPos, machine_.bitPos);
                    TagAdd(machine_, step.a, static_cast<std::int32_t>(count));
                    next = FailUnless(!IsAborted(), next);
                }
                break;
            case PlanOp::kAlt:
                next = FailUnless(Push(step.a, true), next);
                break;
            case PlanOp::kAlt0:
                next = AlternativeOfBit(step, next, 0);
                break;
            case PlanOp::kAlt1:
                next = AlternativeOfBit(step, next, 1);
                break;
            case PlanOp::kAltL:
                next = AlternativeOfBit(step, next, PaddingBit(machine_.bitPos));
                break;
            case PlanOp::kAltH:
                next = AlternativeOfBit(step, next, PaddingBit(machine_.bitPos) ^ 1U);
                break;
            case PlanOp::kAltLiteral:
                next = Alternative(step, next, IsNext(step.c, step.width), step.width);
                break;
            case PlanOp::kJumpPop:
                next = FailUnless(Spend(1 + 2 * std::uint64_t{step.b}) && Pop(1 + step.b), step.a);
                break;
            case PlanOp::kJump:
                next = step.a;
                break;
            case PlanOp::kPop:
            case PlanOp::kRescanEnd:
                next = FailUnless(Pop(), next);
                break;
            case PlanOp::kCommit:
                next = FailUnless(Commit(), next);
                break;
            case PlanOp::kCall:
                next = FailUnless(Push(next), step.a);
                break;
            case PlanOp::kReturn:
            case PlanOp::kReturnTags:
                if (!Pop()) {
                    return machine_.bitPos == machine_.endPos ||
                           (machine_.flags & kFlagPartialOk) != 0;
                }
                if (step.op == PlanOp::kReturnTags) {
                    machine_.tagCount = Popped().tagCount;
                }
                next = Popped().value;
                break;
            case PlanOp::kAct:
                machine_.program->actionTable[step.a](machine_);
                if ((machine_.flags & kFlagRefused) != 0) {
                    machine_.flags &= ~kFlagRefused;
                    // Without a choice point the run goes on.
                    const Target back = GoBack();
                    next = back == kFailed ? next : back;
                }
                if ((machine_.flags & (kFlagRunning | kFlagAbort)) != kFlagRunning) {
                    return !IsAborted();
                }
                break;
            case PlanOp::kTagPosition:
                TagAdd(machine_, step.a, machine_.bitPos);
                next = FailUnless(!IsAborted(), next);
                break;
            case PlanOp::kRepeat:
                next = Repeat(step, next, step.b, step.c);
                break;
            case PlanOp::kRepeatBit:
                count = machine_.reader.Read(std::int64_t{TagValue(machine_, step.b)} + step.c, 1);
                next = Repeat(step, next, count, count);
                break;
            case PlanOp::kRepeatTag:
                count = static_cast<std::uint32_t>(TagValue(machine_, step.b));
                next = Repeat(step, next, count & kMostLeast, count & kMostCount);
                break;
            case PlanOp::kRepeatFunction:
                if (next = Call(step.b, next, count); next < kFailed) {
                    next = Repeat(step, next, count & kMostLeast, count & kMostCount);
                }
                break;
            case PlanOp::kLoop:
                next = Loop(step.a, next);
                break;
            case PlanOp::kCount:
                next = Require(step.a, next);
                break;
            case PlanOp::kCountFunction:
                if (next = Call(step.a, next, count); next < kFailed) {
                    next = Require(count & kMostLeast, next);
                }
                break;
            case PlanOp::kMark:
                next = FailUnless(Push(static_cast<std::uint32_t>(machine_.bitPos)), next);
                break;
            case PlanOp::kExclude:
                next = Exclude(step.a, next);
                break;
            case PlanOp::kExcludeEnd:
                if (depth_ < 2) {
                    return false;
                }
                Pop();
                machine_.endPos = static_cast<std::int32_t>(Popped().value);
                Pop();
                next = kBack;
                break;
            case PlanOp::kRescan:
                next =
                    FailUnless(Pop() && ReadAgain(static_cast<std::int32_t>(Popped().value)), next);
                break;
            case PlanOp::kCompare:
                next = OnIf(IsBetween(step.a, step.b | std::uint32_t{steps[next].b} << 16,
                                      step.c | std::uint32_t{steps[next].c} << 16),
                            next + 1);
                break;
            case PlanOp::kCompareFunction:
                if (next = Call(step.b, next, count); next < kFailed) {
                    next = OnIf(IsBetween(step.a, count, count), next);
                }
                break;
            case PlanOp::kCompareFunctions:
                next = Call(step.b, next, count);
                if (next < kFailed) {
                    next = Call(step.c, next, other);
                }
                if (next < kFailed) {
                    next = OnIf(IsBetween(step.a, count, other), next);
                }
                break;
            case PlanOp::kAtEnd:
                next = OnIf(machine_.bitPos >= machine_.endPos, next);
                break;
        }
        if (next >= kFailed) {
            next = next == kBack ? GoBack() : kFailed;
            if (next == kFailed) {
                return false;
            }
        }
    }
    return false;
}

/// An alternative whose first `width` bits are there, or not.
Target Runner::Alternative(const PlanStep& step, Target on, bool begins, std::int32_t width) {
    if (depth_ >= kMostStackEntries - 1) {
        return FailUnless(Push(step.a, true), on);  // the choice point tells on a full stack
    }
    if (!begins) {
        return FailUnless(Spend(1), step.a);
    }
    if (step.b != 0) {
        machine_.bitPos += width;
        return FailUnless(Spend(3), step.b);
    }
    Push(step.a, true);
    machine_.bitPos += width;
    return FailUnless(Spend(1), on + 1);
}

/// An alternative that begins with the bit. If the step at `a` is one that begins with the inverse,
/// a bit that is not the one is that.
Target Runner::AlternativeOfBit(const PlanStep& step, Target on, std::uint32_t bit) {
    const bool any = IsLeft(1);
    const bool begins = any && machine_.reader.ReadBit(machine_.bitPos) == bit;
    if (begins || !any || step.width == 0 || depth_ >= kMostStackEntries - 1) {
        return Alternative(step, on, begins, 1);
    }
    return Spend(2) ? Alternative(machine_.program->plan[step.a], step.a + 1U, true, 1) : kFailed;
}

Target Runner::Call(std::uint32_t function, Target on, std::uint32_t& result) {
    result = machine_.program->valueTable[function](machine_);
    return result > kNoCount || IsAborted() ? kFailed : OnIf(result < kNoCount, on);
}

Target Runner::Repeat(const PlanStep& step, Target on, std::uint32_t least, std::uint32_t most) {
    loopExit_ = step.a;
    const bool exact = least == most && most != kOpenEndedCount;
    const bool any = least == 0 && most == kOpenEndedCount;
    if (step.width != 0 && (exact || any) && depth_ + 2 < kMostStackEntries) {
        // Nothing but bits of any value: all of it at once.
        const auto left =
            static_cast<std::uint32_t>(std::max(machine_.endPos - machine_.bitPos, 0));
        const std::uint32_t fits = left / step.width;
        const std::uint32_t count = any ? fits : most;
        if (count > fits) {
            return FailUnless(Spend(2 * fits + 1), kBack);
        }
        machine_.bitPos += static_cast<std::int32_t>(count * step.width);
        return FailUnless(Spend(exact ? 2 * count : count == 0 ? 1 : 3), step.a);
    }
    if (!Push(step.a) || !Push(0)) {
        return kFailed;
    }
    Top().SetCounts(least, most);
    return LeavesLoop() ? step.a : on;
}

bool Runner::LeavesLoop() {
    if (Top().Most() == 0) {
        Pop();
        Pop();
        return true;
    }
    if (Top().Least() == 0) {
        stack_[depth_ - 2].isChoice = true;
    }
    return false;
}

Target Runner::Require(std::uint32_t count, Target on) {
    if (depth_ < 2) {
        return kFailed;
    }
    Top().SetCounts(count, Top().Most());
    return LeavesLoop() ? loopExit_ : on;
}

/// Of a repetition without end whose body is one step, as many iterations as can be told at once.
void Runner::PassAtOnce(const PlanStep& step) {
    const std::int32_t left = std::max(machine_.endPos - machine_.bitPos, 0);
    switch (step.op) {
        case PlanOp::kSkip:
            machine_.bitPos += step.width == 0 ? 0 : left / step.width * step.width;
            break;
        case PlanOp::kBit0:
        case PlanOp::kBit1:
        case PlanOp::kBitL:
        case PlanOp::kBitH: {
            // Each takes two instructions, the bit and the end of the iteration.
            const auto most = static_cast<std::int32_t>(
                std::min<std::uint64_t>(static_cast<std::uint64_t>(left), left_ / 2));
            const std::int32_t run = RunOf(step.op, machine_.reader, machine_.bitPos, most);
            machine_.bitPos += run;
            left_ -= 2 * static_cast<std::uint64_t>(run);
            break;
        }
        default:
            break;
    }
}

Target Runner::Loop(Target body, Target on) {
    if (depth_ < 2) {
        return kFailed;
    }
    Entry& counter = Top();
    const std::uint32_t least = counter.Least();
    const std::uint32_t most = counter.Most();
    if (most == 1) {
        Pop();
        Pop();
        return on;
    }
    counter.SetCounts(least == 0 ? 0 : least - 1,
                      most == 0 || most == kOpenEndedCount ? most : most - 1);
    if (least > 0) {
        if (LeavesLoop()) {
            return on;
        }
    } else if (most == kOpenEndedCount && body + 2 == on) {
        PassAtOnce(machine_.program->plan[body]);
    }
    if (counter.Least() == 0) {
        SaveIn(stack_[depth_ - 2]);  // a later iteration that fails is undone up to here
    }
    return body;
}

Target Runner::Exclude(Target otherwise, Target on) {
    if (!Pop()) {
        return kFailed;
    }
    const auto mark = static_cast<std::int32_t>(Popped().value);
    return FailUnless(Push(otherwise, true) && ReadAgain(mark), on);
}

bool Runner::ReadAgain(std::int32_t mark) {
    if (!Push(static_cast<std::uint32_t>(machine_.endPos), false, true)) {
        return false;
    }
    machine_.endPos = machine_.bitPos;
    machine_.bitPos = mark;
    return true;
}

Target Runner::TakeField(std::uint16_t tag, std::uint16_t width, Target on) {
    if (records_ + 2 > kMostRecords) {
        if (records_ < kMostRecords) {
            Log(tag, CsnLogLine::kOpens);
        }
        return kFailed;
    }
    Log(tag, width);
    records_ += 2;
    machine_.bitPos += width;
    return on;
}

/// The step's field and those behind it, for which there is room.
Target Runner::TakeFields(const PlanStep* step, Target on) {
    const std::uint32_t more = step->b;
    std::uint32_t taken = 0;
    for (; taken <= more && IsLeft(step->c); ++taken, ++step) {
        Log(step->a, step->c);
        machine_.bitPos += step->c;
    }
    records_ = static_cast<std::uint16_t>(records_ + 2 * taken);
    left_ -= std::min(taken, more);
    return taken > more ? on + more : kBack;
}

Target Runner::Open(std::uint16_t tag, Target on) {
    const bool pushed = Push(0);
    if (records_ >= kMostRecords) {
        return kFailed;
    }
    Log(tag, CsnLogLine::kOpens);
    ++records_;
    parentTag_ = tag;
    return FailUnless(pushed, on);
}

Target Runner::Close(Target on) {
    if (depth_ < 1 || records_ >= kMostRecords) {
        return kFailed;
    }
    Log(0, CsnLogLine::kCloses);
    ++records_;
    return FailUnless(Pop(), on);
}

Target Runner::GoBack() {
    if (depth_ >= kMostStackEntries) {
        return kFailed;
    }
    for (std::int32_t index = depth_ - 1; index >= 0; --index) {
        const Entry& entry = stack_[index];
        if (entry.restoresEnd) {
            machine_.endPos = static_cast<std::int32_t>(entry.value);
        }
        if (entry.isChoice) {
            machine_.bitPos = entry.bitPos;
            machine_.tagCount = entry.tagCount;
            log_.count = entry.logCount;
            records_ = entry.records;
            parentTag_ = entry.parentTag;
            depth_ = index;
            return entry.value;
        }
    }
    return kFailed;
}

bool Runner::Commit() {
    for (std::int32_t index = depth_ - 1; index >= 0; --index) {
        if (stack_[index].isChoice) {
            SaveIn(stack_[index]);
            return true;
        }
    }
    return false;
}

}  // namespace

bits::Outcome RunPlan(const CsnProgram& program, std::uint32_t step, std::uint16_t rootTag,
                      const bits::BitReader& reader, std::int32_t bitPos, std::int32_t bitLength,
                      std::uint64_t instructions, CsnLog& log) {
    return Runner(program, rootTag, reader, bitPos, bitLength, instructions, log).Run(step);
}

}  // namespace quorvane::csn
