#pragma once

// Where a run of a plan stands, and the operations of which nearly every step is made. They are
// always inlined, so that a loop over steps that has a RunState of its own keeps it in registers.
//
// Tests: tests/unit/csn_plan_test.cpp.

#include <cstdint>

#include "bits/bit_reader.h"
#include "csn/machine.h"
#include "csn/runner.h"

namespace quorvane::csn {

/// A choice point, a return address, a loop's state or the start of a field, with the state of the
/// run at that time. As many as the machine has entries, one for one.
struct RunEntry {
    const PlanStep* step;  // where the run goes on
    CsnLogLine* line;
    std::int32_t bitPos;
    std::uint32_t value;  // a position or, in a loop's counter, least << 16 | most
    std::uint16_t records;
    std::uint16_t parentTag;
    std::uint8_t tagCount;
    bool isChoice;
    bool restoresEnd;

    [[nodiscard]] std::int32_t Position() const { return static_cast<std::int32_t>(value); }
    [[nodiscard]] std::uint32_t Least() const { return value >> 16; }
    [[nodiscard]] std::uint32_t Most() const { return value & 0xFFFFU; }
    void SetCounts(std::uint32_t least, std::uint32_t most) { value = least << 16 | most; }
};

/// The stack of a run, which is not cleared.
struct RunStack {
    RunStack() {}  // leaves the entries alone
    RunStack(const RunStack&) = delete;
    RunStack& operator=(const RunStack&) = delete;

    RunEntry entries[kMostStackEntries];
};

struct RunState {
    RunEntry* bottom;
    RunEntry* top;     // behind the entry pushed last
    CsnLogLine* line;  // where the next one goes
    std::uint64_t instructionsLeft;
    std::int32_t bitPos;
    std::int32_t endPos;
    std::uint16_t records;    // as the machine counts them: two a field
    std::uint16_t parentTag;  // of the innermost open field, or the root's
    std::uint8_t tagCount;

    /// Whether the stack has room for `count` entries.
    [[nodiscard, gnu::always_inline]] bool HasRoom(std::int32_t count) const {
        return top <= bottom + (kMostStackEntries - count);
    }
    /// False: the stack is full.
    [[gnu::always_inline]] bool Push(const PlanStep* step, bool isChoice = false,
                                     std::uint32_t value = 0, bool restoresEnd = false) {
        if (!HasRoom(1)) {
            return false;
        }
        *top++ = {step, line, bitPos, value, records, parentTag, tagCount, isChoice, restoresEnd};
        return true;
    }
    [[gnu::always_inline]] bool Pop(std::int32_t count = 1) {
        if (top - bottom < count) {
            return false;
        }
        top -= count;
        parentTag = top->parentTag;
        return true;
    }
    [[nodiscard, gnu::always_inline]] RunEntry& Top() const { return top[-1]; }
    /// The entry popped last.
    [[nodiscard, gnu::always_inline]] const RunEntry& Popped() const { return *top; }

    /// Takes `count` instructions more than the one that the loop counts. False: there are not so
    /// many left.
    [[gnu::always_inline]] bool Spend(std::uint64_t count) {
        const bool enough = count <= instructionsLeft;
        instructionsLeft -= enough ? count : instructionsLeft;
        return enough;
    }

    [[nodiscard, gnu::always_inline]] bool IsLeft(std::int32_t bits) const {
        return endPos - bitPos >= bits;
    }
    [[nodiscard, gnu::always_inline]] bool IsNext(const bits::BitReader& reader,
                                                  std::uint32_t value, std::int32_t width) const {
        return IsLeft(width) && reader.Read(bitPos, width) == value;
    }
    /// Passes a bit if it is the one.
    [[gnu::always_inline]] bool PassBit(const bits::BitReader& reader, std::uint32_t bit) {
        const bool there = IsLeft(1) && reader.ReadBit(bitPos) == bit;
        bitPos += there ? 1 : 0;
        return there;
    }
    /// Passes `width` bits if they have the value.
    [[gnu::always_inline]] bool Pass(const bits::BitReader& reader, std::uint32_t value,
                                     std::int32_t width) {
        const bool there = IsNext(reader, value, width);
        bitPos += there ? width : 0;
        return there;
    }
    [[gnu::always_inline]] bool SkipBits(std::int32_t width) {
        const bool there = IsLeft(width);
        bitPos += there ? width : 0;
        return there;
    }

    [[gnu::always_inline]] void Log(std::uint16_t tag, std::uint16_t width) {
        *line++ = {tag, width, bitPos};
    }
    /// False: the list of records is full.
    [[gnu::always_inline]] bool TakeField(std::uint16_t tag, std::uint16_t width) {
        if (records + 2 > kMostRecords) {
            if (records < kMostRecords) {
                Log(tag, CsnLogLine::kOpens);
            }
            return false;
        }
        Log(tag, width);
        records += 2;
        bitPos += width;
        return true;
    }
    /// Whether neither the list nor the instructions end inside of a field and `more` steps behind
    /// it.
    [[nodiscard, gnu::always_inline]] bool HasRoomForFields(std::uint32_t more) const {
        return records + 2 * (more + 1) <= kMostRecords && more <= instructionsLeft;
    }
    /// The field at `step` and the `b` steps behind it, for which there is room. False: not all are
    /// there, or a commit has no choice point.
    [[gnu::always_inline]] bool TakeFields(const PlanStep* step) {
        const PlanStep* const last = step + step->b;
        for (;; ++step, --instructionsLeft) {
            if (step->op == PlanOp::kCommit) {
                if (!Commit()) {
                    return false;
                }
            } else if (IsLeft(step->c)) {
                Log(step->a, step->c);
                records += 2;
                bitPos += step->c;
            } else {
                return false;
            }
            if (step == last) {
                return true;
            }
        }
    }
    /// False: the stack or the list of records is full.
    [[gnu::always_inline]] bool Open(std::uint16_t tag) {
        const bool pushed = Push(nullptr);
        if (records >= kMostRecords) {
            return false;
        }
        Log(tag, CsnLogLine::kOpens);
        ++records;
        parentTag = tag;
        return pushed;
    }
    /// False: nothing is open, or the list of records is full.
    [[gnu::always_inline]] bool Close() {
        if (top == bottom || records >= kMostRecords) {
            return false;
        }
        Log(0, CsnLogLine::kCloses);
        ++records;
        return Pop();
    }

    /// Has `entry` lead back to here.
    [[gnu::always_inline]] void SaveIn(RunEntry& entry) const {
        entry.bitPos = bitPos;
        entry.line = line;
        entry.records = records;
        entry.parentTag = parentTag;
        entry.tagCount = tagCount;
    }
    /// To the nearest choice point, which is used up: the step to go on at, or null if there is
    /// none.
    [[gnu::always_inline]] const PlanStep* GoBack() {
        if (!HasRoom(1)) {
            return nullptr;
        }
        for (RunEntry* entry = top; entry != bottom;) {
            --entry;
            if (entry->restoresEnd) {
                endPos = entry->Position();
            }
            if (entry->isChoice) {
                bitPos = entry->bitPos;
                line = entry->line;
                records = entry->records;
                parentTag = entry->parentTag;
                tagCount = entry->tagCount;
                top = entry;
                return entry->step;
            }
        }
        return nullptr;
    }
    /// Moves the nearest choice point up to here. False: there is none.
    [[gnu::always_inline]] bool Commit() {
        for (RunEntry* entry = top; entry != bottom;) {
            --entry;
            if (entry->isChoice) {
                SaveIn(*entry);
                return true;
            }
        }
        return false;
    }
};

}  // namespace quorvane::csn
