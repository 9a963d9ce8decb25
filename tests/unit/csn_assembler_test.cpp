#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "csn/assembly/assembler.h"

namespace quorvane::csn {
namespace {

using Code = std::vector<std::uint8_t>;

Code Assemble(Assembler& assembler) {
    Code code = assembler.Finish();
    EXPECT_TRUE(assembler.Errors().empty()) << assembler.Errors().front();
    return code;
}

/// The only error of what was assembled.
std::string ErrorOf(Assembler& assembler) {
    (void)assembler.Finish();
    return assembler.Errors().size() == 1 ? assembler.Errors().front()
                                          : std::to_string(assembler.Errors().size()) + " errors";
}

TEST(CsnAssembler, PacksOperands) {
    Assembler code;
    code.Emit(Opcode::kField, {118, 8});
    code.Emit(Opcode::kBegin, {Assembler::Delimiter(124, false)});
    code.Emit(Opcode::kEndTag, {Assembler::Delimiter(5, true), 300});
    code.Emit(Opcode::kLit, {Assembler::Literal(5, 3)});
    code.Emit(Opcode::kFieldLit, {2, Assembler::Literal(0xFFFF, 16)});
    code.Emit(Opcode::kSkip, {63});
    code.Emit(Opcode::kRet);
    EXPECT_EQ(Assemble(code), (Code{0x10, 118, 8,               // FIELD
                                    0x11, 0x81, 0x78,           // BEGIN, 124 << 1
                                    0x13, 11, 0x82, 0x2C,       // END_TAG
                                    0x26, 0x52,                 // LIT
                                    0x2B, 2, 0xBF, 0xFF, 0x7F,  // FIELD_LIT
                                    0xFF, 0x23}));
}

TEST(CsnAssembler, ResolvesDistancesOfAllForms) {
    Assembler code;
    const auto end = code.NewLabel();
    const auto rule = code.NewLabel();
    code.Emit(Opcode::kRepAny, {Assembler::Exit(end, true)});  // 0, two octets
    const auto body = code.BindNew();
    code.Emit(Opcode::kAlt, {Assembler::Branch(end, true)});  // 2
    code.Emit(Opcode::kJmp, {end});                           // 4
    code.Emit(Opcode::kExclude, {end});                       // 6
    code.Emit(Opcode::kSkipEnc, {end});                       // 8
    code.Emit(Opcode::kCall, {rule});                         // 10
    code.Emit(Opcode::kLoop, {body});                         // 12
    code.Bind(end);
    code.Emit(Opcode::kRet);  // 14
    code.Bind(rule);
    code.Emit(Opcode::kRet);                            // 15
    EXPECT_EQ(Assemble(code), (Code{0x17, 14 << 1 | 1,  //
                                    0xA0, 12,           //
                                    0x40, 10,           //
                                    0x07, 8,            //
                                    0x0F, 6,            //
                                    0x0C, 15,           //
                                    0x1D, 10,           //
                                    0x23, 0x23}));
    EXPECT_EQ(code.OffsetOf(rule), 15U);
}

TEST(CsnAssembler, OperandsGrowWithTheirDistance) {
    Assembler code;
    const auto end = code.NewLabel();
    code.Emit(Opcode::kSkipEnc, {end});
    for (int count = 0; count < 125; ++count) {
        code.Emit(Opcode::kNop);
    }
    code.Bind(end);
    code.Emit(Opcode::kRet);
    const Code fits = Assemble(code);
    EXPECT_EQ(fits[1], 127);

    Assembler longer;
    const auto longEnd = longer.NewLabel();
    longer.Emit(Opcode::kSkipEnc, {longEnd});
    for (int count = 0; count < 126; ++count) {
        longer.Emit(Opcode::kNop);
    }
    longer.Bind(longEnd);
    longer.Emit(Opcode::kRet);
    const Code grown = Assemble(longer);
    EXPECT_EQ(grown[1], 0x81);
    EXPECT_EQ(grown[2], 0x01);  // 129: the operand itself has grown
    EXPECT_EQ(longer.OffsetOf(longEnd), 129U);
}

/// A jump over that many octets to a RET.
Code FarJump(Opcode opcode, std::uint32_t octets) {
    Assembler code;
    const auto end = code.NewLabel();
    if (opcode == Opcode::kJmp) {
        code.Emit(Opcode::kJmp, {end});
    } else {
        code.Emit(Opcode::kAlt, {Assembler::Branch(end, true)});
    }
    for (std::uint32_t count = 0; count < octets; ++count) {
        code.Emit(Opcode::kBit0);
    }
    code.Bind(end);
    code.Emit(Opcode::kRet);
    return Assemble(code);
}

TEST(CsnAssembler, FarJumpsUseTheScale) {
    EXPECT_EQ(FarJump(Opcode::kJmp, 4093)[0], 0x4F);  // 4095 octets: no scale
    const Code aligned = FarJump(Opcode::kJmp, 4094);
    EXPECT_EQ(aligned.size(), 4097U);  // 4096 is a multiple of 8 as it stands
    EXPECT_EQ(aligned[0], 0x60);
    EXPECT_EQ(aligned[1], 0x00);

    const Code far = FarJump(Opcode::kJmp, 4100);
    const auto jump = DecodeInstruction(far, 0);
    ASSERT_TRUE(jump);
    EXPECT_EQ(jump->operands[0], 0x2001U);
    EXPECT_EQ(jump->Target(), 4104U);
    EXPECT_EQ(far.size(), 4105U);
    EXPECT_EQ(far[4103], 0x00);  // NOP
    EXPECT_EQ(far[4104], 0x23);
}

TEST(CsnAssembler, AlternativesReach4095Octets) {
    EXPECT_EQ(FarJump(Opcode::kAlt, 4093).size(), 4096U);
    const Code bridged = FarJump(Opcode::kAlt, 4094);
    EXPECT_EQ(bridged.size(), 4101U);  // two JMPs more
    const auto first = DecodeInstruction(bridged, 0);
    ASSERT_TRUE(first);
    EXPECT_TRUE(first->Flag());
    const auto bridge =
        DecodeInstruction(bridged, static_cast<std::uint32_t>(first->Target().value_or(0)));
    ASSERT_TRUE(bridge);
    EXPECT_EQ(bridge->Code(), Opcode::kJmp);
    EXPECT_EQ(bridge->Target(), 4100U);
}

// Over any distance a jump comes to its target, and so does what lies between.
TEST(CsnAssembler, JumpsOfAnyLength) {
    for (const Opcode opcode : {Opcode::kJmp, Opcode::kAlt}) {
        for (std::uint32_t octets :
             {4094U, 4095U, 8200U, 36600U, 36861U, 36862U, 36863U, 73700U, 300000U}) {
            SCOPED_TRACE(octets);
            const Code code = FarJump(opcode, octets);
            EXPECT_LE(code.size(), octets + octets / 500 + 20);
            std::uint32_t bits = 0;
            for (std::uint32_t offset = 2; code[offset] != 0x23;) {
                const auto instruction = DecodeInstruction(code, offset);
                ASSERT_TRUE(instruction);
                bits += instruction->Code() == Opcode::kBit0 ? 1U : 0U;
                offset = static_cast<std::uint32_t>(
                    instruction->Target().value_or(offset + instruction->size));
            }
            EXPECT_EQ(bits, octets);
            std::uint32_t hops = 0;
            for (std::uint32_t offset = 0; code[offset] != 0x23; ++hops) {
                const auto instruction = DecodeInstruction(code, offset);
                ASSERT_TRUE(instruction);
                ASSERT_TRUE(hops == 0 || instruction->Code() == Opcode::kJmp ||
                            instruction->Code() == Opcode::kNop);
                offset = static_cast<std::uint32_t>(
                    instruction->Target().value_or(offset + instruction->size));
            }
            EXPECT_LE(hops, 2 + octets / 36000 + 7);
        }
    }
}

TEST(CsnAssembler, ReportsWhatDoesNotFit) {
    {
        Assembler code;
        code.Emit(Opcode::kSkip, {64});
        EXPECT_EQ(ErrorOf(code), "SKIP at 0: more than 63 bits");
    }
    {
        Assembler code;
        code.Emit(Opcode::kLit, {Assembler::Literal(4, 2)});
        EXPECT_EQ(ErrorOf(code), "LIT at 0: a literal of 2 bits cannot be 4");
    }
    {
        Assembler code;
        code.Emit(Opcode::kLit, {Assembler::Literal(0, 17)});
        EXPECT_EQ(ErrorOf(code), "LIT at 0: a literal of 17 bits cannot be 0");
    }
    {
        Assembler code;
        code.Emit(Opcode::kLit, {Assembler::Literal(0, 0)});
        EXPECT_EQ(ErrorOf(code), "LIT at 0: a literal of 0 bits cannot be 0");
    }
    {
        Assembler code;
        code.Emit(Opcode::kBegin, {Assembler::Delimiter(0x80000000U, false)});
        EXPECT_EQ(ErrorOf(code), "BEGIN at 0: field identifier too large");
    }
    {
        Assembler code;
        Assembler other;
        code.Emit(Opcode::kJmp, {other.NewLabel()});
        EXPECT_EQ(ErrorOf(code), "JMP at 0: label 0 does not exist");
    }
    {
        Assembler code;
        code.Emit(Opcode::kNop);
        code.Emit(Opcode::kJmp, {code.NewLabel()});
        EXPECT_EQ(ErrorOf(code), "JMP at 1: label 0 is not bound");
    }
    {
        Assembler code;
        const auto start = code.BindNew();
        code.Emit(Opcode::kNop);
        code.Emit(Opcode::kRepAny, {Assembler::Exit(start, false)});
        EXPECT_EQ(ErrorOf(code), "REP_ANY at 1: leads back to 0");
    }
    {
        Assembler code;
        const auto start = code.BindNew();
        code.Emit(Opcode::kNop);
        code.Emit(Opcode::kAlt, {Assembler::Branch(start, false)});
        EXPECT_EQ(ErrorOf(code), "ALT at 1: cannot reach 0");
    }
    {
        Assembler code;
        const auto end = code.NewLabel();
        code.Emit(Opcode::kLoop, {end});
        code.Bind(end);
        code.Emit(Opcode::kRet);
        EXPECT_EQ(ErrorOf(code).substr(0, 27), "LOOP at 0: leads forward to");
    }
    {
        Assembler code;
        code.Emit(Opcode::kField, {1});
        EXPECT_EQ(ErrorOf(code), "operands do not fit FIELD");
    }
    {
        Assembler code;
        code.Emit(Opcode::kBegin, {1});
        EXPECT_EQ(ErrorOf(code), "operands do not fit BEGIN");
    }
    {
        Assembler code;
        const auto label = code.BindNew();
        code.Bind(label);
        EXPECT_EQ(ErrorOf(code), "label 0 is bound twice");
    }
}

}  // namespace
}  // namespace quorvane::csn
