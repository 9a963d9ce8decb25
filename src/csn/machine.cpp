// The main loop of the CSN.1 machine and its instructions.

#include "csn/machine.h"

#include <algorithm>

namespace quorvane::csn {
namespace {

/// A number as the tag store holds it.
std::int32_t AsTag(std::uint32_t number) {
    return static_cast<std::int32_t>(number);
}

/// How the run goes on behind an instruction.
enum class Next {
    kOn,      // at `pc`
    kBack,    // at the nearest choice point
    kFailed,  // not at all
    kEnded,   // not at all: the outermost rule has ended
};

/// Executes single instructions of a run.
class Stepper {
  public:
    Stepper(CsnMachine& machine, CsnCallback callback) : machine_(machine), callback_(callback) {}

    Next Step();

  private:
    struct Literal {
        std::uint32_t value = 0;
        std::int32_t width = -1;
    };

    [[nodiscard]] bool Flag(std::uint32_t flag) const { return (machine_.flags & flag) != 0; }
    [[nodiscard]] bool Encoding() const { return Flag(kFlagEncode); }
    [[nodiscard]] bool Rescanning() const { return Flag(kFlagRescan); }
    [[nodiscard]] bool Writing() const {
        return Encoding() && !Rescanning() && machine_.sourceLimit == kNoLimit;
    }
    [[nodiscard]] bool KeepsRecords() const {
        return static_cast<std::uint16_t>(machine_.rootTag) != kNoRecords;
    }
    [[nodiscard]] bool IsLeft(std::uint32_t bits) const {
        return std::int64_t{machine_.bitPos} + bits <= machine_.endPos;
    }
    [[nodiscard]] std::uint32_t Peek(std::uint32_t bits) const {
        return machine_.reader.Read(machine_.bitPos, static_cast<std::int32_t>(bits));
    }

    std::uint32_t Operand() { return ReadOperand(machine_.program->code, machine_.pc); }
    std::uint32_t ShortOperand(std::uint32_t first) {
        return (first & 0x3FU) << 8 | machine_.program->code[machine_.pc++];
    }
    static Literal Unpack(std::uint32_t packed) {
        return {packed >> 4, static_cast<std::int32_t>((packed & 0xFU) + 1)};
    }

    Next Pass(std::uint32_t bits);
    Next Bit(std::uint32_t wanted) { return Fixed({wanted, 1}); }
    Next Fixed(Literal literal);
    Next Skip(std::uint32_t bits);
    Next Act(std::uint32_t action);
    Next Alternative(std::uint32_t operand);
    Next Call(std::uint32_t label);
    Next Return(bool dropTags);
    Next Exclude(std::uint32_t distance);
    Next ExcludeEnd();
    Next Rescan();
    void ReadAgain(std::int32_t mark);
    Next Enter(std::uint32_t exit, std::uint32_t least, std::uint32_t most) {
        LoopEnter(machine_, instr_, exit, least, most);
        return Next::kOn;
    }
    Next Loop(std::uint32_t distance);
    Next Repeat(std::uint32_t exit, std::uint32_t function);
    Next Require(std::uint32_t count);
    Next RequireResult(std::uint32_t function);
    Next Compare(std::uint32_t tag, std::uint32_t low, std::uint32_t high);
    Next Field(std::uint32_t id, std::uint32_t width, Literal literal);
    Next Begin(std::uint32_t operand);
    Next End(std::uint32_t operand, bool keepValue);

    [[nodiscard]] bool Delivers() const {
        return callback_ != nullptr && !Rescanning() && machine_.sourceNesting == 0;
    }
    CsnFieldEvent EventOf(std::uint32_t id, std::int32_t kind, std::int32_t bitLength);

    CsnMachine& machine_;
    const CsnCallback callback_;
    std::uint32_t instr_ = 0;  // offset of the instruction under way
};

Next AnswerOf(std::int32_t answer) {
    return answer == kNotThere ? Next::kBack : answer == kGiveUp ? Next::kFailed : Next::kOn;
}

Next Stepper::Step() {
    instr_ = machine_.pc;
    const std::uint8_t first = machine_.program->code[machine_.pc++];
    switch (OpcodeOf(first)) {
        case Opcode::kNop:
            return Next::kOn;
        case Opcode::kFail:
            return Next::kBack;
        case Opcode::kBit0:
            return Bit(0);
        case Opcode::kBit1:
            return Bit(1);
        case Opcode::kBitH:
            return Bit(PaddingBit(machine_.bitPos) ^ 1U);
        case Opcode::kBitL:
            return Bit(PaddingBit(machine_.bitPos));
        case Opcode::kPop:
            PopEntry(machine_);
            return Next::kOn;
        case Opcode::kExclude:
            return Exclude(Operand());
        case Opcode::kExcludeEnd:
            return ExcludeEnd();
        case Opcode::kAct:
            return Act(Operand());
        case Opcode::kActDec:
        case Opcode::kActEnc: {
            const std::uint32_t action = Operand();
            return Encoding() == (OpcodeOf(first) == Opcode::kActEnc) ? Act(action) : Next::kOn;
        }
        case Opcode::kCall:
            return Call(Operand());
        case Opcode::kRescan:
            return Rescan();
        case Opcode::kRescanEnd:
            // The entry's end is not put back: what follows a second reading is limited by it.
            PopEntry(machine_);
            return Next::kOn;
        case Opcode::kSkipEnc: {
            const std::uint32_t distance = Operand();
            if (Encoding()) {
                machine_.pc = instr_ + distance;
            }
            return Next::kOn;
        }
        case Opcode::kField: {
            const std::uint32_t id = Operand();
            return Field(id, Operand(), {});
        }
        case Opcode::kBegin:
            return Begin(Operand());
        case Opcode::kEnd:
            return End(Operand(), false);
        case Opcode::kEndTag:
            return End(Operand(), true);
        case Opcode::kRep: {
            const std::uint32_t exit = Operand();
            const std::uint32_t count = Operand();
            return Enter(exit, count, count);
        }
        case Opcode::kRepBit: {
            const std::uint32_t exit = Operand();
            const std::uint32_t tag = Operand();
            const std::uint32_t offset = Operand();
            const std::int64_t position = std::int64_t{TagValue(machine_, AsTag(tag))} + offset;
            const std::uint32_t count = machine_.reader.Read(position, 1);
            return Enter(exit, count, count);
        }
        case Opcode::kRepTag: {
            const std::uint32_t exit = Operand();
            const auto count = static_cast<std::uint32_t>(TagValue(machine_, AsTag(Operand())));
            return Enter(exit, count, count);
        }
        case Opcode::kRepAny:
            return Enter(Operand(), 0, kOpenEndedCount);
        case Opcode::kRepMore:
            return Enter(Operand(), 1, kOpenEndedCount);
        case Opcode::kRepRange: {
            const std::uint32_t exit = Operand();
            const std::uint32_t least = Operand();
            return Enter(exit, least, Operand());
        }
        case Opcode::kRepFn: {
            const std::uint32_t exit = Operand();
            return Repeat(exit, Operand());
        }
        case Opcode::kRepFn2: {
            const std::uint32_t exit = Operand();
            const std::uint32_t encode = Operand();
            const std::uint32_t decode = Operand();
            return Repeat(exit, Encoding() ? encode : decode);
        }
        case Opcode::kRepFnEnc: {
            const std::uint32_t exit = Operand();
            const std::uint32_t function = Operand();
            return Encoding() ? Repeat(exit, function) : Enter(exit, 0, kOpenEndedCount);
        }
        case Opcode::kLoop:
            return Loop(Operand());
        case Opcode::kCountFn:
            return RequireResult(Operand());
        case Opcode::kCountFn2: {
            const std::uint32_t encode = Operand();
            const std::uint32_t decode = Operand();
            return RequireResult(Encoding() ? encode : decode);
        }
        case Opcode::kCount:
            return Require(Operand());
        case Opcode::kMark:
            PushEntry(machine_, static_cast<std::uint32_t>(machine_.bitPos), kPlainEntry);
            return Next::kOn;
        case Opcode::kRet:
            return Return(false);
        case Opcode::kTagPos:
            TagAdd(machine_, AsTag(Operand()), machine_.bitPos);
            return Next::kOn;
        case Opcode::kCommit:
            return Commit(machine_) ? Next::kOn : Next::kFailed;
        case Opcode::kLit:
            return Fixed(Unpack(Operand()));
        case Opcode::kValEq: {
            const std::uint32_t tag = Operand();
            const std::uint32_t value = Operand();
            return Compare(tag, value, value);
        }
        case Opcode::kValRange: {
            const std::uint32_t tag = Operand();
            const std::uint32_t low = Operand();
            return Compare(tag, low, Operand());
        }
        case Opcode::kValEqFn: {
            const std::uint32_t tag = Operand();
            std::uint32_t value = 0;
            return ValueCall(machine_, Operand(), value) ? Compare(tag, value, value) : Next::kOn;
        }
        case Opcode::kValRangeFn: {
            const std::uint32_t tag = Operand();
            const std::uint32_t lowFunction = Operand();
            const std::uint32_t highFunction = Operand();
            std::uint32_t low = 0;
            std::uint32_t high = 0;
            const bool called =
                ValueCall(machine_, lowFunction, low) && ValueCall(machine_, highFunction, high);
            return called ? Compare(tag, low, high) : Next::kOn;
        }
        case Opcode::kFieldLit: {
            const std::uint32_t id = Operand();
            const Literal literal = Unpack(Operand());
            return Field(id, static_cast<std::uint32_t>(literal.width), literal);
        }
        case Opcode::kAtEnd:
            return !Encoding() && machine_.bitPos < machine_.endPos ? Next::kBack : Next::kOn;
        case Opcode::kRetTags:
            return Return(true);
        case Opcode::kJmp:
            machine_.pc = JumpDistance(instr_, ShortOperand(first));
            return Next::kOn;
        case Opcode::kAlt:
            return Alternative(ShortOperand(first));
        case Opcode::kSkip:
            return Skip(first & 0x3FU);
    }
    return Next::kOn;
}

Next Stepper::Pass(std::uint32_t bits) {
    const std::int64_t position = std::int64_t{machine_.bitPos} + bits;
    if (position > kMostPosition) {
        return Next::kFailed;
    }
    machine_.bitPos = static_cast<std::int32_t>(position);
    return Next::kOn;
}

Next Stepper::Fixed(Literal literal) {
    const auto width = static_cast<std::uint32_t>(literal.width);
    if (Writing()) {
        machine_.writer->Write(machine_.bitPos, literal.value, literal.width);
    } else if (!IsLeft(width) || Peek(width) != literal.value) {
        return Next::kBack;
    }
    return Pass(width);
}

Next Stepper::Skip(std::uint32_t bits) {
    if (Writing()) {
        machine_.writer->Write(machine_.bitPos, 0, static_cast<std::int32_t>(bits));
    } else if (!IsLeft(bits)) {
        return Next::kBack;
    }
    return Pass(bits);
}

Next Stepper::Act(std::uint32_t action) {
    machine_.program->actionTable[action](machine_);
    if (Flag(kFlagRefused)) {
        machine_.flags &= ~kFlagRefused;
        Backtrack(machine_);  // without a choice point the run goes on
    }
    return Next::kOn;
}

Next Stepper::Alternative(std::uint32_t operand) {
    const std::uint32_t target = JumpDistance(instr_, operand & (kAltFlag - 1));
    const bool flag = (operand & kAltFlag) != 0;
    if (flag && Writing() && machine_.stackDepth > 0 &&
        machine_.stack[machine_.stackDepth - 1].inOpenLoop != 0) {
        // The writer of an open repetition would take an empty last branch for ever.
        machine_.pc = target;
    } else {
        PushEntry(machine_, target, kChoice);
    }
    return Next::kOn;
}

Next Stepper::Call(std::uint32_t label) {
    PushEntry(machine_, machine_.pc, kPlainEntry);
    machine_.pc = label;
    return Next::kOn;
}

Next Stepper::Return(bool dropTags) {
    if (machine_.stackDepth < 1) {
        return Next::kEnded;
    }
    const CsnStackEntry& entry = machine_.stack[machine_.stackDepth - 1];
    if (dropTags) {
        machine_.tagCount = entry.savedTagCount;
    }
    PopEntry(machine_);
    machine_.pc = entry.value;
    return Next::kOn;
}

Next Stepper::Exclude(std::uint32_t distance) {
    if (machine_.stackDepth < 1) {
        return Next::kFailed;
    }
    PopEntry(machine_);
    const std::int32_t mark = machine_.stack[machine_.stackDepth].Position();
    PushEntry(machine_, instr_ + distance, kChoice);
    ReadAgain(mark);
    return Next::kOn;
}

Next Stepper::ExcludeEnd() {
    if (machine_.stackDepth < 2) {
        return Next::kFailed;
    }
    PopEntry(machine_);
    machine_.endPos = machine_.stack[machine_.stackDepth].Position();
    PopEntry(machine_);
    return Next::kBack;
}

Next Stepper::Rescan() {
    if (machine_.stackDepth < 1) {
        return Next::kFailed;
    }
    PopEntry(machine_);
    ReadAgain(machine_.stack[machine_.stackDepth].Position());
    return Next::kOn;
}

void Stepper::ReadAgain(std::int32_t mark) {
    PushEntry(machine_, static_cast<std::uint32_t>(machine_.endPos), kRestoresEnd);
    machine_.flags |= kFlagRescan;
    machine_.endPos = machine_.bitPos;
    machine_.bitPos = mark;
}

Next Stepper::Loop(std::uint32_t distance) {
    if (machine_.stackDepth < 2) {
        return Next::kFailed;
    }
    CsnStackEntry& counter = machine_.stack[machine_.stackDepth - 1];
    const std::uint32_t maxLeft = counter.MaxLeft();
    if (maxLeft > 0 && maxLeft != kOpenEndedCount) {
        counter.SetMaxLeft(maxLeft - 1);
    }
    if (maxLeft == 1) {
        PopEntry(machine_);
        PopEntry(machine_);
        return Next::kOn;
    }
    const std::uint32_t minLeft = counter.MinLeft();
    if (minLeft > 0) {
        counter.SetMinLeft(minLeft - 1);
        if (LoopCheck(machine_, machine_.pc)) {
            return Next::kOn;
        }
        machine_.pc = instr_ - distance;
    } else if (Writing() && counter.SkipWhenWriting()) {
        PopEntry(machine_);
        PopEntry(machine_);
    } else {
        machine_.pc = instr_ - distance;
        if (maxLeft == kOpenEndedCount && !Writing()) {
            PassPadding(machine_, instr_);
        }
    }
    if (machine_.stackDepth >= 2 && machine_.stack[machine_.stackDepth - 1].MinLeft() == 0) {
        // A later iteration that fails is undone up to here.
        CsnStackEntry& below = machine_.stack[machine_.stackDepth - 2];
        below.SavePos(machine_.bitPos);
        below.savedTagCount = machine_.tagCount;
        below.savedRecordCount = machine_.recordCount;
        below.savedFieldDepth = machine_.fieldDepth;
    }
    return Next::kOn;
}

Next Stepper::Repeat(std::uint32_t exit, std::uint32_t function) {
    std::uint32_t count = 0;
    return ValueCall(machine_, function, count) ? Enter(exit, count, count) : Next::kOn;
}

Next Stepper::Require(std::uint32_t count) {
    if (machine_.stackDepth < 1) {
        return Next::kFailed;
    }
    machine_.stack[machine_.stackDepth - 1].SetMinLeft(count);
    LoopCheck(machine_, machine_.loopExit);
    return Next::kOn;
}

Next Stepper::RequireResult(std::uint32_t function) {
    std::uint32_t count = 0;
    return ValueCall(machine_, function, count) ? Require(count) : Next::kOn;
}

Next Stepper::Compare(std::uint32_t tag, std::uint32_t low, std::uint32_t high) {
    const std::int32_t from = TagValue(machine_, AsTag(tag));
    const std::uint32_t number = ReadBetween(machine_.reader, from, machine_.bitPos);
    return number < low || number > high ? Next::kBack : Next::kOn;
}

CsnFieldEvent Stepper::EventOf(std::uint32_t id, std::int32_t kind, std::int32_t bitLength) {
    const auto index = static_cast<std::int16_t>(machine_.program->fieldTable[id - 1]);
    return {&machine_, index, id, machine_.bitPos, bitLength, kind, 0, -1, 0};
}

Next Stepper::Field(std::uint32_t id, std::uint32_t width, Literal literal) {
    const bool fixed = literal.width >= 0;
    const bool encoding = Encoding();
    const bool checkedBehind = encoding && !Rescanning();
    if (fixed && !checkedBehind && (!IsLeft(width) || Peek(width) != literal.value)) {
        return Next::kBack;
    }
    if (!encoding && !IsLeft(width)) {
        return Next::kBack;
    }
    const std::int32_t start = machine_.bitPos;
    std::int32_t tag = 0;
    if (KeepsRecords()) {
        tag = FieldTagLookup(machine_, id, false);
        RecordBegin(machine_, tag);
        if (!encoding) {
            // The closing record follows at once, so that the two give the field's length.
            machine_.bitPos += static_cast<std::int32_t>(width);
            RecordEnd(machine_, tag);
            machine_.bitPos = start;
        }
    }
    if (Delivers()) {
        const auto length = static_cast<std::int32_t>(width);
        CsnFieldEvent event = EventOf(id, kWholeField, length);
        event.literalValue = literal.value;
        event.literalWidth = literal.width;
        const Next next = AnswerOf(callback_(event));
        if (next != Next::kOn) {
            return next;
        }
        if (encoding && event.bitLength != length) {
            return Next::kBack;
        }
    }
    const Next passed = Pass(width);
    if (passed != Next::kOn) {
        return passed;
    }
    if (KeepsRecords() && encoding) {
        RecordEnd(machine_, tag);
    }
    const bool differs =
        fixed && checkedBehind && machine_.reader.Read(start, literal.width) != literal.value;
    return differs ? Next::kBack : Next::kOn;
}

Next Stepper::Begin(std::uint32_t operand) {
    const std::uint32_t id = operand >> 1;
    const bool sized = (operand & 1U) != 0;
    PushEntry(machine_, 0, kPlainEntry);
    machine_.stack[machine_.stackDepth - 1].inOpenLoop = 0;
    if (KeepsRecords()) {
        RecordBegin(machine_, FieldTagLookup(machine_, id, false));
    }
    const bool encoding = Encoding();
    if (!Delivers() || (!encoding && sized)) {
        if (machine_.sourceLimit != kNoLimit) {
            ++machine_.sourceNesting;
        }
        return Next::kOn;
    }
    CsnFieldEvent event = EventOf(id, sized ? kWholeField : kGroupOpens, 0);
    const Next next = AnswerOf(callback_(event));
    if (next == Next::kOn && encoding && (sized || event.bitLength > 0)) {
        // The source has written the field: its structure is now read, not written.
        const std::int64_t limit = std::int64_t{machine_.bitPos} + event.bitLength;
        if (limit > kMostPosition) {
            return Next::kFailed;
        }
        machine_.sourceLimit = static_cast<std::int32_t>(std::max<std::int64_t>(limit, 0));
        machine_.endPos = machine_.sourceLimit;
        machine_.sourceNesting = 1;
    }
    return next;
}

Next Stepper::End(std::uint32_t operand, bool keepValue) {
    const std::uint32_t id = operand >> 1;
    const bool sized = (operand & 1U) != 0;
    if (machine_.stackDepth < 1) {
        return Next::kFailed;
    }
    const std::int32_t start = machine_.stack[machine_.stackDepth - 1].SavedPos();
    if (machine_.sourceLimit != kNoLimit) {
        if (machine_.sourceNesting == 1 && machine_.bitPos != machine_.sourceLimit) {
            return Next::kBack;
        }
        if (--machine_.sourceNesting == 0) {
            machine_.sourceLimit = kNoLimit;
        }
    }
    if (machine_.sourceLimit == kNoLimit) {
        if (KeepsRecords()) {
            RecordEnd(machine_, FieldTagLookup(machine_, id, true));
        }
        if (Delivers() && (!Encoding() || !sized)) {
            CsnFieldEvent event =
                EventOf(id, sized ? kWholeField : kGroupCloses, machine_.bitPos - start);
            event.bitPos = start;
            const Next next = AnswerOf(callback_(event));
            if (next != Next::kOn) {
                return next;
            }
        }
    }
    PopEntry(machine_);
    if (keepValue) {
        const std::uint32_t value = ReadBetween(machine_.reader, start, machine_.bitPos);
        TagAdd(machine_, AsTag(Operand()), static_cast<std::int32_t>(value));
    }
    return Next::kOn;
}

/// Executes instructions as long as the run goes on and any are `left`. kOn: an action has ended
/// it.
Next Walk(CsnMachine& machine, CsnCallback callback, std::uint64_t& left) {
    Stepper stepper(machine, callback);
    while ((machine.flags & kFlagRunning) != 0) {
        if (left == 0) {
            return Next::kFailed;
        }
        --left;
        const Next next = stepper.Step();
        if (next == Next::kEnded) {
            return next;
        }
        if (next == Next::kFailed || (next == Next::kBack && !Backtrack(machine)) ||
            (machine.flags & kFlagAbort) != 0) {
            return Next::kFailed;
        }
    }
    return Next::kOn;
}

}  // namespace

bits::Outcome CsnMachineRun(CsnMachine& machine, CsnCallback callback) {
    StartRun(machine);
    if ((machine.flags & kFlagAbort) != 0) {
        return kSyntaxError;
    }
    std::uint64_t left = machine.instructionsLeft;  // of its own, where a register can hold it
    const Next last = Walk(machine, callback, left);
    machine.instructionsLeft = left;
    const bool mayEnd = last == Next::kOn || machine.bitPos == machine.endPos ||
                        (machine.flags & (kFlagEncode | kFlagPartialOk)) != 0;
    return last != Next::kFailed && mayEnd ? bits::Outcome(machine.bitPos - machine.startPos)
                                           : kSyntaxError;
}

}  // namespace quorvane::csn
