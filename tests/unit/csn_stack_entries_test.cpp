// Instructions without the stack entries that they need, and on a full stack.

#include <gtest/gtest.h>

#include "unit/csn_test_support.h"

namespace quorvane::csn {
namespace {

using test::Decode;
using test::Encode;
using test::Image;
using Emit = void (*)(Image& image);

// What the verifier does not let pass fails all the same, in both directions.

/// Code of `marks` MARKs, `opcode` and RET.
void ExpectFailure(std::uint32_t marks, Opcode opcode, bool hasLabel,
                   std::initializer_list<Assembler::Operand> operands) {
    Image image;
    image.isSound = false;
    image.Field({{test::kRoot, 7}});  // number 1
    const auto start = image.code.BindNew();
    for (std::uint32_t mark = 0; mark < marks; ++mark) {
        image.code.Emit(Opcode::kMark);
    }
    const auto exit = image.code.NewLabel();
    if (opcode == Opcode::kLoop) {
        image.code.Emit(opcode, {start});
    } else if (hasLabel) {
        image.code.Emit(opcode, {exit});
    } else {
        image.code.Emit(opcode, operands);
    }
    image.code.Bind(exit);
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(Decode(image, "0000").result, -1) << marks << " " << static_cast<int>(opcode);
    EXPECT_EQ(Encode(image).Text(), "failed") << marks << " " << static_cast<int>(opcode);
}

TEST(CsnStackEntries, AreMissed) {
    ExpectFailure(0, Opcode::kExclude, true, {});
    ExpectFailure(0, Opcode::kExcludeEnd, false, {});
    ExpectFailure(1, Opcode::kExcludeEnd, false, {});
    ExpectFailure(0, Opcode::kRescan, false, {});
    ExpectFailure(0, Opcode::kLoop, true, {});
    ExpectFailure(1, Opcode::kLoop, true, {});
    ExpectFailure(0, Opcode::kCount, false, {1});
    ExpectFailure(1, Opcode::kCount, false, {1});
    ExpectFailure(0, Opcode::kEnd, false, {Assembler::Delimiter(1, false)});
    ExpectFailure(0, Opcode::kPop, false, {});
}

/// Whether a run takes `marks` MARKs and `code` behind them; the plan agrees.
bool IsTakenBehind(std::uint32_t marks, const Emit& code, std::uint32_t popped) {
    Image image;
    for (std::uint32_t mark = 0; mark < marks; ++mark) {
        image.code.Emit(Opcode::kMark);
    }
    code(image);
    for (std::uint32_t mark = popped; mark < marks; ++mark) {
        image.code.Emit(Opcode::kPop);
    }
    image.code.Emit(Opcode::kRet);
    return !Decode(image, "").result.Failed();
}

TEST(CsnStackEntries, FindNoRoom) {
    const Emit exclude = [](Image& image) {
        const auto otherwise = image.code.NewLabel();
        image.code.Emit(Opcode::kExclude, {otherwise});
        image.code.Emit(Opcode::kFail);
        image.code.Bind(otherwise);
    };
    // It takes one entry and pushes two; from a full stack nothing goes back.
    EXPECT_TRUE(IsTakenBehind(254, exclude, 1));
    EXPECT_FALSE(IsTakenBehind(255, exclude, 1));
    EXPECT_FALSE(IsTakenBehind(256, exclude, 1));
    const Emit rescan = [](Image& image) {
        image.code.Emit(Opcode::kRescan);
        image.code.Emit(Opcode::kRescanEnd);
    };
    EXPECT_TRUE(IsTakenBehind(256, rescan, 1));
    const Emit begin = [](Image& image) {
        const std::uint32_t field = image.Field({{test::kRoot, 7}});
        image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(field, false)});
        image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(field, false)});
    };
    EXPECT_TRUE(IsTakenBehind(255, begin, 0));
    EXPECT_FALSE(IsTakenBehind(256, begin, 0));
    const Emit call = [](Image& image) {
        const auto rule = image.code.NewLabel();
        const auto behind = image.code.NewLabel();
        image.code.Emit(Opcode::kCall, {rule});
        image.code.Emit(Opcode::kJmp, {behind});
        image.code.Bind(rule);
        image.code.Emit(Opcode::kRet);
        image.code.Bind(behind);
    };
    EXPECT_TRUE(IsTakenBehind(255, call, 0));
    EXPECT_FALSE(IsTakenBehind(256, call, 0));
    const Emit repeat = [](Image& image) {
        const auto exit = image.code.NewLabel();
        image.code.Emit(Opcode::kRep, {Assembler::Exit(exit, false), 1});
        const auto body = image.code.BindNew();
        image.code.Emit(Opcode::kNop);
        image.code.Emit(Opcode::kLoop, {body});
        image.code.Bind(exit);
    };
    EXPECT_TRUE(IsTakenBehind(254, repeat, 0));
    EXPECT_FALSE(IsTakenBehind(255, repeat, 0));
    EXPECT_FALSE(IsTakenBehind(256, repeat, 0));
}

}  // namespace
}  // namespace quorvane::csn
