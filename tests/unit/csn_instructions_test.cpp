// Each instruction in both directions. Fields are in csn_fields_test.cpp, alternatives and
// repetition at length in csn_backtracking_test.cpp.

#include <gtest/gtest.h>

#include "csn/machine.h"
#include "unit/csn_test_support.h"

namespace quorvane::csn {
namespace {

using test::Decode;
using test::Encode;
using test::Image;
using test::kRoot;

using Emit = void (*)(Image& image);

/// Result of decoding `bits` by what `emit` puts in front of RET.
bits::Outcome DecodedBits(Emit emit, std::string_view bits) {
    Image image;
    emit(image);
    image.code.Emit(Opcode::kRet);
    const bits::Outcome result = Decode(image, bits).result;
    EXPECT_TRUE(image.code.Errors().empty()) << image.code.Errors().front();
    return result;
}

/// The bits that the same code writes.
std::string EncodedBits(Emit emit) {
    Image image;
    emit(image);
    image.code.Emit(Opcode::kRet);
    return Encode(image).Text();
}

TEST(CsnInstruction, Nop) {
    const Emit emit = [](Image& image) { image.code.Emit(Opcode::kNop); };
    EXPECT_EQ(DecodedBits(emit, "1"), 0);
    EXPECT_EQ(EncodedBits(emit), "");
}

TEST(CsnInstruction, UndefinedCodesDoNothing) {
    for (const unsigned code : {0x21U, 0x2EU, 0x30U, 0x3FU}) {
        const std::vector<std::uint8_t> octets = {static_cast<std::uint8_t>(code),
                                                  static_cast<std::uint8_t>(Opcode::kBit1),
                                                  static_cast<std::uint8_t>(Opcode::kRet)};
        const CsnProgram program{octets.data(), 3, nullptr, nullptr, nullptr, 0, nullptr};
        const std::uint8_t message = 0x80;
        const bits::BitReader reader(&message, 1);
        CsnMachine machine;
        CsnMachineInit(machine, program, 0, reader, 0, 8);
        EXPECT_EQ(CsnMachineRun(machine, nullptr), 1) << code;
    }
}

TEST(CsnInstruction, Fail) {
    const Emit emit = [](Image& image) { image.code.Emit(Opcode::kFail); };
    EXPECT_EQ(DecodedBits(emit, "1"), -1);
    EXPECT_EQ(EncodedBits(emit), "failed");
}

TEST(CsnInstruction, Bit0) {
    const Emit emit = [](Image& image) { image.code.Emit(Opcode::kBit0); };
    EXPECT_EQ(DecodedBits(emit, "0"), 1);
    EXPECT_EQ(DecodedBits(emit, "1"), -1);
    EXPECT_EQ(EncodedBits(emit), "0");
}

TEST(CsnInstruction, Bit1) {
    const Emit emit = [](Image& image) { image.code.Emit(Opcode::kBit1); };
    EXPECT_EQ(DecodedBits(emit, "1"), 1);
    EXPECT_EQ(DecodedBits(emit, "0"), -1);
    EXPECT_EQ(EncodedBits(emit), "1");
}

TEST(CsnInstruction, BitIsNotTakenPastTheEnd) {
    const Emit emit = [](Image& image) { image.code.Emit(Opcode::kBit0); };
    EXPECT_EQ(DecodedBits(emit, ""), -1);
    Image image;
    emit(image);
    image.code.Emit(Opcode::kRet);
    const std::vector<std::uint8_t> octets(1, 0);  // the next bit in memory would fit
    const bits::BitReader reader(octets.data(), 1);
    CsnMachine machine;
    CsnMachineInit(machine, image.Program(), 0, reader, 3, 0);
    EXPECT_EQ(CsnMachineRun(machine, nullptr), -1);
}

TEST(CsnInstruction, PaddingBitsFollowTheOctet) {
    // 0x2B from the first bit to the last.
    const std::string padding = "00101011";
    for (int position = 0; position < 16; ++position) {
        for (const bool low : {true, false}) {
            Image image;
            image.code.Emit(low ? Opcode::kBitL : Opcode::kBitH);
            image.code.Emit(Opcode::kRet);
            const bool wanted = (padding[static_cast<std::size_t>(position % 8)] == '1') == low;
            for (const bool bit : {false, true}) {
                const std::vector<std::uint8_t> octets(2, bit ? 0xFF : 0x00);
                const bits::BitReader reader(octets.data(), 2);
                CsnMachine machine;
                CsnMachineInit(machine, image.Program(), 0, reader, position, 1);
                EXPECT_EQ(CsnMachineRun(machine, nullptr), bit == wanted ? 1 : -1) << position;
            }
            std::vector<std::uint8_t> octets(2, wanted ? 0x00 : 0xFF);
            bits::BitWriter writer(octets.data(), 2);
            CsnMachine machine;
            CsnMachineInit(machine, image.Program(), 0, writer, position);
            EXPECT_EQ(CsnMachineRun(machine, nullptr), 1);
            EXPECT_EQ(writer.Reader().Read(position, 1), wanted ? 1U : 0U) << position;
        }
    }
}

TEST(CsnInstruction, PaddingBitIsNotTakenPastTheEnd) {
    EXPECT_EQ(DecodedBits([](Image& image) { image.code.Emit(Opcode::kBitL); }, ""), -1);
    EXPECT_EQ(DecodedBits([](Image& image) { image.code.Emit(Opcode::kBitH); }, ""), -1);
}

TEST(CsnInstruction, Lit) {
    const Emit emit = [](Image& image) {
        image.code.Emit(Opcode::kLit, {Assembler::Literal(0x5A3, 12)});
    };
    EXPECT_EQ(DecodedBits(emit, "0101 1010 0011"), 12);
    EXPECT_EQ(DecodedBits(emit, "0101 1010 0010"), -1);
    EXPECT_EQ(DecodedBits(emit, "0101 1010 001"), -1);
    EXPECT_EQ(EncodedBits(emit), "010110100011");
}

TEST(CsnInstruction, Skip) {
    const Emit forty = [](Image& image) { image.code.Emit(Opcode::kSkip, {40}); };
    EXPECT_EQ(DecodedBits(forty, std::string(40, '1')), 40);
    EXPECT_EQ(DecodedBits(forty, std::string(39, '1')), -1);
    EXPECT_EQ(EncodedBits(forty), std::string(40, '0'));

    const Emit most = [](Image& image) { image.code.Emit(Opcode::kSkip, {63}); };
    Image image;
    most(image);
    image.code.Emit(Opcode::kRet);
    const auto run = Encode(image);
    EXPECT_EQ(run.Text(), std::string(63, '0'));
    EXPECT_EQ(run.octets[7], 0x01);  // the bit behind is untouched

    const Emit none = [](Image& target) { target.code.Emit(Opcode::kSkip, {0}); };
    EXPECT_EQ(DecodedBits(none, ""), 0);
    EXPECT_EQ(EncodedBits(none), "");
}

TEST(CsnInstruction, ActionsByDirection) {
    const Emit emit = [](Image& image) {
        const auto step = image.Action([](CsnRun& run) { run.bitPos += 1; });
        const auto two = image.Action([](CsnRun& run) { run.bitPos += 2; });
        const auto four = image.Action([](CsnRun& run) { run.bitPos += 4; });
        image.code.Emit(Opcode::kAct, {step});
        image.code.Emit(Opcode::kActDec, {two});
        image.code.Emit(Opcode::kActEnc, {four});
    };
    EXPECT_EQ(DecodedBits(emit, "0000000"), 3);
    EXPECT_EQ(EncodedBits(emit).size(), 5U);
}

TEST(CsnInstruction, ActionsSeeTheDirectionNotTheMode) {
    // ACT_ENC also while the encoder reads.
    Image image;
    const auto four = image.Action([](CsnRun& run) {
        EXPECT_NE(run.flags & kFlagRescan, 0U);
        TagAdd(run, 1, 44);
    });
    image.code.Emit(Opcode::kMark);
    image.code.Emit(Opcode::kBit1);
    image.code.Emit(Opcode::kRescan);
    image.code.Emit(Opcode::kActEnc, {four});
    image.code.Emit(Opcode::kBit1);
    image.code.Emit(Opcode::kRescanEnd);
    image.code.Emit(Opcode::kRet);
    const auto run = Encode(image);
    EXPECT_EQ(run.result, 1);
    EXPECT_EQ(TagValue(*run.machine, 1), 44);
}

TEST(CsnInstruction, CallAndReturn) {
    const Emit emit = [](Image& image) {
        const auto rule = image.code.NewLabel();
        const auto inner = image.code.NewLabel();
        image.code.Emit(Opcode::kCall, {rule});
        image.code.Emit(Opcode::kBit0);
        image.code.Emit(Opcode::kRet);
        image.code.Bind(rule);
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kCall, {inner});
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kRet);
        image.code.Bind(inner);
        image.code.Emit(Opcode::kLit, {Assembler::Literal(0, 2)});
    };
    EXPECT_EQ(DecodedBits(emit, "10010"), 5);
    EXPECT_EQ(DecodedBits(emit, "10000"), -1);
    EXPECT_EQ(EncodedBits(emit), "10010");
}

TEST(CsnInstruction, ReturnKeepsTagsAndReturnTagsDropsThem) {
    for (const bool drop : {false, true}) {
        Image image;
        const auto rule = image.code.NewLabel();
        image.code.Emit(Opcode::kTagPos, {1});
        image.code.Emit(Opcode::kCall, {rule});
        image.code.Emit(Opcode::kRet);
        image.code.Bind(rule);
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kTagPos, {2});
        image.code.Emit(Opcode::kTagPos, {3});
        image.code.Emit(drop ? Opcode::kRetTags : Opcode::kRet);
        const auto run = Decode(image, "1");
        EXPECT_EQ(run.result, 1);
        EXPECT_EQ(run.machine->tagCount, drop ? 1 : 3);
        EXPECT_EQ(Encode(image).machine->tagCount, drop ? 1 : 3);
    }
}

TEST(CsnInstruction, ReturnTagsEndsTheRunToo) {
    Image image;
    image.code.Emit(Opcode::kTagPos, {1});
    image.code.Emit(Opcode::kRetTags);
    const auto run = Decode(image, "");
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(run.machine->tagCount, 1);
}

TEST(CsnInstruction, JumpsForward) {
    const Emit emit = [](Image& image) {
        const auto end = image.code.NewLabel();
        image.code.Emit(Opcode::kJmp, {end});
        image.code.Emit(Opcode::kFail);
        image.code.Bind(end);
        image.code.Emit(Opcode::kBit1);
    };
    EXPECT_EQ(DecodedBits(emit, "1"), 1);
    EXPECT_EQ(EncodedBits(emit), "1");
}

TEST(CsnInstruction, JumpsWithScale) {
    const Emit emit = [](Image& image) {
        const auto end = image.code.NewLabel();
        image.code.Emit(Opcode::kJmp, {end});
        for (int count = 0; count < 5000; ++count) {
            image.code.Emit(Opcode::kFail);
        }
        image.code.Bind(end);
        image.code.Emit(Opcode::kBit1);
    };
    EXPECT_EQ(DecodedBits(emit, "1"), 1);
}

TEST(CsnInstruction, SkipEnc) {
    const Emit emit = [](Image& image) {
        const auto end = image.code.NewLabel();
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kSkipEnc, {end});
        image.code.Emit(Opcode::kBit0);
        image.code.Bind(end);
        image.code.Emit(Opcode::kBit1);
    };
    EXPECT_EQ(DecodedBits(emit, "101"), 3);
    EXPECT_EQ(DecodedBits(emit, "111"), -1);
    EXPECT_EQ(EncodedBits(emit), "11");
}

TEST(CsnInstruction, TagPos) {
    Image image;
    image.code.Emit(Opcode::kSkip, {5});
    image.code.Emit(Opcode::kTagPos, {300});
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(TagValue(*Decode(image, "00000").machine, 300), 5);
    EXPECT_EQ(TagValue(*Encode(image).machine, 300), 5);
}

TEST(CsnInstruction, Mark) {
    Image image;
    image.code.Emit(Opcode::kSkip, {5});
    image.code.Emit(Opcode::kMark);
    image.code.Emit(Opcode::kFail);
    const auto run = Decode(image, "00000");
    ASSERT_EQ(run.machine->stackDepth, 1);
    EXPECT_EQ(run.machine->stack[0].Position(), 5);
    EXPECT_EQ(run.machine->stack[0].isChoice, 0U);
}

TEST(CsnInstruction, AtEnd) {
    const Emit emit = [](Image& image) {
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kAtEnd);
    };
    EXPECT_EQ(DecodedBits(emit, "1"), 1);
    EXPECT_EQ(DecodedBits(emit, "10"), -1);
    EXPECT_EQ(EncodedBits(emit), "1");
}

// Comparisons of the bits from a tag's position on.

TEST(CsnInstruction, ValEq) {
    const Emit emit = [](Image& image) {
        image.code.Emit(Opcode::kTagPos, {1});
        image.code.Emit(Opcode::kSkip, {4});
        image.code.Emit(Opcode::kValEq, {1, 9});
    };
    EXPECT_EQ(DecodedBits(emit, "1001"), 4);
    EXPECT_EQ(DecodedBits(emit, "1000"), -1);
    EXPECT_EQ(EncodedBits(emit), "failed");  // SKIP has written 0

    const Emit written = [](Image& image) {
        image.code.Emit(Opcode::kTagPos, {1});
        image.code.Emit(Opcode::kLit, {Assembler::Literal(9, 4)});
        image.code.Emit(Opcode::kValEq, {1, 9});
    };
    EXPECT_EQ(EncodedBits(written), "1001");
}

TEST(CsnInstruction, ValRange) {
    const Emit emit = [](Image& image) {
        image.code.Emit(Opcode::kTagPos, {1});
        image.code.Emit(Opcode::kSkip, {4});
        image.code.Emit(Opcode::kValRange, {1, 3, 5});
    };
    EXPECT_EQ(DecodedBits(emit, "0010"), -1);
    EXPECT_EQ(DecodedBits(emit, "0011"), 4);
    EXPECT_EQ(DecodedBits(emit, "0101"), 4);
    EXPECT_EQ(DecodedBits(emit, "0110"), -1);
    EXPECT_EQ(EncodedBits(emit), "failed");
}

TEST(CsnInstruction, ValRangeIsUnsigned) {
    const Emit emit = [](Image& image) {
        image.code.Emit(Opcode::kTagPos, {1});
        image.code.Emit(Opcode::kSkip, {32});
        image.code.Emit(Opcode::kValRange, {1, 1, 0xFFFFFFFF});
    };
    EXPECT_EQ(DecodedBits(emit, std::string(32, '1')), 32);
    EXPECT_EQ(DecodedBits(emit, std::string(32, '0')), -1);
}

TEST(CsnInstruction, ValuesWiderThanANumberWrap) {
    const Emit emit = [](Image& image) {
        image.code.Emit(Opcode::kTagPos, {1});
        image.code.Emit(Opcode::kSkip, {34});
        image.code.Emit(Opcode::kValEq, {1, 0x00000003});
    };
    // Bits 32 and 33 from the end are or-ed into 0 and 1.
    EXPECT_EQ(DecodedBits(emit, "11" + std::string(32, '0')), 34);
    EXPECT_EQ(DecodedBits(emit, "10" + std::string(31, '0') + "1"), 34);
    EXPECT_EQ(DecodedBits(emit, "10" + std::string(32, '0')), -1);
}

TEST(CsnInstruction, ValueOfAnAbsentTagIsReadFromInFront) {
    // Position -1: one bit in front of the buffer, which reads as 0.
    const Emit emit = [](Image& image) {
        image.code.Emit(Opcode::kSkip, {2});
        image.code.Emit(Opcode::kValEq, {7, 3});
    };
    EXPECT_EQ(DecodedBits(emit, "11"), 2);
}

TEST(CsnInstruction, ValEqFn) {
    const Emit emit = [](Image& image) {
        const auto function = image.Function([](CsnRun&) { return 9U; });
        image.code.Emit(Opcode::kTagPos, {1});
        image.code.Emit(Opcode::kLit, {Assembler::Literal(1, 1)});
        image.code.Emit(Opcode::kSkip, {2});
        image.code.Emit(Opcode::kValEqFn, {1, function});
    };
    EXPECT_EQ(DecodedBits(emit, "101"), -1);
    const Emit wide = [](Image& image) {
        const auto function = image.Function([](CsnRun&) { return 9U; });
        image.code.Emit(Opcode::kTagPos, {1});
        image.code.Emit(Opcode::kLit, {Assembler::Literal(9, 4)});
        image.code.Emit(Opcode::kValEqFn, {1, function});
    };
    EXPECT_EQ(DecodedBits(wide, "1001"), 4);
    EXPECT_EQ(EncodedBits(wide), "1001");
}

TEST(CsnInstruction, ValEqFnRunsTheFunctionFirst) {
    Image image;
    const auto function = image.Function([](CsnRun& run) {
        TagAdd(run, 1, 2);  // moves the place that is compared
        return 1U;
    });
    image.code.Emit(Opcode::kTagPos, {1});
    image.code.Emit(Opcode::kSkip, {4});
    image.code.Emit(Opcode::kValEqFn, {1, function});
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(Decode(image, "1101").result, 4);
}

TEST(CsnInstruction, ValRangeFn) {
    const Emit emit = [](Image& image) {
        const auto low = image.Function([](CsnRun&) { return 3U; });
        const auto high = image.Function([](CsnRun&) { return 5U; });
        image.code.Emit(Opcode::kTagPos, {1});
        image.code.Emit(Opcode::kSkip, {4});
        image.code.Emit(Opcode::kValRangeFn, {1, low, high});
    };
    EXPECT_EQ(DecodedBits(emit, "0010"), -1);
    EXPECT_EQ(DecodedBits(emit, "0011"), 4);
    EXPECT_EQ(DecodedBits(emit, "0101"), 4);
    EXPECT_EQ(DecodedBits(emit, "0110"), -1);
    EXPECT_EQ(EncodedBits(emit), "failed");
}

// Results of value functions that are no counts.

template <std::uint32_t kResult>
std::uint32_t Constant(CsnRun&) {
    return kResult;
}

/// ALT to a branch of one bit; the other branch has the value call and fails behind it. A
/// repetition is followed by two bits.
bits::Outcome AfterValueCall(CsnValueFunction function, Opcode opcode) {
    Image image;
    const auto other = image.code.NewLabel();
    const auto number = image.Function(function);
    image.code.Emit(Opcode::kTagPos, {1});
    image.code.Emit(Opcode::kAlt, {Assembler::Branch(other, false)});
    const auto exit = image.code.NewLabel();
    const auto fine = image.Function(Constant<0>);
    switch (opcode) {
        case Opcode::kRepFn:
        case Opcode::kRepFnEnc:
            image.code.Emit(opcode, {Assembler::Exit(exit, false), number});
            break;
        case Opcode::kRepFn2:
            image.code.Emit(opcode, {Assembler::Exit(exit, false), fine, number});
            break;
        case Opcode::kCountFn:
            image.code.Emit(Opcode::kRepAny, {Assembler::Exit(exit, false)});
            image.code.Emit(opcode, {number});
            break;
        case Opcode::kCountFn2:
            image.code.Emit(Opcode::kRepAny, {Assembler::Exit(exit, false)});
            image.code.Emit(opcode, {fine, number});
            break;
        case Opcode::kValEqFn:
            image.code.Emit(opcode, {1, number});
            break;
        case Opcode::kValRangeFn:
            image.code.Emit(opcode, {1, fine, number});
            break;
        default:
            ADD_FAILURE();
    }
    image.code.Emit(Opcode::kFail);
    image.code.Bind(exit);
    image.code.Emit(Opcode::kPop);
    image.code.Emit(Opcode::kSkip, {2});
    image.code.Emit(Opcode::kRet);
    image.code.Bind(other);
    image.code.Emit(Opcode::kSkip, {1});
    image.code.Emit(Opcode::kRet);
    return Decode(image, "00000000").result;
}

TEST(CsnInstruction, ResultsThatAreNoCounts) {
    for (const Opcode opcode : {Opcode::kRepFn, Opcode::kRepFn2, Opcode::kCountFn,
                                Opcode::kCountFn2, Opcode::kValEqFn, Opcode::kValRangeFn}) {
        const std::string_view name = InfoOf(static_cast<std::uint8_t>(opcode)).name;
        // Within a repetition the nearest choice point is its exit.
        const bool inside = opcode == Opcode::kCountFn || opcode == Opcode::kCountFn2;
        EXPECT_EQ(AfterValueCall(Constant<16384>, opcode), inside ? 2 : 1) << name;
        EXPECT_EQ(AfterValueCall(Constant<16385>, opcode), -1) << name;
        EXPECT_EQ(AfterValueCall(Constant<0xFFFFFFFF>, opcode), -1) << name;
    }
}

TEST(CsnInstruction, LargestCount) {
    Image image;
    const auto function = image.Function(Constant<16383>);
    const auto exit = image.code.NewLabel();
    image.code.Emit(Opcode::kRepFn, {Assembler::Exit(exit, false), function});
    image.code.Emit(Opcode::kFail);
    image.code.Bind(exit);
    image.code.Emit(Opcode::kRet);
    const auto run = Decode(image, "");
    EXPECT_EQ(run.result, -1);
    EXPECT_EQ(run.machine->flags & kFlagAbort, 0U);
    ASSERT_EQ(run.machine->stackDepth, 2);
    EXPECT_EQ(run.machine->stack[1].MinLeft(), 16383U);

    std::uint32_t result = 0;
    EXPECT_TRUE(ValueCall(*run.machine, function, result));
    EXPECT_EQ(result, 16383U);
}

TEST(CsnInstruction, AbsentValueWithoutChoiceAborts) {
    Image image;
    const auto function = image.Function(Constant<16384>);
    const auto exit = image.code.NewLabel();
    image.code.Emit(Opcode::kRepFn, {Assembler::Exit(exit, false), function});
    image.code.Bind(exit);
    image.code.Emit(Opcode::kRet);
    const auto run = Decode(image, "0000");
    EXPECT_EQ(run.result, -1);
    EXPECT_NE(run.machine->flags & kFlagAbort, 0U);
    EXPECT_EQ(run.machine->stackDepth, 0);
}

TEST(CsnInstruction, DecodingDoesNotCallTheEncodersFunction) {
    Image image;
    const auto function = image.Function([](CsnRun&) {
        ADD_FAILURE() << "called when decoding";
        return 0U;
    });
    const auto exit = image.code.NewLabel();
    image.code.Emit(Opcode::kRepFnEnc, {Assembler::Exit(exit, false), function});
    const auto body = image.code.BindNew();
    image.code.Emit(Opcode::kBit1);
    image.code.Emit(Opcode::kLoop, {body});
    image.code.Bind(exit);
    image.code.Emit(Opcode::kBit0);
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(Decode(image, "1110").result, 4);
}

}  // namespace
}  // namespace quorvane::csn
