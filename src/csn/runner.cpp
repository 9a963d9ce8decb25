#include "csn/runner.h"

#include <algorithm>
#include <optional>

#include "csn/bit_run.h"
#include "csn/run_state.h"

namespace quorvane::csn {
namespace {

/// Where a step that is not as frequent leads: to a step, or to one of these.
using Target = const PlanStep*;
constexpr PlanStep kNoSteps[3]{};
constexpr Target kEnded = kNoSteps;       // nowhere: the run ends well
constexpr Target kFailed = kNoSteps + 1;  // nowhere: it fails
constexpr Target kBack = kNoSteps + 2;    // to the nearest choice point

constexpr bool IsStep(Target target) {
    return target != kEnded && target != kFailed && target != kBack;
}
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
        : steps_(program.plan), log_(log) {
        view_.program = &program;
        view_.reader = reader;
        view_.bitPos = std::clamp(bitPos, -kMostPosition, kMostPosition);
        view_.bitLength = bitLength;
        view_.flags = kFlagPartialOk;
        StartRun(view_);
        state_ = {.bottom = stack_.entries,
                  .top = stack_.entries,
                  .line = log.lines,
                  .instructionsLeft = instructions,
                  .bitPos = view_.bitPos,
                  .endPos = view_.endPos,
                  .records = 0,
                  .parentTag = rootTag,
                  .tagCount = 0};
    }

    bits::Outcome Run(std::uint32_t step) {
        const bool good = Walk(steps_ + step);
        log_.count = static_cast<std::int32_t>(state_.line - log_.lines);
        return good ? bits::Outcome(state_.bitPos - view_.startPos) : kSyntaxError;
    }

  private:
    /// Takes steps from `next` on to the end of the outermost rule. False: the run fails.
    bool Walk(const PlanStep* next);
    /// Ends Walk.
    [[gnu::always_inline]] inline bool End(const RunState& run, bool good) {
        state_ = run;
        return good;
    }

    // Alternatives are a third of the steps, and inlining them takes 3 to 9 % off decoding. Both
    // tell where the run goes on; null: it fails.
    [[gnu::always_inline]] inline const PlanStep* Alternative(RunState& run, const PlanStep* step,
                                                              bool begins,
                                                              std::int32_t width) const;
    [[gnu::always_inline]] inline const PlanStep* AlternativeOfBit(RunState& run,
                                                                   const PlanStep* step,
                                                                   std::uint32_t bit) const;

    // The steps that are not as frequent work on state_.
    Target TakeRare(const PlanStep& step, Target on);
    Target Act(std::uint32_t action, Target on);
    Target Call(std::uint32_t function, Target on, std::uint32_t& result);
    Target Repeat(const PlanStep& step, Target on, std::uint32_t least, std::uint32_t most);
    Target Require(std::uint32_t count, Target on);
    Target Loop(Target body, Target on);
    bool LeavesLoop();
    [[nodiscard]] std::optional<std::uint32_t> IterationsAtOnce(const PlanStep& step,
                                                                Target body) const;
    Target PassAtOnce(const PlanStep& step, std::uint32_t fits, std::uint32_t least,
                      std::uint32_t most);
    Target Exclude(Target otherwise, Target on);
    bool PushPosition(std::int32_t position, bool restoresEnd) {
        return state_.Push(nullptr, false, static_cast<std::uint32_t>(position), restoresEnd);
    }
    bool ReadAgain(std::int32_t mark);
    Target KeepNumber(std::uint16_t tag, std::int32_t number, Target on);
    [[nodiscard]] std::int32_t NumberOf(std::uint32_t tag);
    [[nodiscard]] bool IsBetween(std::uint32_t tag, std::uint32_t low, std::uint32_t high);

    /// Hands the state to actions, value functions and the store of tags.
    void Show() {
        view_.bitPos = state_.bitPos;
        view_.endPos = state_.endPos;
        view_.tagCount = state_.tagCount;
    }
    /// Takes it back with what they have changed.
    void TakeBack() {
        state_.bitPos = view_.bitPos;
        state_.endPos = view_.endPos;
        state_.tagCount = static_cast<std::uint8_t>(view_.tagCount);
    }
    [[nodiscard]] bool IsAborted() const { return (view_.flags & kFlagAbort) != 0; }
    [[nodiscard, gnu::always_inline]] std::uint16_t TagOf(std::uint32_t id,
                                                          std::uint16_t parent) const {
        const std::uint16_t* pair = view_.program->fieldTable + id;
        while (pair[0] != parent) {
            pair += 2;
        }
        return pair[1];
    }

    const PlanStep* const steps_;
    CsnRun view_;  // what actions and value functions see of the run
    CsnLog& log_;
    RunState state_{};
    Target loopExit_ = nullptr;  // of the repetition entered last
    RunStack stack_;
};

bool Runner::Walk(const PlanStep* next) {
    const PlanStep* const steps = steps_;
    const bits::BitReader reader = view_.reader;
    RunState run = state_;  // in registers, but for the steps that are not as frequent
    // A case that breaks goes back.
    while (run.instructionsLeft > 0) {
        --run.instructionsLeft;
        const PlanStep& step = *next++;
        switch (step.op) {
            case PlanOp::kNone:
                continue;
            case PlanOp::kBack:
                break;
            case PlanOp::kBit0:
                if (run.PassBit(reader, 0)) {
                    continue;
                }
                break;
            case PlanOp::kBit1:
                if (run.PassBit(reader, 1)) {
                    continue;
                }
                break;
            case PlanOp::kBitL:
                if (run.PassBit(reader, PaddingBit(run.bitPos))) {
                    continue;
                }
                break;
            case PlanOp::kBitH:
                if (run.PassBit(reader, PaddingBit(run.bitPos) ^ 1U)) {
                    continue;
                }
                break;
            case PlanOp::kLiteral:
                if (run.Pass(reader, step.a, step.width)) {
                    continue;
                }
                break;
            case PlanOp::kSkip:
                if (run.SkipBits(step.width)) {
                    continue;
                }
                break;
            case PlanOp::kField:
                if (step.b != 0 && run.HasRoomForFields(step.b)) {
                    next += step.b;
                    if (run.TakeFields(&step)) {
                        continue;
                    }
                } else if (run.IsLeft(step.c)) {
                    if (run.TakeField(step.a, step.c)) {
                        continue;
                    }
                    return End(run, false);
                }
                break;
            case PlanOp::kFieldOf:
                if (run.IsLeft(step.c)) {
                    if (run.TakeField(TagOf(step.a, run.parentTag), step.c)) {
                        continue;
                    }
                    return End(run, false);
                }
                break;
            case PlanOp::kFieldLiteral:
                if (run.IsNext(reader, step.b, step.width)) {
                    if (run.TakeField(TagOf(step.a, run.parentTag), step.c)) {
                        continue;
                    }
                    return End(run, false);
                }
                break;
            case PlanOp::kBegin:
                if (run.Open(TagOf(step.a, run.parentTag))) {
                    continue;
                }
                return End(run, false);
            case PlanOp::kEnd:
                if (run.Close()) {
                    continue;
                }
                return End(run, false);
            case PlanOp::kAlt:
                if (run.Push(steps + step.a, true)) {
                    continue;
                }
                return End(run, false);
            case PlanOp::kAlt0:
                if (next = AlternativeOfBit(run, &step, 0); next != nullptr) {
                    continue;
                }
                return End(run, false);
            case PlanOp::kAlt1:
                if (next = AlternativeOfBit(run, &step, 1); next != nullptr) {
                    continue;
                }
                return End(run, false);
            case PlanOp::kAltL:
                if (next = AlternativeOfBit(run, &step, PaddingBit(run.bitPos)); next != nullptr) {
                    continue;
                }
                return End(run, false);
            case PlanOp::kAltH:
                if (next = AlternativeOfBit(run, &step, PaddingBit(run.bitPos) ^ 1U);
                    next != nullptr) {
                    continue;
                }
                return End(run, false);
            case PlanOp::kAltLiteral:
                if (next =
                        Alternative(run, &step, run.IsNext(reader, step.c, step.width), step.width);
                    next != nullptr) {
                    continue;
                }
                return End(run, false);
            case PlanOp::kJumpPop:
                if (run.Spend(1 + 2 * std::uint64_t{step.b}) && run.Pop(1 + step.b)) {
                    next = steps + step.a;
                    continue;
                }
                return End(run, false);
            case PlanOp::kJump:
                next = steps + step.a;
                continue;
            case PlanOp::kPop:
            case PlanOp::kRescanEnd:
                if (run.Pop()) {
                    continue;
                }
                return End(run, false);
            case PlanOp::kCommit:
                if (run.Commit()) {
                    continue;
                }
                break;
            case PlanOp::kCall:
                if (run.Push(next)) {
                    next = steps + step.a;
                    continue;
                }
                return End(run, false);
            case PlanOp::kReturn:
            case PlanOp::kReturnTags:
                if (!run.Pop()) {
                    return End(run,
                               run.bitPos == run.endPos || (view_.flags & kFlagPartialOk) != 0);
                }
                if (step.op == PlanOp::kReturnTags) {
                    run.tagCount = run.Popped().tagCount;
                }
                next = run.Popped().step;
                continue;
            case PlanOp::kAtEnd:
                if (run.bitPos >= run.endPos) {
                    continue;
                }
                break;
            case PlanOp::kEndTag:
            case PlanOp::kAct:
            case PlanOp::kTagPosition:
            case PlanOp::kRepeat:
            case PlanOp::kRepeatBit:
            case PlanOp::kRepeatTag:
            case PlanOp::kRepeatFunction:
            case PlanOp::kLoop:
            case PlanOp::kCount:
            case PlanOp::kCountFunction:
            case PlanOp::kMark:
            case PlanOp::kExclude:
            case PlanOp::kExcludeEnd:
            case PlanOp::kRescan:
            case PlanOp::kCompare:
            case PlanOp::kCompareFunction:
            case PlanOp::kCompareFunctions: {
                state_ = run;
                const Target target = TakeRare(step, next);
                run = state_;
                if (IsStep(target)) {
                    next = target;
                    continue;
                }
                if (target == kBack) {
                    break;
                }
                return target == kEnded;
            }
            default:
                // Not asking for it takes 2 % off decoding RLC/MAC.
                __builtin_unreachable();
        }
        next = run.GoBack();
        if (next == nullptr) {
            return End(run, false);
        }
    }
    return End(run, false);
}

Target Runner::TakeRare(const PlanStep& step, Target on) {
    std::uint32_t count = 0;
    std::uint32_t other = 0;
    switch (step.op) {
        case PlanOp::kEndTag:
            if (!state_.Close()) {
                return kFailed;
            }
            count = ReadBetween(view_.reader, state_.Popped().bitPos, state_.bitPos);
            return KeepNumber(step.a, static_cast<std::int32_t>(count), on);
        case PlanOp::kAct:
            return Act(step.a, on);
        case PlanOp::kTagPosition:
            return KeepNumber(step.a, state_.bitPos, on);
        case PlanOp::kRepeat:
            return Repeat(step, on, step.b, step.c);
        case PlanOp::kRepeatBit:
            count = view_.reader.Read(std::int64_t{NumberOf(step.b)} + step.c, 1);
            return Repeat(step, on, count, count);
        case PlanOp::kRepeatTag:
            count = static_cast<std::uint32_t>(NumberOf(step.b));
            return Repeat(step, on, count & kMostLeast, count & kMostCount);
        case PlanOp::kRepeatFunction:
            on = Call(step.b, on, count);
            return IsStep(on) ? Repeat(step, on, count & kMostLeast, count & kMostCount) : on;
        case PlanOp::kLoop:
            return Loop(steps_ + step.a, on);
        case PlanOp::kCount:
            return Require(step.a, on);
        case PlanOp::kCountFunction:
            on = Call(step.a, on, count);
            return IsStep(on) ? Require(count & kMostLeast, on) : on;
        case PlanOp::kMark:
            return FailUnless(PushPosition(state_.bitPos, false), on);
        case PlanOp::kExclude:
            return Exclude(steps_ + step.a, on);
        case PlanOp::kExcludeEnd:
            if (state_.top - state_.bottom < 2) {
                return kFailed;
            }
            state_.Pop();
            state_.endPos = state_.Popped().Position();
            state_.Pop();
            return kBack;
        case PlanOp::kRescan:
            return FailUnless(state_.Pop() && ReadAgain(state_.Popped().Position()), on);
        case PlanOp::kCompare:
            return OnIf(IsBetween(step.a, step.b | std::uint32_t{on->b} << 16,
                                  step.c | std::uint32_t{on->c} << 16),
                        on + 1);
        case PlanOp::kCompareFunction:
            on = Call(step.b, on, count);
            return IsStep(on) ? OnIf(IsBetween(step.a, count, count), on) : on;
        case PlanOp::kCompareFunctions:
            on = Call(step.b, on, count);
            if (IsStep(on)) {
                on = Call(step.c, on, other);
            }
            return IsStep(on) ? OnIf(IsBetween(step.a, count, other), on) : on;
        default:
            return on;  // unreachable: Walk takes all others
    }
}

/// An alternative whose first `width` bits are there, or not.
const PlanStep* Runner::Alternative(RunState& run, const PlanStep* step, bool begins,
                                    std::int32_t width) const {
    const PlanStep* const otherwise = steps_ + step->a;
    if (!run.HasRoom(2)) {
        // The choice point tells on a full stack.
        return run.Push(otherwise, true) ? step + 1 : nullptr;
    }
    if (!begins) {
        return run.Spend(1) ? otherwise : nullptr;
    }
    if (step->b != 0) {
        run.bitPos += width;
        return run.Spend(3) ? steps_ + step->b : nullptr;
    }
    run.Push(otherwise, true);
    run.bitPos += width;
    return run.Spend(1) ? step + 2 : nullptr;
}

/// An alternative that begins with the bit. If the step at `a` is one that begins with the inverse,
/// a bit that is not the one is that.
const PlanStep* Runner::AlternativeOfBit(RunState& run, const PlanStep* step,
                                         std::uint32_t bit) const {
    const bool any = run.IsLeft(1);
    const bool begins = any && view_.reader.ReadBit(run.bitPos) == bit;
    if (begins || !any || step->width == 0 || !run.HasRoom(2)) {
        return Alternative(run, step, begins, 1);
    }
    return run.Spend(2) ? Alternative(run, steps_ + step->a, true, 1) : nullptr;
}

Target Runner::Act(std::uint32_t action, Target on) {
    Show();
    view_.program->actionTable[action](view_);
    TakeBack();
    if ((view_.flags & kFlagRefused) != 0) {
        view_.flags &= ~kFlagRefused;
        // Without a choice point the run goes on.
        const PlanStep* back = state_.GoBack();
        on = back == nullptr ? on : back;
    }
    if ((view_.flags & (kFlagRunning | kFlagAbort)) != kFlagRunning) {
        return IsAborted() ? kFailed : kEnded;
    }
    return on;
}

Target Runner::Call(std::uint32_t function, Target on, std::uint32_t& result) {
    Show();
    result = view_.program->valueTable[function](view_);
    TakeBack();
    return result > kNoCount || IsAborted() ? kFailed : OnIf(result < kNoCount, on);
}

Target Runner::KeepNumber(std::uint16_t tag, std::int32_t number, Target on) {
    Show();
    TagAdd(view_, tag, number);
    TakeBack();
    return FailUnless(!IsAborted(), on);
}

std::int32_t Runner::NumberOf(std::uint32_t tag) {
    Show();
    return TagValue(view_, static_cast<std::int32_t>(tag));
}

bool Runner::IsBetween(std::uint32_t tag, std::uint32_t low, std::uint32_t high) {
    const std::uint32_t number = ReadBetween(view_.reader, NumberOf(tag), state_.bitPos);
    return number >= low && number <= high;
}

Target Runner::Repeat(const PlanStep& step, Target on, std::uint32_t least, std::uint32_t most) {
    loopExit_ = steps_ + step.a;
    const bool open = most == kOpenEndedCount;
    if ((open || least == most) && state_.HasRoom(3)) {
        if (const auto fits = IterationsAtOnce(step, on)) {
            return PassAtOnce(step, *fits, least, most);
        }
    }
    if (!state_.Push(loopExit_) || !state_.Push(nullptr)) {
        return kFailed;
    }
    state_.Top().SetCounts(least, most);
    return LeavesLoop() ? loopExit_ : on;
}

/// How often the body of a repetition fits, where it is one step that says so: bits of any value,
/// or one bit.
std::optional<std::uint32_t> Runner::IterationsAtOnce(const PlanStep& step, Target body) const {
    const std::int32_t left = std::max(state_.endPos - state_.bitPos, 0);
    if (step.width != 0) {
        return static_cast<std::uint32_t>(left) / step.width;
    }
    if (steps_ + step.a != body + 2 || body->op < PlanOp::kBit0 || body->op > PlanOp::kBitH) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(RunOf(body->op, view_.reader, state_.bitPos, left));
}

/// A repetition whose body fits `fits` times. An iteration takes two instructions, the body and its
/// end, and the body that does not fit one; but the machine, too, passes bits of any value at once
/// when an open repetition has had one iteration more than it needs.
Target Runner::PassAtOnce(const PlanStep& step, std::uint32_t fits, std::uint32_t least,
                          std::uint32_t most) {
    const bool open = most == kOpenEndedCount;
    const std::uint32_t count = open ? fits : std::min(fits, most);
    const std::uint32_t taken = step.width != 0 ? std::min(count, least + 1) : count;
    const bool ends = !open && count == most;
    state_.bitPos += static_cast<std::int32_t>(count * std::max<std::uint32_t>(step.width, 1));
    return FailUnless(state_.Spend(2 * std::uint64_t{taken} + (ends ? 0 : 1)),
                      OnIf(count >= least, loopExit_));
}

bool Runner::LeavesLoop() {
    if (state_.Top().Most() == 0) {
        state_.Pop();
        state_.Pop();
        return true;
    }
    if (state_.Top().Least() == 0) {
        state_.top[-2].isChoice = true;
    }
    return false;
}

Target Runner::Require(std::uint32_t count, Target on) {
    if (state_.top - state_.bottom < 2) {
        return kFailed;
    }
    state_.Top().SetCounts(count, state_.Top().Most());
    return LeavesLoop() ? loopExit_ : on;
}

Target Runner::Loop(Target body, Target on) {
    if (state_.top - state_.bottom < 2) {
        return kFailed;
    }
    RunEntry& counter = state_.Top();
    const std::uint32_t least = counter.Least();
    const std::uint32_t most = counter.Most();
    if (most == 1) {
        state_.Pop();
        state_.Pop();
        return on;
    }
    counter.SetCounts(least == 0 ? 0 : least - 1,
                      most == 0 || most == kOpenEndedCount ? most : most - 1);
    if (least > 0 && LeavesLoop()) {
        return on;
    }
    if (counter.Least() == 0) {
        state_.SaveIn(state_.top[-2]);  // a later iteration that fails is undone up to here
    }
    return body;
}

Target Runner::Exclude(Target otherwise, Target on) {
    if (!state_.Pop()) {
        return kFailed;
    }
    const std::int32_t mark = state_.Popped().Position();
    return FailUnless(state_.Push(otherwise, true) && ReadAgain(mark), on);
}

bool Runner::ReadAgain(std::int32_t mark) {
    if (!PushPosition(state_.endPos, true)) {
        return false;
    }
    state_.endPos = state_.bitPos;
    state_.bitPos = mark;
    return true;
}

}  // namespace

bits::Outcome RunPlan(const CsnProgram& program, std::uint32_t step, std::uint16_t rootTag,
                      const bits::BitReader& reader, std::int32_t bitPos, std::int32_t bitLength,
                      std::uint64_t instructions, CsnLog& log) {
    return Runner(program, rootTag, reader, bitPos, bitLength, instructions, log).Run(step);
}

}  // namespace quorvane::csn
