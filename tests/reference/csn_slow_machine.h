#pragma once

// A second CSN.1 machine that judges the one of the library in both directions. It is as plain as
// can be: one function an instruction, a bit a bool, an operand read where it is needed. Nothing of
// it is shared with the library, so that a mistake would have to be made twice.
//
// It believes nothing of an image: what a sound image never does (popping from an empty stack,
// running out of the code) throws std::logic_error or std::out_of_range.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace quorvane::reference {

class SlowMachine;

/// An image as the slow machine reads it. Actions and value functions are called by their index.
struct SlowProgram {
    std::vector<std::uint8_t> code;
    const std::uint16_t* fieldTable = nullptr;
    std::function<void(std::uint32_t index, SlowMachine&)> action;
    std::function<std::uint32_t(std::uint32_t index, SlowMachine&)> value;
};

/// What the source of an encoder is asked.
struct SlowEvent {
    std::int32_t fieldIndex = 0;
    std::uint32_t fieldId = 0;
    std::int32_t bitPos = 0;
    std::int32_t bitLength = 0;  // the source may change it
    std::int32_t kind = 0;       // 0: a group opens; 1: a group closes; 2: a whole field
    std::uint32_t literalValue = 0;
    std::int32_t literalWidth = -1;
};

/// Answers 0: go on; 1: the field is not there; 2: give up.
using SlowSource = std::function<std::int32_t(SlowMachine&, SlowEvent&)>;

struct SlowRecord {
    std::int32_t tag = 0;
    std::int32_t occurrence = 0;  // -1 where a field closes
    std::int32_t bitPos = 0;
    std::int32_t depth = 0;
    std::optional<std::size_t> parent;  // index of the enclosing field's opening record
};

struct SlowTag {
    std::uint32_t tag = 0;
    std::int32_t value = 0;
};

struct SlowEntry {
    bool isChoice = false;
    bool openEnded = false;
    bool inOpenLoop = false;
    bool restoresEnd = false;
    std::uint32_t value = 0;  // 30 bits
    std::int32_t savedPos = 0;
    bool savedRescan = false;
    std::int32_t savedLimit = 0;
    std::uint16_t savedNesting = 0;
    std::size_t savedTagCount = 0;
    std::size_t savedRecordCount = 0;
    std::int32_t savedFieldDepth = 0;
};

struct SlowLimits {
    std::size_t stack = 256;
    std::size_t records = 256;
    std::size_t tags = 32;
    /// That a run may take. Without a number: 65,536, and 64 more for each bit at hand.
    std::optional<std::uint64_t> instructions;
};

class SlowMachine {
  public:
    static constexpr std::int32_t kNoLimit = 0x7FFFFFFF;
    static constexpr std::uint32_t kUnbounded = 0x3FFF;
    static constexpr std::int32_t kFarthest = 0x1FFFFFFF;  // positions have 30 bits, one the sign

    SlowMachine(const SlowProgram& program, std::uint32_t label, std::vector<bool> bits,
                std::int32_t position, std::int32_t length, bool encode);

    /// The bits passed, or -1.
    std::int32_t Run(const SlowSource& source);

    /// Bits outside of the message read as 0 and cannot be written.
    [[nodiscard]] std::uint32_t Read(std::int64_t position, std::int64_t count) const;
    void Write(std::int64_t position, std::uint32_t value, std::int32_t count);
    [[nodiscard]] std::uint32_t LastBits(std::int32_t count) const;

    void TagAdd(std::uint32_t tag, std::int32_t value);
    void TagUpdate(std::uint32_t tag, std::int32_t value);
    [[nodiscard]] std::int32_t TagValue(std::uint32_t tag) const;
    [[nodiscard]] std::int32_t TagValueOrZero(std::uint32_t tag) const;

    /// Restores the state of the newest choice point and goes on where it says; false without one.
    bool Backtrack();

    SlowLimits limits;
    std::vector<bool> buffer;
    std::vector<SlowEntry> stack;
    std::vector<SlowTag> tags;
    std::vector<SlowRecord> records;
    std::int32_t fieldDepth = 0;
    std::uint32_t pc = 0;
    std::int32_t bitPos = 0;
    std::int32_t startPos = 0;
    std::int32_t bitLength = 0;
    std::int32_t endPos = 0;
    std::int32_t scopeEnd = 0;
    std::int32_t sourceLimit = kNoLimit;
    std::uint16_t sourceNesting = 0;
    std::int32_t rootTag = -1;  // low 16 bits all set: no records are kept
    std::uint32_t loopExit = 0;
    bool encode = false;
    bool rescan = false;
    bool abort = false;
    bool partialOk = true;    // the run may end before endPos
    bool running = true;      // cleared by an action, the run ends
    bool overflowed = false;  // a bit outside of the message was to be written
    std::uint64_t instructionsLeft = 0;

  private:
    enum class Delivery { kNotCalled, kGoOn, kStopped };

    // The run.
    void Step();
    void Plain(std::uint8_t opcode);
    void End(std::int32_t result);
    void Back();
    std::uint8_t NextOctet();
    std::uint32_t NextOperand();
    std::uint32_t NextFourteenBits(std::uint8_t first);
    static std::uint32_t JumpDistance(std::uint32_t base, std::uint32_t code);

    // The stack.
    void PushEntry(std::uint32_t value, bool isChoice, bool openEnded, bool restoresEnd);
    SlowEntry PopEntry();
    SlowEntry& Top();
    SlowEntry& BelowTop();
    bool Commit();

    // Bits.
    [[nodiscard]] bool Lacks(std::uint32_t count) const;
    bool Pass(std::uint32_t count);
    [[nodiscard]] bool PaddingBit() const;
    void FixedBit(bool bit);
    void Literal();
    void Skip(std::uint32_t count);
    void AtEnd();

    // Flow.
    void Jump(std::uint32_t operand);
    void Alternative(std::uint32_t operand);
    void Call();
    void Return();
    void ReturnWithTags();
    void CommitOrEnd();
    void SkipEncoding();
    void Action(bool inThisDirection);

    // Second readings.
    void Mark();
    void Exclude();
    void ExcludeEnd();
    void Rescan();

    // Repetitions.
    void LoopEnter(std::uint32_t operand, std::uint32_t least, std::uint32_t most);
    bool LoopCheck(std::uint32_t target);
    void SpareWhatPadsOn();
    void Repeat();
    void RepeatBit();
    void RepeatTag();
    void RepeatAny(std::uint32_t least);
    void RepeatRange();
    void RepeatFunction();
    void RepeatFunctionByDirection();
    void RepeatFunctionEncoding();
    void Loop();
    void SetCount(std::uint32_t count);
    void CountFunction();
    void CountFunctionByDirection();
    std::optional<std::uint32_t> ValueCall(std::uint32_t index);

    // Comparisons of what was read.
    [[nodiscard]] std::uint32_t BitsSince(std::uint32_t tag) const;
    void ValueEquals();
    void ValueInRange();
    void ValueEqualsFunction();
    void ValueInFunctionRange();

    // Fields.
    void Field();
    void FieldLiteral();
    bool WholeField(std::uint32_t id, std::uint32_t width);
    void BeginField();
    void EndField(bool keepsTag);
    Delivery Deliver(std::uint32_t id, std::int32_t position, std::int32_t length,
                     std::int32_t kind);
    [[nodiscard]] bool KeepsRecords() const;
    [[nodiscard]] std::int32_t FieldTag(std::uint32_t id, bool closing) const;
    [[nodiscard]] std::optional<std::size_t> NewestAtDepth(std::int32_t depth) const;
    [[nodiscard]] std::optional<std::size_t> ParentOfNew() const;
    void RecordBegin(std::int32_t tag);
    void RecordEnd(std::int32_t tag, std::int32_t position);

    const SlowProgram& program_;
    const SlowSource* source_ = nullptr;
    std::uint32_t instruction_ = 0;  // offset of the instruction that runs
    bool writing_ = false;           // it writes
    SlowEvent event_;
    std::optional<std::int32_t> result_;
};

}  // namespace quorvane::reference
