// Plans: repetitions of one step, which are passed at once.

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "unit/csn_record_support.h"
#include "unit/csn_test_support.h"

namespace quorvane::csn::test {
namespace {

// Bits of any value, as often as can be: at least so often, at most so often.
TEST(PlanRepetition, TakesAsManyBitsOfAnyValueAsTheMachine) {
    constexpr std::uint32_t kMany = kOpenEndedCount;
    for (const auto& [least, most] : std::vector<std::pair<std::uint32_t, std::uint32_t>>{
             {0, 0}, {1, 1}, {3, 3}, {0, 2}, {1, 3}, {3, 1}, {0, kMany}, {1, kMany}, {2, kMany}}) {
        for (const std::uint32_t width : {1U, 2U, 5U}) {
            for (std::uint32_t left = 0; left < 12; ++left) {
                Image image;
                const auto exit = image.code.NewLabel();
                image.code.Emit(Opcode::kRepRange, {Assembler::Exit(exit, false), least, most});
                const auto body = image.code.BindNew();
                image.code.Emit(Opcode::kSkip, {width});
                image.code.Emit(Opcode::kLoop, {body});
                image.code.Bind(exit);
                image.code.Emit(Opcode::kRet);
                const std::uint32_t count = std::min(left / width, most);
                EXPECT_EQ(Decode(image, std::string(left, '1')).result,
                          count < std::min(least, most) ? -1 : static_cast<int>(count * width))
                    << least << " to " << most << " of " << width << " in " << left;
                ExpectSameLimits(image, std::string(left, '1'));
            }
        }
    }
}

// The number that stands for no upper bound is none.
TEST(PlanRepetition, GoesOnBehindAsManyIterationsAsHaveNoBound) {
    Image image;
    const auto end = image.code.NewLabel();
    image.code.Emit(Opcode::kRepAny, {Assembler::Exit(end, false)});
    const auto body = image.code.BindNew();
    image.code.Emit(Opcode::kBit1);
    image.code.Emit(Opcode::kLoop, {body});
    image.code.Bind(end);
    image.code.Emit(Opcode::kRet);
    const std::string bits(kOpenEndedCount, '1');
    const std::vector<std::uint8_t> octets = Octets(bits);
    const bits::BitReader reader(octets.data(), static_cast<std::int64_t>(octets.size()));
    for (std::uint64_t more = 0; more < 4; ++more) {
        CsnMachine machine;
        CsnMachineInit(machine, image.Program(), 0, reader, 0, Count(bits));
        machine.rootTag = kRoot;
        machine.instructionsLeft = 2 * bits.size() + more;
        bits::Outcome result = 0;
        EXPECT_EQ(DifferenceOfPlan(machine, 0, result), "") << more;
    }
}

// A body of one step that takes no bit.
TEST(PlanRepetition, RepeatsWhatTakesNothing) {
    for (const Opcode opcode : {Opcode::kNop, Opcode::kFail, Opcode::kAtEnd}) {
        Image image;
        const auto exit = image.code.NewLabel();
        image.code.Emit(Opcode::kRep, {Assembler::Exit(exit, false), 3});
        const auto body = image.code.BindNew();
        image.code.Emit(opcode);
        image.code.Emit(Opcode::kLoop, {body});
        image.code.Bind(exit);
        image.code.Emit(Opcode::kRet);
        EXPECT_EQ(Decode(image, "01").result, opcode == Opcode::kNop ? 0 : -1);
        ExpectSameLimits(image, "01");
    }
}

// Fixed bits and padding of any length behind any position, with what ends them, and however few
// instructions are left for them.
TEST(PlanRepetition, PassesFixedBitsAndPaddingAsTheMachine) {
    const auto check = [](Opcode bit, std::uint32_t least, std::uint32_t most) {
        Image image;
        const auto end = image.code.NewLabel();
        image.code.Emit(Opcode::kRepRange, {Assembler::Exit(end, false), least, most});
        const auto body = image.code.BindNew();
        image.code.Emit(bit);
        image.code.Emit(Opcode::kLoop, {body});
        image.code.Bind(end);
        image.code.Emit(Opcode::kRet);
        const auto wantedAt = [&](std::int32_t position) -> std::uint32_t {
            const std::uint32_t padding =
                std::string_view("00101011")[static_cast<std::size_t>(position % 8)] == '1' ? 1 : 0;
            return bit == Opcode::kBit0   ? 0
                   : bit == Opcode::kBit1 ? 1
                   : bit == Opcode::kBitL ? padding
                                          : 1 - padding;
        };
        for (const std::int32_t length : {0, 1, 2, 7, 8, 9, 63, 64, 65, 130}) {
            for (std::int32_t start = 0; start < 9; ++start) {
                std::string text(static_cast<std::size_t>(start), '0');
                for (std::int32_t position = start; position < start + length; ++position) {
                    text += wantedAt(position) != 0 ? '1' : '0';
                }
                const std::vector<std::uint8_t> whole = Octets(text);
                text += wantedAt(start + length) != 0 ? "011" : "100";
                const std::vector<std::uint8_t> ended = Octets(text);
                for (const auto* octets : {&whole, &ended}) {
                    const bits::BitReader reader(octets->data(),
                                                 static_cast<std::int64_t>(octets->size()));
                    const std::int32_t bits = length + (octets == &ended ? 3 : 0);
                    for (const std::int32_t spared :
                         {2 * length + 9, 2 * length + 2, 2 * length + 1, 2 * length, length,
                          length / 2, 1, 0}) {
                        CsnMachine machine;
                        CsnMachineInit(machine, image.Program(), 0, reader, start, bits);
                        machine.rootTag = kRoot;
                        machine.instructionsLeft = static_cast<std::uint64_t>(spared);
                        bits::Outcome result = 0;
                        EXPECT_EQ(DifferenceOfPlan(machine, 0, result), "")
                            << static_cast<int>(bit) << ", " << least << " to " << most << ", "
                            << length << " bits at " << start << ", " << spared << " instructions";
                    }
                }
            }
        }
    };
    for (const Opcode bit : {Opcode::kBit0, Opcode::kBit1, Opcode::kBitL, Opcode::kBitH}) {
        for (const std::uint32_t least : {0U, 1U, 2U, 9U}) {
            check(bit, least, kOpenEndedCount);
            check(bit, least, least);
            check(bit, least, 8);
        }
    }
}

}  // namespace
}  // namespace quorvane::csn::test
