// One test for each mistake that a fuzz target has found.

#include <gtest/gtest.h>
#include <string>

#include "compiler/describe.h"
#include "csn/assembly/verifier.h"
#include "unit/csn_test_support.h"

namespace quorvane {
namespace {

// What the rule does to its caller's choice points went to and fro with what it does to its own.
TEST(Regression, VerifyingARuleThatCommitsAroundACallOfItselfEnds) {
    csn::test::Image image;
    const auto field = image.Field({{csn::test::kRoot, 10}, {10, 10}});
    const auto delimiter = csn::Assembler::Delimiter(field, false);
    const auto rule = image.code.BindNew();
    const auto exit = image.code.NewLabel();
    image.code.Emit(csn::Opcode::kCommit);
    image.code.Emit(csn::Opcode::kBegin, {delimiter});
    image.code.Emit(csn::Opcode::kRepRange, {csn::Assembler::Exit(exit, false), 0, 1});
    const auto body = image.code.BindNew();
    image.code.Emit(csn::Opcode::kBit1);
    image.code.Emit(csn::Opcode::kCall, {rule});
    image.code.Emit(csn::Opcode::kLoop, {body});
    image.code.Bind(exit);
    image.code.Emit(csn::Opcode::kEnd, {delimiter});
    image.code.Emit(csn::Opcode::kRet);

    csn::VerifierInput input;
    input.code = image.Octets();
    input.fieldTable = image.fields;
    input.entries.push_back({"Structure", 0, csn::test::kRoot, 0, 0});
    EXPECT_FALSE(csn::Verify(input).findings.empty());
}

std::string Repeated(const std::string& text, int times) {
    std::string result;
    for (; times > 0; --times) {
        result += text;
    }
    return result;
}

// Both were read by a recursion that went as deep as the text.
TEST(Regression, TextsThatAreNestedDeeplyAreRefused) {
    constexpr int kDeep = 200000;
    const std::string head = "family f\nstruct s special kGenericTlv {\n    a : ";
    const auto sequences = compiler::Describe({{"f.qd", head + Repeated("[2] of ", kDeep)}});
    EXPECT_NE(sequences.errors.find("a declared type for what is nested so deeply is expected"),
              std::string::npos);
    const auto structs = compiler::Describe({{"f.qd", head + Repeated("{\n    a : ", kDeep)}});
    EXPECT_NE(structs.errors.find("a declared type for what is nested so deeply is expected"),
              std::string::npos);
    const auto counts = compiler::Describe(
        {{"f.qd", "family f\n"},
         {"f.csn1", "structure S \"x\" ;\n< S > ::= < n : bit (3) > { < a : bit > } * " +
                        Repeated("(", kDeep) + "val(n)" + Repeated(")", kDeep) + " ;\n"}});
    EXPECT_NE(counts.errors.find("a number is expected here, not '('"), std::string::npos);
}

}  // namespace
}  // namespace quorvane
