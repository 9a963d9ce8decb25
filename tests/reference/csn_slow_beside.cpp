#include "reference/csn_slow_beside.h"

#include <cstddef>
#include <exception>
#include <memory>
#include <optional>
#include <span>
#include <utility>

#include "reference/csn_slow_functions.h"
#include "reference/csn_slow_machine.h"

namespace quorvane::reference {
namespace {

// ---- What the callback heard and did ----

std::string TextOf(std::int32_t index, std::uint32_t id, std::int32_t bitPos,
                   std::int32_t bitLength, std::int32_t kind, std::uint32_t literal,
                   std::int32_t literalWidth, std::size_t records) {
    std::string text;
    for (const std::int64_t number :
         {std::int64_t{index}, std::int64_t{id}, std::int64_t{bitPos}, std::int64_t{bitLength},
          std::int64_t{kind}, std::int64_t{literal}, std::int64_t{literalWidth},
          static_cast<std::int64_t>(records)}) {
        text += " " + std::to_string(number);
    }
    return text;
}

struct Heard {
    std::string event;
    std::vector<std::pair<std::size_t, bool>> changed;  // bits
    std::int32_t bitLength = 0;                         // as it was left
    std::int32_t answer = 0;
};

struct Recording {
    csn::CsnCallback callback = nullptr;
    std::vector<Heard> calls;
};

Recording* recording = nullptr;

std::int32_t Record(csn::CsnFieldEvent& event) {
    const csn::CsnMachine& machine = *event.machine;
    Heard heard;
    heard.event = TextOf(event.fieldIndex, event.fieldId, event.bitPos, event.bitLength, event.kind,
                         event.literalValue, event.literalWidth,
                         static_cast<std::size_t>(machine.recordCount));
    const std::vector<bool> before = AllBitsOf(machine.reader);
    heard.answer = recording->callback(event);
    heard.bitLength = event.bitLength;
    const std::vector<bool> after = AllBitsOf(machine.reader);
    for (std::size_t bit = 0; bit < after.size(); ++bit) {
        if (after[bit] != before[bit]) {
            heard.changed.emplace_back(bit, after[bit]);
        }
    }
    recording->calls.push_back(std::move(heard));
    return recording->calls.back().answer;
}

/// Does to the slow machine what the callback did.
class Playback {
  public:
    explicit Playback(const Recording& recorded) : recorded_(recorded) {}

    std::int32_t Answer(SlowMachine& machine, SlowEvent& event) {
        const std::string asked =
            TextOf(event.fieldIndex, event.fieldId, event.bitPos, event.bitLength, event.kind,
                   event.literalValue, event.literalWidth, machine.records.size());
        const std::string expected =
            next_ < recorded_.calls.size() ? recorded_.calls[next_].event : " nothing";
        if (asked != expected) {
            difference_ += "question " + std::to_string(next_) + ": the slow machine asks" + asked +
                           ", the machine" + expected + "\n";
            return csn::kGiveUp;
        }
        const Heard& heard = recorded_.calls[next_++];
        for (const auto& [bit, value] : heard.changed) {
            machine.buffer[bit] = value;
        }
        event.bitLength = heard.bitLength;
        return heard.answer;
    }

    [[nodiscard]] std::string Difference() const {
        return next_ == recorded_.calls.size() || !difference_.empty()
                   ? difference_
                   : "the machine asks" + recorded_.calls[next_].event + " besides\n";
    }

  private:
    const Recording& recorded_;
    std::size_t next_ = 0;
    std::string difference_;
};

// ---- Actions and value functions ----

/// A machine in the state of the slow one, as far as actions and value functions see it.
class Copy {
  public:
    Copy(const SlowMachine& slow, const csn::CsnProgram& program)
        : octets_(slow.buffer.size() / 8),
          writer_(octets_.data(), static_cast<std::int64_t>(octets_.size())) {
        for (std::size_t bit = 0; bit < slow.buffer.size(); ++bit) {
            octets_[bit / 8] |=
                static_cast<std::uint8_t>((slow.buffer[bit] ? 0x80U : 0U) >> bit % 8);
        }
        if (slow.encode) {
            csn::CsnMachineInit(machine, program, 0, writer_, slow.bitPos);
        } else {
            csn::CsnMachineInit(machine, program, 0, writer_.Reader(), slow.bitPos, slow.bitLength);
        }
        machine.flags |= csn::kFlagRunning | (slow.rescan ? csn::kFlagRescan : 0U);
        machine.startPos = slow.startPos;
        machine.endPos = slow.endPos;
        machine.scopeEnd = slow.scopeEnd;
        machine.sourceLimit = slow.sourceLimit;
        for (const SlowTag& tag : slow.tags) {
            csn::TagAdd(machine, static_cast<std::int32_t>(tag.tag), tag.value);
        }
    }

    void GiveBack(SlowMachine& slow) const {
        slow.bitPos = machine.bitPos;
        slow.endPos = machine.endPos;
        slow.scopeEnd = machine.scopeEnd;
        slow.sourceLimit = machine.sourceLimit;
        slow.running = (machine.flags & csn::kFlagRunning) != 0;
        slow.partialOk = slow.partialOk && (machine.flags & csn::kFlagPartialOk) != 0;
        slow.abort = slow.abort || (machine.flags & csn::kFlagAbort) != 0;
        slow.buffer = AllBitsOf(machine.reader);
        slow.overflowed = slow.overflowed || writer_.Overflowed();
        slow.tags.clear();
        for (std::int32_t index = 0; index < machine.tagCount; ++index) {
            slow.tags.push_back(
                {static_cast<std::uint32_t>(machine.tags[index].tag), machine.tags[index].value});
        }
        if ((machine.flags & csn::kFlagRefused) != 0) {
            slow.Backtrack();
        }
    }

    csn::CsnMachine machine;

  private:
    std::vector<std::uint8_t> octets_;
    bits::BitWriter writer_;
};

SlowProgram WithoutFunctions(const csn::CsnProgram& program) {
    SlowProgram slow;
    slow.code.assign(program.code, program.code + program.codeSize);
    slow.fieldTable = program.fieldTable;
    return slow;
}

/// Calls the functions of the image itself.
SlowProgram WithItsOwnFunctions(const csn::CsnProgram& program) {
    SlowProgram slow = WithoutFunctions(program);
    slow.action = [&](std::uint32_t index, SlowMachine& machine) {
        const auto copy = std::make_unique<Copy>(machine, program);
        program.actionTable[index](copy->machine);
        copy->GiveBack(machine);
    };
    slow.value = [&](std::uint32_t index, SlowMachine& machine) {
        const auto copy = std::make_unique<Copy>(machine, program);
        const std::uint32_t value = program.valueTable[index](copy->machine);
        copy->GiveBack(machine);
        return value;
    };
    return slow;
}

// ---- What a run leaves ----

std::string Line(const char* name, std::int64_t number) {
    return std::string(name) + " " + std::to_string(number) + "\n";
}

std::string RecordLine(std::int32_t tag, std::int32_t occurrence, std::int32_t bitPos,
                       std::int32_t depth, std::int64_t parent) {
    std::string text = "record";
    for (const std::int64_t number : {std::int64_t{tag}, std::int64_t{occurrence},
                                      std::int64_t{bitPos}, std::int64_t{depth}, parent}) {
        text += " " + std::to_string(number);
    }
    return text + "\n";
}

/// Of a run that was aborted the instruction that did it is half done: its stack is not compared.
std::string StackText(bool aborted, std::size_t stack, std::int32_t fieldDepth, bool rescan) {
    return aborted ? "aborted\n"
                   : Line("stack", static_cast<std::int64_t>(stack)) +
                         Line("fieldDepth", fieldDepth) + Line("rescan", rescan ? 1 : 0);
}

std::string StateOf(const csn::CsnMachine& machine, bits::Outcome result) {
    std::string text = Line("result", result.Bits()) + Line("bitPos", machine.bitPos) +
                       Line("endPos", machine.endPos) + Line("sourceLimit", machine.sourceLimit) +
                       Line("sourceNesting", machine.sourceNesting) +
                       Line("instructions", static_cast<std::int64_t>(machine.instructionsLeft)) +
                       StackText((machine.flags & csn::kFlagAbort) != 0,
                                 static_cast<std::size_t>(machine.stackDepth), machine.fieldDepth,
                                 (machine.flags & csn::kFlagRescan) != 0);
    for (std::int32_t index = 0; index < machine.tagCount; ++index) {
        text += "tag " + std::to_string(machine.tags[index].tag) + " = " +
                std::to_string(machine.tags[index].value) + "\n";
    }
    for (std::int32_t index = 0; index < machine.recordCount; ++index) {
        const csn::CsnFieldRecord& record = machine.records[index];
        text += RecordLine(record.tag, record.occurrence, record.bitPos, record.depth,
                           record.parent == nullptr ? -1 : record.parent - machine.records);
    }
    return text;
}

std::string StateOf(const SlowMachine& machine, std::int32_t result) {
    std::string text =
        Line("result", result) + Line("bitPos", machine.bitPos) + Line("endPos", machine.endPos) +
        Line("sourceLimit", machine.sourceLimit) + Line("sourceNesting", machine.sourceNesting) +
        Line("instructions", static_cast<std::int64_t>(machine.instructionsLeft)) +
        StackText(machine.abort, machine.stack.size(), machine.fieldDepth, machine.rescan);
    for (const SlowTag& tag : machine.tags) {
        text += "tag " + std::to_string(static_cast<std::int32_t>(tag.tag)) + " = " +
                std::to_string(tag.value) + "\n";
    }
    for (const SlowRecord& record : machine.records) {
        text += RecordLine(
            record.tag, record.occurrence, record.bitPos, record.depth,
            record.parent ? static_cast<std::int64_t>(*record.parent) : std::int64_t{-1});
    }
    return text;
}

std::string TextOf(const std::vector<bool>& bits) {
    std::string text;
    for (const bool bit : bits) {
        text += bit ? '1' : '0';
    }
    return text + "\n";
}

}  // namespace

SlowProgram SlowProgramOf(const csn::CsnProgram& program, const FunctionNames& names) {
    SlowProgram slow = WithoutFunctions(program);
    std::vector<SlowAction> actions;
    for (const std::string& name : names.actions) {
        actions.push_back(SlowActionNamed(name));
    }
    std::vector<SlowValueFunction> functions;
    for (const std::string& name : names.functions) {
        functions.push_back(SlowValueFunctionNamed(name));
    }
    slow.action = [actions](std::uint32_t index, SlowMachine& machine) {
        actions.at(index)(machine);
    };
    slow.value = [functions](std::uint32_t index, SlowMachine& machine) {
        return functions.at(index)(machine);
    };
    return slow;
}

std::vector<bool> AllBitsOf(const bits::BitReader& reader) {
    std::vector<bool> bits(static_cast<std::size_t>(reader.OctetCount()) * 8);
    for (std::size_t bit = 0; bit < bits.size(); ++bit) {
        bits[bit] = reader.ReadBit(static_cast<std::int64_t>(bit)) != 0;
    }
    return bits;
}

std::string DifferenceOfSlow(csn::CsnMachine& machine, csn::CsnCallback callback,
                             bits::Outcome& result, const SlowProgram* given,
                             std::optional<std::uint64_t> instructions) {
    const SlowProgram own =
        given == nullptr ? WithItsOwnFunctions(*machine.program) : SlowProgram{};
    const SlowProgram& program = given == nullptr ? own : *given;
    const bool encode = machine.writer != nullptr;
    SlowMachine slow(program, machine.pc, AllBitsOf(machine.reader), machine.bitPos,
                     machine.bitLength, encode);
    slow.rootTag = machine.rootTag;
    slow.abort = (machine.flags & csn::kFlagAbort) != 0;
    if (instructions) {
        machine.instructionsLeft = *instructions;
        slow.limits.instructions = instructions;
    }

    Recording recorded{callback, {}};
    recording = &recorded;
    result = csn::CsnMachineRun(machine, callback == nullptr ? nullptr : Record);
    recording = nullptr;

    Playback playback(recorded);
    SlowSource source;
    if (callback != nullptr) {
        source = [&](SlowMachine& asking, SlowEvent& event) {
            return playback.Answer(asking, event);
        };
    }
    std::int32_t slowResult = 0;
    try {
        slowResult = slow.Run(source);
    } catch (const std::exception& error) {
        return std::string("the slow machine: ") + error.what() + "\n";
    }
    const std::string expected = StateOf(slow, slowResult);
    const std::string actual = StateOf(machine, result);
    std::string difference = playback.Difference();
    if (actual != expected) {
        difference += "the machine:\n" + actual + "the slow machine:\n" + expected;
    }
    const std::vector<bool> written = AllBitsOf(machine.reader);
    if (written != slow.buffer) {
        difference += "written by the machine:\n" + TextOf(written) + "by the slow machine:\n" +
                      TextOf(slow.buffer);
    }
    if (encode && slow.overflowed && !machine.writer->Overflowed()) {
        difference += "the machine has not noticed that its room is used up\n";
    }
    return difference;
}

}  // namespace quorvane::reference
