#include "reference/csn_slow_machine.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace quorvane::reference {
namespace {

/// The value of an entry where it is a position: 30 bits, of which the first is the sign.
std::int32_t PositionIn(const SlowEntry& entry) {
    const auto value = static_cast<std::int32_t>(entry.value);
    return value < 1 << 29 ? value : value - (1 << 30);
}

}  // namespace

SlowMachine::SlowMachine(const SlowProgram& program, std::uint32_t label, std::vector<bool> bits,
                         std::int32_t position, std::int32_t length, bool encoding)
    : buffer(std::move(bits)),
      pc(label),
      bitPos(position),
      bitLength(length),
      encode(encoding),
      program_(program) {}

std::int32_t SlowMachine::Run(const SlowSource& source) {
    source_ = &source;
    startPos = bitPos;
    endPos = static_cast<std::int32_t>(
        std::clamp<std::int64_t>(std::int64_t{bitPos} + bitLength, -kFarthest, kFarthest));
    const std::int64_t room = static_cast<std::int64_t>(buffer.size()) - bitPos;
    const std::int64_t atHand = std::max<std::int64_t>(encode ? room : bitLength, 0);
    instructionsLeft =
        limits.instructions.value_or(65536 + 64 * static_cast<std::uint64_t>(atHand));
    while (running && !result_ && !abort) {
        if (instructionsLeft == 0) {
            return -1;
        }
        --instructionsLeft;
        Step();
    }
    if (abort) {
        return -1;
    }
    return result_ ? *result_ : bitPos - startPos;
}

void SlowMachine::Step() {
    event_ = SlowEvent{};
    writing_ = encode && !rescan && sourceLimit == kNoLimit;
    instruction_ = pc;
    const std::uint8_t first = NextOctet();
    switch (first >> 6U) {
        case 0:
            Plain(first);
            break;
        case 1:
            Jump(NextFourteenBits(first));
            break;
        case 2:
            Alternative(NextFourteenBits(first));
            break;
        default:
            Skip(first & 0x3FU);
            break;
    }
}

void SlowMachine::Plain(std::uint8_t opcode) {
    switch (opcode) {
        case 0x01:
            return Back();
        case 0x02:
            return FixedBit(false);
        case 0x03:
            return FixedBit(true);
        case 0x04:
            return FixedBit(!PaddingBit());
        case 0x05:
            return FixedBit(PaddingBit());
        case 0x06:
            PopEntry();
            return;
        case 0x07:
            return Exclude();
        case 0x08:
            return ExcludeEnd();
        case 0x09:
            return Action(true);
        case 0x0A:
            return Action(!encode);
        case 0x0B:
            return Action(encode);
        case 0x0C:
            return Call();
        case 0x0D:
            return Rescan();
        case 0x0E:
            PopEntry();
            return;
        case 0x0F:
            return SkipEncoding();
        case 0x10:
            return Field();
        case 0x11:
            return BeginField();
        case 0x12:
            return EndField(false);
        case 0x13:
            return EndField(true);
        case 0x14:
            return Repeat();
        case 0x15:
            return RepeatBit();
        case 0x16:
            return RepeatTag();
        case 0x17:
            return RepeatAny(0);
        case 0x18:
            return RepeatAny(1);
        case 0x19:
            return RepeatRange();
        case 0x1A:
            return RepeatFunction();
        case 0x1B:
            return RepeatFunctionByDirection();
        case 0x1C:
            return RepeatFunctionEncoding();
        case 0x1D:
            return Loop();
        case 0x1E:
            return CountFunction();
        case 0x1F:
            return CountFunctionByDirection();
        case 0x20:
            return SetCount(NextOperand());
        case 0x22:
            return Mark();
        case 0x23:
            return Return();
        case 0x24:
            return TagAdd(NextOperand(), bitPos);
        case 0x25:
            return CommitOrEnd();
        case 0x26:
            return Literal();
        case 0x27:
            return ValueEquals();
        case 0x28:
            return ValueInRange();
        case 0x29:
            return ValueEqualsFunction();
        case 0x2A:
            return ValueInFunctionRange();
        case 0x2B:
            return FieldLiteral();
        case 0x2C:
            return AtEnd();
        case 0x2D:
            return ReturnWithTags();
        default:
            return;
    }
}

void SlowMachine::End(std::int32_t result) {
    result_ = result;
}

void SlowMachine::Back() {
    if (!Backtrack()) {
        End(-1);
    }
}

std::uint8_t SlowMachine::NextOctet() {
    return program_.code.at(pc++);
}

/// Groups of 7 bits, the most significant first. The fifth octet gives 4 bits and is the last one.
std::uint32_t SlowMachine::NextOperand() {
    std::uint32_t value = 0;
    std::uint32_t free = 32;
    bool more = true;
    while (more && free > 0) {
        const std::uint8_t octet = NextOctet();
        const std::uint32_t taken = std::min(free, 7U);
        value = value << taken | (octet & ((1U << taken) - 1U));
        free -= taken;
        more = (octet & 0x80U) != 0;
    }
    return value;
}

std::uint32_t SlowMachine::NextFourteenBits(std::uint8_t first) {
    const std::uint32_t high = first & 0x3FU;
    return high << 8U | NextOctet();
}

std::uint32_t SlowMachine::JumpDistance(std::uint32_t base, std::uint32_t code) {
    const std::uint32_t m = code & 0xFFFU;
    std::uint32_t start = 0;
    std::uint32_t granule = 1;
    switch (code >> 13U & 3U) {
        case 0:
            return base + m;
        case 1:
            start = 4096;
            granule = 8;
            break;
        case 2:
            start = 36864;
            granule = 16;
            break;
        default:
            start = 102400;
            granule = 32;
            break;
    }
    std::uint32_t target = base + start + granule * m;
    while (target % granule != 0) {
        ++target;
    }
    return target;
}

// --- The stack ---

void SlowMachine::PushEntry(std::uint32_t value, bool isChoice, bool openEnded, bool restoresEnd) {
    if (stack.size() >= limits.stack) {
        abort = true;
        return;
    }
    SlowEntry entry;
    entry.isChoice = isChoice;
    entry.openEnded = openEnded;
    entry.inOpenLoop = openEnded || (!stack.empty() && stack.back().openEnded);
    entry.restoresEnd = restoresEnd;
    entry.value = value & 0x3FFFFFFFU;
    entry.savedPos = bitPos;
    entry.savedRescan = rescan;
    entry.savedLimit = sourceLimit;
    entry.savedNesting = sourceNesting;
    entry.savedTagCount = tags.size();
    entry.savedRecordCount = records.size();
    entry.savedFieldDepth = fieldDepth;
    stack.push_back(entry);
}

SlowEntry SlowMachine::PopEntry() {
    const SlowEntry entry = Top();
    stack.pop_back();
    fieldDepth = entry.savedFieldDepth;
    rescan = entry.savedRescan;
    return entry;
}

SlowEntry& SlowMachine::Top() {
    if (stack.empty()) {
        throw std::logic_error("the stack is empty");
    }
    return stack.back();
}

SlowEntry& SlowMachine::BelowTop() {
    return stack.at(stack.size() - 2);
}

bool SlowMachine::Backtrack() {
    if (stack.size() >= limits.stack) {
        return false;
    }
    std::size_t at = stack.size();
    while (at > 0) {
        --at;
        const SlowEntry entry = stack[at];
        if (entry.restoresEnd) {
            endPos = PositionIn(entry);
        }
        if (entry.isChoice) {
            bitPos = entry.savedPos;
            sourceLimit = entry.savedLimit;
            sourceNesting = entry.savedNesting;
            rescan = entry.savedRescan;
            tags.resize(entry.savedTagCount);
            records.resize(entry.savedRecordCount);
            fieldDepth = entry.savedFieldDepth;
            pc = entry.value;
            stack.resize(at);
            return true;
        }
    }
    return false;
}

bool SlowMachine::Commit() {
    for (std::size_t at = stack.size(); at > 0; --at) {
        SlowEntry& entry = stack[at - 1];
        if (entry.isChoice) {
            entry.savedPos = bitPos;
            entry.savedLimit = sourceLimit;
            entry.savedNesting = sourceNesting;
            entry.savedTagCount = tags.size();
            entry.savedRecordCount = records.size();
            entry.savedFieldDepth = fieldDepth;
            return true;
        }
    }
    return false;
}

// --- Tags ---

void SlowMachine::TagAdd(std::uint32_t tag, std::int32_t value) {
    if (tags.size() >= limits.tags) {
        abort = true;
        return;
    }
    tags.push_back({tag, value});
}

void SlowMachine::TagUpdate(std::uint32_t tag, std::int32_t value) {
    for (std::size_t at = tags.size(); at > 0; --at) {
        if (tags[at - 1].tag == tag) {
            tags[at - 1].value = value;
            return;
        }
    }
}

std::int32_t SlowMachine::TagValue(std::uint32_t tag) const {
    for (std::size_t at = tags.size(); at > 0; --at) {
        if (tags[at - 1].tag == tag) {
            return tags[at - 1].value;
        }
    }
    return -1;
}

std::int32_t SlowMachine::TagValueOrZero(std::uint32_t tag) const {
    for (const SlowTag& entry : tags) {
        if (entry.tag == tag) {
            return TagValue(tag);
        }
    }
    return 0;
}

// --- Bits ---

/// Of more than 32 bits the earlier ones are laid over the later ones.
std::uint32_t SlowMachine::Read(std::int64_t position, std::int64_t count) const {
    std::uint32_t value = 0;
    const std::int64_t end = position + count;
    const std::int64_t last = std::min(end, static_cast<std::int64_t>(buffer.size()));
    for (std::int64_t at = std::max<std::int64_t>(position, 0); at < last; ++at) {
        if (buffer[static_cast<std::size_t>(at)]) {
            value |= 1U << static_cast<std::uint32_t>((end - 1 - at) % 32);
        }
    }
    return value;
}

void SlowMachine::Write(std::int64_t position, std::uint32_t value, std::int32_t count) {
    const std::int64_t end = position + count;
    for (std::int64_t at = position; at < end; ++at) {
        if (at < 0 || at >= static_cast<std::int64_t>(buffer.size())) {
            overflowed = true;
            continue;
        }
        buffer[static_cast<std::size_t>(at)] =
            (value >> static_cast<std::uint32_t>((end - 1 - at) % 32) & 1U) != 0;
    }
}

std::uint32_t SlowMachine::LastBits(std::int32_t count) const {
    return Read(std::int64_t{bitPos} - count, count);
}

bool SlowMachine::Lacks(std::uint32_t count) const {
    return std::int64_t{bitPos} + count > endPos;
}

/// Moves on. A run that gets beyond the farthest position has failed.
bool SlowMachine::Pass(std::uint32_t count) {
    if (std::int64_t{bitPos} + count > kFarthest) {
        End(-1);
        return false;
    }
    bitPos += static_cast<std::int32_t>(count);
    return true;
}

/// Of the octet 0x2B, which is repeated from the start of the message.
bool SlowMachine::PaddingBit() const {
    constexpr bool kPadding[8] = {false, false, true, false, true, false, true, true};
    return kPadding[static_cast<std::uint32_t>(bitPos) % 8];
}

void SlowMachine::FixedBit(bool bit) {
    if (writing_) {
        Write(bitPos, bit ? 1 : 0, 1);
    } else if (Lacks(1) || Read(bitPos, 1) != (bit ? 1U : 0U)) {
        return Back();
    }
    Pass(1);
}

void SlowMachine::Literal() {
    const std::uint32_t operand = NextOperand();
    const std::uint32_t value = operand >> 4U;
    const auto width = static_cast<std::int32_t>(operand & 15U) + 1;
    if (writing_) {
        Write(bitPos, value, width);
    } else if (Lacks(static_cast<std::uint32_t>(width)) || Read(bitPos, width) != value) {
        return Back();
    }
    Pass(static_cast<std::uint32_t>(width));
}

void SlowMachine::Skip(std::uint32_t count) {
    if (writing_) {
        Write(bitPos, 0, static_cast<std::int32_t>(count));
    } else if (Lacks(count)) {
        return Back();
    }
    Pass(count);
}

void SlowMachine::AtEnd() {
    if (!encode && bitPos < endPos) {
        Back();
    }
}

// --- Flow ---

void SlowMachine::Jump(std::uint32_t operand) {
    pc = JumpDistance(instruction_, operand);
}

void SlowMachine::Alternative(std::uint32_t operand) {
    const bool flag = (operand & 0x2000U) != 0;
    const std::uint32_t target = JumpDistance(instruction_, operand & 0x1FFFU);
    if (flag && writing_ && !stack.empty() && stack.back().inOpenLoop) {
        pc = target;
    } else {
        PushEntry(target, true, false, false);
    }
}

void SlowMachine::Call() {
    const std::uint32_t label = NextOperand();
    PushEntry(pc, false, false, false);
    pc = label;
}

void SlowMachine::Return() {
    if (stack.empty()) {
        const bool mayEnd = bitPos == endPos || encode || partialOk;
        return End(mayEnd ? bitPos - startPos : -1);
    }
    pc = PopEntry().value;
}

void SlowMachine::ReturnWithTags() {
    if (!stack.empty()) {
        tags.resize(stack.back().savedTagCount);
    }
    Return();
}

void SlowMachine::CommitOrEnd() {
    if (!Commit()) {
        End(-1);
    }
}

void SlowMachine::SkipEncoding() {
    const std::uint32_t distance = NextOperand();
    if (encode) {
        pc = instruction_ + distance;
    }
}

void SlowMachine::Action(bool inThisDirection) {
    const std::uint32_t index = NextOperand();
    if (inThisDirection) {
        program_.action(index, *this);
    }
}

// --- Second readings ---

void SlowMachine::Mark() {
    PushEntry(static_cast<std::uint32_t>(bitPos), false, false, false);
}

void SlowMachine::Exclude() {
    const std::uint32_t distance = NextOperand();
    const SlowEntry mark = PopEntry();
    PushEntry(instruction_ + distance, true, false, false);
    PushEntry(static_cast<std::uint32_t>(endPos), false, false, true);
    rescan = true;
    endPos = bitPos;
    bitPos = PositionIn(mark);
}

void SlowMachine::ExcludeEnd() {
    endPos = PositionIn(PopEntry());
    PopEntry();
    Back();
}

void SlowMachine::Rescan() {
    const SlowEntry mark = PopEntry();
    PushEntry(static_cast<std::uint32_t>(endPos), false, false, true);
    rescan = true;
    endPos = bitPos;
    bitPos = PositionIn(mark);
}

}  // namespace quorvane::reference
