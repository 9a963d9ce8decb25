#pragma once

// The machine that runs CSN.1 byte-code over a message in both directions. Decoding, it checks the
// bits against the description and notes where each field lies. Encoding, it asks a callback for
// each field's bits and writes the fixed bits itself. Its whole state is one record of fixed size;
// nothing is allocated. Positions and lengths are in bits.
//
// A run trusts its image: that jumps land on instructions, that field look-ups end and that the
// stack is used in pairs is what csn/assembly/verifier.h proves. No message and no position,
// however computed, makes it read or write outside the buffer.
//
// Tests: tests/unit/csn_machine_test.cpp and its siblings csn_*_test.cpp.

#include <algorithm>
#include <cstdint>

#include "bits/bit_reader.h"
#include "bits/bit_writer.h"
#include "bits/outcome.h"
#include "csn/byte_code.h"
#include "csn/csn_program.h"

namespace quorvane::csn {

using enum bits::Code;

inline constexpr std::int32_t kMostStackEntries = 256;
inline constexpr std::int32_t kMostTags = 32;
inline constexpr std::int32_t kMostRecords = 256;  // two a field: 128 fields

/// `sourceLimit` when no stretch of the source's is being read.
inline constexpr std::int32_t kNoLimit = 0x7FFFFFFF;

/// The farthest position of a run: a stack entry keeps positions in 30 bits, one of them the sign.
inline constexpr std::int32_t kMostPosition = 0x1FFFFFFF;

/// A repetition without upper bound, as its count of iterations.
inline constexpr std::uint32_t kOpenEndedCount = 0x3FFF;

/// What a repetition's least and most iterations are cut to.
inline constexpr std::uint32_t kMostLeast = 0x3FFF;
inline constexpr std::uint32_t kMostCount = 0x7FFF;

// What ends a run that would not end by itself, see docs/byte-code.md: no description comes near.
inline constexpr std::uint64_t kMostInstructionsForABit = 64;
inline constexpr std::uint64_t kMostInstructionsWithoutBits = 65536;

/// How many instructions a run may take over `bits` bits.
[[nodiscard]] constexpr std::uint64_t InstructionCeiling(std::int64_t bits) {
    return kMostInstructionsWithoutBits +
           kMostInstructionsForABit * static_cast<std::uint64_t>(bits < 0 ? 0 : bits);
}

/// A value function's answer that there is no count: the run goes back. One above it fails.
inline constexpr std::uint32_t kNoCount = 16384;

/// `rootTag` of a run that keeps no field records.
inline constexpr std::int32_t kNoRecords = 0xFFFF;

enum CsnFlags : std::uint32_t {
    kFlagEncode = 1,
    kFlagRescan = 2,     // reading bits that were passed already
    kFlagAbort = 4,      // the run fails behind the current instruction
    kFlagPartialOk = 8,  // a run may end before `endPos`
    kFlagRunning = 16,
    kFlagRefused = 32,  // an action refuses what was read: the run goes back behind it
};

enum CsnEntryKind : std::uint32_t {
    kPlainEntry = 0,
    kChoice = 1,       // a choice point
    kOpenEnded = 2,    // of a repetition without upper bound
    kRestoresEnd = 4,  // when backtracking passes it, `endPos` becomes its value
};

/// A choice point, a return address, a loop's state or the start of a field, with the machine's
/// state at that time. Seven words:
///
///   word  bits    member
///   0     0       isChoice
///         1       openEnded
///         2-31    value: a code offset, a position or, in a loop's counter entry,
///                 2-16 maxLeft, 17-30 minLeft, 31 skipWhenWriting
///   1     0       inOpenLoop
///         1       restoresEnd
///         2-31    savedPos
///   2     0       savedRescan
///         1-31    savedLimit
///   3     0-15    savedNesting
///   4-6           savedTagCount, savedRecordCount, savedFieldDepth
struct CsnStackEntry {
    std::uint32_t isChoice : 1;
    std::uint32_t openEnded : 1;
    std::uint32_t value : 30;
    std::uint32_t inOpenLoop : 1;
    std::uint32_t restoresEnd : 1;
    std::uint32_t savedPos : 30;  // see SavedPos
    std::uint32_t savedRescan : 1;
    std::uint32_t savedLimit : 31;
    std::uint16_t savedNesting;
    std::int32_t savedTagCount;
    std::int32_t savedRecordCount;
    std::int32_t savedFieldDepth;

    /// `value` where it is a position.
    [[nodiscard]] std::int32_t Position() const { return Extend(value); }
    [[nodiscard]] std::int32_t SavedPos() const { return Extend(savedPos); }
    void SavePos(std::int32_t position) {
        savedPos = static_cast<std::uint32_t>(position) & 0x3FFFFFFFU;
    }

    // Counter entries.
    [[nodiscard]] std::uint32_t MaxLeft() const { return value & kMostCount; }
    [[nodiscard]] std::uint32_t MinLeft() const { return value >> 15 & kMostLeast; }
    [[nodiscard]] bool SkipWhenWriting() const { return (value >> 29 & 1U) != 0; }
    void SetMaxLeft(std::uint32_t count) {
        value = ((value & ~kMostCount) | (count & kMostCount)) & 0x3FFFFFFFU;
    }
    void SetMinLeft(std::uint32_t count) {
        value = ((value & ~(kMostLeast << 15)) | (count & kMostLeast) << 15) & 0x3FFFFFFFU;
    }

  private:
    static std::int32_t Extend(std::uint32_t bits) {
        return static_cast<std::int32_t>(bits << 2) >> 2;
    }
};
static_assert(sizeof(CsnStackEntry) == 28);

/// A number that the byte-code noted under a tag.
struct CsnTagEntry {
    std::int32_t tag;
    std::int32_t value;
};

/// A place where a field opens or closes, in the order of the message.
struct CsnFieldRecord {
    std::int32_t tag;
    std::int32_t occurrence;  // how many fields of this tag came before under the same parent; -1:
                              // the record closes a field
    std::int32_t bitPos;
    std::int32_t depth;            // of an opening record; its closing record is one deeper
    const CsnFieldRecord* parent;  // opening record of the enclosing field, or null
};

struct CsnMachine;

/// What the callback learns of a field.
struct CsnFieldEvent {
    CsnMachine* machine;
    std::int32_t fieldIndex;     // the image's number of the field
    std::uint32_t fieldId;       // its identifier in the byte-code
    std::int32_t bitPos;         // its first bit
    std::int32_t bitLength;      // its width if known; a source sets it to what it has written
    std::int32_t kind;           // as CsnEventKind
    std::uint32_t literalValue;  // of a field with a fixed value, else 0
    std::int32_t literalWidth;   // of a field with a fixed value, else -1
    std::int32_t failed;         // 0 at the callback; the machine's own use
};

enum CsnEventKind : std::int32_t {
    kGroupOpens = 0,
    kGroupCloses = 1,
    kWholeField = 2,
};

/// Answers of the callback; anything else counts as kGoOn.
enum CsnAnswer : std::int32_t {
    kGoOn = 0,
    kNotThere = 1,  // the field cannot be delivered: the machine goes back
    kGiveUp = 2,    // the run fails
};

using CsnCallback = std::int32_t (*)(CsnFieldEvent& event);

/// A run as its actions and value functions see it.
struct CsnRun {
    CsnRun() {}  // leaves the tags alone
    CsnRun(const CsnRun&) = delete;
    CsnRun& operator=(const CsnRun&) = delete;

    CsnTagEntry tags[kMostTags];
    std::int32_t tagCount = 0;
    std::int32_t bitPos = 0;
    std::int32_t startPos = 0;
    const CsnProgram* program = nullptr;
    bits::BitReader reader{nullptr, 0};
    bits::BitWriter* writer = nullptr;    // of the same buffer; null when decoding
    std::int32_t bitLength = 0;           // available from startPos; 0 when encoding
    std::int32_t endPos = 0;              // first position past the data allowed
    std::int32_t scopeEnd = 0;            // where a scope set it, also if that is past the run
    std::int32_t sourceLimit = kNoLimit;  // end of a stretch that the callback has written
    std::uint32_t flags = 0;              // as CsnFlags
};

/// The interpreter's record. Set it up with CsnMachineInit; the arrays are not cleared, since only
/// what a run has written is ever read.
struct CsnMachine : CsnRun {
    CsnMachine() {}  // leaves the arrays alone

    CsnStackEntry stack[kMostStackEntries];
    std::int32_t stackDepth = 0;
    std::int32_t recordCount = 0;
    std::int32_t fieldDepth = 0;      // open fields
    std::uint32_t pc = 0;             // offset of the next instruction
    std::uint16_t sourceNesting = 0;  // open fields inside the stretch up to sourceLimit
    CsnFieldRecord records[kMostRecords];
    std::int32_t rootTag = kNoRecords;  // parent tag of the outermost fields, low 16 bits
    void* userRecord = nullptr;         // for the callback
    std::uint32_t loopExit = 0;         // exit label of the repetition entered last
    /// Which tags, by their low eight bits, any record of the run has had, also one that a
    /// backtrack took back.
    std::uint64_t seenTags[4] = {};
    /// Instructions that the run may still take; without any left it fails.
    std::uint64_t instructionsLeft = 0;
};

/// Where the bits of a run end.
inline std::int32_t EndOfBits(const CsnRun& run) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(
        std::int64_t{run.startPos} + run.bitLength, -kMostPosition, kMostPosition));
}

/// Begins a run that was set up, at its first bit.
inline void StartRun(CsnRun& run) {
    run.flags |= kFlagRunning;
    run.startPos = run.bitPos;
    run.endPos = EndOfBits(run);
}

/// Sets a machine up to decode `bitLength` bits of `reader` at `bitPos` by the rule at `label`.
void CsnMachineInit(CsnMachine& machine, const CsnProgram& program, std::uint32_t label,
                    const bits::BitReader& reader, std::int32_t bitPos, std::int32_t bitLength);

/// Sets a machine up to encode at `bitPos` of `writer`, which must outlive the run.
void CsnMachineInit(CsnMachine& machine, const CsnProgram& program, std::uint32_t label,
                    bits::BitWriter& writer, std::int32_t bitPos);

/// Runs a machine that was set up. Returns the count of bits passed, or kSyntaxError; the field
/// records of what was accepted stay in the machine either way. A run ends well when the rule does,
/// also with bits left over, and fails at its InstructionCeiling. `callback` may be null.
bits::Outcome CsnMachineRun(CsnMachine& machine, CsnCallback callback);

// What the machine is made of; actions and value functions call some of it.

/// The bit of the fill octet at `position`: the bit L equals it, H differs.
[[nodiscard]] inline std::uint32_t PaddingBit(std::int32_t position) {
    return std::uint32_t{bits::kFillOctet} >> (7 - (position & 7)) & 1U;
}

/// Pushes the current state with `value` cut to 30 bits and `kind` of CsnEntryKind. A full stack
/// sets kFlagAbort instead.
void PushEntry(CsnMachine& machine, std::uint32_t value, std::uint32_t kind);

/// Drops the top entry; `fieldDepth` and kFlagRescan come back from it, nothing else does.
void PopEntry(CsnMachine& machine);

/// Returns to the nearest choice point, which is used up. False: there is none, or the stack is
/// full.
bool Backtrack(CsnMachine& machine);

/// Makes the nearest choice point return to the current state. False: there is none.
bool Commit(CsnMachine& machine);

/// Notes a value. A full store sets kFlagAbort instead.
void TagAdd(CsnRun& run, std::int32_t tag, std::int32_t value);

/// The newest value of `tag`, or -1.
[[nodiscard]] std::int32_t TagValue(const CsnRun& run, std::int32_t tag);

/// The newest value of `tag`, or 0.
[[nodiscard]] std::int32_t TagValueOrZero(const CsnRun& run, std::int32_t tag);

/// Changes the newest value of `tag`, if there is one.
void TagUpdate(CsnRun& run, std::int32_t tag, std::int32_t value);

/// Enters a repetition of `min` to `max` iterations (kOpenEndedCount: no upper bound) at the
/// instruction at `instr` with its packed exit operand. Counts are cut to 14 and 15 bits.
void LoopEnter(CsnMachine& machine, std::uint32_t instr, std::uint32_t operand, std::uint32_t min,
               std::uint32_t max);

/// Decides before an iteration, with the loop's counter entry on top. True: the loop is left and
/// the run goes on at `target`.
bool LoopCheck(CsnMachine& machine, std::uint32_t target);

/// Behind the first iteration of an open repetition that reads, and ends with the instruction at
/// `loop`: passes all others at once if they do nothing but take bits of any value.
void PassPadding(CsnMachine& machine, std::uint32_t loop);

/// The tag of field `id` under the field that encloses it: the one opened last, or if `closing` the
/// one around that.
[[nodiscard]] std::int32_t FieldTagLookup(const CsnMachine& machine, std::uint32_t id,
                                          bool closing);

/// Records that a field opens at `bitPos`. A full list sets kFlagAbort instead.
void RecordBegin(CsnMachine& machine, std::int32_t tag);

/// Records that the innermost field closes at `bitPos`. A full list sets kFlagAbort instead.
void RecordEnd(CsnMachine& machine, std::int32_t tag);

/// Calls value function `index`. False: the result, 16384 or more, was no count, the machine has
/// gone back or is set to fail, and the instruction must stop.
bool ValueCall(CsnMachine& machine, std::uint32_t index, std::uint32_t& result);

/// The bits from `from` to `to` as a number, as BitBufferRead reads them: beyond 32 bits the head
/// is wrapped over the tail. 0 if there are none.
[[nodiscard]] std::uint32_t ReadBetween(const bits::BitReader& reader, std::int32_t from,
                                        std::int32_t to);

}  // namespace quorvane::csn
