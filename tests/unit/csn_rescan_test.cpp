// Second readings of the same bits: exclusion and intersection.

#include <gtest/gtest.h>

#include "csn/machine.h"
#include "unit/csn_test_support.h"

namespace quorvane::csn {
namespace {

using test::Decode;
using test::Encode;
using test::Image;

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

/// bit(4) - 1111
const Emit kNotAllOnes = [](Image& image) {
    const auto behind = image.code.NewLabel();
    image.code.Emit(Opcode::kMark);
    image.code.Emit(Opcode::kSkip, {4});
    image.code.Emit(Opcode::kExclude, {behind});
    image.code.Emit(Opcode::kLit, {Assembler::Literal(15, 4)});
    image.code.Emit(Opcode::kExcludeEnd);
    image.code.Bind(behind);
};

TEST(CsnExclusion, PassesWhatIsNotExcluded) {
    EXPECT_EQ(DecodedBits(kNotAllOnes, "0101"), 4);
    EXPECT_EQ(DecodedBits(kNotAllOnes, "1111"), -1);
    EXPECT_EQ(DecodedBits(kNotAllOnes, "0101 0000"), 4);
}

TEST(CsnExclusion, FailsItsAlternative) {
    const Emit emit = [](Image& image) {
        const auto other = image.code.NewLabel();
        const auto join = image.code.NewLabel();
        image.code.Emit(Opcode::kAlt, {Assembler::Branch(other, false)});
        kNotAllOnes(image);
        image.code.Emit(Opcode::kPop);
        image.code.Emit(Opcode::kJmp, {join});
        image.code.Bind(other);
        image.code.Emit(Opcode::kSkip, {6});
        image.code.Bind(join);
    };
    EXPECT_EQ(DecodedBits(emit, "010111"), 4);
    EXPECT_EQ(DecodedBits(emit, "111100"), 6);
}

TEST(CsnExclusion, SecondDescriptionEndsWithTheFirst) {
    // bit(2) - 111: the third bit is past what was read, so nothing is excluded.
    const Emit emit = [](Image& image) {
        const auto behind = image.code.NewLabel();
        image.code.Emit(Opcode::kMark);
        image.code.Emit(Opcode::kSkip, {2});
        image.code.Emit(Opcode::kExclude, {behind});
        image.code.Emit(Opcode::kLit, {Assembler::Literal(7, 3)});
        image.code.Emit(Opcode::kExcludeEnd);
        image.code.Bind(behind);
        image.code.Emit(Opcode::kBit1);
    };
    EXPECT_EQ(DecodedBits(emit, "111"), 3);
}

TEST(CsnExclusion, EndIsPutBackBothWays) {
    for (const std::string_view bits : {"0101 1", "1111 1"}) {
        Image image;
        const auto other = image.code.NewLabel();
        image.code.Emit(Opcode::kAlt, {Assembler::Branch(other, false)});
        kNotAllOnes(image);
        image.code.Emit(Opcode::kFail);
        image.code.Bind(other);
        image.code.Emit(Opcode::kRet);
        const auto run = Decode(image, bits);
        EXPECT_EQ(run.machine->endPos, 5) << bits;
        EXPECT_EQ(run.machine->flags & kFlagRescan, 0U);
    }
}

TEST(CsnExclusion, WriterReadsWhatItHasWritten) {
    EXPECT_EQ(EncodedBits(kNotAllOnes), "0000");
    const Emit ones = [](Image& image) {
        const auto behind = image.code.NewLabel();
        image.code.Emit(Opcode::kMark);
        image.code.Emit(Opcode::kLit, {Assembler::Literal(3, 2)});
        image.code.Emit(Opcode::kExclude, {behind});
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kExcludeEnd);
        image.code.Bind(behind);
    };
    EXPECT_EQ(EncodedBits(ones), "failed");
}

/// bit(4) & 1 bit(2)
const Emit kFourAndThree = [](Image& image) {
    image.code.Emit(Opcode::kMark);
    image.code.Emit(Opcode::kSkip, {4});
    image.code.Emit(Opcode::kRescan);
    image.code.Emit(Opcode::kBit1);
    image.code.Emit(Opcode::kSkip, {2});
    image.code.Emit(Opcode::kRescanEnd);
};

TEST(CsnIntersection, EndsWhereTheSecondDescriptionDoes) {
    EXPECT_EQ(DecodedBits(kFourAndThree, "1000"), 3);
    EXPECT_EQ(DecodedBits(kFourAndThree, "0000"), -1);
}

TEST(CsnIntersection, EndStaysWhereTheReadingEnded) {
    const Emit emit = [](Image& image) {
        kFourAndThree(image);
        image.code.Emit(Opcode::kSkip, {1});  // still within the four bits
        image.code.Emit(Opcode::kSkip, {1});  // past them, though the message goes on
    };
    EXPECT_EQ(DecodedBits(emit, "1000 0000"), -1);

    Image image;
    kFourAndThree(image);
    image.code.Emit(Opcode::kRet);
    const auto run = Decode(image, "1000 0000");
    EXPECT_EQ(run.machine->endPos, 4);
    EXPECT_EQ(run.machine->flags & kFlagRescan, 0U);
}

TEST(CsnIntersection, BacktrackPutsTheEndBack) {
    const Emit emit = [](Image& image) {
        const auto other = image.code.NewLabel();
        const auto join = image.code.NewLabel();
        image.code.Emit(Opcode::kAlt, {Assembler::Branch(other, false)});
        kFourAndThree(image);
        image.code.Emit(Opcode::kPop);
        image.code.Emit(Opcode::kJmp, {join});
        image.code.Bind(other);
        image.code.Emit(Opcode::kSkip, {8});
        image.code.Bind(join);
    };
    EXPECT_EQ(DecodedBits(emit, "0000 0000"), 8);  // fails inside the second reading
}

TEST(CsnIntersection, EndIsLostBehindASuccess) {
    // The restoring entry is gone when the branch fails behind the second reading.
    const Emit emit = [](Image& image) {
        const auto other = image.code.NewLabel();
        image.code.Emit(Opcode::kAlt, {Assembler::Branch(other, false)});
        kFourAndThree(image);
        image.code.Emit(Opcode::kFail);
        image.code.Bind(other);
        image.code.Emit(Opcode::kSkip, {5});
    };
    EXPECT_EQ(DecodedBits(emit, "1000 0000"), -1);
}

TEST(CsnIntersection, WriterReadsTheSecondTime) {
    const Emit emit = [](Image& image) {
        image.code.Emit(Opcode::kMark);
        image.code.Emit(Opcode::kLit, {Assembler::Literal(0xC, 4)});
        image.code.Emit(Opcode::kRescan);
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kSkip, {3});
        image.code.Emit(Opcode::kRescanEnd);
        image.code.Emit(Opcode::kBit1);
    };
    EXPECT_EQ(EncodedBits(emit), "11001");
}

}  // namespace
}  // namespace quorvane::csn
