// Alternatives, truncation and repetition as images hold them.

#include <gtest/gtest.h>

#include "csn/machine.h"
#include "unit/csn_test_support.h"

namespace quorvane::csn {
namespace {

using test::Decode;
using test::Encode;
using test::Image;
using test::kRoot;
using test::RecordText;

using Emit = void (*)(Image& image);

bits::Outcome DecodedBits(Emit emit, std::string_view bits) {
    Image image;
    emit(image);
    image.code.Emit(Opcode::kRet);
    const auto run = Decode(image, bits);
    EXPECT_TRUE(image.code.Errors().empty()) << image.code.Errors().front();
    EXPECT_TRUE(run.result.Failed() || run.machine->stackDepth == 0);
    return run.result;
}

std::string EncodedBits(Emit emit) {
    Image image;
    emit(image);
    image.code.Emit(Opcode::kRet);
    return Encode(image).Text();
}

/// { 00 | 01 <id> | 1 }, <id> being of 2 bits.
struct ChoiceImage : Image {
    ChoiceImage() {
        const auto field = Field({{kRoot, 10}});
        const auto second = code.NewLabel();
        const auto third = code.NewLabel();
        const auto fail = code.NewLabel();
        const auto join = code.NewLabel();
        code.Emit(Opcode::kAlt, {Assembler::Branch(second, false)});
        code.Emit(Opcode::kBit0);
        code.Emit(Opcode::kBit0);
        code.Emit(Opcode::kJmp, {join});
        code.Bind(second);
        code.Emit(Opcode::kAlt, {Assembler::Branch(third, false)});
        code.Emit(Opcode::kLit, {Assembler::Literal(1, 2)});
        code.Emit(Opcode::kField, {field, 2});
        code.Emit(Opcode::kJmp, {join});
        code.Bind(third);
        code.Emit(Opcode::kAlt, {Assembler::Branch(fail, true)});
        code.Emit(Opcode::kBit1);
        code.Emit(Opcode::kJmp, {join});
        code.Bind(fail);
        code.Emit(Opcode::kFail);
        code.Bind(join);
        code.Emit(Opcode::kPop);
        code.Emit(Opcode::kRet);
    }
};

TEST(CsnChoice, TakesTheFirstBranchThatMatches) {
    ChoiceImage image;
    EXPECT_EQ(Decode(image, "00").result, 2);
    const auto field = Decode(image, "0110");
    EXPECT_EQ(field.result, 4);
    EXPECT_EQ(RecordText(*field.machine), "(10,0,2,0)(10,-1,4,1)");
    EXPECT_EQ(field.machine->stackDepth, 0);
    EXPECT_EQ(Decode(image, "1").result, 1);
}

TEST(CsnChoice, FailsWhenAllBranchesDo) {
    ChoiceImage image;
    const auto run = Decode(image, "011");  // the field is cut off
    EXPECT_EQ(run.result, -1);
    EXPECT_EQ(run.machine->recordCount, 0);
    EXPECT_EQ(Decode(image, "").result, -1);
}

TEST(CsnChoice, RecordsInFrontOfAFailedChoiceStay) {
    Image image;
    const auto before = image.Field({{kRoot, 10}});
    const auto inside = image.Field({{kRoot, 11}});
    const auto fail = image.code.NewLabel();
    image.code.Emit(Opcode::kField, {before, 2});
    image.code.Emit(Opcode::kAlt, {Assembler::Branch(fail, true)});
    image.code.Emit(Opcode::kField, {inside, 2});
    image.code.Emit(Opcode::kBit1);
    image.code.Bind(fail);
    image.code.Emit(Opcode::kFail);
    const auto run = Decode(image, "00000");
    EXPECT_EQ(run.result, -1);
    EXPECT_EQ(RecordText(*run.machine), "(10,0,0,0)(10,-1,2,1)");
}

TEST(CsnChoice, WriterTakesTheFirstBranchAndWritesOverFailedOnes) {
    const Emit emit = [](Image& image) {
        const auto second = image.code.NewLabel();
        const auto join = image.code.NewLabel();
        image.code.Emit(Opcode::kAlt, {Assembler::Branch(second, false)});
        image.code.Emit(Opcode::kLit, {Assembler::Literal(0, 4)});
        image.code.Emit(Opcode::kFail);
        image.code.Bind(second);
        image.code.Emit(Opcode::kLit, {Assembler::Literal(3, 2)});
        image.code.Emit(Opcode::kJmp, {join});
        image.code.Bind(join);
    };
    EXPECT_EQ(EncodedBits(emit), "11");
    Image image;
    emit(image);
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(Encode(image).octets[0], 0xCF);  // what the failed branch wrote further on stays
}

/// 1 ** of { 1 | flagged last branch 0 }.
TEST(CsnChoice, WriterInAnOpenLoopPassesOverTheLastBranch) {
    const Emit emit = [](Image& image) {
        const auto exit = image.code.NewLabel();
        const auto fail = image.code.NewLabel();
        const auto join = image.code.NewLabel();
        image.code.Emit(Opcode::kRepAny, {Assembler::Exit(exit, false)});
        const auto body = image.code.BindNew();
        image.code.Emit(Opcode::kAlt, {Assembler::Branch(fail, true)});
        image.code.Emit(Opcode::kBit0);
        image.code.Emit(Opcode::kJmp, {join});
        image.code.Bind(fail);
        image.code.Emit(Opcode::kFail);
        image.code.Bind(join);
        image.code.Emit(Opcode::kPop);
        image.code.Emit(Opcode::kLoop, {body});
        image.code.Bind(exit);
        image.code.Emit(Opcode::kBit1);
    };
    EXPECT_EQ(EncodedBits(emit), "1");
    EXPECT_EQ(DecodedBits(emit, "0001"), 4);
}

TEST(CsnChoice, FlagIsOfNoEffectInsideAFieldOfTheLoop) {
    // BEGIN clears `inOpenLoop`: the writer takes the branch, once.
    Image image;
    const auto group = image.Field({{kRoot, 10}});
    const auto exit = image.code.NewLabel();
    const auto fail = image.code.NewLabel();
    const auto join = image.code.NewLabel();
    image.code.Emit(Opcode::kRepRange, {Assembler::Exit(exit, false), 0, 2});
    const auto body = image.code.BindNew();
    image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(group, false)});
    image.code.Emit(Opcode::kAlt, {Assembler::Branch(fail, true)});
    image.code.Emit(Opcode::kBit0);
    image.code.Emit(Opcode::kJmp, {join});
    image.code.Bind(fail);
    image.code.Emit(Opcode::kFail);
    image.code.Bind(join);
    image.code.Emit(Opcode::kPop);
    image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(group, false)});
    image.code.Emit(Opcode::kLoop, {body});
    image.code.Bind(exit);
    image.code.Emit(Opcode::kBit1);
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(Encode(image).Text(), "001");
}

/// Zeros, the branch flagged so that a writer in an open repetition passes over it.
void FlaggedZeros(Image& image, std::uint32_t least, std::uint32_t most, bool leftOut) {
    const auto exit = image.code.NewLabel();
    const auto fail = image.code.NewLabel();
    const auto join = image.code.NewLabel();
    image.code.Emit(Opcode::kRepRange, {Assembler::Exit(exit, leftOut), least, most});
    const auto body = image.code.BindNew();
    image.code.Emit(Opcode::kAlt, {Assembler::Branch(fail, true)});
    image.code.Emit(Opcode::kBit0);
    image.code.Emit(Opcode::kJmp, {join});
    image.code.Bind(fail);
    image.code.Emit(Opcode::kFail);
    image.code.Bind(join);
    image.code.Emit(Opcode::kPop);
    image.code.Emit(Opcode::kLoop, {body});
    image.code.Bind(exit);
}

TEST(CsnChoice, FlagCountsInABoundedRepetitionToo) {
    // Once no more iterations are required, the repetition is an open one.
    const Emit emit = [](Image& image) {
        FlaggedZeros(image, 0, 2, false);
        image.code.Emit(Opcode::kBit1);
    };
    EXPECT_EQ(EncodedBits(emit), "1");
    const Emit required = [](Image& image) {
        FlaggedZeros(image, 1, 3, false);
        image.code.Emit(Opcode::kBit1);
    };
    EXPECT_EQ(EncodedBits(required), "01");
}

/// Writes 0001 at the first field.
std::int32_t ThreeZeros(CsnFieldEvent& event) {
    event.machine->writer->Write(event.bitPos, 1, 4);
    event.bitLength = 4;
    return kGoOn;
}

TEST(CsnChoice, FlagIsOfNoEffectWhereAnEncoderReads) {
    // What the source has written: the branch is tried.
    for (const bool leftOut : {false, true}) {
        Image image;
        const auto field = image.Field({{kRoot, 10}});
        image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(field, true)});
        FlaggedZeros(image, 0, kOpenEndedCount, leftOut);
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(field, true)});
        image.code.Emit(Opcode::kRet);
        EXPECT_EQ(Encode(image, ThreeZeros).Text(), "0001");
    }
    // What is read again.
    EXPECT_EQ(EncodedBits([](Image& image) {
                  image.code.Emit(Opcode::kMark);
                  image.code.Emit(Opcode::kLit, {Assembler::Literal(1, 4)});
                  image.code.Emit(Opcode::kRescan);
                  FlaggedZeros(image, 0, kOpenEndedCount, false);
                  image.code.Emit(Opcode::kBit1);
                  image.code.Emit(Opcode::kRescanEnd);
              }),
              "0001");
}

/// Three elements of 3, 3 and 4 bits, truncated.
struct TruncatedImage : Image {
    TruncatedImage() {
        const auto end = code.NewLabel();
        code.Emit(Opcode::kAlt, {Assembler::Branch(end, false)});
        for (std::uint16_t element = 0; element < 3; ++element) {
            const auto field = Field({{kRoot, static_cast<std::uint16_t>(10 + element)}});
            code.Emit(Opcode::kField, {field, element == 2 ? 4U : 3U});
            if (element < 2) {
                code.Emit(Opcode::kCommit);
            }
        }
        code.Emit(Opcode::kPop);
        code.Bind(end);
        code.Emit(Opcode::kRet);
    }
};

TEST(CsnTruncation, KeepsCompleteElements) {
    TruncatedImage image;
    const std::pair<std::int32_t, std::int32_t> rows[] = {{0, 0}, {2, 0}, {3, 3},   {5, 3},
                                                          {6, 6}, {9, 6}, {10, 10}, {11, 10}};
    for (const auto& [length, result] : rows) {
        const auto run = Decode(image, std::string(static_cast<std::size_t>(length), '0'));
        EXPECT_EQ(run.result, result) << length;
        EXPECT_EQ(run.machine->recordCount, result == 10 ? 6 : result / 3 * 2) << length;
        EXPECT_EQ(run.machine->stackDepth, 0);
    }
}

TEST(CsnTruncation, CommitWithoutChoiceEndsTheRun) {
    EXPECT_EQ(DecodedBits([](Image& image) { image.code.Emit(Opcode::kCommit); }, "1"), -1);
}

// Repetition. The body is the bit 1, the exit is followed by the bit 0.

template <typename... Operands>
void Repeat(Image& image, Opcode opcode, bool skip, Operands... operands) {
    const auto exit = image.code.NewLabel();
    image.code.Emit(opcode, {Assembler::Exit(exit, skip), operands...});
    const auto body = image.code.BindNew();
    image.code.Emit(Opcode::kBit1);
    image.code.Emit(Opcode::kLoop, {body});
    image.code.Bind(exit);
    image.code.Emit(Opcode::kBit0);
}

TEST(CsnRepetition, Rep) {
    const Emit emit = [](Image& image) { Repeat(image, Opcode::kRep, false, 3U); };
    EXPECT_EQ(DecodedBits(emit, "1110"), 4);
    EXPECT_EQ(DecodedBits(emit, "110"), -1);
    EXPECT_EQ(DecodedBits(emit, "1111"), -1);
    EXPECT_EQ(EncodedBits(emit), "1110");
}

TEST(CsnRepetition, RepOfNothing) {
    const Emit emit = [](Image& image) { Repeat(image, Opcode::kRep, false, 0U); };
    EXPECT_EQ(DecodedBits(emit, "0"), 1);
    EXPECT_EQ(DecodedBits(emit, "10"), -1);
    EXPECT_EQ(EncodedBits(emit), "0");
}

TEST(CsnRepetition, RepBit) {
    const Emit emit = [](Image& image) {
        image.code.Emit(Opcode::kTagPos, {1});
        image.code.Emit(Opcode::kSkip, {3});
        Repeat(image, Opcode::kRepBit, false, 1U, 2U);
    };
    EXPECT_EQ(DecodedBits(emit, "00110"), 5);
    EXPECT_EQ(DecodedBits(emit, "1100"), 4);
    EXPECT_EQ(DecodedBits(emit, "11010"), -1);
    EXPECT_EQ(EncodedBits(emit), "0000");
}

TEST(CsnRepetition, RepTag) {
    Image image;
    const auto count = image.Field({{kRoot, 10}});
    image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(count, true)});
    image.code.Emit(Opcode::kSkip, {2});
    image.code.Emit(Opcode::kEndTag, {Assembler::Delimiter(count, true), 1});
    Repeat(image, Opcode::kRepTag, false, 1U);
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(Decode(image, "000").result, 3);
    EXPECT_EQ(Decode(image, "111110").result, 6);
    EXPECT_EQ(Decode(image, "11110").result, -1);
    EXPECT_EQ(Encode(image).Text(), "000");
}

TEST(CsnRepetition, RepAny) {
    const Emit emit = [](Image& image) { Repeat(image, Opcode::kRepAny, false); };
    EXPECT_EQ(DecodedBits(emit, "0"), 1);
    EXPECT_EQ(DecodedBits(emit, "11110"), 5);
    EXPECT_EQ(DecodedBits(emit, "1111"), -1);
    const Emit skipped = [](Image& image) { Repeat(image, Opcode::kRepAny, true); };
    EXPECT_EQ(EncodedBits(skipped), "0");
    EXPECT_EQ(DecodedBits(skipped, "110"), 3);
}

TEST(CsnRepetition, FailureInTheFirstIterationGoesOnAtTheStart) {
    const Emit emit = [](Image& image) {
        const auto exit = image.code.NewLabel();
        image.code.Emit(Opcode::kSkip, {1});
        image.code.Emit(Opcode::kRepAny, {Assembler::Exit(exit, false)});
        const auto body = image.code.BindNew();
        image.code.Emit(Opcode::kLit, {Assembler::Literal(7, 3)});
        image.code.Emit(Opcode::kLoop, {body});
        image.code.Bind(exit);
    };
    EXPECT_EQ(DecodedBits(emit, "0110"), 1);
    EXPECT_EQ(DecodedBits(emit, "0111110"), 4);  // a half iteration is undone
    EXPECT_EQ(DecodedBits(emit, "0111111"), 7);
}

TEST(CsnRepetition, RepMore) {
    const Emit emit = [](Image& image) { Repeat(image, Opcode::kRepMore, false); };
    EXPECT_EQ(DecodedBits(emit, "0"), -1);
    EXPECT_EQ(DecodedBits(emit, "10"), 2);
    EXPECT_EQ(DecodedBits(emit, "1110"), 4);
    const Emit skipped = [](Image& image) { Repeat(image, Opcode::kRepMore, true); };
    EXPECT_EQ(EncodedBits(skipped), "10");  // what is required is written
}

TEST(CsnRepetition, RepRange) {
    const Emit emit = [](Image& image) { Repeat(image, Opcode::kRepRange, false, 2U, 4U); };
    EXPECT_EQ(DecodedBits(emit, "10"), -1);
    EXPECT_EQ(DecodedBits(emit, "110"), 3);
    EXPECT_EQ(DecodedBits(emit, "11110"), 5);
    EXPECT_EQ(DecodedBits(emit, "111110"), -1);
    EXPECT_EQ(EncodedBits(emit), "11110");
    const Emit skipped = [](Image& image) { Repeat(image, Opcode::kRepRange, true, 2U, 4U); };
    EXPECT_EQ(EncodedBits(skipped), "110");
}

TEST(CsnRepetition, RangeOfOneEndsAtItsFirstLoop) {
    const Emit emit = [](Image& image) { Repeat(image, Opcode::kRepRange, false, 0U, 1U); };
    EXPECT_EQ(DecodedBits(emit, "0"), 1);
    EXPECT_EQ(DecodedBits(emit, "10"), 2);
    EXPECT_EQ(DecodedBits(emit, "110"), -1);
}

TEST(CsnRepetition, UnboundedRange) {
    const Emit emit = [](Image& image) {
        Repeat(image, Opcode::kRepRange, false, 2U, kOpenEndedCount);
    };
    EXPECT_EQ(DecodedBits(emit, "10"), -1);
    EXPECT_EQ(DecodedBits(emit, std::string(1000, '1') + "0"), 1001);
}

TEST(CsnRepetition, RepFn) {
    const Emit emit = [](Image& image) {
        const auto function = image.Function([](CsnRun&) { return 3U; });
        Repeat(image, Opcode::kRepFn, false, function);
    };
    EXPECT_EQ(DecodedBits(emit, "1110"), 4);
    EXPECT_EQ(DecodedBits(emit, "110"), -1);
    EXPECT_EQ(EncodedBits(emit), "1110");
}

TEST(CsnRepetition, RepFn2) {
    const Emit emit = [](Image& image) {
        const auto encode = image.Function([](CsnRun&) { return 2U; });
        const auto decode = image.Function([](CsnRun&) { return 3U; });
        Repeat(image, Opcode::kRepFn2, false, encode, decode);
    };
    EXPECT_EQ(DecodedBits(emit, "1110"), 4);
    EXPECT_EQ(DecodedBits(emit, "110"), -1);
    EXPECT_EQ(EncodedBits(emit), "110");
}

TEST(CsnRepetition, RepFnEnc) {
    const Emit emit = [](Image& image) {
        const auto function = image.Function([](CsnRun&) { return 2U; });
        Repeat(image, Opcode::kRepFnEnc, false, function);
    };
    EXPECT_EQ(DecodedBits(emit, "111110"), 6);
    EXPECT_EQ(DecodedBits(emit, "0"), 1);
    EXPECT_EQ(EncodedBits(emit), "110");
}

TEST(CsnRepetition, NestedLoopsAreUndoneByIterations) {
    // { 1 { 01 } * 2 } **, then what is left
    const Emit emit = [](Image& image) {
        const auto exit = image.code.NewLabel();
        const auto innerExit = image.code.NewLabel();
        image.code.Emit(Opcode::kRepAny, {Assembler::Exit(exit, false)});
        const auto body = image.code.BindNew();
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kRep, {Assembler::Exit(innerExit, false), 2});
        const auto inner = image.code.BindNew();
        image.code.Emit(Opcode::kLit, {Assembler::Literal(1, 2)});
        image.code.Emit(Opcode::kLoop, {inner});
        image.code.Bind(innerExit);
        image.code.Emit(Opcode::kLoop, {body});
        image.code.Bind(exit);
    };
    EXPECT_EQ(DecodedBits(emit, "10101 10101"), 10);
    EXPECT_EQ(DecodedBits(emit, "10101 10100"), 5);
    EXPECT_EQ(DecodedBits(emit, "10100"), 0);
}

TEST(CsnRepetition, FailedIterationTakesItsTagsAndRecordsAlong) {
    Image image;
    const auto field = image.Field({{kRoot, 10}});
    const auto exit = image.code.NewLabel();
    image.code.Emit(Opcode::kRepAny, {Assembler::Exit(exit, false)});
    const auto body = image.code.BindNew();
    image.code.Emit(Opcode::kTagPos, {1});
    image.code.Emit(Opcode::kField, {field, 2});
    image.code.Emit(Opcode::kBit1);
    image.code.Emit(Opcode::kLoop, {body});
    image.code.Bind(exit);
    image.code.Emit(Opcode::kRet);
    const auto run = Decode(image, "001 011 000");
    EXPECT_EQ(run.result, 6);
    EXPECT_EQ(run.machine->tagCount, 2);
    EXPECT_EQ(RecordText(*run.machine), "(10,0,0,0)(10,-1,2,1)(10,1,3,0)(10,-1,5,1)");
}

TEST(CsnRepetition, CountReleasesTheMinimum) {
    const Emit emit = [](Image& image) {
        const auto exit = image.code.NewLabel();
        image.code.Emit(Opcode::kRepRange, {Assembler::Exit(exit, false), 3, 5});
        const auto body = image.code.BindNew();
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kCount, {0});
        image.code.Emit(Opcode::kLoop, {body});
        image.code.Bind(exit);
        image.code.Emit(Opcode::kBit0);
    };
    EXPECT_EQ(DecodedBits(emit, "0"), -1);  // the first iteration is still required
    EXPECT_EQ(DecodedBits(emit, "10"), 2);
    EXPECT_EQ(DecodedBits(emit, "111110"), 6);
    EXPECT_EQ(DecodedBits(emit, "1111110"), -1);
}

TEST(CsnRepetition, CountRaisesTheMinimum) {
    // Each iteration asks for two more, so that none of them ever is a complete one.
    const Emit emit = [](Image& image) {
        const auto exit = image.code.NewLabel();
        image.code.Emit(Opcode::kRepAny, {Assembler::Exit(exit, false)});
        const auto body = image.code.BindNew();
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kCount, {2});
        image.code.Emit(Opcode::kBit0);
        image.code.Emit(Opcode::kLoop, {body});
        image.code.Bind(exit);
    };
    EXPECT_EQ(DecodedBits(emit, "00"), 0);
    EXPECT_EQ(DecodedBits(emit, "1000"), 0);  // the exit was a choice before and still is
    EXPECT_EQ(DecodedBits(emit, "1010100"), 0);
}

TEST(CsnRepetition, CountByFunctions) {
    for (const Opcode opcode : {Opcode::kCountFn, Opcode::kCountFn2}) {
        Image image;
        const auto none = image.Function([](CsnRun&) { return 0U; });
        const auto many = image.Function([](CsnRun&) { return 100U; });
        const auto exit = image.code.NewLabel();
        image.code.Emit(Opcode::kRepRange, {Assembler::Exit(exit, false), 3, 5});
        const auto body = image.code.BindNew();
        image.code.Emit(Opcode::kBit1);
        if (opcode == Opcode::kCountFn) {
            image.code.Emit(opcode, {none});
        } else {
            image.code.Emit(opcode, {many, none});
        }
        image.code.Emit(Opcode::kLoop, {body});
        image.code.Bind(exit);
        image.code.Emit(Opcode::kBit0);
        image.code.Emit(Opcode::kRet);
        EXPECT_EQ(Decode(image, "10").result, 2);
    }
}

TEST(CsnRepetition, CountLeavesAWriterOut) {
    const Emit emit = [](Image& image) {
        const auto exit = image.code.NewLabel();
        image.code.Emit(Opcode::kRepRange, {Assembler::Exit(exit, true), 3, 5});
        const auto body = image.code.BindNew();
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kCount, {0});
        image.code.Emit(Opcode::kLoop, {body});
        image.code.Bind(exit);
        image.code.Emit(Opcode::kBit0);
    };
    EXPECT_EQ(EncodedBits(emit), "10");
}

TEST(CsnRepetition, LoopLeavesAWriterThatBeganAsReader) {
    // The repetition is entered while the source's bits are read and its first LOOP finds the
    // writer on: it is left behind that iteration, and the entry below the top moves up.
    Image image;
    const auto read = image.Action([](CsnRun& run) {
        run.sourceLimit = 20;
        run.endPos = 20;
    });
    const auto write = image.Action([](CsnRun& run) { run.sourceLimit = kNoLimit; });
    const auto other = image.code.NewLabel();
    const auto exit = image.code.NewLabel();
    image.code.Emit(Opcode::kAlt, {Assembler::Branch(other, false)});
    image.code.Emit(Opcode::kMark);
    image.code.Emit(Opcode::kAct, {read});
    image.code.Emit(Opcode::kRepAny, {Assembler::Exit(exit, true)});
    const auto body = image.code.BindNew();
    image.code.Emit(Opcode::kSkip, {4});
    image.code.Emit(Opcode::kAct, {write});
    image.code.Emit(Opcode::kLoop, {body});
    image.code.Bind(exit);
    image.code.Emit(Opcode::kFail);
    image.code.Bind(other);
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(Encode(image).result, 4);
}

}  // namespace
}  // namespace quorvane::csn
