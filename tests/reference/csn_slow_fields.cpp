// Fields of the slow machine: what it notes of them, and how it asks the source of an encoder.

#include <algorithm>

#include "reference/csn_slow_machine.h"

namespace quorvane::reference {

void SlowMachine::Field() {
    const std::uint32_t id = NextOperand();
    const std::uint32_t width = NextOperand();
    WholeField(id, width);
}

void SlowMachine::FieldLiteral() {
    const std::uint32_t id = NextOperand();
    const std::uint32_t operand = NextOperand();
    const std::uint32_t value = operand >> 4U;
    const std::uint32_t width = (operand & 15U) + 1;
    const auto bits = static_cast<std::int32_t>(width);
    event_.literalValue = value;
    event_.literalWidth = bits;
    const bool offered = encode && !rescan;
    if (!offered && (Lacks(width) || Read(bitPos, bits) != value)) {
        return Back();
    }
    if (!WholeField(id, width)) {
        return;
    }
    // The source had the chance to write the value; what stands there now is looked at.
    if (offered && LastBits(bits) != value) {
        Back();
    }
}

/// False if the instruction ends here.
bool SlowMachine::WholeField(std::uint32_t id, std::uint32_t width) {
    const auto length = static_cast<std::int32_t>(width);
    if (!encode && Lacks(width)) {
        Back();
        return false;
    }
    const std::int32_t tag = KeepsRecords() ? FieldTag(id, false) : 0;
    if (KeepsRecords()) {
        RecordBegin(tag);
    }
    if (KeepsRecords() && !encode) {
        RecordEnd(tag, bitPos + length);
    }
    const Delivery delivery = Deliver(id, bitPos, length, 2);
    if (delivery == Delivery::kStopped) {
        return false;
    }
    if (delivery == Delivery::kGoOn && encode && event_.bitLength != length) {
        Back();
        return false;
    }
    if (!Pass(width)) {
        return false;
    }
    if (encode && KeepsRecords()) {
        RecordEnd(tag, bitPos);
    }
    return true;
}

void SlowMachine::BeginField() {
    const std::uint32_t operand = NextOperand();
    const std::uint32_t id = operand >> 1U;
    const bool sized = (operand & 1U) != 0;
    PushEntry(0, false, false, false);
    Top().inOpenLoop = false;
    if (KeepsRecords()) {
        RecordBegin(FieldTag(id, false));
    }
    Delivery delivery = Delivery::kNotCalled;
    if (encode || !sized) {
        delivery = Deliver(id, bitPos, 0, sized ? 2 : 0);
    }
    if (delivery == Delivery::kGoOn && encode && (sized || event_.bitLength > 0)) {
        // The source has written the field: its structure is read from here on.
        const std::int64_t limit = std::int64_t{bitPos} + event_.bitLength;
        if (limit > kFarthest) {
            return End(-1);
        }
        sourceLimit = static_cast<std::int32_t>(std::max<std::int64_t>(limit, 0));
        endPos = sourceLimit;
        sourceNesting = 1;
    }
    if (delivery == Delivery::kNotCalled && sourceLimit != kNoLimit) {
        ++sourceNesting;
    }
}

void SlowMachine::EndField(bool keepsTag) {
    const std::uint32_t operand = NextOperand();
    const std::uint32_t id = operand >> 1U;
    const bool sized = (operand & 1U) != 0;
    const std::int32_t start = Top().savedPos;
    if (sourceLimit != kNoLimit) {
        if (sourceNesting == 1 && bitPos != sourceLimit) {
            return Back();
        }
        --sourceNesting;
        if (sourceNesting == 0) {
            sourceLimit = kNoLimit;
        }
    }
    if (sourceLimit == kNoLimit) {
        if (KeepsRecords()) {
            RecordEnd(FieldTag(id, true), bitPos);
        }
        if (!encode || !sized) {
            if (Deliver(id, start, bitPos - start, sized ? 2 : 1) == Delivery::kStopped) {
                return;
            }
        }
    }
    PopEntry();
    if (keepsTag) {
        const std::uint32_t tag = NextOperand();
        TagAdd(tag, static_cast<std::int32_t>(Read(start, bitPos - start)));
    }
}

SlowMachine::Delivery SlowMachine::Deliver(std::uint32_t id, std::int32_t position,
                                           std::int32_t length, std::int32_t kind) {
    if (!*source_ || rescan || sourceNesting != 0) {
        return Delivery::kNotCalled;
    }
    event_.fieldIndex = static_cast<std::int16_t>(program_.fieldTable[id - 1]);
    event_.fieldId = id;
    event_.bitPos = position;
    event_.bitLength = length;
    event_.kind = kind;
    const std::int32_t answer = (*source_)(*this, event_);
    if (answer == 1) {
        Back();
        return Delivery::kStopped;
    }
    if (answer == 2) {
        End(-1);
        return Delivery::kStopped;
    }
    return Delivery::kGoOn;
}

bool SlowMachine::KeepsRecords() const {
    return (rootTag & 0xFFFF) != 0xFFFF;
}

/// The tag that a field has under the one around it. A field that closes counts as open itself.
std::int32_t SlowMachine::FieldTag(std::uint32_t id, bool closing) const {
    std::int32_t parentTag = rootTag;
    if (fieldDepth >= 1 && !(closing && fieldDepth == 1)) {
        const std::int32_t depth = closing ? fieldDepth - 2 : fieldDepth - 1;
        if (const std::optional<std::size_t> parent = NewestAtDepth(depth)) {
            parentTag = records[*parent].tag;
        }
    }
    for (std::size_t at = id;; at += 2) {
        if (program_.fieldTable[at] == static_cast<std::uint16_t>(parentTag)) {
            return program_.fieldTable[at + 1];
        }
    }
}

std::optional<std::size_t> SlowMachine::NewestAtDepth(std::int32_t depth) const {
    for (std::size_t at = records.size(); at > 0; --at) {
        if (records[at - 1].depth == depth) {
            return at - 1;
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> SlowMachine::ParentOfNew() const {
    return fieldDepth < 1 ? std::nullopt : NewestAtDepth(fieldDepth - 1);
}

void SlowMachine::RecordBegin(std::int32_t tag) {
    if (records.size() >= limits.records) {
        abort = true;
        return;
    }
    SlowRecord record;
    record.tag = tag;
    record.bitPos = bitPos;
    record.depth = fieldDepth;
    record.parent = ParentOfNew();
    record.occurrence = 0;
    for (std::size_t at = records.size(); at > 0; --at) {
        if (at - 1 == record.parent) {
            break;
        }
        if (records[at - 1].occurrence >= 0 && records[at - 1].tag == tag) {
            record.occurrence = records[at - 1].occurrence + 1;
            break;
        }
    }
    records.push_back(record);
    ++fieldDepth;
}

void SlowMachine::RecordEnd(std::int32_t tag, std::int32_t position) {
    if (records.size() >= limits.records) {
        abort = true;
        return;
    }
    SlowRecord record;
    record.tag = tag;
    record.occurrence = -1;
    record.bitPos = position;
    record.depth = fieldDepth;
    --fieldDepth;
    record.parent = ParentOfNew();
    records.push_back(record);
}

}  // namespace quorvane::reference
