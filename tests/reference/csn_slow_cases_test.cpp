// Images for the slow machine beside the machine that random ones do not come to, or that no sound
// image is.

#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "csn/functions.h"
#include "csn/machine.h"
#include "reference/csn_slow_beside.h"
#include "unit/csn_record_support.h"
#include "unit/csn_test_support.h"

namespace quorvane::reference {
namespace {

using csn::Assembler;
using csn::Opcode;
using csn::test::Decode;
using csn::test::Encode;
using csn::test::Image;
using csn::test::kRoot;

/// Writes 1101 for the first field that is asked for, and what is asked for of others.
std::int32_t FourBitsFirst(csn::CsnFieldEvent& event) {
    if (event.bitPos == 0 && event.kind != csn::kGroupCloses) {
        event.machine->writer->Write(0, 0b1101, 4);
        event.bitLength = 4;
    }
    return csn::kGoOn;
}

// The choice point comes to lie inside of a field, which stays open when the run goes back.
TEST(CsnSlowCases, MovesAChoicePointIntoAField) {
    for (const bool sized : {false, true}) {
        Image image;
        const auto group = image.Field({{kRoot, 10}});
        const auto field = image.Field({{kRoot, 11}, {10, 12}});
        const auto end = image.code.NewLabel();
        image.code.Emit(Opcode::kAlt, {Assembler::Branch(end, false)});
        image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(group, sized)});
        image.code.Emit(Opcode::kSkip, {1});
        image.code.Emit(Opcode::kTagPos, {1});
        image.code.Emit(Opcode::kCommit);
        image.code.Emit(Opcode::kFail);
        image.code.Bind(end);
        image.code.Emit(Opcode::kField, {field, 2});
        image.code.Emit(Opcode::kRet);
        EXPECT_EQ(Decode(image, "11011").result, 3);
        EXPECT_EQ(Encode(image, FourBitsFirst).result, 3);
    }
}

TEST(CsnSlowCases, CommitsWithoutAChoicePoint) {
    Image image;
    image.code.Emit(Opcode::kSkip, {1});
    image.code.Emit(Opcode::kCommit);
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(Decode(image, "11").result, -1);
    EXPECT_EQ(Encode(image).result, -1);
}

// What an iteration noted stays when the next one fails.
TEST(CsnSlowCases, KeepsTheTagsOfIterations) {
    Image image;
    const auto exit = image.code.NewLabel();
    image.code.Emit(Opcode::kRepRange, {Assembler::Exit(exit, false), 1, 5});
    const auto body = image.code.BindNew();
    image.code.Emit(Opcode::kTagPos, {1});
    image.code.Emit(Opcode::kBit1);
    image.code.Emit(Opcode::kLoop, {body});
    image.code.Bind(exit);
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(Decode(image, "1110").machine->tagCount, 3);
    EXPECT_EQ(Encode(image).machine->tagCount, 5);
}

// In an open repetition a writer passes over a branch with the flag, a reader does not: neither one
// of what the source wrote whole, nor one that reads a second time.
TEST(CsnSlowCases, PassesOverFlaggedBranchesInWritingAlone) {
    for (const bool again : {false, true}) {
        Image image;
        const auto group = image.Field({{kRoot, 10}});
        const auto delimiter = Assembler::Delimiter(group, true);
        if (again) {
            image.code.Emit(Opcode::kMark);
            image.code.Emit(Opcode::kLit, {Assembler::Literal(0b1101, 4)});
            image.code.Emit(Opcode::kRescan);
        } else {
            image.code.Emit(Opcode::kBegin, {delimiter});
        }
        const auto exit = image.code.NewLabel();
        image.code.Emit(Opcode::kRepAny, {Assembler::Exit(exit, false)});
        const auto body = image.code.BindNew();
        csn::test::Optional(image, [] {});
        image.code.Emit(Opcode::kLoop, {body});
        image.code.Bind(exit);
        if (again) {
            image.code.Emit(Opcode::kRescanEnd);
        } else {
            image.code.Emit(Opcode::kEnd, {delimiter});
        }
        image.code.Emit(Opcode::kRet);
        EXPECT_EQ(Decode(image, "1101").result, 4);
        EXPECT_EQ(Encode(image, FourBitsFirst).result, 4);
    }
}

/// One instruction that calls the function, with what it needs, and a field behind it.
void CallFunction(Image& image, Opcode opcode, std::uint32_t function) {
    const auto exit = image.code.NewLabel();
    image.code.Emit(Opcode::kTagPos, {1});
    switch (opcode) {
        case Opcode::kRepFn:
            image.code.Emit(opcode, {Assembler::Exit(exit, false), function});
            break;
        case Opcode::kCountFn:
            image.code.Emit(Opcode::kRepRange, {Assembler::Exit(exit, false), 0, 6});
            break;
        case Opcode::kValEqFn:
            image.code.Emit(opcode, {1, function});
            break;
        default:
            image.code.Emit(opcode, {1, function, function});
            break;
    }
    const auto body = image.code.BindNew();
    if (opcode == Opcode::kCountFn) {
        image.code.Emit(opcode, {function});
    }
    image.code.Emit(Opcode::kBit1);
    if (opcode == Opcode::kRepFn || opcode == Opcode::kCountFn) {
        image.code.Emit(Opcode::kLoop, {body});
    }
    image.code.Bind(exit);
}

// Counts up to the last that is one, the one that means that there is none, and those that fail.
TEST(CsnSlowCases, AnswersOfValueFunctions) {
    using csn::functions::Constant;
    for (const Opcode opcode :
         {Opcode::kRepFn, Opcode::kCountFn, Opcode::kValEqFn, Opcode::kValRangeFn}) {
        for (const csn::CsnValueFunction answer :
             {Constant<0>, Constant<1>, Constant<3>, Constant<16382>, Constant<16383>,
              Constant<16384>, Constant<16385>, Constant<0xFFFFFFFF>}) {
            for (const bool choice : {false, true}) {
                Image image;
                const auto end = image.code.NewLabel();
                if (choice) {
                    image.code.Emit(Opcode::kAlt, {Assembler::Branch(end, false)});
                }
                CallFunction(image, opcode, image.Function(answer));
                image.code.Bind(end);
                image.code.Emit(Opcode::kRet);
                for (const std::string bits : {"1110", "0"}) {
                    Decode(image, bits);
                }
                Encode(image);
            }
        }
    }
}

// A function for each direction.
TEST(CsnSlowCases, FunctionsByDirection) {
    using csn::functions::Constant;
    for (const auto& [encoding, decoding] :
         {std::pair<csn::CsnValueFunction, csn::CsnValueFunction>{Constant<0>, Constant<2>},
          {Constant<2>, Constant<0>},
          {Constant<1>, Constant<3>}}) {
        for (const Opcode opcode : {Opcode::kRepFn2, Opcode::kRepFnEnc, Opcode::kCountFn2}) {
            Image image;
            const std::uint32_t first = image.Function(encoding);
            const std::uint32_t second = image.Function(decoding);
            const auto exit = image.code.NewLabel();
            const auto exitOperand = Assembler::Exit(exit, true);
            if (opcode == Opcode::kRepFn2) {
                image.code.Emit(opcode, {exitOperand, first, second});
            } else if (opcode == Opcode::kRepFnEnc) {
                image.code.Emit(opcode, {exitOperand, first});
            } else {
                image.code.Emit(Opcode::kRep, {exitOperand, 4});
                image.code.Emit(opcode, {first, second});
            }
            const auto body = image.code.BindNew();
            image.code.Emit(Opcode::kBit1);
            image.code.Emit(Opcode::kLoop, {body});
            image.code.Bind(exit);
            image.code.Emit(Opcode::kRet);
            for (const std::string bits : {"", "1", "11", "1110", "1111111"}) {
                Decode(image, bits);
            }
            Encode(image);
        }
    }
}

TEST(CsnSlowCases, JumpsFar) {
    for (int before = 0; before < 9; ++before) {
        for (const int between : {4092, 4093, 4094, 4095, 4096, 4097, 4105, 9000, 36860}) {
            Image image;
            const auto target = image.code.NewLabel();
            for (int count = 0; count < before; ++count) {
                image.code.Emit(Opcode::kNop);
            }
            image.code.Emit(Opcode::kJmp, {target});
            for (int count = 0; count < between; ++count) {
                image.code.Emit(Opcode::kNop);
            }
            image.code.Bind(target);
            image.code.Emit(Opcode::kBit1);
            image.code.Emit(Opcode::kRet);
            EXPECT_EQ(Decode(image, "1").result, 1) << before << " " << between;
        }
    }
}

// Numbers of five octets: the fifth gives four bits, and ends the operand whatever its top bit
// says.
TEST(CsnSlowCases, LongOperands) {
    for (const unsigned last : {0x00U, 0x0FU, 0x7FU, 0x80U, 0xF8U, 0xFFU}) {
        for (const unsigned first : {0x80U, 0x81U, 0xFFU}) {
            std::vector<std::uint8_t> code;
            for (const unsigned octet :
                 {0x24U, 1U, 0xE0U, 0x27U, 1U, first, 0xFFU, 0x80U, 0xD5U, last, 0x23U}) {
                code.push_back(static_cast<std::uint8_t>(octet));
            }
            csn::CsnProgram program{};
            program.code = code.data();
            program.codeSize = static_cast<std::uint32_t>(code.size());
            const std::uint32_t number =
                (first & 0x7FU) << 25U | 0x7FU << 18U | 0x55U << 4U | (last & 0x0FU);
            for (const std::uint32_t given : {number, number ^ 8U, number << 3U}) {
                std::vector<std::uint8_t> octets;
                for (int shift = 24; shift >= 0; shift -= 8) {
                    octets.push_back(static_cast<std::uint8_t>(given >> shift));
                }
                csn::CsnMachine machine;
                csn::CsnMachineInit(machine, program, 0, bits::BitReader(octets.data(), 4), 0, 32);
                machine.rootTag = csn::kNoRecords;
                bits::Outcome result = 0;
                EXPECT_EQ(DifferenceOfSlow(machine, nullptr, result), "");
                EXPECT_EQ(result, given == number ? 32 : -1) << number;
            }
        }
    }
}

}  // namespace
}  // namespace quorvane::reference
