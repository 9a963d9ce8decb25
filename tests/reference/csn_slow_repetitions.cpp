// Repetitions of the slow machine, value functions, and comparisons with what was read.

#include "reference/csn_slow_machine.h"

namespace quorvane::reference {
namespace {

// The value of a counter entry: a flag, 14 bits and 15 bits.

bool SkipWhenWriting(const SlowEntry& counter) {
    return (counter.value >> 29U & 1U) != 0;
}

std::uint32_t MinLeft(const SlowEntry& counter) {
    return counter.value >> 15U & 0x3FFFU;
}

std::uint32_t MaxLeft(const SlowEntry& counter) {
    return counter.value & 0x7FFFU;
}

std::uint32_t CounterOf(bool skipWhenWriting, std::uint32_t minLeft, std::uint32_t maxLeft) {
    return (skipWhenWriting ? 1U << 29U : 0U) | (minLeft & 0x3FFFU) << 15U | (maxLeft & 0x7FFFU);
}

void SetMinLeft(SlowEntry& counter, std::uint32_t minLeft) {
    counter.value = CounterOf(SkipWhenWriting(counter), minLeft, MaxLeft(counter));
}

void SetMaxLeft(SlowEntry& counter, std::uint32_t maxLeft) {
    counter.value = CounterOf(SkipWhenWriting(counter), MinLeft(counter), maxLeft);
}

}  // namespace

void SlowMachine::LoopEnter(std::uint32_t operand, std::uint32_t least, std::uint32_t most) {
    const bool skipWhenWriting = (operand & 1U) != 0;
    const std::uint32_t exit = instruction_ + (operand >> 1U);
    const bool openEnded = most == kUnbounded;
    PushEntry(exit, false, openEnded, false);
    PushEntry(CounterOf(skipWhenWriting, least, most), false, openEnded, false);
    loopExit = exit;
    LoopCheck(exit);
}

/// Whether the repetition is left. Otherwise, once no more iterations are required, its exit entry
/// is a choice point.
bool SlowMachine::LoopCheck(std::uint32_t target) {
    const SlowEntry& counter = Top();
    const bool leftOut =
        SkipWhenWriting(counter) && MinLeft(counter) == 0 && encode && sourceLimit == kNoLimit;
    if (MaxLeft(counter) == 0 || leftOut) {
        PopEntry();
        PopEntry();
        pc = target;
        return true;
    }
    if (MinLeft(counter) != 0) {
        return false;
    }
    SlowEntry& exit = BelowTop();
    if (!exit.isChoice) {
        exit.isChoice = true;
        exit.openEnded = true;
        exit.inOpenLoop = true;
        Top().inOpenLoop = true;
    }
    return false;
}

void SlowMachine::Repeat() {
    const std::uint32_t operand = NextOperand();
    const std::uint32_t count = NextOperand();
    LoopEnter(operand, count, count);
}

void SlowMachine::RepeatBit() {
    const std::uint32_t operand = NextOperand();
    const std::uint32_t tag = NextOperand();
    const std::uint32_t offset = NextOperand();
    const std::uint32_t count = Read(std::int64_t{TagValue(tag)} + offset, 1);
    LoopEnter(operand, count, count);
}

void SlowMachine::RepeatTag() {
    const std::uint32_t operand = NextOperand();
    const auto count = static_cast<std::uint32_t>(TagValue(NextOperand()));
    LoopEnter(operand, count, count);
}

void SlowMachine::RepeatAny(std::uint32_t least) {
    LoopEnter(NextOperand(), least, kUnbounded);
}

void SlowMachine::RepeatRange() {
    const std::uint32_t operand = NextOperand();
    const std::uint32_t least = NextOperand();
    const std::uint32_t most = NextOperand();
    LoopEnter(operand, least, most);
}

void SlowMachine::RepeatFunction() {
    const std::uint32_t operand = NextOperand();
    const std::uint32_t function = NextOperand();
    if (const std::optional<std::uint32_t> count = ValueCall(function)) {
        LoopEnter(operand, *count, *count);
    }
}

void SlowMachine::RepeatFunctionByDirection() {
    const std::uint32_t operand = NextOperand();
    const std::uint32_t encoding = NextOperand();
    const std::uint32_t decoding = NextOperand();
    if (const std::optional<std::uint32_t> count = ValueCall(encode ? encoding : decoding)) {
        LoopEnter(operand, *count, *count);
    }
}

void SlowMachine::RepeatFunctionEncoding() {
    if (encode) {
        return RepeatFunction();
    }
    const std::uint32_t operand = NextOperand();
    NextOperand();
    LoopEnter(operand, 0, kUnbounded);
}

void SlowMachine::Loop() {
    const std::uint32_t distance = NextOperand();
    const std::uint32_t maxLeft = MaxLeft(Top());
    if (maxLeft > 0 && maxLeft != kUnbounded) {
        SetMaxLeft(Top(), maxLeft - 1);
    }
    if (maxLeft == 1) {
        PopEntry();
        PopEntry();
        return;
    }
    const std::uint32_t minLeft = MinLeft(Top());
    bool goesBack = true;
    if (minLeft > 0) {
        SetMinLeft(Top(), minLeft - 1);
        if (LoopCheck(pc)) {
            return;
        }
    } else if (writing_ && SkipWhenWriting(Top())) {
        PopEntry();
        PopEntry();
        goesBack = false;
    }
    if (goesBack) {
        pc = instruction_ - distance;
    }
    if (goesBack && minLeft == 0 && maxLeft == kUnbounded && !writing_) {
        SpareWhatPadsOn();
    }
    // What was passed up to here stays, if the next iteration fails.
    if (stack.size() >= 2 && MinLeft(Top()) == 0) {
        SlowEntry& exit = BelowTop();
        exit.savedPos = bitPos;
        exit.savedTagCount = tags.size();
        exit.savedRecordCount = records.size();
        exit.savedFieldDepth = fieldDepth;
    }
}

/// Of a repetition of bits of any value, the iterations that the bits are left for take no
/// instructions behind the first one.
void SlowMachine::SpareWhatPadsOn() {
    constexpr std::uint8_t kSkip = 0xC0;
    const std::uint8_t body = program_.code.at(pc);
    const std::int32_t bits = body & 0x3F;
    if ((body & kSkip) == kSkip && pc + 1 == instruction_ && bits > 0 && !Lacks(body & 0x3FU)) {
        instructionsLeft += 2;
    }
}

void SlowMachine::SetCount(std::uint32_t count) {
    SetMinLeft(Top(), count);
    LoopCheck(loopExit);
}

void SlowMachine::CountFunction() {
    if (const std::optional<std::uint32_t> count = ValueCall(NextOperand())) {
        SetCount(*count);
    }
}

void SlowMachine::CountFunctionByDirection() {
    const std::uint32_t encoding = NextOperand();
    const std::uint32_t decoding = NextOperand();
    if (const std::optional<std::uint32_t> count = ValueCall(encode ? encoding : decoding)) {
        SetCount(*count);
    }
}

std::optional<std::uint32_t> SlowMachine::ValueCall(std::uint32_t index) {
    constexpr std::uint32_t kNotThere = 16384;
    const std::uint32_t value = program_.value(index, *this);
    if (value < kNotThere) {
        return value;
    }
    if (value > kNotThere || !Backtrack()) {
        abort = true;
    }
    return std::nullopt;
}

/// The bits from the position noted under a tag up to here, as a number.
std::uint32_t SlowMachine::BitsSince(std::uint32_t tag) const {
    const std::int32_t from = TagValue(tag);
    return Read(from, std::int64_t{bitPos} - from);
}

void SlowMachine::ValueEquals() {
    const std::uint32_t tag = NextOperand();
    const std::uint32_t wanted = NextOperand();
    if (BitsSince(tag) != wanted) {
        Back();
    }
}

void SlowMachine::ValueInRange() {
    const std::uint32_t tag = NextOperand();
    const std::uint32_t low = NextOperand();
    const std::uint32_t high = NextOperand();
    const std::uint32_t number = BitsSince(tag);
    if (number < low || number > high) {
        Back();
    }
}

void SlowMachine::ValueEqualsFunction() {
    const std::uint32_t tag = NextOperand();
    const std::optional<std::uint32_t> wanted = ValueCall(NextOperand());
    if (wanted && BitsSince(tag) != *wanted) {
        Back();
    }
}

void SlowMachine::ValueInFunctionRange() {
    const std::uint32_t tag = NextOperand();
    const std::uint32_t lowFunction = NextOperand();
    const std::uint32_t highFunction = NextOperand();
    const std::optional<std::uint32_t> low = ValueCall(lowFunction);
    if (!low) {
        return;
    }
    const std::optional<std::uint32_t> high = ValueCall(highFunction);
    if (!high) {
        return;
    }
    const std::uint32_t number = BitsSince(tag);
    if (number < *low || number > *high) {
        Back();
    }
}

}  // namespace quorvane::reference
