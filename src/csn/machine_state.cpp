// Set-up, stack, tag store, field records and repetition of the CSN.1 machine.

#include <algorithm>
#include <iterator>

#include "csn/machine.h"

namespace quorvane::csn {
namespace {

constexpr std::uint32_t kValueMask = 0x3FFFFFFF;

void SetFlag(CsnMachine& machine, std::uint32_t flag, bool set) {
    machine.flags = set ? machine.flags | flag : machine.flags & ~flag;
}

CsnStackEntry& TopEntry(CsnMachine& machine) {
    return machine.stack[machine.stackDepth - 1];
}

const CsnFieldRecord* NewestAtDepth(const CsnMachine& machine, std::int32_t depth) {
    for (std::int32_t index = machine.recordCount - 1; index >= 0; --index) {
        if (machine.records[index].depth == depth) {
            return &machine.records[index];
        }
    }
    return nullptr;
}

/// The opening record of the innermost open field: the newest record one level up.
const CsnFieldRecord* EnclosingRecord(const CsnMachine& machine) {
    if (machine.fieldDepth < 1) {
        return nullptr;
    }
    if (machine.recordCount > 0) {
        // A field that has just closed had the same parent: no need to walk past its siblings.
        const CsnFieldRecord& newest = machine.records[machine.recordCount - 1];
        if (newest.occurrence < 0 && newest.depth == machine.fieldDepth + 1) {
            return newest.parent;
        }
    }
    return NewestAtDepth(machine, machine.fieldDepth - 1);
}

/// The parent of a field that is being closed, `machine.fieldDepth` being its own depth again.
const CsnFieldRecord* ParentOfClosing(const CsnMachine& machine) {
    if (machine.fieldDepth < 1) {
        return nullptr;
    }
    if (machine.recordCount > 0) {
        // The field's own opening record or the closing record of its last member knows.
        const CsnFieldRecord& newest = machine.records[machine.recordCount - 1];
        if (newest.occurrence >= 0 && newest.depth == machine.fieldDepth) {
            return newest.parent;
        }
        if (newest.occurrence < 0 && newest.depth == machine.fieldDepth + 2) {
            return newest.parent->parent;
        }
    }
    return NewestAtDepth(machine, machine.fieldDepth - 1);
}

std::int32_t NextOccurrence(CsnMachine& machine, const CsnFieldRecord* parent, std::int32_t tag) {
    // Most tags occur once in a run: then there is nothing to walk back to.
    const auto slot = static_cast<std::uint32_t>(tag);
    std::uint64_t& seen = machine.seenTags[slot >> 6 & 3U];
    const std::uint64_t bit = std::uint64_t{1} << (slot & 63U);
    if ((seen & bit) == 0) {
        seen |= bit;
        return 0;
    }
    for (std::int32_t index = machine.recordCount - 1; index >= 0; --index) {
        const CsnFieldRecord& record = machine.records[index];
        if (&record == parent) {
            return 0;
        }
        if (record.tag == tag && record.occurrence >= 0) {
            return record.occurrence + 1;
        }
    }
    return 0;
}

std::int32_t IndexOfTag(const CsnRun& run, std::int32_t tag) {
    std::int32_t index = run.tagCount - 1;
    while (index >= 0 && run.tags[index].tag != tag) {
        --index;
    }
    return index;
}

void InitCommon(CsnMachine& machine, const CsnProgram& program, std::uint32_t label,
                std::int32_t bitPos, std::int64_t bitsAtHand) {
    machine.stackDepth = 0;
    machine.tagCount = 0;
    machine.recordCount = 0;
    machine.fieldDepth = 0;
    machine.pc = label;
    machine.bitPos = std::clamp(bitPos, -kMostPosition, kMostPosition);
    machine.startPos = 0;
    machine.program = &program;
    machine.endPos = 0;
    machine.sourceLimit = kNoLimit;
    machine.sourceNesting = 0;
    machine.rootTag = -1;
    machine.userRecord = nullptr;
    machine.loopExit = 0;
    std::fill(std::begin(machine.seenTags), std::end(machine.seenTags), std::uint64_t{0});
    machine.instructionsLeft = InstructionCeiling(bitsAtHand);
}

void LeaveLoop(CsnMachine& machine, std::uint32_t target) {
    PopEntry(machine);
    PopEntry(machine);
    machine.pc = target;
}

}  // namespace

void CsnMachineInit(CsnMachine& machine, const CsnProgram& program, std::uint32_t label,
                    const bits::BitReader& reader, std::int32_t bitPos, std::int32_t bitLength) {
    InitCommon(machine, program, label, bitPos, bitLength);
    machine.reader = reader;
    machine.writer = nullptr;
    machine.bitLength = bitLength;
    machine.flags = kFlagPartialOk;
}

void CsnMachineInit(CsnMachine& machine, const CsnProgram& program, std::uint32_t label,
                    bits::BitWriter& writer, std::int32_t bitPos) {
    const bits::BitReader written = writer.Reader();
    InitCommon(machine, program, label, bitPos, written.OctetCount() * 8 - bitPos);
    machine.reader = written;
    machine.writer = &writer;
    machine.bitLength = 0;
    machine.flags = kFlagEncode | kFlagPartialOk;
}

void PushEntry(CsnMachine& machine, std::uint32_t value, std::uint32_t kind) {
    if (machine.stackDepth >= kMostStackEntries) {
        machine.flags |= kFlagAbort;
        return;
    }
    const bool openEnded = (kind & kOpenEnded) != 0;
    const bool openBelow = machine.stackDepth > 0 && TopEntry(machine).openEnded != 0;
    CsnStackEntry& entry = machine.stack[machine.stackDepth++];
    entry.isChoice = (kind & kChoice) != 0;
    entry.openEnded = openEnded;
    entry.value = value & kValueMask;
    entry.inOpenLoop = openEnded || openBelow;
    entry.restoresEnd = (kind & kRestoresEnd) != 0;
    entry.SavePos(machine.bitPos);
    entry.savedRescan = (machine.flags & kFlagRescan) != 0;
    entry.savedLimit = static_cast<std::uint32_t>(machine.sourceLimit) & 0x7FFFFFFFU;
    entry.savedNesting = machine.sourceNesting;
    entry.savedTagCount = machine.tagCount;
    entry.savedRecordCount = machine.recordCount;
    entry.savedFieldDepth = machine.fieldDepth;
}

void PopEntry(CsnMachine& machine) {
    if (machine.stackDepth < 1) {
        machine.flags |= kFlagAbort;
        return;
    }
    const CsnStackEntry& entry = machine.stack[--machine.stackDepth];
    machine.fieldDepth = entry.savedFieldDepth;
    SetFlag(machine, kFlagRescan, entry.savedRescan != 0);
}

bool Backtrack(CsnMachine& machine) {
    if (machine.stackDepth < 1 || machine.stackDepth >= kMostStackEntries) {
        return false;
    }
    std::int32_t index = machine.stackDepth - 1;
    for (; index >= 0; --index) {
        const CsnStackEntry& entry = machine.stack[index];
        if (entry.restoresEnd != 0) {
            machine.endPos = entry.Position();
        }
        if (entry.isChoice != 0) {
            break;
        }
    }
    if (index < 0) {
        return false;
    }
    const CsnStackEntry& choice = machine.stack[index];
    machine.bitPos = choice.SavedPos();
    machine.sourceLimit = static_cast<std::int32_t>(choice.savedLimit);
    machine.sourceNesting = choice.savedNesting;
    SetFlag(machine, kFlagRescan, choice.savedRescan != 0);
    machine.tagCount = choice.savedTagCount;
    machine.recordCount = choice.savedRecordCount;
    machine.fieldDepth = choice.savedFieldDepth;
    machine.pc = choice.value;
    machine.stackDepth = index;
    return true;
}

bool Commit(CsnMachine& machine) {
    for (std::int32_t index = machine.stackDepth - 1; index >= 0; --index) {
        CsnStackEntry& entry = machine.stack[index];
        if (entry.isChoice == 0) {
            continue;
        }
        entry.SavePos(machine.bitPos);
        entry.savedLimit = static_cast<std::uint32_t>(machine.sourceLimit) & 0x7FFFFFFFU;
        entry.savedNesting = machine.sourceNesting;
        entry.savedTagCount = machine.tagCount;
        entry.savedRecordCount = machine.recordCount;
        entry.savedFieldDepth = machine.fieldDepth;
        return true;
    }
    return false;
}

void TagAdd(CsnRun& run, std::int32_t tag, std::int32_t value) {
    if (run.tagCount >= kMostTags) {
        run.flags |= kFlagAbort;
        return;
    }
    run.tags[run.tagCount++] = {tag, value};
}

std::int32_t TagValue(const CsnRun& run, std::int32_t tag) {
    const std::int32_t index = IndexOfTag(run, tag);
    return index < 0 ? -1 : run.tags[index].value;
}

std::int32_t TagValueOrZero(const CsnRun& run, std::int32_t tag) {
    const std::int32_t index = IndexOfTag(run, tag);
    return index < 0 ? 0 : run.tags[index].value;
}

void TagUpdate(CsnRun& run, std::int32_t tag, std::int32_t value) {
    const std::int32_t index = IndexOfTag(run, tag);
    if (index >= 0) {
        run.tags[index].value = value;
    }
}

void LoopEnter(CsnMachine& machine, std::uint32_t instr, std::uint32_t operand, std::uint32_t min,
               std::uint32_t max) {
    const std::uint32_t exit = instr + (operand >> 1);
    const std::uint32_t kind = max == kOpenEndedCount ? kOpenEnded : kPlainEntry;
    const std::uint32_t counter =
        ((operand & 1U) << 14 | (min & kMostLeast)) << 15 | (max & kMostCount);
    PushEntry(machine, exit, kind);
    PushEntry(machine, counter, kind);
    machine.loopExit = exit;
    if ((machine.flags & kFlagAbort) == 0) {
        LoopCheck(machine, exit);
    }
}

bool LoopCheck(CsnMachine& machine, std::uint32_t target) {
    if (machine.stackDepth < 2) {
        machine.flags |= kFlagAbort;
        return true;
    }
    CsnStackEntry& counter = TopEntry(machine);
    if (counter.MaxLeft() == 0) {
        LeaveLoop(machine, target);
        return true;
    }
    const bool required = counter.MinLeft() != 0;
    const bool encoding = (machine.flags & kFlagEncode) != 0;
    if (counter.SkipWhenWriting() && !required && encoding && machine.sourceLimit == kNoLimit) {
        LeaveLoop(machine, target);
        return true;
    }
    if (required) {
        return false;
    }
    CsnStackEntry& exit = machine.stack[machine.stackDepth - 2];
    if (exit.isChoice == 0) {
        exit.isChoice = 1;
        exit.openEnded = 1;
        exit.inOpenLoop = 1;
        counter.inOpenLoop = 1;
    }
    return false;
}

void PassPadding(CsnMachine& machine, std::uint32_t loop) {
    const std::uint8_t body = machine.program->code[machine.pc];
    const std::int32_t bits = body & 0x3F;
    if (OpcodeOf(body) == Opcode::kSkip && machine.pc + 1 == loop && bits != 0) {
        machine.bitPos += std::max(machine.endPos - machine.bitPos, 0) / bits * bits;
    }
}

std::int32_t FieldTagLookup(const CsnMachine& machine, std::uint32_t id, bool closing) {
    std::int32_t enclosing = machine.rootTag;
    if (machine.fieldDepth >= (closing ? 2 : 1)) {
        const CsnFieldRecord* record =
            closing ? NewestAtDepth(machine, machine.fieldDepth - 2) : EnclosingRecord(machine);
        enclosing = record == nullptr ? machine.rootTag : record->tag;
    }
    const auto parent = static_cast<std::uint16_t>(enclosing);
    const std::uint16_t* pair = machine.program->fieldTable + id;
    while (pair[0] != parent) {
        pair += 2;
    }
    return pair[1];
}

void RecordBegin(CsnMachine& machine, std::int32_t tag) {
    if (machine.recordCount >= kMostRecords) {
        machine.flags |= kFlagAbort;
        return;
    }
    const CsnFieldRecord* parent = EnclosingRecord(machine);
    machine.records[machine.recordCount] = {tag, NextOccurrence(machine, parent, tag),
                                            machine.bitPos, machine.fieldDepth, parent};
    ++machine.recordCount;
    ++machine.fieldDepth;
}

void RecordEnd(CsnMachine& machine, std::int32_t tag) {
    if (machine.recordCount >= kMostRecords) {
        machine.flags |= kFlagAbort;
        return;
    }
    const std::int32_t depth = machine.fieldDepth--;
    machine.records[machine.recordCount] = {tag, -1, machine.bitPos, depth,
                                            ParentOfClosing(machine)};
    ++machine.recordCount;
}

bool ValueCall(CsnMachine& machine, std::uint32_t index, std::uint32_t& result) {
    result = machine.program->valueTable[index](machine);
    if (result < kNoCount) {
        return true;
    }
    if (result > kNoCount || !Backtrack(machine)) {
        machine.flags |= kFlagAbort;
    }
    return false;
}

std::uint32_t ReadBetween(const bits::BitReader& reader, std::int32_t from, std::int32_t to) {
    const std::int64_t last = reader.OctetCount() * 8;
    const std::int64_t start = from < 0 ? 0 : from;
    std::uint32_t result = 0;
    // From the end on in parts of 32 bits; those outside the buffer are 0.
    for (std::int64_t end = to; end > start; end -= 32) {
        const std::int64_t begin = end - 32 < start ? start : end - 32;
        if (begin < last) {
            result |= reader.Read(begin, static_cast<std::int32_t>(end - begin));
        }
    }
    return result;
}

}  // namespace quorvane::csn
