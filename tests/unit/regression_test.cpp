// One test for each mistake that a fuzz target has found.

#include <gtest/gtest.h>

#include "csn/verifier.h"
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

}  // namespace
}  // namespace quorvane
