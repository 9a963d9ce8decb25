// Plans: what the planner makes of the code, where it takes several instructions in one step, and
// the limits of a run, at which the plan does what the machine does.

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "csn/functions.h"
#include "csn/plan.h"
#include "unit/csn_record_support.h"
#include "unit/csn_test_support.h"

namespace quorvane::csn::test {
namespace {

std::string TextOf(const Plan& plan) {
    std::string text = plan.error;
    for (const PlanStep& step : plan.steps) {
        text += bits::EnumeratorText(step.op).substr(sizeof "PlanOp::k" - 1);
        for (const unsigned operand :
             {unsigned{step.width}, unsigned{step.a}, unsigned{step.b}, unsigned{step.c}}) {
            text += " " + std::to_string(operand);
        }
        text += "\n";
    }
    return text;
}

std::string PlanOf(Image& image) {
    return TextOf(MakePlan(image.Octets(), image.fields));
}

TEST(Plan, LooksUpFieldsOfSeveralParentsOnly) {
    Image image;
    const std::uint32_t one = image.Field({{kRoot, 10}});
    const std::uint32_t two = image.Field({{kRoot, 11}, {12, 13}});
    const std::uint32_t last = image.Field({{kRoot, 14}});
    image.code.Emit(Opcode::kField, {one, 300});
    image.code.Emit(Opcode::kField, {two, 5});
    image.code.Emit(Opcode::kFieldLit, {two, Assembler::Literal(2, 3)});
    image.code.Emit(Opcode::kField, {last, 1});
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(PlanOf(image),
              "Field 0 10 0 300\n"
              "FieldOf 0 4 0 5\n"
              "FieldLiteral 3 4 2 3\n"
              "Field 0 14 0 1\n"
              "Return 0 0 0 0\n");
}

TEST(Plan, TakesAnAlternativeAndItsFirstBitsInOneStep) {
    Image image;
    const auto second = image.code.NewLabel();
    const auto third = image.code.NewLabel();
    const auto fourth = image.code.NewLabel();
    const auto fail = image.code.NewLabel();
    const auto join = image.code.NewLabel();
    image.code.Emit(Opcode::kAlt, {Assembler::Branch(second, false)});
    image.code.Emit(Opcode::kBit0);
    image.code.Emit(Opcode::kJmp, {join});
    image.code.Bind(second);
    image.code.Emit(Opcode::kAlt, {Assembler::Branch(third, false)});
    image.code.Emit(Opcode::kBitL);
    image.code.Emit(Opcode::kSkip, {3});
    image.code.Emit(Opcode::kJmp, {join});
    image.code.Bind(third);
    image.code.Emit(Opcode::kAlt, {Assembler::Branch(fourth, false)});
    image.code.Emit(Opcode::kLit, {Assembler::Literal(6, 3)});
    image.code.Emit(Opcode::kJmp, {join});
    image.code.Bind(fourth);
    image.code.Emit(Opcode::kAlt, {Assembler::Branch(fail, true)});
    image.code.Emit(Opcode::kSkip, {1});
    image.code.Emit(Opcode::kJmp, {join});
    image.code.Bind(fail);
    image.code.Emit(Opcode::kFail);
    image.code.Bind(join);
    image.code.Emit(Opcode::kPop);
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(PlanOf(image),
              "Alt0 0 3 15 0\n"
              "Bit0 0 0 0 0\n"
              "JumpPop 0 15 0 0\n"
              "AltL 0 7 0 0\n"
              "BitL 0 0 0 0\n"
              "Skip 3 0 0 0\n"
              "JumpPop 0 15 0 0\n"
              "AltLiteral 3 10 15 6\n"
              "Literal 3 6 0 0\n"
              "JumpPop 0 15 0 0\n"
              "Alt 0 13 0 0\n"
              "Skip 1 0 0 0\n"
              "JumpPop 0 15 0 0\n"
              "Back 0 0 0 0\n"
              "Pop 0 0 0 0\n"
              "Return 0 0 0 0\n");
    // One message of each alternative, and none of any.
    for (const std::string bits : {"0", "1000", "110", "11"}) {
        EXPECT_FALSE(Decode(image, bits).result.Failed()) << bits;
    }
    EXPECT_TRUE(Decode(image, "").result.Failed());
}

TEST(Plan, PassesSkipsOfARepetitionAtOnce) {
    Image image;
    const std::uint32_t function = image.Function(functions::Constant<3>);
    const auto exits = {image.code.NewLabel(), image.code.NewLabel(), image.code.NewLabel()};
    auto exit = exits.begin();
    image.code.Emit(Opcode::kRepFn, {Assembler::Exit(*exit, false), function});
    auto body = image.code.BindNew();
    image.code.Emit(Opcode::kSkip, {2});
    image.code.Emit(Opcode::kLoop, {body});
    image.code.Bind(*exit++);
    image.code.Emit(Opcode::kRepAny, {Assembler::Exit(*exit, false)});
    body = image.code.BindNew();
    image.code.Emit(Opcode::kSkip, {3});
    image.code.Emit(Opcode::kLoop, {body});
    image.code.Bind(*exit++);
    image.code.Emit(Opcode::kRep, {Assembler::Exit(*exit, false), 4});
    body = image.code.BindNew();
    image.code.Emit(Opcode::kBit1);
    image.code.Emit(Opcode::kLoop, {body});
    image.code.Bind(*exit++);
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(PlanOf(image),
              "RepeatFunction 2 3 0 0\n"
              "Skip 2 0 0 0\n"
              "Loop 0 1 0 0\n"
              "Repeat 3 6 0 16383\n"
              "Skip 3 0 0 0\n"
              "Loop 0 4 0 0\n"
              "Repeat 0 9 4 4\n"
              "Bit1 0 0 0 0\n"
              "Loop 0 7 0 0\n"
              "Return 0 0 0 0\n");
    for (std::size_t length = 0; length < 20; ++length) {
        Decode(image, std::string(length, '1'));
    }
}

TEST(Plan, KeepsNumbersOf32Bits) {
    Image image;
    image.code.Emit(Opcode::kTagPos, {1});
    image.code.Emit(Opcode::kSkip, {32});
    image.code.Emit(Opcode::kValRange, {1, 0x12345678, 0x9ABCDEF0});
    image.code.Emit(Opcode::kValEq, {1, 0x56781234});
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(PlanOf(image),
              "TagPosition 0 1 0 0\n"
              "Skip 32 0 0 0\n"
              "Compare 0 1 22136 57072\n"
              "None 0 0 4660 39612\n"
              "Compare 0 1 4660 4660\n"
              "None 0 0 22136 22136\n"
              "Return 0 0 0 0\n");
    EXPECT_EQ(Decode(image, "01010110011110000001001000110100").result, 32);
    EXPECT_TRUE(Decode(image, "01010110011110000001001000110101").result.Failed());
    EXPECT_TRUE(Decode(image, "10011010101111001101111011110001").result.Failed());
}

TEST(Plan, LeavesOutWhatEncodingAloneDoes) {
    Image image;
    const std::uint32_t action = image.Action(functions::NotePosition<1>);
    const std::uint32_t encode = image.Function(functions::Constant<1>);
    const std::uint32_t decode = image.Function(functions::Constant<2>);
    const auto behind = image.code.NewLabel();
    const auto exit = image.code.NewLabel();
    image.code.Emit(Opcode::kActEnc, {action});
    image.code.Emit(Opcode::kActDec, {action});
    image.code.Emit(Opcode::kSkipEnc, {behind});
    image.code.Bind(behind);
    image.code.Emit(Opcode::kRepFn2, {Assembler::Exit(exit, false), encode, decode});
    const auto body = image.code.BindNew();
    image.code.Emit(Opcode::kBit1);
    image.code.Emit(Opcode::kCountFn2, {encode, decode});
    image.code.Emit(Opcode::kLoop, {body});
    image.code.Bind(exit);
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(PlanOf(image),
              "None 0 0 0 0\n"
              "Act 0 0 0 0\n"
              "None 0 0 0 0\n"
              "RepeatFunction 0 7 1 0\n"
              "Bit1 0 0 0 0\n"
              "CountFunction 0 1 0 0\n"
              "Loop 0 4 0 0\n"
              "Return 0 0 0 0\n");
}

TEST(Plan, RefusesWhatItsOperandsCannotHold) {
    const auto error = [](auto emit) {
        Image image;
        emit(image);
        image.code.Emit(Opcode::kRet);
        const Plan plan = MakePlan(image.Octets(), image.fields);
        return std::to_string(plan.errorOffset) + ": " + plan.error;
    };
    EXPECT_EQ(error([](Image& image) {
                  image.code.Emit(Opcode::kNop);
                  image.code.Emit(Opcode::kTagPos, {65536});
              }),
              "1: the operand 65536 is above 65535");
    EXPECT_EQ(error([](Image& image) { image.code.Emit(Opcode::kTagPos, {65535}); }), "0: ");
    EXPECT_EQ(error([](Image& image) {
                  image.code.Emit(Opcode::kField, {image.Field({{kRoot, 10}}), 65534});
              }),
              "0: a field has more than 65533 bits");
    EXPECT_EQ(error([](Image& image) {
                  for (int count = 0; count < 65535; ++count) {
                      image.code.Emit(Opcode::kNop);
                  }
              }),
              "0: the image has more than 65535 instructions");
}

// A refused number goes back to the nearest choice point; where there is none the run goes on.
TEST(Plan, GoesBackBehindAnActionThatRefuses) {
    for (const bool choice : {false, true}) {
        Image image;
        const auto read = [&] {
            image.code.Emit(Opcode::kSkip, {4});
            image.code.Emit(Opcode::kAct, {image.Action(functions::RejectZero<4>)});
        };
        const auto end = image.code.NewLabel();
        if (choice) {
            image.code.Emit(Opcode::kAlt, {Assembler::Branch(end, false)});
        }
        read();
        if (choice) {
            image.code.Emit(Opcode::kPop);
        }
        image.code.Bind(end);
        image.code.Emit(Opcode::kRet);
        EXPECT_EQ(Decode(image, "00011").result, 4);
        EXPECT_EQ(Decode(image, "00001").result, choice ? 0 : 4);
    }
}

/// So many rules that call each other; what follows is the body of the last.
void CallDeep(Image& image, int calls) {
    for (int call = 0; call < calls; ++call) {
        const auto next = image.code.NewLabel();
        image.code.Emit(Opcode::kCall, {next});
        image.code.Emit(Opcode::kRet);
        image.code.Bind(next);
    }
}

// Where a run goes back to, numbers are there that were kept before, and none that were kept since.
TEST(Plan, GoesBackToTheNumbersThatWereThere) {
    Image image;
    const auto second = image.code.NewLabel();
    image.code.Emit(Opcode::kSkip, {2});
    image.code.Emit(Opcode::kAlt, {Assembler::Branch(second, false)});
    image.code.Emit(Opcode::kTagPos, {1});
    image.code.Emit(Opcode::kBit1);
    image.code.Emit(Opcode::kPop);
    image.code.Bind(second);
    image.code.Emit(Opcode::kSkip, {2});
    image.code.Emit(Opcode::kValEq, {1, 0b01101});  // from -1 on: the tag has no number
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(Decode(image, "1101").result, 4);

    Image moved;
    const auto cut = moved.code.NewLabel();
    moved.code.Emit(Opcode::kAlt, {Assembler::Branch(cut, false)});
    moved.code.Emit(Opcode::kSkip, {2});
    moved.code.Emit(Opcode::kTagPos, {1});
    moved.code.Emit(Opcode::kSkip, {2});
    moved.code.Emit(Opcode::kCommit);
    moved.code.Emit(Opcode::kBit1);
    moved.code.Emit(Opcode::kPop);
    moved.code.Bind(cut);
    moved.code.Emit(Opcode::kValEq, {1, 0b10});
    moved.code.Emit(Opcode::kRet);
    EXPECT_EQ(Decode(moved, "01100").result, 4);
}

TEST(Plan, FailsAtACommitWithoutAChoicePoint) {
    Image image;
    const std::uint32_t field = image.Field({{kRoot, 10}});
    image.code.Emit(Opcode::kField, {field, 1});
    image.code.Emit(Opcode::kCommit);
    image.code.Emit(Opcode::kField, {field, 1});
    image.code.Emit(Opcode::kRet);
    EXPECT_TRUE(Decode(image, "11").result.Failed());
}

// As many rules as the stack has room for call each other; one more fails.
TEST(Plan, FailsAtTheMachinesStackLimit) {
    for (const int calls : {254, 255, 256, 257}) {
        for (const bool choice : {false, true}) {
            Image image;
            CallDeep(image, calls);
            if (choice) {
                Optional(image, [&] { image.code.Emit(Opcode::kSkip, {1}); });
            }
            image.code.Emit(Opcode::kRet);
            const int most = choice ? 255 : 256;
            EXPECT_EQ(Decode(image, "10").result.Failed(), calls > most) << calls;
            // The choice point of the first branch fills the stack: going back is refused.
            EXPECT_EQ(Decode(image, "0").result.Failed(), calls > (choice ? 254 : 256)) << calls;
        }
    }
}

TEST(Plan, FailsAtTheMachinesStackLimitInRepetitions) {
    for (const int calls : {252, 253, 254, 255, 256}) {
        for (const bool bit : {false, true}) {
            Image image;
            CallDeep(image, calls);
            const auto exit = image.code.NewLabel();
            image.code.Emit(Opcode::kRepAny, {Assembler::Exit(exit, false)});
            const auto body = image.code.BindNew();
            if (bit) {
                image.code.Emit(Opcode::kBit1);
            } else {
                image.code.Emit(Opcode::kSkip, {2});
            }
            image.code.Emit(Opcode::kLoop, {body});
            image.code.Bind(exit);
            image.code.Emit(Opcode::kRet);
            EXPECT_EQ(Decode(image, "11111").result.Failed(), calls > 253) << calls << " " << bit;
        }
    }
}

// 128 fields fill the list of records; what opens at its end is in the log, and the run fails.
TEST(Plan, FailsAtTheMachinesRecordLimit) {
    for (const int fields : {126, 127, 128, 129}) {
        for (const bool open : {false, true}) {
            Image image;
            const std::uint32_t group = image.Field({{kRoot, 10}});
            const std::uint32_t field = image.Field({{kRoot, 11}, {10, 12}});
            const auto inside = [&] {
                for (int count = 0; count < fields; ++count) {
                    image.code.Emit(Opcode::kField, {field, 1});
                }
            };
            if (open) {
                Group(image, group, inside);
            } else {
                inside();
            }
            image.code.Emit(Opcode::kRet);
            EXPECT_EQ(Decode(image, std::string(130, '1')).result.Failed(),
                      fields + (open ? 1 : 0) > 128)
                << fields;
        }
    }
}

TEST(Plan, CountsTheMachinesInstructions) {
    Image image;
    const std::uint32_t field = image.Field({{kRoot, 10}});
    Optional(image, [&] { image.code.Emit(Opcode::kField, {field, 2}); });
    const auto exit = image.code.NewLabel();
    image.code.Emit(Opcode::kRep, {Assembler::Exit(exit, false), 3});
    const auto body = image.code.BindNew();
    image.code.Emit(Opcode::kSkip, {2});
    image.code.Emit(Opcode::kLoop, {body});
    image.code.Bind(exit);
    // A repetition that the bits do not suffice for, ahead of the end of a truncation.
    const auto cut = image.code.NewLabel();
    const auto sixth = image.code.NewLabel();
    image.code.Emit(Opcode::kAlt, {Assembler::Branch(cut, false)});
    image.code.Emit(Opcode::kRep, {Assembler::Exit(sixth, false), 6});
    const auto skip = image.code.BindNew();
    image.code.Emit(Opcode::kSkip, {2});
    image.code.Emit(Opcode::kLoop, {skip});
    image.code.Bind(sixth);
    image.code.Emit(Opcode::kPop);
    image.code.Bind(cut);
    const auto end = image.code.NewLabel();
    image.code.Emit(Opcode::kRepAny, {Assembler::Exit(end, false)});
    const auto padding = image.code.BindNew();
    image.code.Emit(Opcode::kSkip, {1});
    image.code.Emit(Opcode::kLoop, {padding});
    image.code.Bind(end);
    image.code.Emit(Opcode::kRet);
    for (const std::string bits : {"0000000", "0000000000", "111000000", "11100000000", "000"}) {
        ExpectSameLimits(image, bits);
    }
}

// Fields in a row are one step, which may end inside of them or go back from there.
TEST(Plan, TakesFieldsInARowAtOnce) {
    Image image;
    const std::uint32_t first = image.Field({{kRoot, 10}});
    const std::uint32_t second = image.Field({{kRoot, 11}});
    const auto cut = image.code.NewLabel();
    image.code.Emit(Opcode::kAlt, {Assembler::Branch(cut, false)});
    image.code.Emit(Opcode::kField, {first, 2});
    image.code.Emit(Opcode::kField, {second, 3});
    image.code.Emit(Opcode::kField, {first, 1});
    image.code.Emit(Opcode::kPop);
    image.code.Emit(Opcode::kRet);
    image.code.Bind(cut);
    image.code.Emit(Opcode::kField, {second, 1});
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(PlanOf(image),
              "Alt 0 6 0 0\n"
              "Field 0 10 2 2\n"
              "Field 0 11 1 3\n"
              "Field 0 10 0 1\n"
              "Pop 0 0 0 0\n"
              "Return 0 0 0 0\n"
              "Field 0 11 0 1\n"
              "Return 0 0 0 0\n");
    for (std::size_t count = 0; count < 8; ++count) {
        ExpectSameLimits(image, std::string(count, '1'));
    }
}

TEST(Plan, TakesNoMoreFieldsInARowThanTheMachine) {
    for (const std::size_t fields : {127U, 128U, 129U, 130U}) {
        Image image;
        const std::uint32_t field = image.Field({{kRoot, 10}});
        for (std::size_t count = 0; count < fields; ++count) {
            image.code.Emit(Opcode::kField, {field, 1});
        }
        image.code.Emit(Opcode::kRet);
        EXPECT_EQ(Decode(image, std::string(fields, '1')).result.Failed(), fields > 128) << fields;
    }
}

/// Fields of `width` bits that may be cut off behind each of them, as many as `fields`.
void CutOff(Image& image, std::size_t fields, std::uint32_t width) {
    const std::uint32_t field = image.Field({{kRoot, 10}});
    const auto cut = image.code.NewLabel();
    image.code.Emit(Opcode::kAlt, {Assembler::Branch(cut, false)});
    for (std::size_t count = 0; count < fields; ++count) {
        image.code.Emit(Opcode::kField, {field, width});
        image.code.Emit(Opcode::kCommit);
    }
    image.code.Emit(Opcode::kPop);
    image.code.Bind(cut);
    image.code.Emit(Opcode::kRet);
}

// What is in a row goes on behind the commits, and goes back to the last of them.
TEST(Plan, TakesFieldsThatMayBeCutOffAtOnce) {
    Image image;
    CutOff(image, 3, 2);
    EXPECT_EQ(PlanOf(image),
              "Alt 0 8 0 0\n"
              "Field 0 10 5 2\n"
              "Commit 0 0 0 0\n"
              "Field 0 10 3 2\n"
              "Commit 0 0 0 0\n"
              "Field 0 10 1 2\n"
              "Commit 0 0 0 0\n"
              "Pop 0 0 0 0\n"
              "Return 0 0 0 0\n");
    for (std::size_t count = 0; count < 9; ++count) {
        EXPECT_EQ(Decode(image, std::string(count, '1')).result,
                  static_cast<int>(std::min<std::size_t>(count, 6) / 2 * 2))
            << count;
        ExpectSameLimits(image, std::string(count, '1'));
    }
    for (const std::size_t fields : {64U, 127U, 128U, 129U}) {
        Image many;
        CutOff(many, fields, 1);
        EXPECT_EQ(Decode(many, std::string(fields, '1')).result.Failed(), fields > 128) << fields;
    }
}

// A group whose end is that of the group around it; and one bit tells two alternatives apart.
TEST(Plan, EndsSeveralGroupsAtOnce) {
    Image image;
    Optional(image, [&] {
        Optional(image, [&] { Optional(image, [&] { image.code.Emit(Opcode::kSkip, {1}); }); });
    });
    image.code.Emit(Opcode::kRet);
    const std::string plan = PlanOf(image);
    EXPECT_TRUE(plan.starts_with("Alt1 1 20 0 0\n")) << plan;
    EXPECT_NE(plan.find("\nJumpPop 0 25 2 0\n"), std::string::npos) << plan;
    for (const std::string bits : {"0", "10", "110", "1110", "11", "1", ""}) {
        ExpectSameLimits(image, bits);
    }
}

// What is no image has no plan; the first mistake is told.
TEST(Plan, RefusesWhatIsNoCode) {
    const Plan cut = MakePlan(std::vector<std::uint8_t>{0x00, 0x10}, {});  // NOP, FIELD
    EXPECT_EQ(cut.error, "an instruction is cut off");
    EXPECT_EQ(cut.errorOffset, 1U);
    Image image;
    const auto end = image.code.NewLabel();
    image.code.Emit(Opcode::kNop);
    image.code.Emit(Opcode::kRepAny, {Assembler::Exit(end, false)});
    image.code.Emit(Opcode::kAlt, {Assembler::Branch(end, false)});
    image.code.Bind(end);
    const Plan open = MakePlan(image.Octets(), {});
    EXPECT_EQ(open.error, "its target is no instruction");
    EXPECT_EQ(open.errorOffset, 1U);
}

std::string NumbersOf(const bits::Cell& list) {
    std::string text;
    for (std::uint32_t index = 0; index < list.number; ++index) {
        text += std::to_string(list.cells[index].number) + " ";
    }
    return text;
}

// Items are counted anew under each field around them, also one that is not stored itself; items of
// two fields share a list. The second run stores over what the first has left.
TEST(Plan, CountsItemsUnderTheFieldAroundThem) {
    for (const bool mixed : {false, true}) {
        std::vector<CsnFieldRow> rows = {Nothing(), Integers(0, 2, 20), Integers(0, 2, 20)};
        rows[1].mixed = mixed;
        rows[2].mixed = mixed;
        Image image;
        const std::uint32_t group = image.Field({{kRoot, 10}});
        const std::uint32_t inner = image.Field({{10, 11}});
        const std::uint32_t direct = image.Field({{kRoot, 12}});
        const auto items = [&](std::uint32_t field) {
            List(image, [&] { image.code.Emit(Opcode::kField, {field, 2}); });
        };
        items(direct);
        List(image, [&] { Group(image, group, [&] { items(inner); }); });
        items(direct);
        image.code.Emit(Opcode::kRet);
        const CsnStructure structure{"S", &image.Program(), 0, 0, kRoot, 10, 1, rows};
        bits::Arena arena;
        bits::Cell plain{};
        bits::Cell planned{};
        for (const std::string text :
             {"101 110 0  1 111 101 0  1 110 0  0  111 101 110 0", "110 0 0 101 0",
              "101 0 1 110 111 101 0 0 0", "0 1 101 110 0 0 111 0"}) {
            const std::vector<std::uint8_t> octets = Octets(text);
            const bits::BitReader reader(octets.data(), static_cast<std::int64_t>(octets.size()));
            EXPECT_EQ(DecodeCsn(structure, reader, arena, 0, Count(text), planned), Count(text));
            EXPECT_EQ(DecodePlainly(structure, reader, arena, 0, Count(text), plain), Count(text));
            EXPECT_EQ(NumbersOf(*planned.cells), NumbersOf(*plain.cells)) << mixed << " " << text;
        }
    }
}

}  // namespace
}  // namespace quorvane::csn::test
