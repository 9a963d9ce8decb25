#pragma once

// Small images, runs and bit strings for the tests of the CSN.1 machine.

#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "csn/assembly/assembler.h"
#include "csn/assembly/planner.h"
#include "csn/machine.h"
#include "reference/csn_slow_beside.h"
#include "support/plain_decode.h"
#include "support/print_outcome.h"

namespace quorvane::csn::test {

/// The octets of a bit string; blanks are skipped, the last octet is filled up with zeros.
inline std::vector<std::uint8_t> Octets(std::string_view bits) {
    std::vector<std::uint8_t> octets;
    std::size_t count = 0;
    for (const char bit : bits) {
        if (bit == ' ') {
            continue;
        }
        if (count % 8 == 0) {
            octets.push_back(0);
        }
        if (bit == '1') {
            octets.back() = static_cast<std::uint8_t>(octets.back() | 0x80U >> (count % 8));
        }
        ++count;
    }
    return octets;
}

/// How many bits the string has.
inline std::int32_t Count(std::string_view bits) {
    std::int32_t count = 0;
    for (const char bit : bits) {
        count += bit == ' ' ? 0 : 1;
    }
    return count;
}

/// The first `count` bits of `octets` as a string.
inline std::string BitText(const std::vector<std::uint8_t>& octets, std::int32_t count) {
    std::string text;
    for (std::int32_t bit = 0; bit < count; ++bit) {
        const auto octet = octets[static_cast<std::size_t>(bit / 8)];
        text += (octet >> (7 - bit % 8) & 1) != 0 ? '1' : '0';
    }
    return text;
}

/// An image under construction. Its code begins at offset 0.
class Image {
  public:
    using Pairs = std::initializer_list<std::pair<std::uint16_t, std::uint16_t>>;

    Assembler code;
    std::vector<CsnAction> actions;
    std::vector<CsnValueFunction> functions;
    std::vector<std::uint16_t> fields;
    bool isSound = true;  // the slow machine judges no others

    /// A field with its tag under each parent, and its index.
    std::uint32_t Field(Pairs parentAndTag, std::int16_t index = 0) {
        fields.push_back(static_cast<std::uint16_t>(index));
        const auto id = static_cast<std::uint32_t>(fields.size());
        for (const auto& [parent, tag] : parentAndTag) {
            fields.push_back(parent);
            fields.push_back(tag);
        }
        return id;
    }
    std::uint32_t Action(CsnAction action) {
        actions.push_back(action);
        return static_cast<std::uint32_t>(actions.size() - 1);
    }
    std::uint32_t Function(CsnValueFunction function) {
        functions.push_back(function);
        return static_cast<std::uint32_t>(functions.size() - 1);
    }

    const std::vector<std::uint8_t>& Octets() {
        if (octets_.empty()) {
            octets_ = code.Finish();
        }
        return octets_;
    }
    const CsnProgram& Program() {
        const std::vector<std::uint8_t>& octets = Octets();
        plan_ = MakePlan(octets, fields);
        program_ = {octets.data(),     static_cast<std::uint32_t>(octets.size()),
                    fields.data(),     actions.data(),
                    functions.data(),  static_cast<std::uint32_t>(fields.size()),
                    plan_.steps.data()};
        return program_;
    }

    /// The plan's step for the code at `label`.
    [[nodiscard]] std::uint16_t StepAt(std::uint32_t label) const { return plan_.stepAt.at(label); }

  private:
    std::vector<std::uint8_t> octets_;
    Plan plan_;
    CsnProgram program_{};
};

inline constexpr std::int32_t kRoot = 3;  // root tag of the runs below

/// Runs a machine that was set up. Empty, or in what it and the slow one differ.
inline std::string RunOf(const Image& image, CsnMachine& machine, CsnCallback callback,
                         bits::Outcome& result) {
    if (image.isSound) {
        return reference::DifferenceOfSlow(machine, callback, result);
    }
    result = CsnMachineRun(machine, callback);
    return "";
}

struct DecodeRun {
    std::vector<std::uint8_t> octets;
    std::unique_ptr<CsnMachine> machine = std::make_unique<CsnMachine>();
    bits::Outcome result = 0;
};

/// Decodes all of `bits` from its first bit on, by the slow machine too, without a callback also by
/// the plan.
inline DecodeRun Decode(Image& image, std::string_view bits, CsnCallback callback = nullptr,
                        std::uint32_t label = 0) {
    DecodeRun run;
    run.octets = Octets(bits);
    const bits::BitReader reader(run.octets.data(), static_cast<std::int64_t>(run.octets.size()));
    CsnMachineInit(*run.machine, image.Program(), label, reader, 0, Count(bits));
    run.machine->rootTag = kRoot;
    EXPECT_EQ(RunOf(image, *run.machine, callback, run.result), "");
    if (callback == nullptr) {
        CsnMachineInit(*run.machine, image.Program(), label, reader, 0, Count(bits));
        run.machine->rootTag = kRoot;
        EXPECT_EQ(DifferenceOfPlan(*run.machine, image.StepAt(label), run.result), "");
    }
    return run;
}

struct EncodeRun {
    std::vector<std::uint8_t> octets;
    std::unique_ptr<bits::BitWriter> writer;
    std::unique_ptr<CsnMachine> machine = std::make_unique<CsnMachine>();
    bits::Outcome result = 0;

    /// The bits written, or "failed".
    [[nodiscard]] std::string Text() const {
        return result.Failed() ? "failed"
                               : BitText(octets, static_cast<std::int32_t>(result.Bits()));
    }
};

/// Encodes over a buffer of ones, so that bits that are cleared show, by the slow machine too.
inline EncodeRun Encode(Image& image, CsnCallback callback = nullptr, std::size_t octetCount = 64,
                        void* userRecord = nullptr) {
    EncodeRun run;
    run.octets.assign(octetCount, 0xFF);
    run.writer = std::make_unique<bits::BitWriter>(run.octets.data(),
                                                   static_cast<std::int64_t>(run.octets.size()));
    CsnMachineInit(*run.machine, image.Program(), 0, *run.writer, 0);
    run.machine->rootTag = kRoot;
    run.machine->userRecord = userRecord;
    EXPECT_EQ(RunOf(image, *run.machine, callback, run.result), "");
    return run;
}

/// The records of a run, "(tag, occurrence, bitPos, depth)" each.
inline std::string RecordText(const CsnMachine& machine) {
    std::string text;
    for (std::int32_t index = 0; index < machine.recordCount; ++index) {
        const CsnFieldRecord& record = machine.records[index];
        text += "(" + std::to_string(record.tag) + "," + std::to_string(record.occurrence) + "," +
                std::to_string(record.bitPos) + "," + std::to_string(record.depth) + ")";
    }
    return text;
}

}  // namespace quorvane::csn::test
