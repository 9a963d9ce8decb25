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

/// The rule of one instruction that is repeated, at least and at most so often.
void Repeat(Image& image, std::uint32_t least, std::uint32_t most, Opcode opcode,
            std::initializer_list<Assembler::Operand> operands = {}) {
    const auto exit = image.code.NewLabel();
    image.code.Emit(Opcode::kRepRange, {Assembler::Exit(exit, false), least, most});
    const auto body = image.code.BindNew();
    image.code.Emit(opcode, operands);
    image.code.Emit(Opcode::kLoop, {body});
    image.code.Bind(exit);
    image.code.Emit(Opcode::kRet);
}

// Bits of any value, as often as can be: at least so often, at most so often.
TEST(PlanRepetition, TakesAsManyBitsOfAnyValueAsTheMachine) {
    constexpr std::uint32_t kMany = kOpenEndedCount;
    for (const auto& [least, most] : std::vector<std::pair<std::uint32_t, std::uint32_t>>{
             {0, 0}, {1, 1}, {3, 3}, {0, 2}, {1, 3}, {3, 1}, {0, kMany}, {1, kMany}, {2, kMany}}) {
        for (const std::uint32_t width : {1U, 2U, 5U}) {
            for (std::uint32_t left = 0; left < 12; ++left) {
                Image image;
                Repeat(image, least, most, Opcode::kSkip, {width});
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
    Repeat(image, 0, kOpenEndedCount, Opcode::kBit1);
    const std::vector<std::uint8_t> octets = Octets(std::string(kOpenEndedCount, '1'));
    for (std::uint64_t more = 0; more < 4; ++more) {
        EXPECT_EQ(DifferenceWithin(2 * kOpenEndedCount + more, image, octets, 0, kOpenEndedCount),
                  "")
            << more;
    }
}

// A body of one step that takes no bit.
TEST(PlanRepetition, RepeatsWhatTakesNothing) {
    for (const Opcode opcode : {Opcode::kNop, Opcode::kFail, Opcode::kAtEnd}) {
        Image image;
        Repeat(image, 3, 3, opcode);
        EXPECT_EQ(Decode(image, "01").result, opcode == Opcode::kNop ? 0 : -1);
        ExpectSameLimits(image, "01");
    }
}

// Fixed bits and padding of any length behind any position, with what ends them, and however few
// instructions are left for them.
TEST(PlanRepetition, PassesFixedBitsAndPaddingAsTheMachine) {
    const auto check = [](Opcode bit, std::uint32_t least, std::uint32_t most) {
        Image image;
        Repeat(image, least, most, bit);
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
                    const std::int32_t bits = length + (octets == &ended ? 3 : 0);
                    for (const std::int32_t spared :
                         {2 * length + 9, 2 * length + 2, 2 * length + 1, 2 * length, length,
                          length / 2, 1, 0}) {
                        EXPECT_EQ(DifferenceWithin(static_cast<std::uint64_t>(spared), image,
                                                   *octets, start, bits),
                                  "")
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
