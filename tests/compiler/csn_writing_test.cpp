// What an encoder writes where a description lets it choose: choices inside of open repetitions,
// and bits that are written otherwise than they are read.

#include <gtest/gtest.h>

#include "compiler/csn_codec.h"

namespace quorvane::compiler {
namespace {

// ---- Choices inside of open repetitions --------------------------------------------------------

// Each iteration has an `a`, so that the items behind one without a `b` are not lost.
TEST(CsnOpenRepetition, GoesOnBehindAnItemWithoutItsOptionalPart) {
    CsnCodec codec("< t > ::= { 1 < a : bit (2) > { 0 | 1 < b : bit (3) > } } ** 0 < c : bit > ;");
    ASSERT_EQ(codec.Errors(), "");
    EXPECT_EQ(codec.Decode("1 10 1 111  1 01 0  1 11 0  0 1"), "17: a=[2 1 3] b=[7] c=1");
    EXPECT_EQ(codec.Encode(), "11011111010111001");
    EXPECT_EQ(codec.Decode("1 10 0  1 01 0  0 0"), "10: a=[2 1] b=[] c=0");
    EXPECT_EQ(codec.Encode(), "1100101000");
    EXPECT_EQ(codec.Decode("0 1"), "2: a=[] b=[] c=1");
    EXPECT_EQ(codec.Encode(), "01");
}

TEST(CsnOpenRepetition, TheFieldOfEveryIterationMayStandBehindTheChoice) {
    CsnCodec codec("< t > ::= { 1 { 0 | 1 < b : bit (3) > } < a : bit (2) > } ** 0 ;");
    EXPECT_EQ(codec.Decode("1 0 10  1 0 01  1 1 101 11  0"), "16: a=[2 1 3] b=[5]");
    EXPECT_EQ(codec.Encode(), "1110110100110110");
}

TEST(CsnOpenRepetition, TheFieldOfEveryIterationMayStandInARule) {
    CsnCodec codec(
        "< t > ::= { 1 < item > } ** 0 { 0 | 1 < item > } ;\n"
        "< item > ::= < a : bit (2) > < part > ;\n"
        "< part > ::= { 0 | 1 < b : bit > { 0 | 1 < c : bit > } } ;");
    EXPECT_EQ(codec.Decode("1 10 0  1 01 0  0  0"), "10: a=[2 1] b=[] c=[]");
    EXPECT_EQ(codec.Encode(), "1100101000");
}

TEST(CsnOpenRepetition, AChoiceThatIsAllOfAnIterationEndsIt) {
    CsnCodec codec("< t > ::= { 1 { 00 | 01 < a : bit > | 10 < b : bit > } } ** 0 < c : bit > ;");
    EXPECT_EQ(codec.Decode("1 01 1  1 00  1 10 0  0 1"), "13: a=[1] b=[0] c=1");
    EXPECT_EQ(codec.Encode(), "1011110001");
}

// ---- Bits that are written otherwise than read -------------------------------------------------

TEST(CsnWrittenInstead, MayHaveFieldsAsWhatIsReadHas) {
    CsnCodec codec(
        "< t > ::= { { 0 | 1 < a : bit (2) > ** } { 0 | 1 < b : bit > } } = "
        "{ [in order] 0 1 < b : bit > | 1 < a : bit (2) > * (1..) | 00 } ;");
    ASSERT_EQ(codec.Errors(), "");
    EXPECT_EQ(codec.Decode("1 10 01 0"), "6: a=[2 1]");
    EXPECT_EQ(codec.Encode(), "11001");
    EXPECT_EQ(codec.Decode("0 1 1"), "3: a=[] b=1");
    EXPECT_EQ(codec.Encode(), "011");
    EXPECT_EQ(codec.Decode("0 0"), "2: a=[]");
    EXPECT_EQ(codec.Encode(), "00");
}

}  // namespace
}  // namespace quorvane::compiler
