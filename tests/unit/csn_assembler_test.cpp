#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "csn/assembler.h"

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

Code FarJump(std::uint32_t octets, std::uint32_t granule, std::string* error = nullptr) {
    Assembler code;
    const auto end = code.NewLabel();
    code.Emit(Opcode::kJmp, {end});
    for (std::uint32_t count = 0; count < octets; ++count) {
        code.Emit(Opcode::kNop);
    }
    code.Align(granule);
    code.Bind(end);
    code.Emit(Opcode::kRet);
    Code result = code.Finish();
    if (error != nullptr && !code.Errors().empty()) {
        *error = code.Errors().front();
    }
    return result;
}

TEST(CsnAssembler, FarJumpsUseTheScale) {
    std::string error;
    EXPECT_EQ(FarJump(4093, 1, &error)[0], 0x4F);  // 4095 octets: no scale
    EXPECT_TRUE(error.empty());

    const Code far = FarJump(4100, 8, &error);
    EXPECT_TRUE(error.empty());
    const auto jump = DecodeInstruction(far, 0);
    ASSERT_TRUE(jump);
    EXPECT_EQ(jump->operands[0], 0x2001U);
    EXPECT_EQ(jump->Target(), 4104U);
    EXPECT_EQ(far[4104], 0x23);

    (void)FarJump(4100, 1, &error);
    EXPECT_EQ(error, "JMP at 0: cannot reach 4102");
    error.clear();
    (void)FarJump(36860, 8, &error);
    EXPECT_EQ(error, "JMP at 0: cannot reach 36864");
}

TEST(CsnAssembler, AlternativesReach4095Octets) {
    for (const int octets : {4093, 4094}) {
        Assembler code;
        const auto end = code.NewLabel();
        code.Emit(Opcode::kAlt, {Assembler::Branch(end, false)});
        for (int count = 0; count < octets; ++count) {
            code.Emit(Opcode::kNop);
        }
        code.Bind(end);
        code.Emit(Opcode::kRet);
        (void)code.Finish();
        EXPECT_EQ(code.Errors().empty(), octets == 4093);
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
